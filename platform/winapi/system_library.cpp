#include "platform/winapi/system_library.h"

#include <array>
#include <string>

namespace KAV::Platform {

HMODULE LoadSystemLibrary(const wchar_t* name) noexcept {
    try {
        std::array<wchar_t, MAX_PATH> folder{};
        const UINT length = GetSystemDirectoryW(folder.data(), static_cast<UINT>(folder.size()));
        if (length == 0 || length >= folder.size()) return nullptr;
        const auto path = std::wstring(folder.data(), length) + L"\\" + name;
        return LoadLibraryExW(path.c_str(), nullptr, LOAD_WITH_ALTERED_SEARCH_PATH);
    } catch (...) { // no memory
        return nullptr;
    }
}

} // namespace KAV::Platform
