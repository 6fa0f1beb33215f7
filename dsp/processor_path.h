#pragma once

#include <cstdint>

namespace KAV::DSP {

/// Ways to lay the same arithmetic out for a processor. They give the same bits.
enum class EProcessorPath : std::uint8_t {
    Plain,  ///< one sample after the other: any processor, and the check for the others
    Narrow, ///< 128-bit registers: any x86-64
    Wide,   ///< 256-bit registers and fused multiply-add
};

/// The best path for these processor features (Utils::CpuFeature). None of them still means an x86-64 where
/// the program was built for one.
EProcessorPath PathFor(std::uint64_t features) noexcept;

} // namespace KAV::DSP
