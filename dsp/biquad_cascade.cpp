#include "dsp/biquad_cascade.h"

#include "utils/cpu_features.h"

#include <algorithm>
#include <cmath>
#include <numbers>

namespace KAV::DSP {

BiquadCascade::BiquadCascade(std::size_t order) noexcept : _count(order / 2), _prototype{} {
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
        _coefficients.a1[i] = -2.0 * pole.real();
        _coefficients.a2[i] = std::norm(pole);
        gainAtZero *= (1.0 + 2.0 + 1.0) / (1.0 + _coefficients.a1[i] + _coefficients.a2[i]);
    }
    _coefficients.scale = 1.0 / std::fabs(gainAtZero);
    _delays.fill({});
}

std::size_t BiquadCascade::PassWidth([[maybe_unused]] std::uint64_t features) noexcept {
#if defined(__x86_64__)
    if ((features & Utils::CpuFma) == 0) return 1;
    if ((features & Utils::CpuAvx) != 0) return 4;
    if ((features & Utils::CpuSse2) != 0) return 2;
#endif
    return 1;
}

void BiquadCascade::Process(
    std::span<float* const> channels, std::size_t length, std::uint64_t features) noexcept {
    Process(channels, length, features, PathFor(features));
}

void BiquadCascade::Process(std::span<float* const> channels, std::size_t length, std::uint64_t features,
    EProcessorPath path) noexcept {
    const std::size_t width = PassWidth(features);
    // Each pass flips the sign of the anti-denormal value once per sample, for all its channels together.
    const auto extra = [&](std::size_t slot) {
        return slot / width % 2 * length % 2 == 0 ? _antiDenormal : -_antiDenormal;
    };
    const auto isFused = [&](std::size_t slot) {
        return std::min(width, channels.size() - slot / width * width) > 1;
    };
    for (std::size_t slot = 0; slot < channels.size();) {
        SCascadeRun run;
        run.length = length;
        const bool fused = isFused(slot);
        while (run.channelCount < 2 && slot < channels.size() && isFused(slot) == fused) {
            run.channels[run.channelCount] = channels[slot];
            run.delays[run.channelCount] = &_delays[slot];
            run.extra[run.channelCount++] = extra(slot);
            ++slot;
        }
        Run(run, fused, path);
    }
    _antiDenormal = extra((channels.size() + width - 1) / width * width);
    for (std::size_t slot = 0; slot < channels.size(); ++slot) Recover(_delays[slot]);
}

void BiquadCascade::Run(
    const SCascadeRun& run, bool fused, [[maybe_unused]] EProcessorPath path) const noexcept {
#if defined(__x86_64__)
    const bool isShort = _count == 2;
    if (isShort || _count == MaxStages) {
        if (path == EProcessorPath::Wide) {
            (isShort ? RunShortCascadeWide : RunLongCascadeWide)(run, _coefficients, fused);
            return;
        }
        if (path == EProcessorPath::Narrow && !fused) {
            (isShort ? RunShortCascadeNarrow : RunLongCascadeNarrow)(run, _coefficients);
            return;
        }
    }
#endif
    for (std::size_t c = 0; c < run.channelCount; ++c) {
        if (fused) {
            RunPlainFused(run, c);
        } else {
            RunPlain(run, c);
        }
    }
}

void BiquadCascade::Recover(SCascadeDelays& delays) const noexcept {
    const auto isSound = [this](const double* values) {
        return std::all_of(values, values + _count, [](double w) { return std::isfinite(w); });
    };
    if (!isSound(delays.w1) || !isSound(delays.w2)) delays = {};
}

void BiquadCascade::RunPlain(const SCascadeRun& run, std::size_t c) const noexcept {
    SCascadeDelays& delays = *run.delays[c];
    double antiDenormal = run.extra[c];
    for (std::size_t i = 0; i < run.length; ++i) {
        antiDenormal = -antiDenormal;
        double extra = antiDenormal; // keeps the first stage's delays away from zero
        double x = static_cast<double>(run.channels[c][i]);
        double scale = _coefficients.scale;
        for (std::size_t s = 0; s < _count; ++s) {
            double& w1 = delays.w1[s];
            double& w2 = delays.w2[s];
            const double w = x - _coefficients.a1[s] * w1 - _coefficients.a2[s] * w2 + extra;
            x = scale * w + 2.0 * scale * w1 + scale * w2;
            w2 = w1;
            w1 = w;
            extra = 0.0;
            scale = 1.0;
        }
        run.channels[c][i] = static_cast<float>(x);
    }
}

// Only where the processor has fused operations: a library's emulation may be slow, and some round wrongly.
#if defined(__x86_64__)
__attribute__((target("fma")))
#endif
void BiquadCascade::RunPlainFused(const SCascadeRun& run, std::size_t c) const noexcept {
    SCascadeDelays& delays = *run.delays[c];
    double antiDenormal = run.extra[c];
    for (std::size_t i = 0; i < run.length; ++i) {
        antiDenormal = -antiDenormal;
        double extra = antiDenormal;
        double x = static_cast<double>(run.channels[c][i]);
        double scale = _coefficients.scale;
        for (std::size_t s = 0; s < _count; ++s) {
            double& w1 = delays.w1[s];
            double& w2 = delays.w2[s];
            // The newest value is added last, so that the operation after it waits as little as possible.
            const double w =
                __builtin_fma(-_coefficients.a1[s], w1, __builtin_fma(-_coefficients.a2[s], w2, x + extra));
            x = scale * (w + __builtin_fma(2.0, w1, w2));
            w2 = w1;
            w1 = w;
            extra = 0.0;
            scale = 1.0;
        }
        run.channels[c][i] = static_cast<float>(x);
    }
}

} // namespace KAV::DSP
