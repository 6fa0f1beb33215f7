#pragma once

#include <dlfcn.h>

namespace KAV::Platform {

/// Finds a function by its name in a library that dlopen() has loaded. False, with `function` null, if
/// there is no such function.
template<typename Function>
bool FindSymbol(void* library, const char* name, Function& function) noexcept {
    function = reinterpret_cast<Function>(dlsym(library, name));
    return function != nullptr;
}

} // namespace KAV::Platform
