#pragma once

#include "dsp/plugin_dsp.h"

#include <cstddef>
#include <vector>

namespace KAV::Measure {

/// Channels of equal length; full scale is 1.
using Audio = std::vector<std::vector<float>>;

struct SSettings {
    float rateHz = 48000.0f;
    float thresholdDb = 0.0f; ///< -30..0
    float ceilingDb = 0.0f;   ///< -30..0
    double releaseMs = 10.0;  ///< 0.01..1000
    bool autoRelease = false;
    int factor = 1; ///< 1, 2, 4 or 8
    bool highQuality = false;
};

/// The engine with one group and both its gains at 0 dB, after its ramps have ended.
class CRig final {
public:
    CRig(const SSettings& settings, std::size_t channels);

    /// Processes in place, in blocks of 512.
    void Run(Audio& audio);
    /// The delay of the look-ahead in samples at the rate of the audio. Oversampling filters add their own.
    double LookaheadDelay() const noexcept;

private:
    using Engine = CPluginDSP<float, float, DSP::CPluginMC<float, float>>;

    Engine _engine;
    int _factor;
};

} // namespace KAV::Measure
