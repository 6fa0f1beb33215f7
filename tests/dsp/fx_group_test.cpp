#include "dsp/fx_group.h"

#include <array>
#include <cmath>
#include <gtest/gtest.h>
#include <vector>

using namespace KAV::DSP;

namespace {

constexpr std::size_t Block = 512;

class Group : public testing::Test {
protected:
    FxGroup group;
    CChannelBuffers dry;
    SGroupSettings settings{
        .inputGain = 1.0f, .threshold = 1.0f, .ceiling = 1.0f, .release = 0.4f, .limiter = true};

    void SetUp() override {
        group.SetSampleRate(48000.0f);
        group.SetBlock(Block);
        dry.Resize(Block);
    }
    float Run(float level, int blocks = 1) {
        std::vector<float> samples(Block);
        for (int i = 0; i < blocks; ++i) {
            std::fill(samples.begin(), samples.end(), level);
            std::array<float*, 1> channels{samples.data()};
            group.Prepare(settings, 0, Block, 1);
            group.Process(channels, dry);
        }
        return samples.back();
    }
};

} // namespace

TEST_F(Group, FadesInFromItsLowestGainAndCeiling) {
    // One step of the 100 ms ramp from 0, at one step per block. Loud enough to be limited: the ceiling is
    // heard.
    const double position =
        1.0 - std::exp(-1.0 / (0.1 / std::log(100.0) * 48000.0 / static_cast<double>(Block)));
    EXPECT_NEAR(Run(0.5f), std::pow(10.0, (30.0 * position - 30.0) / 20.0), 1e-4);
    EXPECT_NEAR(Run(0.5f, 100), 0.5f, 1e-6f);
}

TEST_F(Group, WithoutChannelsItsValuesMoveAllTheSame) {
    for (int i = 0; i < 100; ++i) {
        group.Prepare(settings, 0, Block, 1);
        group.Process({}, dry);
    }
    // The positions have arrived; a channel that comes now finds no fade-in.
    EXPECT_NEAR(Run(0.5f), 0.5f, 1e-6f);
}

TEST_F(Group, BypassFadesToTheInputAndThenDoesNothing) {
    settings.inputGain = 0.0f; // -20 dB
    Run(0.5f, 100);
    EXPECT_NEAR(Run(0.5f), 0.05f, 1e-4f);
    settings.bypass = true;
    const float between = Run(0.5f, 3);
    EXPECT_GT(between, 0.06f);
    EXPECT_LT(between, 0.49f);
    EXPECT_EQ(Run(0.5f, 200), 0.5f);
    settings.bypass = false;
    EXPECT_LT(Run(0.5f, 3), 0.49f);
    EXPECT_NEAR(Run(0.5f, 200), 0.05f, 1e-4f);
}

TEST_F(Group, LimiterOffKeepsItsDelayLinesForLater) {
    Run(0.5f, 100);
    settings.limiter = false;
    EXPECT_EQ(Run(0.25f, 3), 0.25f);
    settings.limiter = true;
    std::vector<float> samples(Block, 0.0f);
    std::array<float*, 1> channels{samples.data()};
    group.Prepare(settings, 0, Block, 1);
    group.Process(channels, dry);
    EXPECT_EQ(samples[0], 0.5f) << "what the delay line held when the limiter was switched off";
}

TEST_F(Group, ProbesHoldThePeaksBeforeAndBehindTheLimiter) {
    Run(0.5f, 100);
    group.inputProbes[0].Take();
    group.outputProbes[0].Take();
    Run(2.0f, 10);
    EXPECT_EQ(group.inputProbes[0].peak, 2.0f);
    EXPECT_NEAR(group.outputProbes[0].Take(), 1.0f, 1e-3f);
    EXPECT_EQ(group.outputProbes[0].peak, 0.0f);
}

TEST_F(Group, FactorChangeRestartsTheLimiterAtItsNewRate) {
    EXPECT_EQ(group.Limiter().Lookahead(), 64u);
    group.Prepare(settings, 0, Block, 4);
    EXPECT_EQ(group.Limiter().Lookahead(), 256u);
    EXPECT_EQ(group.Limiter().Rate(), 192000.0);
}
