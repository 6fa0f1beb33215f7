#pragma once

#include <cstddef>
#include <optional>

namespace KAV::Tests {

/// Memory of this process that is in RAM now, in bytes.
std::size_t ResidentBytes();

/// Memory that this process has asked for, touched or not, in bytes: what it takes where a host locks it.
std::size_t ReservedBytes();

/// How often this thread has had to wait for the system to find memory for a page; none where the system
/// doesn't say.
std::optional<std::size_t> PageFaultsOfThisThread();

} // namespace KAV::Tests
