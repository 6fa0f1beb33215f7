#include "tools/kavhost/measure/idle_gain.h"

#include "tools/kavhost/audio/planar_buffer.h"
#include "tools/kavhost/base/random.h"
#include "tools/kavhost/effect/blocks.h"
#include "tools/kavhost/effect/effect.h"

#include <algorithm>
#include <cmath>
#include <utility>

namespace KAV::Host {

namespace {

constexpr double Level = 0.001;
constexpr double Smoothing =
    0.1; // a low-pass near a fiftieth of the rate: far from where oversampling filters
constexpr double NoiseSeconds = 1;
constexpr double TailSeconds = 0.5; // lets all of the noise out of an effect that delays it

double Energy(std::span<const float> samples) {
    double energy = 0;
    for (const float sample : samples) energy += static_cast<double>(sample) * static_cast<double>(sample);
    return energy;
}

} // namespace

std::vector<double> MeasureIdleGains(CEffect& effect) {
    const auto channels = static_cast<std::size_t>(effect.Inputs());
    const auto noiseFrames = static_cast<std::size_t>(NoiseSeconds * effect.Stream().rateHz);
    const auto tailFrames = static_cast<std::size_t>(TailSeconds * effect.Stream().rateHz);
    CPlanarBuffer inputs(channels, noiseFrames + tailFrames), outputs(channels, noiseFrames + tailFrames);
    CRandom random;
    std::vector<float> noise(noiseFrames);
    double once = 0, twice = 0;
    for (float& sample : noise) {
        once += Smoothing * (Level * random.Bipolar() - once);
        twice += Smoothing * (once - twice);
        sample = static_cast<float>(twice);
    }
    // The same in all channels: what an effect makes of their sum is then no matter of chance.
    for (std::size_t c = 0; c < channels; ++c) std::ranges::copy(noise, inputs.Channel(c).begin());
    ProcessBlocks(effect, inputs, outputs);
    const double energy = Energy(noise);
    std::vector<double> gains;
    for (std::size_t c = 0; c < channels; ++c) {
        const double gain = 10 * std::log10(Energy(std::as_const(outputs).Channel(c)) / energy);
        gains.push_back(std::isfinite(gain) ? gain : 0);
    }
    return gains;
}

} // namespace KAV::Host
