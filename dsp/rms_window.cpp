#include "dsp/rms_window.h"

#include <algorithm>
#include <cmath>

namespace KAV::DSP {

namespace {

constexpr double LongestSeconds = 10.0;

} // namespace

RmsWindow RmsWindow::WithRate(double rateHz) const {
    RmsWindow window;
    window._buffer = Utils::CZeroedDoubles(static_cast<std::size_t>(std::max(LongestSeconds * rateHz, 1.0)));
    window._rateHz = rateHz;
    window._timeMs = _timeMs;
    window.Reset();
    return window;
}

void RmsWindow::SetTime(double timeMs) noexcept {
    if (timeMs == _timeMs) return;
    _timeMs = timeMs;
    Reset();
    Empty();
}

void RmsWindow::Reset() noexcept {
    const double longest = static_cast<double>(_buffer.Size());
    _length = static_cast<std::size_t>(std::clamp(std::trunc(_timeMs * 0.001 * _rateHz), 1.0, longest));
    _sum = 0.0;
    _index = 0;
    _full = false;
}

void RmsWindow::Empty() noexcept {
    std::fill_n(_buffer.Data(), _length, 0.0);
}

void RmsWindow::Push(std::span<const double> values, double gain) noexcept {
    double power = 0.0;
    for (const double value : values) power += (gain * value) * (gain * value);
    power /= static_cast<double>(values.size());
    double& place = _buffer.Data()[_index];
    const double leaving = place;
    _sum += power;
    place = power;
    if (++_index == _length) {
        _index = 0;
        _full = true;
    }
    if (_full) _sum = std::max(_sum - leaving, 0.0);
}

double RmsWindow::Rms() const noexcept {
    return _sum > 0.0 ? std::sqrt(_sum / static_cast<double>(_length)) : Floor;
}

void RmsWindow::Recover() noexcept {
    if (std::isfinite(_sum)) return;
    Reset();
    Empty();
}

} // namespace KAV::DSP
