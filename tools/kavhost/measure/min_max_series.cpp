#include "tools/kavhost/measure/min_max_series.h"

#include <algorithm>

namespace KAV::Host {

void SSpan::Add(double value) noexcept {
    if (value < lowest) lowest = value;
    if (value > highest) highest = value;
}

void SSpan::Add(const SSpan& other) noexcept {
    lowest = std::min(lowest, other.lowest);
    highest = std::max(highest, other.highest);
}

void CMinMaxSeries::Add(const SSpan& step) {
    if (_room == 0) {
        if (_bins.size() == _mostBins) Halve();
        _bins.emplace_back();
        _room = _stepsPerBin;
    }
    _bins.back().Add(step);
    --_room;
    ++_steps;
}

void CMinMaxSeries::Halve() {
    const std::size_t half = _bins.size() / 2;
    for (std::size_t i = 0; i < half; ++i) {
        _bins[i] = _bins[2 * i];
        _bins[i].Add(_bins[2 * i + 1]);
    }
    _bins.resize(half);
    _stepsPerBin *= 2;
}

} // namespace KAV::Host
