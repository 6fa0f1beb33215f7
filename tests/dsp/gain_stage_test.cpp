#include "dsp/gain_stage.h"

#include <array>
#include <cmath>
#include <gtest/gtest.h>
#include <limits>

using KAV::DSP::GainStage;

namespace {

constexpr float Infinity = std::numeric_limits<float>::infinity();

float Apply(const GainStage& stage, float x) {
    std::array<float, 1> channel{x};
    stage.Process(channel);
    return channel[0];
}

} // namespace

TEST(GainStage, MultipliesByTheGain) {
    const GainStage stage{.gain = 0.5f};
    EXPECT_EQ(Apply(stage, 0.75f), 0.375f);
}

TEST(GainStage, MixesTheDrySignalIn) {
    const GainStage stage{.mix = 0.25f, .gain = 3.0f};
    EXPECT_EQ(Apply(stage, 1.0f), 0.25f * 3.0f + 0.75f);
}

TEST(GainStage, TurnsAnInfinityIntoNotANumberThroughTheDryTerm) {
    const GainStage stage{.gain = 0.5f};
    EXPECT_TRUE(std::isnan(Apply(stage, Infinity)));
    EXPECT_TRUE(std::isnan(Apply(stage, -Infinity)));
}

TEST(GainStage, KeepsTheSignOfAZeroOnlyWhereBothTermsHaveIt) {
    const GainStage stage{.gain = 0.5f};
    EXPECT_TRUE(std::signbit(Apply(stage, -0.0f)));
    const GainStage inverted{.gain = -0.5f};
    EXPECT_FALSE(std::signbit(Apply(inverted, -0.0f)));
}

TEST(GainStage, DoesNothingAtUnityGainWithoutMixOrWhenOff) {
    for (const GainStage& stage : {GainStage{.gain = 1.0f}, GainStage{.mix = 0.0f, .gain = 5.0f},
             GainStage{.off = true, .gain = 5.0f}}) {
        EXPECT_EQ(Apply(stage, Infinity), Infinity);
        EXPECT_EQ(Apply(stage, 0.3f), 0.3f);
        EXPECT_TRUE(std::isnan(Apply(stage, std::nanf(""))));
    }
}
