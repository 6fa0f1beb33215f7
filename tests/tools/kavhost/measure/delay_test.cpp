#include "tools/kavhost/measure/delay.h"

#include "tests/tools/kavhost/support.h"
#include "tools/kavhost/base/random.h"
#include "tools/kavhost/effect/blocks.h"
#include "tools/kavhost/effect/effect.h"
#include "tools/kavhost/effect/effect_library.h"

#include <cmath>
#include <gtest/gtest.h>
#include <limits>

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
    }
    const auto old = DelayOf("old_stereo", 2, 512); // reports nothing, and inverts the signal
    EXPECT_TRUE(old.isMeasured);
    EXPECT_EQ(old.frames, 7);
}

TEST(MeasureDelay, TakesTheEffectsWordWhenItHearsSomethingElse) {
    const auto delay = DelayOf("generator", 2, 512);
    EXPECT_FALSE(delay.isMeasured);
    EXPECT_EQ(delay.frames, 100);
}
