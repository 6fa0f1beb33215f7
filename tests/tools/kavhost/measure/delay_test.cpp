#include "tools/kavhost/measure/delay.h"

#include "tests/tools/kavhost/support.h"
#include "tools/kavhost/base/random.h"
#include "tools/kavhost/effect/blocks.h"
#include "tools/kavhost/effect/effect.h"
#include "tools/kavhost/effect/effect_library.h"

#include <algorithm>
#include <cmath>
#include <complex>
#include <gtest/gtest.h>
#include <limits>
#include <numbers>

using namespace KAV::Host;
using namespace KAV::Tests;

namespace {

std::vector<float> RandomSignal(std::size_t length, std::uint64_t seed) {
    CRandom random(seed);
    std::vector<float> signal(length);
    for (float& sample : signal) sample = static_cast<float>(random.Bipolar());
    return signal;
}

SDelay DelayOf(const char* name, int channels, std::int32_t blockSize) {
    const CEffectLibrary library(EffectFile(name));
    CEffect effect(library, {48000, blockSize});
    effect.SetChannels(channels);
    effect.Start();
    SettleFadeIn(effect);
    return MeasureDelay(effect);
}

} // namespace

TEST(FindSignal, FindsASignalAtEveryLagWhateverItsGainAndSign) {
    const auto signal = RandomSignal(1000, 1);
    for (const std::size_t lag : {0u, 1u, 37u, 2999u, 3000u}) {
        for (const float gain : {1.0f, 1e-4f, -0.5f, 1e4f}) {
            std::vector<float> recording(4000);
            for (std::size_t i = 0; i < signal.size(); ++i) recording[lag + i] = gain * signal[i];
            const auto match = FindSignal(signal, recording);
            ASSERT_TRUE(match);
            EXPECT_EQ(match->lag, static_cast<std::int64_t>(lag));
            EXPECT_NEAR(match->correlation, 1, 1e-5);
        }
    }
}

TEST(FindSignal, FindsASignalInNoiseOfItsOwnLevel) {
    const auto signal = RandomSignal(4000, 1);
    auto recording = RandomSignal(10000, 7);
    for (std::size_t i = 0; i < signal.size(); ++i) recording[123 + i] += signal[i];
    const auto match = FindSignal(signal, recording);
    EXPECT_EQ(match->lag, 123);
    EXPECT_NEAR(match->correlation, std::sqrt(0.5), 0.05); // half of the power is from the signal
}

TEST(FindSignal, FindsTheFractionOfALag) {
    const auto tones = [](double delay, std::size_t length) {
        std::vector<float> signal(length);
        for (std::size_t n = 0; n < length; ++n) {
            double sum = 0;
            for (int k = 1; k <= 40; ++k) { // frequencies without a common period, up to 0.16 of the rate
                const double frequency = 0.16 * std::fmod(k * std::numbers::phi, 1);
                sum += std::sin(2 * std::numbers::pi * frequency * (static_cast<double>(n) - delay) + k * k);
            }
            signal[n] = static_cast<float>(sum / 40);
        }
        return signal;
    };
    for (const double fraction : {0.0, 0.1, 0.3, 0.45}) {
        const auto later = FindSignal(tones(0, 4000), tones(20 + fraction, 5000));
        EXPECT_EQ(later->lag, 20);
        EXPECT_NEAR(later->exactLag, 20 + fraction, 0.01);
        EXPECT_NEAR(FindSignal(tones(0, 4000), tones(20 - fraction, 5000))->exactLag, 20 - fraction, 0.01);
    }
}

TEST(DelayNoise, HasTheBandBetween50HzAndASixthOfTheRate) {
    for (const double rateHz : {8000.0, 48000.0}) {
        const auto noise = DelayNoise(rateHz, 0.3);
        const auto length = static_cast<double>(noise.size());
        double peak = 0;
        for (const float sample : noise) peak = std::max(peak, std::abs(static_cast<double>(sample)));
        EXPECT_NEAR(peak, 0.3, 1e-6);
        // The power of this many neighbouring frequencies of which the length holds whole numbers of waves.
        const auto powerAt = [&](double ofRate, int count) {
            const double first = std::floor(ofRate * length);
            double power = 0;
            for (int k = 0; k < count; ++k) {
                std::complex<double> sum;
                for (std::size_t n = 0; n < noise.size(); ++n) {
                    const double turns = (first + k) / length * static_cast<double>(n);
                    sum += static_cast<double>(noise[n]) * std::polar(1.0, -2 * std::numbers::pi * turns);
                }
                power += std::norm(sum);
            }
            return power;
        };
        const double inside = powerAt(0.1, 32);
        EXPECT_GT(powerAt(0.16, 32), 0.3 * inside);
        EXPECT_LT(powerAt(0.168, 32), 1e-9 * inside);
        EXPECT_LT(powerAt(0.4, 32), 1e-9 * inside);
        EXPECT_GT(powerAt(60 / rateHz, 8), 0.02 * inside);
        EXPECT_LT(powerAt(40 / rateHz, 6), 1e-9 * inside);
    }
}

TEST(FindSignal, CorrelatesLittleWithOtherNoise) {
    EXPECT_LT(FindSignal(RandomSignal(32768, 1), RandomSignal(131072, 7))->correlation, 0.05);
}

TEST(FindSignal, FindsNothingInSilence) {
    const auto signal = RandomSignal(100, 1);
    EXPECT_FALSE(FindSignal(signal, std::vector<float>(1000)));
    EXPECT_FALSE(FindSignal(std::vector<float>(100), RandomSignal(1000, 1)));
    EXPECT_FALSE(FindSignal(signal, std::vector<float>(50, 1.0f)));
    EXPECT_FALSE(FindSignal({}, signal));
    EXPECT_FALSE(FindSignal(signal, std::vector<float>(1000, std::numeric_limits<float>::quiet_NaN())));
}

TEST(MeasureDelay, IsExactWhateverTheEffectReports) {
    for (const std::int32_t blockSize : {1, 64, 512, 4096}) {
        const auto fader = DelayOf("fader", 3, blockSize); // reports 256
        EXPECT_TRUE(fader.isMeasured);
        EXPECT_EQ(fader.frames, 64);
        EXPECT_NEAR(fader.exactFrames, 64, 0.01);
    }
    const auto old = DelayOf("old_stereo", 2, 512); // reports nothing, and inverts the signal
    EXPECT_TRUE(old.isMeasured);
    EXPECT_EQ(old.frames, 7);
}

TEST(MeasureDelay, TakesTheEffectsWordWhenItHearsSomethingElse) {
    const auto delay = DelayOf("generator", 2, 512);
    EXPECT_FALSE(delay.isMeasured);
    EXPECT_EQ(delay.frames, 100);
    EXPECT_EQ(delay.exactFrames, 100);
}
