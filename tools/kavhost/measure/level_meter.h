#pragma once

#include "tools/kavhost/measure/loudness.h"
#include "tools/kavhost/measure/true_peak.h"

#include <cstdint>
#include <optional>
#include <span>
#include <utility>

namespace KAV::Host {

/// Levels of a file, over all channels. What this build does not measure is missing.
struct SLevels {
    double samplePeakDbfs = 0;
    std::optional<double> truePeakDbtp{};
    std::optional<double> loudnessLufs{};         ///< integrated; minus infinity for silence
    std::uint64_t notFinite = 0;                  ///< samples that are not finite; the levels leave them out
    std::optional<double> loudnessRangeLu{};      ///< as CLoudness has them
    std::optional<double> highestMomentaryLufs{}; ///< of 0.4 s
    std::optional<double> highestShortTermLufs{}; ///< of 3 s
};

class CLevelMeter final {
public:
    /// `weights`, one for each channel, and `onTenth` as CLoudness has them.
    CLevelMeter(std::span<const double> weights, int rateHz, CLoudness::TenthSink onTenth = {})
        : _truePeak(static_cast<int>(weights.size()), rateHz),
          _loudness(weights, rateHz, std::move(onTenth)) {}

    void Add(std::span<const float> interleaved);
    SLevels Levels() const;

    const CLoudness& Loudness() const noexcept { return _loudness; } ///< to measure several as one

private:
    void AddFinite(std::span<const float> interleaved);

    std::uint64_t _notFinite = 0;
    CTruePeak _truePeak;
    CLoudness _loudness;
};

/// Samples that are infinite or not a number.
std::uint64_t CountNotFinite(std::span<const float> samples) noexcept;

} // namespace KAV::Host
