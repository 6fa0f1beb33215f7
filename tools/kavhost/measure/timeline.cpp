#include "tools/kavhost/measure/timeline.h"

#include <algorithm>
#include <cmath>
#include <numeric>

namespace KAV::Host {

namespace {

constexpr std::size_t ShortTermTenths = 30;

}

std::size_t LoudnessStepFrames(int rateHz) noexcept {
    return static_cast<std::size_t>(std::max(1, rateHz / 10));
}

void CSignalTimeline::AddSamples(std::span<const float> interleaved) {
    for (std::size_t i = 0; i + _channels <= interleaved.size(); i += _channels) {
        SSpan frame;
        for (const float sample : interleaved.subspan(i, _channels)) {
            if (std::isfinite(sample)) frame.Add(static_cast<double>(sample));
        }
        _amplitude.Add(frame);
    }
}

void CSignalTimeline::AddTenth(double lufs) {
    // The recommendation's constant is the same in each term, so the mean needs none of it.
    _powers.push_back(std::pow(10, lufs / 10));
    if (_powers.size() > ShortTermTenths) _powers.pop_front();
    SSpan step;
    if (_powers.size() == ShortTermTenths) {
        step.Add(10 * std::log10(std::accumulate(_powers.begin(), _powers.end(), 0.0) / ShortTermTenths));
    }
    _shortTerm.Add(step);
}

void STimeline::AddGains(std::span<const double> gains) {
    SSpan measured, reduced;
    for (std::size_t c = 0; c < gains.size(); ++c) {
        measured.Add(gains[c]);
        reduced.Add(gains[c] - idleGainsDb[c]);
    }
    gain.Add(measured);
    reduction.Add(reduced);
}

} // namespace KAV::Host
