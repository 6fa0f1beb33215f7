#include "dsp/smoother.h"

#include <cmath>

namespace KAV::DSP {

Smoother::Smoother(float riseMs, float fallMs, float rateHz) noexcept
    : _rise{rateHz, 0.99f, riseMs, 0.0f}, _fall{rateHz, 0.99f, fallMs, 0.0f} {
    _rise.Compute();
    _fall.Compute();
}

void Smoother::SetRate(float rateHz) noexcept {
    _rise.SetRate(rateHz);
    _fall.SetRate(rateHz);
}

void Smoother::SetTimes(float riseMs, float fallMs) noexcept {
    _rise.SetTime(riseMs);
    _fall.SetTime(fallMs);
}

float Smoother::Step(float state, float target) const noexcept {
    if (target > state) return _rise.Step(state, target);
    if (target < state) return _fall.Step(state, target);
    return state;
}

void Smoother::SHalf::SetRate(float newRateHz) noexcept {
    if (newRateHz == rateHz) return;
    rateHz = newRateHz;
    Compute();
}

void Smoother::SHalf::SetTime(float newTimeMs) noexcept {
    if (newTimeMs == timeMs) return;
    timeMs = newTimeMs;
    Compute();
}

void Smoother::SHalf::Compute() noexcept {
    if (timeMs == 0.0f) {
        coefficient = 0.0f;
        return;
    }
    const double tau = -static_cast<double>(timeMs) / 1000.0 / std::log(1.0 - static_cast<double>(fraction));
    coefficient = static_cast<float>(std::exp(-1.0 / (tau * static_cast<double>(rateHz))));
}

float Smoother::SHalf::Step(float state, float target) const noexcept {
    if (std::fabs(state - target) <= 1.0f - fraction) return target;
    return (1.0f - coefficient) * target + coefficient * state;
}

} // namespace KAV::DSP
