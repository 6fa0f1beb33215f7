#include "tools/kavhost/measure/delay.h"

#include "tools/kavhost/audio/planar_buffer.h"
#include "tools/kavhost/base/random.h"
#include "tools/kavhost/effect/blocks.h"
#include "tools/kavhost/effect/effect.h"

#include <algorithm>
#include <bit>
#include <cmath>
#include <complex>
#include <numbers>
#include <unsupported/Eigen/FFT>
#include <utility>
#include <vector>

namespace KAV::Host {

namespace {

constexpr std::size_t BurstFrames = 1 << 15;
constexpr std::size_t MostLags = 3 * BurstFrames; // with the burst a power of two
constexpr double MostSeconds = 2;

/// The band of the noise. Below it, high-pass filters turn the phase; above it, those of oversampling do.
constexpr double LowestHz = 50;
constexpr double HighestOfRate = 1.0 / 6;

/// Noise of this length and band that is not in the recording correlates by sqrt(3 / 32768) = 0.01 in the
/// mean, and hardly ever by five times that. Noise through a low-pass at a fiftieth of the rate still reaches
/// 0.3.
constexpr double ClearCorrelation = 0.1;

/// Peaks of the burst: low enough to leave a limiter alone at most settings, then loud enough to open a gate.
constexpr double Levels[] = {0.03, 0.3};

using Transform = Eigen::FFT<double>;

/// Sum over n of signal[n] recording[n + lag], for every lag that fits.
std::vector<double> Correlate(std::span<const float> signal, std::span<const float> recording) {
    // The recording fits the transform, so what wraps around are the lags below 0, at the far end.
    const std::size_t size = std::max<std::size_t>(std::bit_ceil(recording.size()), 4);
    std::vector<double> a(size), b(size), result(size);
    std::ranges::copy(signal, a.begin());
    std::ranges::copy(recording, b.begin());
    Transform transform;
    transform.SetFlag(Transform::HalfSpectrum);
    std::vector<std::complex<double>> spectrumA, spectrumB;
    transform.fwd(spectrumA, a);
    transform.fwd(spectrumB, b);
    for (std::size_t k = 0; k < spectrumB.size(); ++k) spectrumB[k] *= std::conj(spectrumA[k]);
    transform.inv(result, spectrumB, static_cast<Eigen::Index>(size));
    result.resize(recording.size() - signal.size() + 1);
    return result;
}

/// The values between the samples, by a sinc under a raised cosine.
double Between(std::span<const double> samples, double place) noexcept {
    constexpr double reach = 32; // samples to either side
    const double last = static_cast<double>(samples.size()) - 1;
    const auto begin = static_cast<std::size_t>(std::max(0.0, std::ceil(place - reach)));
    const auto end = static_cast<std::size_t>(std::min(last, std::floor(place + reach)));
    double sum = 0;
    for (std::size_t i = begin; i <= end; ++i) {
        const double angle = std::numbers::pi * (static_cast<double>(i) - place);
        const double sinc = angle == 0 ? 1 : std::sin(angle) / angle;
        sum += samples[i] * sinc * (0.5 + 0.5 * std::cos(angle / reach));
    }
    return sum;
}

/// Where the curve through the samples is farthest from zero, near the sample that is.
double TopNear(std::span<const double> samples, std::size_t farthest) noexcept {
    const auto height = [&](double place) { return std::abs(Between(samples, place)); };
    double low = static_cast<double>(farthest) - 0.5, high = low + 1;
    while (high - low > 1e-4) { // it rises to the top and falls after it
        const double third = (high - low) / 3;
        if (height(low + third) < height(high - third))
            low += third;
        else
            high -= third;
    }
    return (low + high) / 2;
}

} // namespace

std::vector<float> DelayNoise(double rateHz, double peak) {
    CRandom random;
    std::vector<double> noise(BurstFrames);
    for (double& sample : noise) sample = random.Bipolar();
    Transform transform;
    transform.SetFlag(Transform::HalfSpectrum);
    std::vector<std::complex<double>> spectrum;
    transform.fwd(spectrum, noise);
    for (std::size_t k = 0; k < spectrum.size(); ++k) {
        const double ofRate = static_cast<double>(k) / BurstFrames;
        if (ofRate * rateHz < LowestHz || ofRate > HighestOfRate) spectrum[k] = 0;
    }
    transform.inv(noise, spectrum, static_cast<Eigen::Index>(BurstFrames));
    double highest = 0;
    for (const double sample : noise) highest = std::max(highest, std::abs(sample));
    std::vector<float> scaled;
    scaled.reserve(noise.size());
    for (const double sample : noise) scaled.push_back(static_cast<float>(sample * peak / highest));
    return scaled;
}

std::optional<SMatch> FindSignal(std::span<const float> signal, std::span<const float> recording) {
    if (signal.empty() || recording.size() < signal.size()) return std::nullopt;
    // energies[n]: that of the recording's first n samples.
    std::vector<double> energies(recording.size() + 1);
    for (std::size_t n = 0; n < recording.size(); ++n) {
        energies[n + 1] = energies[n] + static_cast<double>(recording[n]) * static_cast<double>(recording[n]);
    }
    double signalEnergy = 0;
    for (const float sample : signal)
        signalEnergy += static_cast<double>(sample) * static_cast<double>(sample);
    if (!(signalEnergy > 0) || !(energies.back() > 0))
        return std::nullopt; // "not above" includes not-a-number
    if (!std::isfinite(energies.back())) return std::nullopt;

    auto correlation = Correlate(signal, recording);
    // Below this the window contains only the transform's rounding, not a signal.
    const double leastEnergy = 1e-6 * energies.back();
    std::size_t best = 0;
    for (std::size_t lag = 0; lag < correlation.size(); ++lag) {
        const double energy = energies[lag + signal.size()] - energies[lag];
        correlation[lag] = energy < leastEnergy ? 0.0 : correlation[lag] / std::sqrt(signalEnergy * energy);
        if (std::abs(correlation[lag]) > std::abs(correlation[best])) best = lag;
    }
    return SMatch{static_cast<std::int64_t>(best), TopNear(correlation, best), std::abs(correlation[best])};
}

SDelay MeasureDelay(CEffect& effect) {
    const auto channels = static_cast<std::size_t>(effect.Inputs());
    const auto lags = std::min(MostLags, static_cast<std::size_t>(MostSeconds * effect.Stream().rateHz));
    for (const double level : Levels) {
        const auto burst = DelayNoise(effect.Stream().rateHz, level);
        CPlanarBuffer inputs(channels, BurstFrames + lags);
        CPlanarBuffer outputs(channels, BurstFrames + lags);
        for (std::size_t c = 0; c < channels; ++c) std::ranges::copy(burst, inputs.Channel(c).begin());
        ProcessBlocks(effect, inputs, outputs);
        SMatch best; // of the channels: some may be muted, or carry something else
        for (std::size_t c = 0; c < channels; ++c) {
            const auto match = FindSignal(burst, std::as_const(outputs).Channel(c));
            if (match && match->correlation > best.correlation) best = *match;
        }
        if (best.correlation >= ClearCorrelation) return {best.lag, best.exactLag, true};
    }
    const std::int64_t reported = std::max<std::int64_t>(effect.ReportedDelay(), 0);
    return {reported, static_cast<double>(reported), false};
}

} // namespace KAV::Host
