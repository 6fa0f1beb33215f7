#include "tests/dsp/reference/oversampler.h"

#include <algorithm>
#include <cmath>
#include <complex>
#include <numbers>

namespace KAV::Reference {

CLowPass::CLowPass(int order) : _order(order), _stages(static_cast<std::size_t>(order / 2)) {
    Design(0.25);
}

void CLowPass::Design(double cutoff) {
    const double f = std::tan(std::numbers::pi * cutoff);
    double atZero = 1.0;
    for (int i = 1; i <= _order / 2; ++i) {
        const double angle = std::numbers::pi / 2 + (2 * i - 1) * std::numbers::pi / (2.0 * _order);
        const std::complex<double> analogue(std::cos(angle), std::sin(angle));
        const std::complex<double> pole = (1.0 + f * analogue) / (1.0 - f * analogue);
        SStage& stage = _stages[static_cast<std::size_t>(i - 1)];
        stage.a1 = -2 * pole.real();
        stage.a2 = pole.real() * pole.real() + pole.imag() * pole.imag();
        stage.b0 = 1.0;
        stage.b1 = 2.0; // both zeros at -1
        stage.b2 = 1.0;
        stage.w1.fill(0.0);
        stage.w2.fill(0.0);
        atZero *= (stage.b0 + stage.b1 + stage.b2) / (1.0 + stage.a1 + stage.a2);
    }
    for (double* b : {&_stages[0].b0, &_stages[0].b1, &_stages[0].b2}) *b *= 1.0 / std::fabs(atZero);
}

float CLowPass::Sample(float sample, std::size_t slot, bool fused) {
    double x = sample;
    double e = _bias;
    for (SStage& s : _stages) {
        const double w1 = s.w1[slot];
        const double w2 = s.w2[slot];
        double w = 0.0;
        if (fused) {
            w = std::fma(-s.a1, w1, std::fma(-s.a2, w2, x + e));
            x = s.b0 * (w + std::fma(2.0, w1, w2));
        } else {
            w = x - s.a1 * w1 - s.a2 * w2 + e;
            x = s.b0 * w + s.b1 * w1 + s.b2 * w2;
        }
        s.w2[slot] = w1;
        s.w1[slot] = w;
        e = 0.0;
    }
    return static_cast<float>(x);
}

void CLowPass::Run(const std::vector<float*>& channels, int length, int width, CCoverage& coverage) {
    const std::size_t widest = static_cast<std::size_t>(width);
    for (std::size_t first = 0; first < channels.size(); first += widest) {
        const std::size_t count = std::min(widest, channels.size() - first);
        coverage.HitIf(count == 1, ECase::PassPlain);
        coverage.HitIf(count == 1 && first > 0 && width > 1, ECase::PassPlainLeftOver);
        coverage.HitIf(count > 1 && count < 4, ECase::PassFusedPart);
        coverage.HitIf(count == 4, ECase::PassFusedFull);
        for (int i = 0; i < length; ++i) {
            _bias = -_bias; // once for all channels of the pass
            for (std::size_t slot = first; slot < first + count; ++slot) {
                channels[slot][i] = Sample(channels[slot][i], slot, count > 1);
            }
        }
        for (std::size_t slot = first; slot < first + count; ++slot) Recover(slot, coverage);
    }
}

/// Infinity would stay in the filter for ever.
void CLowPass::Recover(std::size_t slot, CCoverage& coverage) {
    const bool sound = std::all_of(_stages.begin(), _stages.end(), [slot](const SStage& stage) {
        return std::isfinite(stage.w1[slot]) && std::isfinite(stage.w2[slot]);
    });
    if (sound) return;
    coverage.Hit(ECase::FilterRecovers);
    for (SStage& stage : _stages) stage.w1[slot] = stage.w2[slot] = 0.0;
}

int COversampler::Width(bool simd) {
    if (!simd || !__builtin_cpu_supports("fma")) return 1;
    if (__builtin_cpu_supports("avx")) return 4;
    return __builtin_cpu_supports("sse2") ? 2 : 1;
}

void COversampler::Prepare(float rate, int factor) {
    if (rate == _rate && factor == _factor) return;
    _rate = rate;
    _factor = factor;
    const double raised = static_cast<double>(static_cast<float>(factor) * rate);
    for (CLowPass* filter : {&_standardUp, &_standardDown}) filter->Design(rate * 0.9 * 0.5 / raised);
    for (CLowPass* filter : {&_qualityUp, &_qualityDown}) filter->Design(rate * 0.99 * 0.5 / raised);
}

void COversampler::Up(
    std::array<float*, 16>& channels, int frames, bool quality, int width, CCoverage& coverage) {
    _in = channels;
    if (_factor == 1) return;
    for (std::size_t k = 0; k < 16; ++k) {
        if (_in[k] == nullptr) continue;
        _raised[k].assign(static_cast<std::size_t>(frames * _factor), 0.0f);
        for (int i = 0; i < frames; ++i) {
            _raised[k][static_cast<std::size_t>(i * _factor)] = static_cast<float>(_factor) * _in[k][i];
        }
        channels[k] = _raised[k].data();
    }
    Filter(quality ? _qualityUp : _standardUp, frames, width, coverage);
}

void COversampler::Down(
    std::array<float*, 16>& channels, int frames, bool quality, int width, CCoverage& coverage) {
    if (_factor == 1) return;
    Filter(quality ? _qualityDown : _standardDown, frames, width, coverage);
    for (std::size_t k = 0; k < 16; ++k) {
        if (_in[k] == nullptr) continue;
        for (int i = 0; i < frames; ++i) _in[k][i] = _raised[k][static_cast<std::size_t>(i * _factor)];
    }
    channels = _in;
}

void COversampler::Filter(CLowPass& filter, int frames, int width, CCoverage& coverage) {
    std::vector<float*> present;
    for (std::size_t k = 0; k < 16; ++k) {
        if (_in[k] != nullptr) present.push_back(_raised[k].data());
    }
    filter.Run(present, frames * _factor, width, coverage);
}

} // namespace KAV::Reference
