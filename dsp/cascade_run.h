#pragma once

#include "utils/realtime.h"

#include <cstddef>

// What the cascade passes to the code for one kind of processor. Plain records without operations, because
// sources with their own compiler flags include this; see lanes.h.

namespace KAV::DSP {

/// Coefficients of a low-pass in biquads with all zeros at -1: all numerators are 1, 2, 1, and the first one
/// is scaled.
struct SCascadeCoefficients {
    static constexpr std::size_t MaxStages = 16;

    double a1[MaxStages] = {}; ///< a0 = 1
    double a2[MaxStages] = {};
    double scale = 1.0; ///< of the first stage's numerator
};

/// One channel's filter state, for each stage.
struct SCascadeDelays {
    double w1[SCascadeCoefficients::MaxStages] = {};
    double w2[SCascadeCoefficients::MaxStages] = {};
};

/// One or two channels through a cascade, in place.
struct SCascadeRun {
    std::size_t channelCount = 0;
    std::size_t length = 0;
    float* channels[2] = {};
    SCascadeDelays* delays[2] = {};
    /// Added in each channel's first stage; its sign flips with each sample.
    double extra[2] = {};
};

// For two stages and for sixteen, in plain arithmetic or fused.
KAV_REALTIME void RunShortCascadeNarrow(
    const SCascadeRun& run, const SCascadeCoefficients& coefficients) noexcept;
KAV_REALTIME void RunLongCascadeNarrow(
    const SCascadeRun& run, const SCascadeCoefficients& coefficients) noexcept;
KAV_REALTIME void RunShortCascadeWide(
    const SCascadeRun& run, const SCascadeCoefficients& coefficients, bool fused) noexcept;
KAV_REALTIME void RunLongCascadeWide(
    const SCascadeRun& run, const SCascadeCoefficients& coefficients, bool fused) noexcept;

} // namespace KAV::DSP
