#pragma once

#include "tools/kavhost/measure/loudness.h"

#include <cstdint>
#include <optional>
#include <span>
#include <utility>

namespace KAV::Host {

/// Levels of a file, over all channels.
struct SLevels {
    double samplePeakDbfs = 0;
    std::optional<double> truePeakDbtp; ///< if the build measures it
    std::optional<double> loudnessLufs; ///< if the build measures it; minus infinity for silence
    std::uint64_t notFinite = 0;        ///< samples that are not finite; the levels leave them out
};

class CLevelMeter final {
public:
    /// `onTenth` as CLoudness has it.
    CLevelMeter(int channels, int rateHz, CLoudness::TenthSink onTenth = {})
        : _loudness(channels, rateHz, std::move(onTenth)) {}

    void Add(std::span<const float> interleaved);
    SLevels Levels() const;

private:
    float _peak = 0;
    std::uint64_t _notFinite = 0;
    CLoudness _loudness;
};

} // namespace KAV::Host
