#include "platform/temporary_file.h"

#include <array>
#include <charconv>
#include <random>
#include <string>
#include <string_view>
#include <windows.h>

namespace KAV::Platform {

namespace {

constexpr std::string_view Prefix = ".kavhost-";
constexpr std::string_view Suffix = ".tmp";
constexpr std::size_t NumberLength = 16;
constexpr DWORD AnySharing = FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE;

std::error_code LastError() noexcept {
    return {static_cast<int>(GetLastError()), std::system_category()};
}

std::string RandomName(std::random_device& random) {
    std::array<char, NumberLength> digits{};
    const std::uint64_t number =
        std::uint64_t{random()} << 32 | random() | std::uint64_t{1} << 63; // all digits
    const auto end = std::to_chars(digits.data(), digits.data() + digits.size(), number, 16).ptr;
    return std::string(Prefix) + std::string(digits.data(), end) + std::string(Suffix);
}

bool IsOurs(std::string_view name) noexcept {
    return name.size() == Prefix.size() + NumberLength + Suffix.size() && name.starts_with(Prefix) &&
           name.ends_with(Suffix) &&
           name.substr(Prefix.size(), NumberLength).find_first_not_of("0123456789abcdef") ==
               std::string_view::npos;
}

HANDLE Native(std::intptr_t file) noexcept {
    return reinterpret_cast<HANDLE>(file);
}

} // namespace

std::unique_ptr<CTemporaryFile> CTemporaryFile::Create(
    const std::filesystem::path& folder, bool, std::error_code& error) {
    std::random_device random;
    for (;;) {
        auto name = folder / RandomName(random);
        const HANDLE file = CreateFileW(
            name.c_str(), GENERIC_READ, AnySharing, nullptr, CREATE_NEW, FILE_ATTRIBUTE_NORMAL, nullptr);
        if (file != INVALID_HANDLE_VALUE) {
            return std::unique_ptr<CTemporaryFile>(
                new CTemporaryFile(std::move(name), reinterpret_cast<std::intptr_t>(file)));
        }
        if (GetLastError() == ERROR_FILE_EXISTS) continue;
        error = LastError();
        return nullptr;
    }
}

CTemporaryFile::~CTemporaryFile() {
    Unlock();
    if (!_name.empty()) DeleteFileW(_name.c_str());
}

bool CTemporaryFile::TakeOwnerAndMode(const std::filesystem::path&) const noexcept {
    return true;
}

std::error_code CTemporaryFile::MoveTo(const std::filesystem::path& target, bool replaces) noexcept {
    Unlock(); // an open file can't take the place of another one
    // Owner and permissions of the old file stay only with this call, which in turn needs an old file.
    const bool isReplaced =
        replaces && ReplaceFileW(target.c_str(), _name.c_str(), nullptr, 0, nullptr, nullptr) != 0;
    if (!isReplaced &&
        MoveFileExW(_name.c_str(), target.c_str(), replaces ? MOVEFILE_REPLACE_EXISTING : 0u) == 0) {
        return LastError();
    }
    _name.clear();
    return {};
}

void CTemporaryFile::Unlock() noexcept {
    if (Native(_lock) != INVALID_HANDLE_VALUE) CloseHandle(Native(_lock));
    _lock = reinterpret_cast<std::intptr_t>(INVALID_HANDLE_VALUE);
}

void RemoveAbandonedFiles(const std::filesystem::path& folder) noexcept {
    try {
        std::error_code error;
        for (const auto& entry : std::filesystem::directory_iterator(
                 folder.empty() ? std::filesystem::path(".") : folder, error)) {
            const auto name = entry.path().filename().u8string();
            if (!IsOurs(std::string(name.begin(), name.end()))) continue;
            // Alone: fails while another handle is open.
            const HANDLE file = CreateFileW(entry.path().c_str(), GENERIC_READ | DELETE, 0, nullptr,
                OPEN_EXISTING, FILE_FLAG_DELETE_ON_CLOSE, nullptr);
            if (file != INVALID_HANDLE_VALUE) CloseHandle(file);
        }
    } catch (...) { // no memory for a name, or the folder went away
        return;
    }
}

bool IsWriteProtected(const std::filesystem::path& file) noexcept {
    const DWORD attributes = GetFileAttributesW(file.c_str());
    return attributes != INVALID_FILE_ATTRIBUTES && (attributes & FILE_ATTRIBUTE_READONLY) != 0;
}

} // namespace KAV::Platform
