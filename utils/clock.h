#pragma once

#include <cstdint>

/// Time for waits between events. Any thread.
namespace KAV::Utils {

/// Milliseconds since some moment, modulo 2^32: only differences mean something.
std::uint32_t TickMs() noexcept;

/// For tests: the clock of the whole process from now on; null means the system's.
void UseClock(std::uint32_t (*clock)() noexcept) noexcept;

} // namespace KAV::Utils
