#include "dsp/biquad_cascade.h"

#include "utils/cpu_features.h"

#include <algorithm>
#include <cmath>
#include <numbers>

#if defined(__x86_64__)
#include <immintrin.h>
#endif

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

// A pass keeps its channels' delays side by side in registers' width for the block: one lane per channel.
// Lanes without a channel filter silence and go nowhere.
#if defined(__x86_64__)
struct BiquadCascade::SFused {
    template<std::size_t LANES>
    using Lanes = std::array<double, LANES>;

    template<std::size_t LANES>
    static void Load(const BiquadCascade& cascade, std::size_t slot, std::size_t count,
        std::array<Lanes<LANES>, MaxStages>& w1, std::array<Lanes<LANES>, MaxStages>& w2) noexcept {
        for (std::size_t s = 0; s < cascade._count; ++s) {
            std::copy_n(cascade._stages[s].w1.data() + slot, count, w1[s].data());
            std::copy_n(cascade._stages[s].w2.data() + slot, count, w2[s].data());
        }
    }
    template<std::size_t LANES>
    static void Store(BiquadCascade& cascade, std::size_t slot, std::size_t count,
        const std::array<Lanes<LANES>, MaxStages>& w1,
        const std::array<Lanes<LANES>, MaxStages>& w2) noexcept {
        for (std::size_t s = 0; s < cascade._count; ++s) {
            std::copy_n(w1[s].data(), count, cascade._stages[s].w1.data() + slot);
            std::copy_n(w2[s].data(), count, cascade._stages[s].w2.data() + slot);
        }
    }

    __attribute__((target("avx,fma"))) static void Four(BiquadCascade& cascade,
        std::span<float* const> channels, std::size_t slot, std::size_t length) noexcept {
        alignas(32) std::array<Lanes<4>, MaxStages> w1s{}, w2s{};
        Load<4>(cascade, slot, channels.size(), w1s, w2s);
        alignas(16) std::array<float, 4> samples{};
        for (std::size_t i = 0; i < length; ++i) {
            cascade._antiDenormal = -cascade._antiDenormal;
            __m256d extra = _mm256_set1_pd(cascade._antiDenormal);
            for (std::size_t c = 0; c < channels.size(); ++c) samples[c] = channels[c][i];
            __m256d x = _mm256_cvtps_pd(_mm_load_ps(samples.data()));
            for (std::size_t s = 0; s < cascade._count; ++s) {
                const SStage& stage = cascade._stages[s];
                const __m256d w1 = _mm256_load_pd(w1s[s].data());
                const __m256d w2 = _mm256_load_pd(w2s[s].data());
                __m256d w = _mm256_fnmadd_pd(_mm256_set1_pd(stage.a1), w1, x);
                w = _mm256_add_pd(_mm256_fnmadd_pd(_mm256_set1_pd(stage.a2), w2, w), extra);
                x = _mm256_fmadd_pd(_mm256_set1_pd(stage.b1), w1, _mm256_mul_pd(_mm256_set1_pd(stage.b0), w));
                x = _mm256_fmadd_pd(_mm256_set1_pd(stage.b2), w2, x);
                _mm256_store_pd(w2s[s].data(), w1);
                _mm256_store_pd(w1s[s].data(), w);
                extra = _mm256_setzero_pd();
            }
            _mm_store_ps(samples.data(), _mm256_cvtpd_ps(x));
            for (std::size_t c = 0; c < channels.size(); ++c) channels[c][i] = samples[c];
        }
        Store<4>(cascade, slot, channels.size(), w1s, w2s);
    }

    __attribute__((target("fma"))) static void Two(BiquadCascade& cascade, std::span<float* const> channels,
        std::size_t slot, std::size_t length) noexcept {
        alignas(16) std::array<Lanes<2>, MaxStages> w1s{}, w2s{};
        Load<2>(cascade, slot, channels.size(), w1s, w2s);
        for (std::size_t i = 0; i < length; ++i) {
            cascade._antiDenormal = -cascade._antiDenormal;
            __m128d extra = _mm_set1_pd(cascade._antiDenormal);
            __m128d x = _mm_set_pd(static_cast<double>(channels[1][i]), static_cast<double>(channels[0][i]));
            for (std::size_t s = 0; s < cascade._count; ++s) {
                const SStage& stage = cascade._stages[s];
                const __m128d w1 = _mm_load_pd(w1s[s].data());
                const __m128d w2 = _mm_load_pd(w2s[s].data());
                __m128d w = _mm_fnmadd_pd(_mm_set1_pd(stage.a1), w1, x);
                w = _mm_add_pd(_mm_fnmadd_pd(_mm_set1_pd(stage.a2), w2, w), extra);
                x = _mm_fmadd_pd(_mm_set1_pd(stage.b1), w1, _mm_mul_pd(_mm_set1_pd(stage.b0), w));
                x = _mm_fmadd_pd(_mm_set1_pd(stage.b2), w2, x);
                _mm_store_pd(w2s[s].data(), w1);
                _mm_store_pd(w1s[s].data(), w);
                extra = _mm_setzero_pd();
            }
            channels[0][i] = static_cast<float>(_mm_cvtsd_f64(x));
            channels[1][i] = static_cast<float>(_mm_cvtsd_f64(_mm_unpackhi_pd(x, x)));
        }
        Store<2>(cascade, slot, channels.size(), w1s, w2s);
    }

    static void Process(BiquadCascade& cascade, std::span<float* const> channels, std::size_t slot,
        std::size_t length, std::size_t width) noexcept {
        if (width == 4) {
            Four(cascade, channels, slot, length);
        } else {
            Two(cascade, channels, slot, length);
        }
    }
};
#else
struct BiquadCascade::SFused {
    static void Process(
        BiquadCascade&, std::span<float* const>, std::size_t, std::size_t, std::size_t) noexcept {}
};
#endif

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
    const std::size_t width = PassWidth(features);
    for (std::size_t slot = 0; slot < channels.size(); slot += width) {
        const auto pass = channels.subspan(slot, std::min(width, channels.size() - slot));
        if (pass.size() == 1) {
            ProcessOne(pass[0], slot, length);
        } else {
            SFused::Process(*this, pass, slot, length, width);
        }
    }
    for (std::size_t slot = 0; slot < channels.size(); ++slot) Recover(slot);
}

void BiquadCascade::Recover(std::size_t slot) noexcept {
    const auto stages = std::span(_stages).first(_count);
    const bool sound = std::all_of(stages.begin(), stages.end(), [slot](const SStage& stage) {
        return std::isfinite(stage.w1[slot]) && std::isfinite(stage.w2[slot]);
    });
    if (sound) return;
    for (SStage& stage : stages) stage.w1[slot] = stage.w2[slot] = 0.0;
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
