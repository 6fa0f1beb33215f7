#pragma once

#include <cstdint>

namespace KAV::Platform {

/// Processor time that the calling thread has used, in nanoseconds; only differences mean something. Time in
/// which the thread waited for a processor is not in it.
std::int64_t ThreadTimeNs() noexcept;

/// The steps in which that time goes on: as fine as the processor's own clock, or ticks of the system's.
std::int64_t ThreadTimeStepNs() noexcept;

} // namespace KAV::Platform
