#pragma once

#include <cstddef>

namespace KAV::Platform {

/// Whole pages of memory, all zero, that cost memory only once they are touched; null if the system is out
/// of memory. `bytes` above 0.
void* MapPages(std::size_t bytes) noexcept;
/// Frees what MapPages() returned for `bytes`.
void UnmapPages(void* pages, std::size_t bytes) noexcept;

} // namespace KAV::Platform
