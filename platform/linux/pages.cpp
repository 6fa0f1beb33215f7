#include "platform/pages.h"

#include <sys/mman.h>

namespace KAV::Platform {

void* MapPages(std::size_t bytes) noexcept {
    void* const pages = mmap(nullptr, bytes, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
    return pages == MAP_FAILED ? nullptr : pages;
}

void UnmapPages(void* pages, std::size_t bytes) noexcept {
    munmap(pages, bytes);
}

} // namespace KAV::Platform
