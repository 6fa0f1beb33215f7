#pragma once

#include <cstdint>

/// Time for waits between events. Any thread.
namespace KAV::Utils {

/// Milliseconds since some moment, modulo 2^32: only differences mean something.
std::uint32_t TickMs() noexcept;

/// Lets that much time pass.
void WaitMs(std::uint32_t ms);

/// For tests: the clock of the whole process from now on, and what lets its time pass; null means the
/// system's.
void UseClock(std::uint32_t (*clock)() noexcept, void (*wait)(std::uint32_t ms) noexcept = nullptr) noexcept;

} // namespace KAV::Utils
