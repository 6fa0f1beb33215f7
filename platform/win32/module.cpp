#include "platform/module.h"

#include <windows.h>

namespace KAV::Platform {

void* ThisModule() noexcept {
    static const char anchor = 0; // any address of ours will do
    HMODULE module = nullptr;
    GetModuleHandleExW(GET_MODULE_HANDLE_EX_FLAG_FROM_ADDRESS | GET_MODULE_HANDLE_EX_FLAG_UNCHANGED_REFCOUNT,
        reinterpret_cast<LPCWSTR>(&anchor), &module);
    return module;
}

} // namespace KAV::Platform
