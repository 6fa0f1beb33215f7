#include "tools/kavhost/plot/plot_axis.h"

#include "tools/kavhost/base/text.h"
#include "tools/kavhost/plot/plot.h"

#include <algorithm>
#include <cmath>

namespace KAV::Host {

namespace {

constexpr double MostTimeTicks = 14;
constexpr double Headroom = 1.06; // keeps what reaches a limit off the frame
constexpr double LeastAmplitude = 0.01;
constexpr double LowestLevelDb = -60;
constexpr double HighestLevelTopDb = 60;
constexpr double LowestReductionDb = -48;

/// The first number of 1, 2, 5, 10, 20 ... (from a millionth on) that is not below `least`.
double RoundUp(double least) {
    for (int power = -6;; ++power) {
        for (const double digit : {1.0, 2.0, 5.0}) {
            const double number = digit * std::pow(10.0, power);
            if (number >= least * (1 - 1e-9) || power > 12) return number;
        }
    }
}

/// Close above the sound, since half of the room is below.
double AmplitudeLimit(double most) {
    const double next = RoundUp(most);
    for (const double part : {0.25, 0.3, 0.5, 0.6, 0.75}) {
        if (next * part >= most) return next * part;
    }
    return next;
}

/// Seconds as clocks divide them.
double TimeStep(double seconds) {
    const double least = seconds / MostTimeTicks;
    if (least <= 1) return RoundUp(least);
    for (const double step : {2, 5, 10, 15, 30, 60, 120, 300, 600, 900, 1800, 3600}) {
        if (step >= least) return step;
    }
    return 3600 * RoundUp(least / 3600);
}

void AddTicks(SAxis& axis, double step) {
    const auto first = static_cast<int>(std::ceil(axis.from / step - 1e-9));
    const auto last = static_cast<int>(std::floor(axis.to / step + 1e-9));
    for (int i = first; i <= last; ++i) axis.ticks.push_back(i * step);
}

/// About five ticks, at whole numbers of decibels that 60 can be divided by.
double LevelStep(double range) {
    for (const double step : {1, 2, 3, 6, 12}) {
        if (range / step <= 6) return step;
    }
    return 20;
}

} // namespace

SAxis TimeAxis(double seconds) {
    SAxis axis{0, seconds > 0 ? seconds : 1, {}};
    AddTicks(axis, TimeStep(axis.to));
    return axis;
}

SAxis AmplitudeAxis(const SPlot& plot) {
    SSpan all;
    for (const auto* const signal : {&plot.before, &plot.after}) {
        for (const auto& bin : signal->amplitude.bins) all.Add(bin);
    }
    const double most = all.IsEmpty() ? 0 : std::max(std::abs(all.lowest), std::abs(all.highest));
    const double limit = most > 0 ? AmplitudeLimit(std::max(most, LeastAmplitude)) : 1;
    SAxis axis{-limit * Headroom, limit * Headroom, {}};
    AddTicks(axis, RoundUp(limit / 2.5));
    return axis;
}

SAxis LevelAxis(const SPlot& plot) {
    double top = 0;
    std::vector<double> heard;
    for (const auto* const signal : {&plot.before, &plot.after}) {
        for (const auto* const series : {&signal->shortTerm, &signal->peak}) {
            for (const auto& bin : series->bins) {
                if (bin.IsEmpty()) continue;
                top = std::max(top, bin.highest);
                if (bin.highest > LowestLevelDb) heard.push_back(bin.highest);
            }
        }
    }
    double bottom = LowestLevelDb;
    if (!heard.empty()) {
        const auto low = heard.begin() + static_cast<std::ptrdiff_t>(heard.size() / 20);
        std::ranges::nth_element(heard, low);
        bottom = std::clamp(6 * std::floor((*low - 3) / 6), LowestLevelDb, -18.0);
    }
    SAxis axis{bottom, std::min(3 * std::ceil(top / 3), HighestLevelTopDb) + 1, {}};
    AddTicks(axis, LevelStep(axis.to - axis.from));
    return axis;
}

SAxis ReductionAxis(const SPlot& plot) {
    double low = 0, high = 0;
    for (const auto& bin : plot.reduction.bins) {
        if (bin.IsEmpty()) continue;
        low = std::min(low, bin.lowest);
        high = std::max(high, bin.highest);
    }
    // Less than half a decibel above is what a filter does to the ends of a sound.
    SAxis axis{std::clamp(3 * std::floor((low - 0.5) / 3), LowestReductionDb, -6.0),
        high < 0.5 ? 0 : std::min(3 * std::ceil(high / 3), -LowestReductionDb), {}};
    AddTicks(axis, LevelStep(axis.to - axis.from));
    return axis;
}

std::string TimeText(double seconds, double step) {
    int decimals = 0;
    for (double unit = 1; unit > step * (1 + 1e-9); unit /= 10) ++decimals;
    const double scale = std::pow(10.0, decimals);
    const double rounded = std::round(seconds * scale) / scale;
    const auto minutes = static_cast<long>(rounded / 60);
    const double rest = std::max(0.0, rounded - static_cast<double>(minutes) * 60);
    const auto two = [](const std::string& text, bool isSmall) { return (isSmall ? "0" : "") + text; };
    const auto hours = minutes / 60;
    const auto clock =
        hours > 0 ? std::to_string(hours) + ":" + two(std::to_string(minutes % 60), minutes % 60 < 10)
                  : std::to_string(minutes);
    return clock + ":" + two(Fixed(rest, decimals), rest < 10);
}

} // namespace KAV::Host
