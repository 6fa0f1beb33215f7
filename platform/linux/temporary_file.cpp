#include "platform/temporary_file.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <charconv>
#include <cstdio>
#include <ctime>
#include <dirent.h>
#include <fcntl.h>
#include <fstream>
#include <random>
#include <string>
#include <string_view>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

namespace KAV::Platform {

namespace {

constexpr std::string_view Prefix = ".kavhost-";
constexpr std::string_view Suffix = ".tmp";
constexpr std::size_t MarkLength = 8; // between prefix and suffix: this, a dash, and a random number
constexpr std::size_t NameLength = Prefix.size() + MarkLength + 1 + 8 + Suffix.size();
constexpr std::time_t OldSeconds = 24 * 60 * 60;

std::string Hexadecimal(std::uint32_t number) {
    std::array<char, 8> digits{};
    const auto end = std::to_chars(digits.data(), digits.data() + digits.size(), number, 16).ptr;
    const std::string_view text(digits.data(), static_cast<std::size_t>(end - digits.data()));
    return std::string(digits.size() - text.size(), '0').append(text);
}

/// The system that runs since it was started; containers share it, as they share locks. Locks of network
/// volumes may be known to one system alone.
std::string SystemMark() {
    std::ifstream file("/proc/sys/kernel/random/boot_id");
    std::string id;
    std::getline(file, id);
    std::uint32_t hash = 2166136261u; // FNV-1a
    for (const char letter : id) hash = (hash ^ static_cast<unsigned char>(letter)) * 16777619u;
    return Hexadecimal(hash);
}

std::error_code LastError() noexcept {
    return {errno, std::generic_category()};
}

bool IsOurs(std::string_view name) noexcept {
    if (name.size() != NameLength || !name.starts_with(Prefix) || !name.ends_with(Suffix)) return false;
    const auto numbers = name.substr(Prefix.size(), NameLength - Prefix.size() - Suffix.size());
    return numbers.find_first_not_of("0123456789abcdef-") == std::string_view::npos &&
           numbers[MarkLength] == '-';
}

bool IsSame(const struct stat& a, const struct stat& b) noexcept {
    return a.st_dev == b.st_dev && a.st_ino == b.st_ino;
}

/// A file of another system, whose locks may not be known here, counts as abandoned when it is old.
bool IsForeign(std::string_view name, const std::string& mark) noexcept {
    return name.substr(Prefix.size(), MarkLength) != mark;
}

void RemoveIfAbandoned(int folder, const char* name, const std::string& mark) noexcept {
    const int file = openat(folder, name, O_RDWR | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC | O_NOCTTY);
    if (file < 0) return;
    struct stat opened {
    }, named{};
    if (fstat(file, &opened) == 0 && S_ISREG(opened.st_mode) &&
        (!IsForeign(name, mark) || std::time(nullptr) - opened.st_mtime > OldSeconds) &&
        flock(file, LOCK_EX | LOCK_NB) == 0 && fstatat(folder, name, &named, AT_SYMLINK_NOFOLLOW) == 0 &&
        IsSame(opened, named)) {
        unlinkat(folder, name, 0);
    }
    close(file);
}

/// Renames unless the name is taken.
bool Rename(const char* from, const char* to) noexcept {
    if (renameat2(AT_FDCWD, from, AT_FDCWD, to, RENAME_NOREPLACE) == 0) return true;
    if (errno != EINVAL && errno != ENOSYS) return false; // this volume can't do that in one step
    return link(from, to) == 0 && unlink(from) == 0;
}

} // namespace

std::unique_ptr<CTemporaryFile> CTemporaryFile::Create(
    const std::filesystem::path& folder, bool isPrivate, std::error_code& error) {
    std::random_device random;
    const auto begin = std::string(Prefix) + SystemMark() + "-";
    for (;;) {
        auto name = folder / (begin + Hexadecimal(random()) + std::string(Suffix));
        const int file =
            open(name.c_str(), O_RDWR | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC, isPrivate ? 0600 : 0666);
        if (file < 0 && errno == EEXIST) continue;
        if (file < 0) {
            error = LastError();
            return nullptr;
        }
        // Another process may hold the lock for a moment: it believes that the file was abandoned, and
        // removes it. A volume without locks leaves the file unlocked; then no process removes it.
        struct stat status {};
        if ((flock(file, LOCK_EX | LOCK_NB) != 0 && errno == EWOULDBLOCK) || fstat(file, &status) != 0 ||
            status.st_nlink == 0) {
            close(file);
            continue;
        }
        return std::unique_ptr<CTemporaryFile>(new CTemporaryFile(std::move(name), file));
    }
}

CTemporaryFile::~CTemporaryFile() {
    if (!_name.empty()) unlink(_name.c_str());
    Unlock();
}

bool CTemporaryFile::TakeOwnerAndMode(const std::filesystem::path& other) const noexcept {
    const int file = static_cast<int>(_lock);
    struct stat from {
    }, own{};
    if (stat(other.c_str(), &from) != 0 || fstat(file, &own) != 0) return false;
    const bool isSameOwner = from.st_uid == own.st_uid && from.st_gid == own.st_gid;
    if (!isSameOwner && fchown(file, from.st_uid, from.st_gid) != 0) return false;
    return fchmod(file, from.st_mode & 07777u) == 0; // last, as a change of the owner may clear bits
}

std::error_code CTemporaryFile::MoveTo(const std::filesystem::path& target, bool replaces) noexcept {
    const bool isMoved =
        replaces ? rename(_name.c_str(), target.c_str()) == 0 : Rename(_name.c_str(), target.c_str());
    if (!isMoved) return LastError();
    _name.clear();
    Unlock();
    return {};
}

void CTemporaryFile::Unlock() noexcept {
    if (_lock >= 0) close(static_cast<int>(_lock));
    _lock = -1;
}

void RemoveAbandonedFiles(const std::filesystem::path& folder) noexcept {
    try {
        DIR* const names = opendir(folder.empty() ? "." : folder.c_str());
        if (names == nullptr) return;
        const auto mark = SystemMark();
        while (const auto* const entry = readdir(names)) {
            if (IsOurs(entry->d_name)) RemoveIfAbandoned(dirfd(names), entry->d_name, mark);
        }
        closedir(names);
    } catch (...) { // no memory for a text: the next run removes them
        return;
    }
}

bool IsWriteProtected(const std::filesystem::path& file) noexcept {
    struct stat status {};
    if (stat(file.c_str(), &status) != 0) return false;
    constexpr unsigned writable = S_IWUSR | S_IWGRP | S_IWOTH;
    return (status.st_mode & writable) == 0 || faccessat(AT_FDCWD, file.c_str(), W_OK, AT_EACCESS) != 0;
}

} // namespace KAV::Platform
