#include "tools/kavhost/measure/level_meter.h"

#include "tools/kavhost/base/text.h"

#include <algorithm>
#include <cmath>
#include <vector>

namespace KAV::Host {

void CLevelMeter::Add(std::span<const float> interleaved) {
    bool isFinite = true;
    for (const float sample : interleaved) {
        if (std::isfinite(sample)) {
            _peak = std::max(_peak, std::abs(sample));
        } else {
            ++_notFinite;
            isFinite = false;
        }
    }
    if (isFinite) {
        _loudness.Add(interleaved);
        return;
    }
    std::vector<float> finite(
        interleaved.begin(), interleaved.end()); // or one would spoil the filters for good
    std::ranges::replace_if(
        finite, [](float sample) { return !std::isfinite(sample); }, 0.0f);
    _loudness.Add(finite);
}

SLevels CLevelMeter::Levels() const {
    SLevels levels{
        Decibels(static_cast<double>(_peak)), std::nullopt, _loudness.IntegratedLufs(), _notFinite};
    if (const auto peak = _loudness.TruePeak()) levels.truePeakDbtp = Decibels(*peak);
    return levels;
}

} // namespace KAV::Host
