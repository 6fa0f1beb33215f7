#include "platform/resource.h"

#include "platform/module.h"
#include "platform/winapi/wide_text.h"

#include <windows.h>

#include <string>

namespace KAV::Platform {

std::span<const std::uint8_t> Resource(std::string_view name) noexcept {
    try {
        const auto module = static_cast<HMODULE>(ThisModule());
        const HRSRC found = FindResourceW(module, ToWide(std::string(name)).c_str(), L"IMG");
        const HGLOBAL loaded = found == nullptr ? nullptr : LoadResource(module, found);
        const auto* const bytes = loaded == nullptr ? nullptr : LockResource(loaded);
        if (bytes == nullptr) return {};
        return {static_cast<const std::uint8_t*>(bytes), SizeofResource(module, found)};
    } catch (...) { // no memory for the name
        return {};
    }
}

// The system drops such pages by itself: they are the file's.
void RestResource(std::span<const std::uint8_t>) noexcept {}
void RestResources() noexcept {}

} // namespace KAV::Platform
