#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <vector>

namespace KAV::Host {

class CEffect;

struct SDelay {
    std::int64_t frames = 0;
    double exactFrames = 0;  ///< with the fraction, which alignment cannot remove
    bool isMeasured = false; ///< otherwise reported by the effect
};

/// The delay between a started effect's input and output: that of the sound between 50 Hz and a sixth of the
/// rate. Filters may delay what lies above by more, and an impulse has most of its power there. An effect may
/// report a wrong number, so noise is sent through it and searched for in the output. If it cannot be found,
/// because the effect makes sounds of its own, the reported number is returned. The effect should have
/// settled; its state is changed.
SDelay MeasureDelay(CEffect& effect);

/// The noise for it: 32768 frames of that band, the same in each call, with its highest sample at `peak`.
std::vector<float> DelayNoise(double rateHz, double peak);

struct SMatch {
    std::int64_t lag = 0;
    double exactLag = 0;    ///< the top of the curve through the correlations, within half a sample
    double correlation = 0; ///< 0 to 1; 1 is the same signal except for gain or sign
};

/// Where `signal` is in `recording`: the lag of the highest normalised cross-correlation, of either sign,
/// among those at which the whole signal is inside. Nothing if one of the two is silent or the recording is
/// shorter.
std::optional<SMatch> FindSignal(std::span<const float> signal, std::span<const float> recording);

} // namespace KAV::Host
