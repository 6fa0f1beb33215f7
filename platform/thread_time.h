#pragma once

#include <cstdint>

namespace KAV::Platform {

/// Processor time that the calling thread has used, in nanoseconds; only differences mean something. Time in
/// which the thread waited for a processor is not in it. Steps are fine on Linux; Windows counts in clock
/// ticks of up to 16 ms.
std::int64_t ThreadTimeNs() noexcept;

} // namespace KAV::Platform
