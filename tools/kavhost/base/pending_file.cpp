#include "tools/kavhost/base/pending_file.h"

#include "tools/kavhost/base/errors.h"
#include "tools/kavhost/base/text.h"

#include <array>
#include <cerrno>
#include <charconv>
#include <random>
#include <string>
#include <system_error>

namespace KAV::Host {

namespace {

namespace fs = std::filesystem;

fs::path Resolved(const fs::path& target) {
    std::error_code error;
    const auto status = fs::status(target, error);
    if (fs::exists(status) && !fs::is_regular_file(status))
        throw CFailure(Utf8(target) + ": not a plain file");
    if (fs::exists(status) && fs::is_symlink(target, error)) return fs::canonical(target);
    return target;
}

fs::path UnusedNameBeside(const fs::path& target) {
    std::random_device random;
    for (;;) {
        std::array<char, 16> digits{};
        const auto end = std::to_chars(digits.data(), digits.data() + digits.size(), random(), 16).ptr;
        std::string hidden(".");
        hidden.append(Utf8(target.filename())).append(".").append(digits.data(), end);
        auto name = target.parent_path() / PathOf(hidden);
        if (!fs::exists(name)) return name;
    }
}

/// The reason of the last call that failed, for the line that the user sees.
std::string LastReason() {
    const int number = errno;
    return number != 0 ? ": " + std::generic_category().message(number) : std::string{};
}

} // namespace

CPendingFile::CPendingFile(const fs::path& target) : _target(Resolved(target)) {
    _temporary = UnusedNameBeside(_target);
    errno = 0;
    _stream.open(_temporary, std::ios::binary | std::ios::out | std::ios::trunc);
    if (!_stream) {
        const auto reason = LastReason();
        throw CFailure(Utf8(target) + ": cannot be written" + reason);
    }
    errno = 0;
}

CPendingFile::~CPendingFile() {
    if (_temporary.empty()) return;
    _stream.close(); // or Windows would keep the file
    std::error_code ignored;
    fs::remove(_temporary, ignored);
}

void CPendingFile::Check() {
    if (_stream.good()) return;
    const auto reason = LastReason();
    throw CFailure(Utf8(_target) + ": cannot be written" + reason);
}

void CPendingFile::Commit() {
    Check();
    errno = 0;
    _stream.close();
    Check();
    std::error_code error;
    fs::rename(_temporary, _target, error);
    if (error) throw CFailure(Utf8(_target) + ": cannot be written: " + error.message());
    _temporary.clear();
}

} // namespace KAV::Host
