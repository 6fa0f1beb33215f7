#pragma once

#include <filesystem>
#include <fstream>

namespace KAV::Host {

/// A file that appears under its name only when it is complete. It is written under another name in the same
/// folder and renamed at the end. If the object ends before that, the folder stays as it was, including any
/// older file of that name.
class CPendingFile final {
public:
    /// Throws CFailure if no file can be created in the folder, or the name belongs to something else than a
    /// plain file.
    explicit CPendingFile(const std::filesystem::path& target);
    ~CPendingFile();
    CPendingFile(const CPendingFile&) = delete;
    CPendingFile& operator=(const CPendingFile&) = delete;

    /// For binary output. A failed write leaves it bad.
    std::ofstream& Stream() noexcept { return _stream; }

    /// Throws CFailure if a write has failed.
    void Check();

    /// Writes what is buffered, closes and renames. Throws CFailure if any of this or an earlier write
    /// failed.
    void Commit();

private:
    std::filesystem::path _target;    ///< links resolved: the target of a link is replaced, not the link
    std::filesystem::path _temporary; ///< empty after Commit()
    std::ofstream _stream;
};

} // namespace KAV::Host
