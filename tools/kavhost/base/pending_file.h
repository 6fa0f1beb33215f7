#pragma once

#include <filesystem>
#include <fstream>
#include <memory>

namespace KAV::Platform {
class CTemporaryFile;
}

namespace KAV::Host {

/// What happens to an older file of the name.
enum class EExisting { Replaced, Kept };

/// A file that appears under its name only when it is complete. It is written under a name of its own in the
/// same folder and renamed at the end. If the object ends before that, the folder stays as it was, including
/// any older file of that name. A new file keeps the owner, the group and the permissions of the one that it
/// replaces.
class CPendingFile final {
public:
    /// "-" is standard output: it gets the file when it is complete. Throws CFailure if no file can be
    /// created in the folder, or if the name belongs to something else than a plain file, to one that is
    /// protected from being written, or to one whose owner can't be kept.
    explicit CPendingFile(const std::filesystem::path& target);
    ~CPendingFile();
    CPendingFile(const CPendingFile&) = delete;
    CPendingFile& operator=(const CPendingFile&) = delete;

    /// For binary output. A failed write leaves it bad.
    std::ofstream& Stream() noexcept { return _stream; }

    /// The name that it has until Commit().
    const std::filesystem::path& Temporary() const noexcept;

    /// Throws CFailure if a write has failed.
    void Check();

    /// Writes what is buffered, closes and renames. Throws CFailure if any of this or an earlier write
    /// failed, or if there is a file of that name which is to be kept; CInterruption if that ended a wait for
    /// the reader of standard output.
    void Commit(EExisting existing = EExisting::Replaced);

private:
    void Print();

    std::filesystem::path _target; ///< links resolved: the target of a link is replaced, not the link
    std::string _name;             ///< of the target, for messages
    std::unique_ptr<Platform::CTemporaryFile> _temporary; ///< null after Commit()
    std::ofstream _stream;                                ///< into the temporary file
};

/// Removes unfinished files that killed runs of kavhost have left beside `target`, and in the folder for
/// temporary files if it is standard output.
void RemoveAbandonedBeside(const std::filesystem::path& target);

} // namespace KAV::Host
