#include "bench/measure/chapters.h"
#include "bench/measure/meters.h"
#include "tools/kavhost/measure/true_peak.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <functional>
#include <numbers>
#include <ostream>
#include <random>
#include <string>

namespace KAV::Measure {

namespace {

struct SMode {
    int factor;
    bool highQuality;
};
constexpr std::array Modes{SMode{1, false}, SMode{2, false}, SMode{4, false}, SMode{8, false}, SMode{2, true},
    SMode{4, true}, SMode{8, true}};

/// The highest true peak of all channels, by the filter of ITU-R BS.1770.
double RecommendedTruePeak(const Audio& audio, float rateHz) {
    Host::CTruePeak meter(static_cast<int>(audio.size()), static_cast<int>(rateHz));
    std::vector<float> interleaved(audio.size() * audio[0].size());
    for (std::size_t i = 0; i < interleaved.size(); ++i)
        interleaved[i] = audio[i % audio.size()][i / audio.size()];
    meter.Add(interleaved);
    return meter.Peak();
}

void Row(std::ostream& out, const std::string& name, const SMode& mode, const Audio& material, float rateHz) {
    CRig rig({.rateHz = rateHz,
                 .thresholdDb = -12.0f,
                 .ceilingDb = -1.0f,
                 .releaseMs = 10.0,
                 .factor = mode.factor,
                 .highQuality = mode.highQuality},
        material.size());
    Audio audio = material;
    rig.Run(audio);
    double samples = 0.0;
    double between = 0.0;
    for (const auto& channel : audio) {
        samples = std::max(samples, SamplePeak(channel));
        between = std::max(between, TruePeak(channel));
    }
    out << "| " << name << " | " << mode.factor << (mode.highQuality ? ", high quality" : "") << " | "
        << Db(samples) << " | " << Db(RecommendedTruePeak(audio, rateHz)) << " | " << Db(between) << " |\n";
}

/// Half a second of it in one channel, faded in and out so that only the case itself causes peaks.
Audio Case(float rateHz, const std::function<double(std::size_t)>& sample) {
    Audio audio(1, std::vector<float>(static_cast<std::size_t>(rateHz / 2.0f)));
    const auto length = static_cast<double>(audio[0].size());
    for (std::size_t i = 0; i < audio[0].size(); ++i) {
        const double edge = std::min(static_cast<double>(i), length - 1.0 - static_cast<double>(i)) / 480.0;
        const double fade = edge < 1.0 ? 0.5 - 0.5 * std::cos(std::numbers::pi * edge) : 1.0;
        audio[0][i] = static_cast<float>(fade * sample(i));
    }
    return audio;
}

} // namespace

void Peaks(std::ostream& out, const Audio& music, float rateHz) {
    out << R"(## Peaks

The threshold is -12 dB, the ceiling -1 dB and the release 10 ms, so the limiter is driven by 12 dB. The table shows the
sample peak, the true peak by libebur128, and the true peak by our own meter at 8 times the rate, all in dB. The limiter
lets no sample exceed the ceiling at its own rate, but the filter that returns to the base rate rings above it.

- music: ten seconds of a produced track at its own rate
- quarter: a sine at a quarter of the rate; all its samples are at 0.71 of its peaks
- sixth: a sine at a sixth of the rate; all its samples are at 0.87 of its peaks
- square: blocks of five samples of each sign
- noise: every sample at full scale with a random sign

| material | factor | sample peak | true peak, libebur128 | true peak, 8 times |
|---|---|---|---|---|
)";
    constexpr float caseRateHz = 48000.0f;
    const auto sine = [](double cycles, double phase) {
        return [cycles, phase](std::size_t i) {
            return std::sin(2.0 * std::numbers::pi * (cycles * static_cast<double>(i) + phase));
        };
    };
    std::mt19937 random(1);
    const Audio quarter = Case(caseRateHz, sine(0.25, 0.125));
    const Audio sixth = Case(caseRateHz, sine(1.0 / 6.0, 1.0 / 6.0));
    const Audio square = Case(caseRateHz, [](std::size_t i) { return i / 5 % 2 == 0 ? 1.0 : -1.0; });
    const Audio noise = Case(caseRateHz, [&](std::size_t) { return (random() & 1u) != 0 ? 1.0 : -1.0; });
    for (const auto& mode : Modes) Row(out, "music", mode, music, rateHz);
    for (const auto& mode : Modes) Row(out, "quarter", mode, quarter, caseRateHz);
    for (const auto& mode : Modes) Row(out, "sixth", mode, sixth, caseRateHz);
    for (const auto& mode : Modes) Row(out, "square", mode, square, caseRateHz);
    for (const auto& mode : Modes) Row(out, "noise", mode, noise, caseRateHz);
    out << '\n';
}

} // namespace KAV::Measure
