#include "platform/directory.h"

#include "platform/winapi/wide_text.h"

#include <string_view>
#include <windows.h>

namespace KAV::Platform {

std::vector<SDirectoryEntry> ListDirectory(const std::filesystem::path& folder) {
    std::vector<SDirectoryEntry> entries;
    if (folder.empty()) return entries; // otherwise the pattern would list the working folder
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
