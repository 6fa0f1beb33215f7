#include "tools/kavhost/measure/true_peak.h"

#include <algorithm>
#include <bit>
#include <cmath>
#include <cstdint>
#include <numbers>

namespace KAV::Host {

namespace {

constexpr double Negligible = 1e-6; // taps below this are left out

/// What single precision may lose of a sum over the taps, relative to the highest sample.
constexpr double RoundingOfASum = 1e-5;

std::size_t FactorAt(int rateHz) noexcept {
    return rateHz < 96000 ? 4 : rateHz < 192000 ? 2 : 1;
}

/// Without their signs, the numbers of finite samples are in the order of their bits; compilers have vector
/// code for the highest of whole numbers only.
double Highest(std::span<const float> samples) noexcept {
    std::int32_t highest = 0;
    for (const float sample : samples)
        highest = std::max(highest, std::bit_cast<std::int32_t>(sample) & 0x7FFFFFFF);
    return static_cast<double>(std::bit_cast<float>(highest));
}

} // namespace

CTruePeak::CTruePeak(int channels, int rateHz)
    : _factor(FactorAt(rateHz)), _windows(static_cast<std::size_t>(channels)) {
    const auto factor = static_cast<double>(_factor);
    for (std::size_t tap = 0; tap < Taps; ++tap) {
        const double place = static_cast<double>(tap);
        const double fromMiddle = place - static_cast<double>(Taps - 1) / 2.0;
        double coefficient = 1;
        if (std::abs(fromMiddle) > Negligible) {
            const double angle = fromMiddle * std::numbers::pi / factor;
            coefficient = std::sin(angle) / angle;
        }
        coefficient *= 0.5 * (1 - std::cos(2 * std::numbers::pi * place / static_cast<double>(Taps - 1)));
        if (std::abs(coefficient) <= Negligible) continue;
        auto& phase = _phases[tap % _factor];
        phase.coefficients[phase.taps] = coefficient;
        phase.rounded[phase.taps] = static_cast<float>(coefficient);
        phase.delays[phase.taps] = tap / _factor;
        ++phase.taps;
    }
    for (const auto& phase : _phases) {
        double sum = 0;
        for (const double coefficient : phase.coefficients) sum += std::abs(coefficient);
        _mostGain = std::max(_mostGain, sum);
    }
}

void CTruePeak::Add(std::span<const float> interleaved) {
    const std::size_t channels = _windows.size();
    const std::size_t frames = interleaved.size() / channels;
    for (std::size_t first = 0; first < frames; first += Group) {
        const std::size_t count = std::min(Group, frames - first);
        for (std::size_t c = 0; c < channels; ++c) {
            auto& window = _windows[c];
            const float* const samples = interleaved.data() + first * channels + c;
            for (std::size_t i = 0; i < count; ++i) window[MostPhaseTaps + i] = samples[i * channels];
            AddGroup(window, count);
            std::copy(window.begin() + static_cast<std::ptrdiff_t>(count),
                window.begin() + static_cast<std::ptrdiff_t>(count + MostPhaseTaps), window.begin());
        }
    }
}

/// Most groups can't hold the highest peak: either no sum of their samples reaches it, or none of the sums in
/// single precision comes near it.
void CTruePeak::AddGroup(const Window& window, std::size_t frames) {
    const std::span<const float> fresh(window.data() + MostPhaseTaps, frames);
    const double highest = Highest(std::span(window).first(MostPhaseTaps + frames));
    if (highest > _samplePeak) _samplePeak = std::max(_samplePeak, Highest(fresh));
    _peak = std::max(_peak, _samplePeak);
    if (_factor == 1 || highest * _mostGain <= _peak) return;
    if (frames == Group && HighestBetween(window) + highest * RoundingOfASum < _peak) return;
    TakeExactly(window, frames);
}

double CTruePeak::HighestBetween(const Window& window) const noexcept {
    std::array<float, Group> highest{};
    for (std::size_t p = 1; p < _factor; ++p) {
        const auto& phase = _phases[p];
        std::array<float, Group> sums{};
        for (std::size_t t = 0; t < phase.taps; ++t) {
            const float* const samples = window.data() + MostPhaseTaps - phase.delays[t];
            const float coefficient = phase.rounded[t];
            for (std::size_t i = 0; i < Group; ++i) sums[i] += samples[i] * coefficient;
        }
        for (std::size_t i = 0; i < Group; ++i) {
            const float height = std::abs(sums[i]);
            highest[i] = height > highest[i] ? height : highest[i];
        }
    }
    return Highest(highest);
}

void CTruePeak::TakeExactly(const Window& window, std::size_t frames) {
    for (std::size_t p = 1; p < _factor; ++p) {
        const auto& phase = _phases[p];
        for (std::size_t i = 0; i < frames; ++i) {
            double sum = 0;
            for (std::size_t t = 0; t < phase.taps; ++t) {
                sum +=
                    static_cast<double>(window[MostPhaseTaps + i - phase.delays[t]]) * phase.coefficients[t];
            }
            _peak = std::max(_peak, std::abs(static_cast<double>(static_cast<float>(sum))));
        }
    }
}

} // namespace KAV::Host
