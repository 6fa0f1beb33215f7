#pragma once

#include <filesystem>
#include <memory>
#include <system_error>

namespace KAV::Platform {

/// A new file under a short name of its own, ".kavhost-....tmp", which ends with the object unless it was
/// moved to its real name. It is locked while the object lives, so that others can tell it from one that a
/// killed program has left.
class CTemporaryFile final {
public:
    /// Null, with the reason, if it can't be created. `isPrivate`: for this user alone.
    static std::unique_ptr<CTemporaryFile> Create(
        const std::filesystem::path& folder, bool isPrivate, std::error_code& error);
    ~CTemporaryFile();
    CTemporaryFile(const CTemporaryFile&) = delete;
    CTemporaryFile& operator=(const CTemporaryFile&) = delete;

    const std::filesystem::path& Name() const noexcept { return _name; }

    /// Gives it the owner, the group and the permissions of another file, which it will replace; false if the
    /// system refuses one of them. Windows does this in MoveTo().
    bool TakeOwnerAndMode(const std::filesystem::path& other) const noexcept;

    /// Gives it its real name, in the same folder. Without `replaces` it fails if that name is taken.
    std::error_code MoveTo(const std::filesystem::path& target, bool replaces) noexcept;

private:
    CTemporaryFile(std::filesystem::path name, std::intptr_t lock) : _name(std::move(name)), _lock(lock) {}

    void Unlock() noexcept;

    std::filesystem::path _name; ///< empty after MoveTo()
    std::intptr_t _lock;         ///< open as long as the file is locked
};

/// Removes files of that kind which no process holds any more.
void RemoveAbandonedFiles(const std::filesystem::path& folder) noexcept;

/// The user has protected the file from being written to. That counts for an administrator, too, whom the
/// system would not keep from it.
bool IsWriteProtected(const std::filesystem::path& file) noexcept;

} // namespace KAV::Platform
