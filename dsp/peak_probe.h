#pragma once

#include "dsp/sample_scan.h"
#include "utils/realtime.h"

#include <span>

namespace KAV::DSP {

/// Holds the highest sample magnitude until it is taken.
struct PeakProbe final {
    bool off = false;
    float mix = 1.0f;
    float peak = 0.0f; ///< linear, since the last Take()

    KAV_REALTIME void Read(std::span<const float> channel) noexcept {
        if (!off) peak = PeakOf(channel, peak);
    }

    KAV_REALTIME float Take() noexcept {
        const float taken = peak;
        peak = 0.0f;
        return taken;
    }
};

} // namespace KAV::DSP
