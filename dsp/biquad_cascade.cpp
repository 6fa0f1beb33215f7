#include "dsp/biquad_cascade.h"

#include <cmath>
#include <numbers>

namespace KAV::DSP {

BiquadCascade::BiquadCascade(std::size_t order) noexcept : _count(order / 2), _prototype{}, _stages{} {
    for (std::size_t i = 0; i < _count; ++i) {
        const double angle = std::numbers::pi / 2.0 + static_cast<double>(2 * i + 1) * std::numbers::pi /
                                                          (2.0 * static_cast<double>(order));
        _prototype[i] = std::polar(1.0, angle);
    }
}

// Bilinear transform: an analogue pole p goes to (1 + f p) / (1 - f p) with f = tan(pi x cutoff); the zeros,
// all at infinity, go to -1.
void BiquadCascade::Design(double cutoff) noexcept {
    const double f = std::tan(std::numbers::pi * cutoff);
    double gainAtZero = 1.0;
    for (std::size_t i = 0; i < _count; ++i) {
        const std::complex<double> pole = (1.0 + f * _prototype[i]) / (1.0 - f * _prototype[i]);
        SStage& stage = _stages[i];
        stage = SStage{};
        stage.a1 = -2.0 * pole.real();
        stage.a2 = std::norm(pole);
        stage.b0 = 1.0;
        stage.b1 = 2.0;
        stage.b2 = 1.0;
        gainAtZero *= (stage.b0 + stage.b1 + stage.b2) / (1.0 + stage.a1 + stage.a2);
    }
    const double scale = 1.0 / std::fabs(gainAtZero);
    _stages[0].b0 *= scale;
    _stages[0].b1 *= scale;
    _stages[0].b2 *= scale;
}

void BiquadCascade::Process(std::span<float* const> channels, std::size_t length) noexcept {
    for (std::size_t slot = 0; slot < channels.size(); ++slot) ProcessOne(channels[slot], slot, length);
}

void BiquadCascade::ProcessOne(float* channel, std::size_t slot, std::size_t length) noexcept {
    for (std::size_t i = 0; i < length; ++i) {
        _antiDenormal = -_antiDenormal;
        double extra = _antiDenormal; // keeps the first stage's delays away from zero
        double x = static_cast<double>(channel[i]);
        for (std::size_t s = 0; s < _count; ++s) {
            SStage& stage = _stages[s];
            const double w = x - stage.a1 * stage.w1[slot] - stage.a2 * stage.w2[slot] + extra;
            x = stage.b0 * w + stage.b1 * stage.w1[slot] + stage.b2 * stage.w2[slot];
            stage.w2[slot] = stage.w1[slot];
            stage.w1[slot] = w;
            extra = 0.0;
        }
        channel[i] = static_cast<float>(x);
    }
}

} // namespace KAV::DSP
