#pragma once

#include <cstdint>

namespace KAV::Utils {

/// Bits of the processor's features word.
enum CpuFeature : std::uint64_t {
    CpuAvx = std::uint64_t{1} << 6,
    CpuFma = std::uint64_t{1} << 19,
    CpuSse2 = std::uint64_t{1} << 42,
};

/// The features that both the processor and the system offer; 0 on processors other than x86. Detected at the
/// first call and kept for the life of the process, so that later calls cost a load. Any thread.
std::uint64_t DetectFeatures() noexcept;

} // namespace KAV::Utils
