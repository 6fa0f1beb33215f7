#include "tools/kavhost/base/pending_file.h"

#include "platform/interrupt.h"
#include "platform/standard_streams.h"
#include "platform/temporary_file.h"
#include "tools/kavhost/base/errors.h"
#include "tools/kavhost/base/scratch_folder.h"
#include "tools/kavhost/base/text.h"

#include <cerrno>
#include <string>
#include <system_error>
#include <vector>

namespace KAV::Host {

namespace {

namespace fs = std::filesystem;

bool IsStandardOutput(const fs::path& target) {
    return target == "-";
}

fs::path Resolved(const fs::path& target) {
    std::error_code error;
    const auto status = fs::status(target, error);
    if (fs::exists(status) && !fs::is_regular_file(status))
        throw CFailure(Utf8(target) + ": not a plain file");
    if (fs::exists(status) && fs::is_symlink(target, error)) return fs::canonical(target);
    return target;
}

/// The reason of the last call that failed, for the line that the user sees.
std::string LastReason() {
    const int number = errno;
    return number != 0 ? ": " + std::generic_category().message(number) : std::string{};
}

} // namespace

CPendingFile::CPendingFile(const fs::path& target)
    : _target(IsStandardOutput(target) ? target : Resolved(target)),
      _name(IsStandardOutput(target) ? "standard output" : Utf8(target)) {
    std::error_code error;
    const bool replaces = !IsStandardOutput(target) && fs::exists(_target, error);
    if (replaces && Platform::IsWriteProtected(_target)) throw CFailure(_name + ": is write-protected");
    const auto folder = IsStandardOutput(target) ? ScratchFolder() : _target.parent_path();
    _temporary = Platform::CTemporaryFile::Create(folder, replaces || IsStandardOutput(target), error);
    if (_temporary == nullptr) throw CFailure(_name + ": cannot be written: " + error.message());
    if (replaces && !_temporary->TakeOwnerAndMode(_target))
        throw CFailure(_name + ": cannot be replaced: it would not keep its owner, group and permissions");
    errno = 0;
    // For reading, too: formats complete their headers at the end.
    _stream.open(_temporary->Name(), std::ios::binary | std::ios::in | std::ios::out | std::ios::trunc);
    if (!_stream) {
        const auto reason = LastReason();
        throw CFailure(_name + ": cannot be written" + reason);
    }
    errno = 0;
}

CPendingFile::~CPendingFile() {
    _stream.close(); // or Windows would keep the file
}

const fs::path& CPendingFile::Temporary() const noexcept {
    return _temporary->Name();
}

void CPendingFile::Check() {
    if (_stream.good()) return;
    const auto reason = LastReason();
    throw CFailure(_name + ": cannot be written" + reason);
}

void CPendingFile::Commit(EExisting existing) {
    Check();
    errno = 0;
    _stream.close();
    Check();
    if (IsStandardOutput(_target)) {
        Print();
    } else if (const auto error = _temporary->MoveTo(_target, existing == EExisting::Replaced)) {
        throw CFailure(_name + ": cannot be written: " + error.message());
    }
    _temporary.reset();
}

void CPendingFile::Print() {
    std::ifstream complete(_temporary->Name(), std::ios::binary);
    std::vector<char> piece(std::size_t{1} << 20);
    for (;;) {
        complete.read(piece.data(), static_cast<std::streamsize>(piece.size()));
        const auto bytes = std::span(piece).first(static_cast<std::size_t>(complete.gcount()));
        if (bytes.empty() && complete.eof()) return;
        if (bytes.empty()) throw CFailure(_name + ": its temporary file cannot be read");
        if (Platform::WriteStandard(Platform::EStandardStream::Output, bytes) == bytes.size()) continue;
        const auto reason = LastReason();
        if (Platform::Interrupted()) throw CInterruption();
        throw CFailure(_name + " cannot be written" + reason);
    }
}

void RemoveAbandonedBeside(const fs::path& target) {
    if (target.empty()) return;
    try {
        Platform::RemoveAbandonedFiles(
            IsStandardOutput(target) ? ScratchFolder() : Resolved(target).parent_path());
    } catch (const CFailure&) { // what is wrong with the name is said when it is used
        return;
    }
}

} // namespace KAV::Host
