#include "platform/executable.h"

#include <string>
#include <windows.h>

namespace KAV::Platform {

std::filesystem::path ExecutableFile() {
    std::wstring name(MAX_PATH, L'\0');
    for (;;) {
        const DWORD length = GetModuleFileNameW(nullptr, name.data(), static_cast<DWORD>(name.size()));
        if (length < name.size()) {
            name.resize(length);
            return name;
        }
        name.resize(name.size() * 2); // the name was truncated
    }
}

} // namespace KAV::Platform
