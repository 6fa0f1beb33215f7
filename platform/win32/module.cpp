#include "platform/module.h"

#include <array>
#include <cstdlib>
#include <windows.h>

namespace KAV::Platform {

void* ThisModule() noexcept {
    static const char anchor = 0; // any address in this module will do
    HMODULE module = nullptr;
    GetModuleHandleExW(GET_MODULE_HANDLE_EX_FLAG_FROM_ADDRESS | GET_MODULE_HANDLE_EX_FLAG_UNCHANGED_REFCOUNT,
        reinterpret_cast<LPCWSTR>(&anchor), &module);
    return module;
}

std::filesystem::path ModuleFile() {
    std::array<wchar_t, MAX_PATH + 1> path{};
    const DWORD length =
        GetModuleFileNameW(static_cast<HMODULE>(ThisModule()), path.data(), static_cast<DWORD>(path.size()));
    if (length == 0 || length >= path.size()) return {}; // a truncated path names something else
    return std::wstring(path.data(), length);
}

void AtUnload(void (*function)()) noexcept {
    std::atexit(function); // a library has its own list, which runs when it is unloaded
}

} // namespace KAV::Platform
