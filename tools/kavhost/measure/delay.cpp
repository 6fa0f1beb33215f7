#include "tools/kavhost/measure/delay.h"

#include "tools/kavhost/audio/planar_buffer.h"
#include "tools/kavhost/base/random.h"
#include "tools/kavhost/effect/blocks.h"
#include "tools/kavhost/effect/effect.h"

#include <algorithm>
#include <bit>
#include <cmath>
#include <complex>
#include <unsupported/Eigen/FFT>
#include <utility>
#include <vector>

namespace KAV::Host {

namespace {

constexpr std::size_t BurstFrames = 1 << 15;
constexpr std::size_t MostLags = 3 * BurstFrames; // with the burst a power of two
constexpr double MostSeconds = 2;

/// Noise of this length that is not in the recording correlates by 1 / sqrt(32768) = 0.006 in the mean, and
/// hardly ever by five times that. Noise through a low-pass at a fiftieth of the rate still reaches 0.2.
constexpr double ClearCorrelation = 0.1;

/// Peaks of the burst: low enough to leave a limiter alone at most settings, then loud enough to open a gate.
constexpr double Levels[] = {0.03, 0.3};

std::vector<float> Burst(double level) {
    CRandom random;
    std::vector<float> burst(BurstFrames);
    for (float& sample : burst) sample = static_cast<float>(level * random.Bipolar());
    return burst;
}

/// Sum over n of signal[n] recording[n + lag], for every lag that fits.
std::vector<double> Correlate(std::span<const float> signal, std::span<const float> recording) {
    // The recording fits the transform, so what wraps around are the lags below 0, at the far end.
    const std::size_t size = std::max<std::size_t>(std::bit_ceil(recording.size()), 4);
    std::vector<double> a(size), b(size), result(size);
    std::ranges::copy(signal, a.begin());
    std::ranges::copy(recording, b.begin());
    Eigen::FFT<double> transform;
    transform.SetFlag(Eigen::FFT<double>::HalfSpectrum);
    std::vector<std::complex<double>> spectrumA, spectrumB;
    transform.fwd(spectrumA, a);
    transform.fwd(spectrumB, b);
    for (std::size_t k = 0; k < spectrumB.size(); ++k) spectrumB[k] *= std::conj(spectrumA[k]);
    transform.inv(result, spectrumB, static_cast<Eigen::Index>(size));
    result.resize(recording.size() - signal.size() + 1);
    return result;
}

} // namespace

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

    const auto correlation = Correlate(signal, recording);
    // Below this the window contains only the transform's rounding, not a signal.
    const double leastEnergy = 1e-6 * energies.back();
    SMatch best;
    for (std::size_t lag = 0; lag < correlation.size(); ++lag) {
        const double energy = energies[lag + signal.size()] - energies[lag];
        if (energy < leastEnergy) continue;
        const double normalised = std::abs(correlation[lag]) / std::sqrt(signalEnergy * energy);
        if (normalised > best.correlation) best = {static_cast<std::int64_t>(lag), normalised};
    }
    return best;
}

SDelay MeasureDelay(CEffect& effect) {
    const auto channels = static_cast<std::size_t>(effect.Inputs());
    const auto lags = std::min(MostLags, static_cast<std::size_t>(MostSeconds * effect.Stream().rateHz));
    for (const double level : Levels) {
        const auto burst = Burst(level);
        CPlanarBuffer inputs(channels, BurstFrames + lags);
        CPlanarBuffer outputs(channels, BurstFrames + lags);
        for (std::size_t c = 0; c < channels; ++c) std::ranges::copy(burst, inputs.Channel(c).begin());
        ProcessBlocks(effect, inputs, outputs);
        SMatch best; // of the channels: some may be muted, or carry something else
        for (std::size_t c = 0; c < channels; ++c) {
            const auto match = FindSignal(burst, std::as_const(outputs).Channel(c));
            if (match && match->correlation > best.correlation) best = *match;
        }
        if (best.correlation >= ClearCorrelation) return {best.lag, true};
    }
    return {std::max<std::int64_t>(effect.ReportedDelay(), 0), false};
}

} // namespace KAV::Host
