#pragma once

#include <cstddef>
#include <cstdint>
#include <filesystem>

namespace KAV::Platform {

/// The file-system calls that reading and replacing whole files needs, one operation each, in the order in
/// which a caller makes them. This is a seam: tests use their own file system, which wraps the system's and
/// fails or stops the process at any one of these calls.
/// Threads: any; a handle belongs to one thread at a time. Nothing throws; a failed call changed nothing.
class IFileSystem {
public:
    using Handle = std::intptr_t;
    static constexpr Handle NoFile = -1;

    enum class EKind { Missing, File, Folder, Other };

    IFileSystem() = default;
    IFileSystem(const IFileSystem&) = delete;
    IFileSystem& operator=(const IFileSystem&) = delete;

    /// The kind of a path's target, through links. A link to nothing is missing.
    virtual EKind Kind(const std::filesystem::path& path) noexcept = 0;
    /// The path with all links followed, as far as it exists; empty if that can't be determined.
    virtual std::filesystem::path Resolve(const std::filesystem::path& path) noexcept = 0;
    /// Whether this user may write to an existing file.
    virtual bool IsWritable(const std::filesystem::path& file) noexcept = 0;
    /// Creates one folder, for this user only; also true if it exists already.
    virtual bool MakeFolder(const std::filesystem::path& folder) noexcept = 0;

    /// Only opens ordinary files: for anything else of that name (a pipe, a device, a folder) it returns
    /// NoFile.
    virtual Handle OpenToRead(const std::filesystem::path& file) noexcept = 0;
    /// Fails if the name is taken. With `like`, an existing file, the new one gets its permissions.
    virtual Handle CreateNew(
        const std::filesystem::path& file, const std::filesystem::path* like) noexcept = 0;
    /// Opens for reading and writing, created if missing, never through a link, readable only by this user.
    /// While it is open no other caller can open it this way. Returns NoFile in that case, and if the file
    /// isn't this user's.
    virtual Handle OpenAlone(const std::filesystem::path& file) noexcept = 0;

    virtual bool Size(Handle file, std::uint64_t& bytes) noexcept = 0;
    /// Bytes read or written; fewer than `bytes` at the end of the file, on a full disk or on a failure.
    virtual std::size_t Read(Handle file, void* data, std::size_t bytes) noexcept = 0;
    virtual std::size_t Write(Handle file, const void* data, std::size_t bytes) noexcept = 0;
    /// Empties an open file and moves to its beginning.
    virtual bool Clear(Handle file) noexcept = 0;
    /// Waits until everything written is on the disk.
    virtual bool Flush(Handle file) noexcept = 0;
    /// The handle is closed in any case; false if something written before was lost.
    virtual bool Close(Handle file) noexcept = 0;

    /// Renames `from` to `to` in one step: at any moment either the complete old file or the complete new one
    /// exists.
    virtual bool Replace(const std::filesystem::path& from, const std::filesystem::path& to) noexcept = 0;
    virtual bool Remove(const std::filesystem::path& file) noexcept = 0;
    /// Makes a rename by Replace() survive a power failure.
    virtual bool FlushFolder(const std::filesystem::path& folder) noexcept = 0;

protected:
    ~IFileSystem() = default; // the system's own is never destroyed: the log is written until the very end
};

/// The system's own.
IFileSystem& SystemFiles() noexcept;

/// The file system in use: the system's own, unless a test has replaced it.
IFileSystem& Files() noexcept;

/// For tests: replaces the file system of the whole process; null restores the system's own. `files` must
/// outlive its use.
void UseFiles(IFileSystem* files) noexcept;

} // namespace KAV::Platform
