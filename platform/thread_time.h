#pragma once

#include <cstdint>

namespace KAV::Platform {

/// Processor time that the calling thread has used, in nanoseconds; only differences mean something. The time
/// for which the thread waited for a processor is not included.
std::int64_t ThreadTimeNs() noexcept;

/// The resolution of that time: as fine as the processor's own clock, or ticks of the system's.
std::int64_t ThreadTimeStepNs() noexcept;

} // namespace KAV::Platform
