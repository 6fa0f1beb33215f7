#include "dsp/smoother.h"

namespace KAV::DSP {

Smoother::Smoother(float riseMs, float fallMs, float rateHz) noexcept
    : _rise{rateHz, riseMs}, _fall{rateHz, fallMs} {
    _rise.Compute();
    _fall.Compute();
}

void Smoother::SHalf::Compute() noexcept {
    if (timeMs == 0.0f) {
        coefficient = 0.0f;
        return;
    }
    const double tau = -static_cast<double>(timeMs) / 1000.0 / std::log(1.0 - static_cast<double>(Fraction));
    coefficient = static_cast<float>(std::exp(-1.0 / (tau * static_cast<double>(rateHz))));
}

} // namespace KAV::DSP
