#include "platform/directory.h"

#include <string_view>
#include <windows.h>

namespace KAV::Platform {

namespace {

/// Empty for a name that isn't well-formed.
std::string ToUtf8(std::wstring_view name) {
    const auto length = static_cast<int>(name.size());
    const int bytes =
        WideCharToMultiByte(CP_UTF8, WC_ERR_INVALID_CHARS, name.data(), length, nullptr, 0, nullptr, nullptr);
    std::string text(static_cast<std::size_t>(bytes), '\0');
    WideCharToMultiByte(
        CP_UTF8, WC_ERR_INVALID_CHARS, name.data(), length, text.data(), bytes, nullptr, nullptr);
    return text;
}

} // namespace

std::vector<SDirectoryEntry> ListDirectory(const std::filesystem::path& folder) {
    std::vector<SDirectoryEntry> entries;
    if (folder.empty()) return entries; // else the pattern alone would mean the working folder
    WIN32_FIND_DATAW found{};
    const HANDLE search = FindFirstFileW((folder / L"*.*").c_str(), &found);
    if (search == INVALID_HANDLE_VALUE) return entries;
    try {
        do {
            const std::wstring_view name = found.cFileName;
            if (name == L"." || name == L"..") continue;
            auto text = ToUtf8(name);
            const bool isFolder = (found.dwFileAttributes & FILE_ATTRIBUTE_DIRECTORY) != 0;
            if (!text.empty()) entries.push_back({std::move(text), isFolder});
        } while (FindNextFileW(search, &found) != 0);
    } catch (...) {
        FindClose(search);
        throw;
    }
    FindClose(search);
    return entries;
}

} // namespace KAV::Platform
