#pragma once

#include <cstdint>
#include <optional>
#include <span>

namespace KAV::Host {

class CEffect;

struct SDelay {
    std::int64_t frames = 0;
    bool isMeasured = false; ///< else it is the effect's word
};

/// The delay between a started effect's input and output. An effect may report another number than its delay,
/// so noise is sent through it and looked for in what comes out. Where it cannot be found, because the effect
/// makes sounds of its own, the reported number is given. The effect should have settled; its state is
/// changed.
SDelay MeasureDelay(CEffect& effect);

struct SMatch {
    std::int64_t lag = 0;
    double correlation = 0; ///< 0 to 1; 1 is the same signal but for its gain or sign
};

/// Where `signal` lies in `recording`: the lag of the highest normalised cross-correlation, either sign,
/// among those at which the whole signal lies inside. Nothing when one of the two is silent or the recording
/// is the shorter.
std::optional<SMatch> FindSignal(std::span<const float> signal, std::span<const float> recording);

} // namespace KAV::Host
