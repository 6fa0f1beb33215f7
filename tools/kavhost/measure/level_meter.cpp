#include "tools/kavhost/measure/level_meter.h"

#include "tools/kavhost/base/text.h"

#include <algorithm>
#include <bit>
#include <cmath>
#include <vector>

namespace KAV::Host {

std::uint64_t CountNotFinite(std::span<const float> samples) noexcept {
    constexpr std::uint32_t exponent = 0x7F800000; // all of its bits are set for these alone
    std::uint64_t count = 0;
    for (const float sample : samples) {
        if ((std::bit_cast<std::uint32_t>(sample) & exponent) == exponent) ++count;
    }
    return count;
}

void CLevelMeter::Add(std::span<const float> interleaved) {
    const auto notFinite = CountNotFinite(interleaved);
    if (notFinite == 0) return AddFinite(interleaved);
    _notFinite += notFinite;
    std::vector<float> finite(
        interleaved.begin(), interleaved.end()); // or one would spoil the filters for good
    std::ranges::replace_if(
        finite, [](float sample) { return !std::isfinite(sample); }, 0.0f);
    AddFinite(finite);
}

void CLevelMeter::AddFinite(std::span<const float> interleaved) {
    _truePeak.Add(interleaved);
    _loudness.Add(interleaved);
}

SLevels CLevelMeter::Levels() const {
    return {.samplePeakDbfs = Decibels(_truePeak.SamplePeak()),
        .truePeakDbtp = Decibels(_truePeak.Peak()),
        .loudnessLufs = _loudness.IntegratedLufs(),
        .notFinite = _notFinite,
        .loudnessRangeLu = _loudness.RangeLu(),
        .highestMomentaryLufs = _loudness.HighestMomentaryLufs(),
        .highestShortTermLufs = _loudness.HighestShortTermLufs()};
}

} // namespace KAV::Host
