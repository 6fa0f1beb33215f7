#pragma once

#include "utils/realtime.h"

#include <span>

namespace KAV::DSP {

/// A gain with a dry/wet mix on one channel.
struct GainStage final {
    bool off = false;
    float mix = 1.0f;
    float gain = 1.0f; ///< linear

    /// y = mix x gain x x + (1 - mix) x x, in place. A mix of 1 uses the whole formula too: the second term
    /// turns an infinity into not-a-number and preserves the sign of a zero. Does nothing for a gain of
    /// exactly 1, a mix of exactly 0, or when off.
    KAV_REALTIME void Process(std::span<float> channel) const noexcept {
        if (off || mix == 0.0f || gain == 1.0f) return;
        const float wet = mix * gain;
        const float dry = 1.0f - mix;
        for (float& x : channel) x = wet * x + dry * x;
    }
};

} // namespace KAV::DSP
