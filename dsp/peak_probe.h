#pragma once

#include "utils/realtime.h"

#include <cmath>
#include <span>

namespace KAV::DSP {

/// Holds the highest sample magnitude until somebody takes it.
struct PeakProbe final {
    bool off = false;
    float mix = 1.0f;
    float peak = 0.0f; ///< linear, since the last Take()

    KAV_REALTIME void Read(std::span<const float> channel) noexcept {
        if (off) return;
        for (const float x : channel) {
            const float magnitude = std::fabs(x);
            if (magnitude > peak) peak = magnitude; // not-a-number compares false and so is no peak
        }
    }

    KAV_REALTIME float Take() noexcept {
        const float taken = peak;
        peak = 0.0f;
        return taken;
    }
};

} // namespace KAV::DSP
