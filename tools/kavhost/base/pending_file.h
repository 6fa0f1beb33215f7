#pragma once

#include <filesystem>
#include <fstream>

namespace KAV::Host {

/// A file that appears under its name only when it is complete: it is written under another name in the same
/// folder and renamed at the end. Whatever ends the object before leaves the folder as it was, a file of the
/// name included.
class CPendingFile final {
public:
    /// Throws CFailure when the folder takes no file, or the name belongs to something that is no plain file.
    explicit CPendingFile(const std::filesystem::path& target);
    ~CPendingFile();
    CPendingFile(const CPendingFile&) = delete;
    CPendingFile& operator=(const CPendingFile&) = delete;

    /// For binary output. A write that fails leaves it bad.
    std::ofstream& Stream() noexcept { return _stream; }

    /// Throws CFailure when a write has failed.
    void Check();

    /// Writes what is buffered, closes and renames. Throws CFailure when any of it, or a write before,
    /// failed.
    void Commit();

private:
    std::filesystem::path _target;    ///< links resolved: the file behind a link is replaced, not the link
    std::filesystem::path _temporary; ///< empty after Commit()
    std::ofstream _stream;
};

} // namespace KAV::Host
