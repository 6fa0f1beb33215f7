#include "platform/pages.h"

#include <windows.h>

namespace KAV::Platform {

void* MapPages(std::size_t bytes) noexcept {
    return VirtualAlloc(nullptr, bytes, MEM_RESERVE | MEM_COMMIT, PAGE_READWRITE);
}

void UnmapPages(void* pages, std::size_t) noexcept {
    VirtualFree(pages, 0, MEM_RELEASE);
}

} // namespace KAV::Platform
