#pragma once

#include <cstddef>

namespace KAV::Platform {

/// Whole pages of memory, all zero, that cost memory only once they are touched; null when the system has no
/// room. `bytes` above 0.
void* MapPages(std::size_t bytes) noexcept;
/// Gives back what MapPages() gave for `bytes`.
void UnmapPages(void* pages, std::size_t bytes) noexcept;

} // namespace KAV::Platform
