#include "tools/kavhost/measure/true_peak.h"

#include "tests/tools/kavhost/support.h"

#include <algorithm>
#include <cmath>
#include <ebur128.h>
#include <gtest/gtest.h>
#include <numbers>

using namespace KAV::Host;
using namespace KAV::Tests;

namespace {

double PeakOf(const SAudio& audio, std::size_t chunkFrames) {
    CTruePeak meter(audio.format.channels, audio.format.rateHz);
    std::span<const float> rest(audio.samples);
    while (!rest.empty()) {
        const auto count =
            std::min(rest.size(), chunkFrames * static_cast<std::size_t>(audio.format.channels));
        meter.Add(rest.first(count));
        rest = rest.subspan(count);
    }
    return meter.Peak();
}

double LibraryPeakOf(const SAudio& audio) {
    auto* state = ebur128_init(static_cast<unsigned>(audio.format.channels),
        static_cast<unsigned long>(audio.format.rateHz), EBUR128_MODE_TRUE_PEAK);
    ebur128_add_frames_float(state, audio.samples.data(), audio.Frames());
    double highest = 0;
    for (unsigned c = 0; c < static_cast<unsigned>(audio.format.channels); ++c) {
        double peak = 0;
        EXPECT_EQ(ebur128_true_peak(state, c, &peak), EBUR128_SUCCESS);
        highest = std::max(highest, peak);
    }
    ebur128_destroy(&state);
    return highest;
}

/// Noise with a level that rises and falls, as music's does.
SAudio Swelling(int channels, int rateHz, std::size_t frames, double swells) {
    auto audio = Noise(channels, frames, 0.9f);
    audio.format.rateHz = rateHz;
    for (std::size_t i = 0; i < audio.samples.size(); ++i) {
        const double place = static_cast<double>(i) / static_cast<double>(audio.samples.size());
        audio.samples[i] *= static_cast<float>(std::pow(std::sin(std::numbers::pi * swells * place), 2));
    }
    return audio;
}

} // namespace

TEST(TruePeak, IsThatOfTheLibraryToTheLastBitAtEveryRate) {
    for (const int rateHz : {8000, 44100, 48000, 95999, 96000, 176400, 191999, 192000, 384000}) {
        for (const int channels : {1, 2, 6}) {
            for (const double swells : {0.5, 3.0, 40.0}) {
                const auto audio = Swelling(channels, rateHz, 5000, swells);
                EXPECT_EQ(PeakOf(audio, 5000), LibraryPeakOf(audio))
                    << rateHz << " Hz, " << channels << " channels, " << swells << " swells";
            }
        }
    }
}

TEST(TruePeak, DoesNotDependOnHowTheSoundIsCut) {
    const auto audio = Swelling(2, 48000, 3000, 7);
    const double whole = LibraryPeakOf(audio);
    for (const std::size_t chunk : {1u, 2u, 31u, 32u, 33u, 100u, 1000u})
        EXPECT_EQ(PeakOf(audio, chunk), whole);
}

TEST(TruePeak, FindsAPeakThatIsOnlyBetweenTheSamples) {
    // A sine at a quarter of the rate, 45 degrees beside its peaks: they are 3.01 dB above the samples.
    SAudio audio{{48000, 1, ESampleFormat::Float32}, std::vector<float>(4800)};
    for (std::size_t n = 0; n < audio.samples.size(); ++n)
        audio.samples[n] =
            static_cast<float>(0.5 * std::sin(std::numbers::pi / 2 * (static_cast<double>(n) + 0.5)));
    CTruePeak meter(1, 48000);
    meter.Add(audio.samples);
    EXPECT_NEAR(20 * std::log10(meter.SamplePeak()), 20 * std::log10(0.5) - 3.01, 0.001);
    EXPECT_GT(20 * std::log10(meter.Peak()), 20 * std::log10(0.5) - 0.1);
    EXPECT_EQ(meter.Peak(), LibraryPeakOf(audio));
}

TEST(TruePeak, IsAtLeastTheLastSample) {
    SAudio audio{{48000, 2, ESampleFormat::Float32}, std::vector<float>(200)};
    audio.samples.back() = -0.75f;
    EXPECT_EQ(PeakOf(audio, 100), 0.75);
    EXPECT_EQ(LibraryPeakOf(audio), 0.75);
}
