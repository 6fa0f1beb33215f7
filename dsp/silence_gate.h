#pragma once

#include "utils/realtime.h"

#include <cmath>
#include <cstdint>
#include <span>

namespace KAV::DSP {

/// Tells whether a channel has been silent for a given number of samples.
struct SilenceGate final {
    static constexpr float Threshold = 2e-8f; ///< linear; below this a sample counts as silent

    bool off = false;
    float mix = 1.0f;
    std::int64_t limit = 0; ///< samples
    std::int64_t count = 0; ///< silent samples so far
    bool silent = false;

    /// Reads one block; `silent` tells afterwards. The sample behind the limit closes the gate, and the first
    /// sample at or above the threshold opens it, within this very block.
    KAV_REALTIME void Read(std::span<const float> channel) noexcept {
        if (off) return;
        for (const float x : channel) {
            if (std::fabs(x) < Threshold) {
                if (!silent) silent = count++ == limit;
            } else { // not-a-number comes here: it is no silence
                count = 0;
                silent = false;
            }
        }
    }
};

} // namespace KAV::DSP
