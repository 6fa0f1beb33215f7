#include "platform/folders.h"

#include <array>
#include <windows.h>

#include <shlobj.h>

namespace KAV::Platform {

namespace {

std::filesystem::path WithoutSlash(std::filesystem::path folder) {
    return folder.has_filename() ? folder : folder.parent_path();
}

} // namespace

std::filesystem::path DocumentsFolder() {
    std::array<wchar_t, MAX_PATH> path{};
    if (SHGetSpecialFolderPathW(nullptr, path.data(), CSIDL_PERSONAL, FALSE) == 0) return {};
    return WithoutSlash(path.data());
}

std::filesystem::path TemporaryFolder() {
    std::array<wchar_t, MAX_PATH + 1> path{};
    const DWORD length = GetTempPathW(static_cast<DWORD>(path.size()), path.data());
    if (length == 0 || length > path.size()) return {};
    return WithoutSlash(std::wstring(path.data(), length));
}

} // namespace KAV::Platform
