#include "bench/measure/chapters.h"
#include "bench/measure/meters.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <numbers>
#include <ostream>

namespace KAV::Measure {

namespace {

constexpr float RateHz = 48000.0f;
constexpr std::array Releases{0.1, 1.0, 10.0, 100.0, 1000.0};

/// Appends a constant of this level and length.
void Append(std::vector<float>& signal, double level, double seconds) {
    signal.insert(signal.end(), static_cast<std::size_t>(seconds * RateHz), static_cast<float>(level));
}

} // namespace

void StepResponse(std::ostream& out) {
    out << R"(## Step response

A constant rises from -40 dB to 0 dB within one sample. The threshold is at -12 dB and the ceiling at 0 dB, so the limiter
reduces the gain by 12 dB. Overshoot is how far the output exceeds the ceiling; one tap of the smoothing window receives
its value one sample late. Settled means within 0.001 dB of the ceiling.

| factor | overshoot, dB | output moves after, samples | settled after, samples |
|---|---|---|---|
)";
    for (const int factor : {1, 2, 4, 8}) {
        CRig rig({.rateHz = RateHz, .thresholdDb = -12.0f, .factor = factor, .highQuality = true}, 1);
        Audio audio(1);
        Append(audio[0], 0.01, 0.5);
        const std::size_t step = audio[0].size();
        Append(audio[0], 1.0, 0.5);
        rig.Run(audio);
        const auto& output = audio[0];
        const double before = output[step - 1];
        std::size_t moves = 0;
        while (std::fabs(Db(output[step + moves] / before)) < 0.01) ++moves;
        std::size_t settled = output.size() - step;
        while (settled > 0 && std::fabs(Db(output[step + settled - 1])) < 0.001) --settled;
        out << "| " << factor << " | " << Db(SamplePeak(output)) << " | " << moves << " | " << settled
            << " |\n";
    }
    out << R"(
Above factor 1 the filters ring at the step. The limiter also limits the ringing, and then the release of 10 ms takes
the longest to settle.

)";
}

void ReleaseTimes(std::ostream& out) {
    out << R"(## Release

A limiting of 12 dB ends within one sample. By definition, the remaining reduction, 1 - gain, falls to a tenth in the set
time. It is measured at factor 1 from the gain of a constant at -60 dB, between 90 % and 9 % of the full reduction, so
that the averages over the look-ahead affect neither end.

| set, ms | measured, ms |
|---|---|
)";
    for (const double releaseMs : Releases) {
        CRig rig({.rateHz = RateHz, .thresholdDb = -12.0f, .releaseMs = releaseMs}, 1);
        Audio audio(1);
        constexpr double quiet = 0.001;
        Append(audio[0], 1.0, 4.0 * releaseMs / 1000.0 + 0.5);
        const std::size_t end = audio[0].size();
        Append(audio[0], quiet, 4.0 * releaseMs / 1000.0 + 0.1);
        rig.Run(audio);
        const double unity = quiet * FromDb(12.0); // the threshold also drives what isn't limited
        const auto reduction = [&](std::size_t i) { return 1.0 - static_cast<double>(audio[0][i]) / unity; };
        const double full = 1.0 - FromDb(-12.0);
        const auto start = end + static_cast<std::size_t>(rig.LookaheadDelay());
        const auto fallsTo = [&](double part) { // interpolated linearly between two samples
            std::size_t i = start;
            while (i + 1 < audio[0].size() && reduction(i) > part * full) ++i;
            const double before = reduction(i - 1);
            return static_cast<double>(i - 1) + (before - part * full) / (before - reduction(i));
        };
        out << "| " << releaseMs << " | " << (fallsTo(0.09) - fallsTo(0.9)) / RateHz * 1000.0 << " |\n";
    }
    out << R"(
The two averages together are as long as the look-ahead, 1.33 ms at 48 kHz. They lengthen shorter releases.

)";
}

void Distortion(std::ostream& out) {
    out << R"(## Distortion

The input is a sine of 60 Hz, 6 dB above the threshold of -12 dB, at factor 1. The residue is the output without the
sine, relative to the sine, measured over one second after three seconds of settling.

| release | residue, dB | in per cent |
|---|---|---|
)";
    const auto measure = [&](const char* name, double releaseMs, bool automatic) {
        CRig rig(
            {.rateHz = RateHz, .thresholdDb = -12.0f, .releaseMs = releaseMs, .autoRelease = automatic}, 1);
        Audio audio(1, std::vector<float>(static_cast<std::size_t>(4.0f * RateHz)));
        for (std::size_t i = 0; i < audio[0].size(); ++i) {
            audio[0][i] = static_cast<float>(
                FromDb(-6.0) * std::sin(2.0 * std::numbers::pi * 60.0 / RateHz * static_cast<double>(i)));
        }
        rig.Run(audio);
        const std::span<const float> last(
            audio[0].data() + audio[0].size() - static_cast<std::size_t>(RateHz),
            static_cast<std::size_t>(RateHz));
        double power = 0.0;
        for (const float sample : last) power += static_cast<double>(sample) * static_cast<double>(sample);
        const double sine = std::norm(Amplitude(last, 60.0 / RateHz)) / 2.0;
        const double mean = std::norm(Amplitude(last, 0.0) / 2.0);
        const double residue = std::max(power / RateHz - sine - mean, 1e-30);
        out << "| " << name << " | " << 10.0 * std::log10(residue / sine) << " | "
            << 100.0 * std::sqrt(residue / sine) << " |\n";
    };
    measure("0.1 ms", 0.1, false);
    measure("1 ms", 1.0, false);
    measure("10 ms", 10.0, false);
    measure("100 ms", 100.0, false);
    measure("1000 ms", 1000.0, false);
    measure("auto", 10.0, true);
    out << '\n';
}

} // namespace KAV::Measure
