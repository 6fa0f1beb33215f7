#pragma once

#include <cstddef>

namespace KAV::Tests {

/// Memory of this process that is in RAM now, in bytes.
std::size_t ResidentBytes();

} // namespace KAV::Tests
