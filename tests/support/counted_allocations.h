#pragma once

#include <cstddef>

namespace KAV::Tests {

/// How often this program has called operator new so far. Link counted_allocations.cpp for it.
std::size_t Allocations() noexcept;

} // namespace KAV::Tests
