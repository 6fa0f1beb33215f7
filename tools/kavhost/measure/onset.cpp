#include "tools/kavhost/measure/onset.h"

#include "tools/kavhost/audio/planar_buffer.h"
#include "tools/kavhost/effect/blocks.h"
#include "tools/kavhost/effect/effect.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <numbers>
#include <vector>

namespace KAV::Host {

namespace {

constexpr double LowestDbfs = -100;
constexpr double HighestDbfs = 60;
constexpr double RiseDbPerSecond = 40;
constexpr double WindowSeconds = 0.01;
constexpr double RestDb = 20; // the gain of the first windows of the rise, up to here, is the gain at rest
constexpr double LeastDropDb = 0.1;
constexpr double PeriodsPerSecond = 1000; // whole periods in a window, far from where filters begin

/// The energy of a window; the sine is the same in each channel, and they may have different gains.
double Energy(std::span<const float> samples) {
    double energy = 0;
    for (const float sample : samples) energy += static_cast<double>(sample) * static_cast<double>(sample);
    return energy;
}

double RiseDb(double seconds) {
    return LowestDbfs + RiseDbPerSecond * seconds;
}

/// Where the gain of a channel drops for good; infinity if it doesn't.
double OnsetOf(
    std::span<const float> input, std::span<const float> output, std::size_t window, double rateHz) {
    double rest = -std::numeric_limits<double>::infinity();
    double onset = std::numeric_limits<double>::infinity();
    for (std::size_t first = 0; first + window <= input.size(); first += window) {
        const double gain =
            10 * std::log10(Energy(output.subspan(first, window)) / Energy(input.subspan(first, window)));
        const double level = RiseDb(static_cast<double>(first) / rateHz);
        if (!std::isfinite(gain)) continue;
        if (level < LowestDbfs + RestDb) {
            rest = gain; // an effect's delay lets the gain seem a little lower, all the time
        } else if (gain > rest - LeastDropDb) {
            onset = std::numeric_limits<double>::infinity();
        } else if (std::isinf(onset)) {
            onset = level;
        }
    }
    return onset;
}

} // namespace

double MeasureOnset(CEffect& effect) {
    const double rate = effect.Stream().rateHz;
    const auto channels = static_cast<std::size_t>(effect.Inputs());
    const auto window = static_cast<std::size_t>(std::max(1.0, std::round(WindowSeconds * rate)));
    const auto frames =
        window * static_cast<std::size_t>((HighestDbfs - LowestDbfs) / RiseDbPerSecond / WindowSeconds);
    CPlanarBuffer inputs(channels, frames), outputs(channels, frames);
    std::vector<float> sine(frames);
    for (std::size_t i = 0; i < frames; ++i) {
        const double seconds = static_cast<double>(i) / rate;
        const double phase = 2 * std::numbers::pi * PeriodsPerSecond * seconds;
        sine[i] = static_cast<float>(std::pow(10.0, RiseDb(seconds) / 20) * std::sin(phase));
    }
    for (std::size_t c = 0; c < channels; ++c) std::ranges::copy(sine, inputs.Channel(c).begin());
    ProcessBlocks(effect, inputs, outputs);
    double lowest = std::numeric_limits<double>::infinity();
    for (std::size_t c = 0; c < channels; ++c)
        lowest = std::min(lowest, OnsetOf(sine, outputs.Channel(c), window, rate));
    return lowest;
}

} // namespace KAV::Host
