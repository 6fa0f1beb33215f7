#include "platform/library.h"

#include <dlfcn.h>

namespace KAV::Platform {

std::string_view LibrarySuffix() noexcept {
    return ".so";
}

void* OpenLibrary(const std::filesystem::path& file, std::string& reason) {
    // Symbols are resolved now, so that a missing one is an error here and not a crash in the first call.
    void* const library = dlopen(file.c_str(), RTLD_NOW | RTLD_LOCAL);
    if (library == nullptr) {
        const char* const error = dlerror();
        reason = error != nullptr ? error : "unknown error";
    }
    return library;
}

void* FindSymbol(void* library, const char* name) noexcept {
    return dlsym(library, name);
}

void CloseLibrary(void* library) noexcept {
    dlclose(library);
}

} // namespace KAV::Platform
