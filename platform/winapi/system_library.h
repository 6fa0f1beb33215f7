#pragma once

#include <windows.h>

/// Libraries of the system that are loaded when they are first needed. Only for Windows. Any thread; nothing
/// throws.
namespace KAV::Platform {

/// From the system's own folder: the host's current folder may contain anything under that name. Null if it
/// is missing.
HMODULE LoadSystemLibrary(const wchar_t* name) noexcept;

/// The function of that name; false, and null, if the library doesn't have it.
template<typename Function>
bool FindFunction(HMODULE library, const char* name, Function& function) noexcept {
    function = reinterpret_cast<Function>(reinterpret_cast<void*>(GetProcAddress(library, name)));
    return function != nullptr;
}

} // namespace KAV::Platform
