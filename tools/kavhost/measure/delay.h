#pragma once

#include <cstdint>
#include <optional>
#include <span>

namespace KAV::Host {

class CEffect;

struct SDelay {
    std::int64_t frames = 0;
    bool isMeasured = false; ///< otherwise reported by the effect
};

/// The delay between a started effect's input and output. An effect may report a wrong number, so noise is
/// sent through it and searched for in the output. If it cannot be found, because the effect makes sounds of
/// its own, the reported number is returned. The effect should have settled; its state is changed.
SDelay MeasureDelay(CEffect& effect);

struct SMatch {
    std::int64_t lag = 0;
    double correlation = 0; ///< 0 to 1; 1 is the same signal except for gain or sign
};

/// Where `signal` is in `recording`: the lag of the highest normalised cross-correlation, of either sign,
/// among those at which the whole signal is inside. Nothing if one of the two is silent or the recording is
/// shorter.
std::optional<SMatch> FindSignal(std::span<const float> signal, std::span<const float> recording);

} // namespace KAV::Host
