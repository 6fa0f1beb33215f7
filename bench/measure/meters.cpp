#include "bench/measure/meters.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <numbers>
#include <vector>

namespace KAV::Measure {

namespace {

constexpr std::size_t Phases = 8;
constexpr std::size_t Taps = 64;

/// Modified Bessel function of the first kind, order 0, by its power series.
double Bessel0(double x) noexcept {
    double sum = 1.0;
    double term = 1.0;
    for (int k = 1; k < 64; ++k) {
        term *= (x / (2.0 * k)) * (x / (2.0 * k));
        sum += term;
    }
    return sum;
}

using Kernel = std::array<std::array<double, Taps>, Phases>;

Kernel MakeKernel() noexcept {
    constexpr double beta = 10.0;
    constexpr double half = Taps / 2.0;
    Kernel kernel{};
    for (std::size_t phase = 0; phase < Phases; ++phase) {
        for (std::size_t tap = 0; tap < Taps; ++tap) {
            const double t = static_cast<double>(tap) - half + 1.0 -
                             static_cast<double>(phase) / static_cast<double>(Phases);
            const double sinc = t == 0.0 ? 1.0 : std::sin(std::numbers::pi * t) / (std::numbers::pi * t);
            const double edge = t / half;
            kernel[phase][tap] =
                sinc * Bessel0(beta * std::sqrt(std::max(0.0, 1.0 - edge * edge))) / Bessel0(beta);
        }
    }
    return kernel;
}

} // namespace

double Db(double amplitude) noexcept {
    return 20.0 * std::log10(amplitude);
}

double FromDb(double db) noexcept {
    return std::pow(10.0, db / 20.0);
}

double SamplePeak(std::span<const float> samples) noexcept {
    double peak = 0.0;
    for (const float sample : samples) peak = std::max(peak, std::fabs(static_cast<double>(sample)));
    return peak;
}

double TruePeak(std::span<const float> samples) {
    static const Kernel kernel = MakeKernel();
    double peak = SamplePeak(samples);
    for (std::size_t end = Taps; end <= samples.size(); ++end) {
        const float* const window = samples.data() + end - Taps;
        for (const auto& phase : kernel) {
            double sum = 0.0;
            for (std::size_t tap = 0; tap < Taps; ++tap) sum += static_cast<double>(window[tap]) * phase[tap];
            peak = std::max(peak, std::fabs(sum));
        }
    }
    return peak;
}

std::complex<double> Amplitude(std::span<const float> samples, double frequency) noexcept {
    std::complex<double> sum = 0.0;
    for (std::size_t i = 0; i < samples.size(); ++i) {
        sum += std::polar(
            static_cast<double>(samples[i]), -2.0 * std::numbers::pi * frequency * static_cast<double>(i));
    }
    return sum * 2.0 / static_cast<double>(samples.size());
}

double Response(std::span<const float> impulse, double frequency) noexcept {
    return std::abs(Amplitude(impulse, frequency)) * static_cast<double>(impulse.size()) / 2.0;
}

} // namespace KAV::Measure
