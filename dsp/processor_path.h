#pragma once

#include <cstdint>

namespace KAV::DSP {

/// Ways to arrange the same arithmetic for a processor. All produce the same bits.
enum class EProcessorPath : std::uint8_t {
    Plain,  ///< one sample at a time: any processor, and the reference for the others
    Narrow, ///< 128-bit registers: any x86-64
    Wide,   ///< 256-bit registers and fused multiply-add
};

/// The best path for these processor features (Utils::CpuFeature). 0 still means an x86-64 if the program was
/// built for one.
EProcessorPath PathFor(std::uint64_t features) noexcept;

} // namespace KAV::DSP
