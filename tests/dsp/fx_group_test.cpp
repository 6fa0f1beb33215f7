#include "dsp/fx_group.h"

#include <algorithm>
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
    // One step of the 100 ms ramp from 0, at one step per block. Loud enough to be limited, so that the
    // ceiling is audible.
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
    // The positions have arrived; a channel that is added now gets no fade-in.
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
    EXPECT_EQ(samples[0], 0.5f) << "the content of the delay line when the limiter was switched off";
}

TEST_F(Group, ProbesHoldThePeaksBeforeAndAfterTheLimiter) {
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

TEST_F(Group, EachValueArrivesWhenOnlyItMoves) {
    // Loud enough that all of them are audible. The previous value has no influence, except on the last bits.
    const std::array<void (*)(SGroupSettings&), 6> moves{[](SGroupSettings& s) { s.inputGain = 0.8f; },
        [](SGroupSettings& s) { s.threshold = 0.5f; }, [](SGroupSettings& s) { s.ceiling = 0.5f; },
        [](SGroupSettings& s) { s.release = 0.9f; }, [](SGroupSettings& s) { s.autoRelease = true; },
        [](SGroupSettings& s) { s.bypass = true; }};
    const auto bursts = [](FxGroup& subject, const SGroupSettings& values, const CChannelBuffers& buffers) {
        std::vector<float> last;
        for (int block = 0; block < 300; ++block) {
            std::vector<float> samples(Block, 0.4f);
            std::fill_n(samples.begin(), Block / 4, 3.0f);
            std::array<float*, 1> channels{samples.data()};
            subject.Prepare(values, 0, Block, 1);
            subject.Process(channels, buffers);
            last = samples;
        }
        return last;
    };
    for (std::size_t i = 0; i < moves.size(); ++i) {
        FxGroup moved;
        FxGroup always;
        for (FxGroup* subject : {&moved, &always}) {
            subject->SetSampleRate(48000.0f);
            subject->SetBlock(Block);
        }
        SGroupSettings values = settings;
        const auto before = bursts(moved, values, dry);
        moves[i](values);
        const auto actual = bursts(moved, values, dry);
        const auto expected = bursts(always, values, dry);
        EXPECT_NE(actual, before) << i;
        for (std::size_t k = 0; k < Block; ++k) ASSERT_NEAR(actual[k], expected[k], 1e-4f) << i;
    }
}

namespace {

/// The fraction that a ramp of `seconds` for 99 % of a step keeps after one block.
double Kept(double seconds, double rateHz, std::size_t length) {
    return std::exp(-std::log(100.0) / (seconds * rateHz / static_cast<double>(length)));
}

} // namespace

TEST_F(Group, RampsTakeTheirTimeWhateverRateAndLengthBlocksHave) {
    settings.limiter = false;
    settings.inputGain = 0.0f;
    Run(0.5f, 200);
    double gain = 0.0;
    double mix = 0.0;
    double rate = 48000.0;
    for (const std::size_t length : {512u, 512u, 128u, 256u, 64u, 64u}) {
        settings.inputGain = 1.0f;
        settings.bypass = true;
        if (length == 64 && rate == 48000.0) {
            rate = 192000.0;
            group.SetSampleRate(192000.0f);
        }
        std::vector<float> samples(length, 0.5f);
        std::array<float*, 1> channels{samples.data()};
        group.Prepare(settings, 0, length, 1);
        group.Process(channels, dry);
        gain = 1.0 - (1.0 - gain) * Kept(0.1, rate, length);
        mix = 1.0 - (1.0 - mix) * Kept(0.25, rate, length);
        const double processed = 0.5 * std::pow(10.0, (20.0 * gain - 20.0) / 20.0);
        EXPECT_NEAR(samples.back(), mix * 0.5 + (1.0 - mix) * processed, 1e-5) << length;
    }
}

TEST_F(Group, ProcessesTheWholeBlockWhateverItsLengthWas) {
    settings.limiter = false;
    settings.inputGain = 0.0f; // -20 dB
    Run(0.5f, 200);
    for (const std::size_t length : {std::size_t{100}, Block, std::size_t{1}, Block}) {
        std::vector<float> samples(Block, 0.5f);
        std::array<float*, 1> channels{samples.data()};
        group.Prepare(settings, 0, length, 1);
        group.Process(channels, dry);
        for (std::size_t i = 0; i < Block; ++i)
            ASSERT_NEAR(samples[i], i < length ? 0.05f : 0.5f, 1e-6f) << i;
    }
}

TEST_F(Group, LimiterFollowsTheRateAtItsFactor) {
    group.SetSampleRate(96000.0f);
    EXPECT_EQ(group.Limiter().Rate(), 96000.0);
    Run(0.5f, 200); // until nothing moves any more
    group.Prepare(settings, 0, Block, 8);
    EXPECT_EQ(group.Limiter().Rate(), 768000.0);
    group.SetSampleRate(44100.0f);
    EXPECT_EQ(group.Limiter().Rate(), 352800.0);
}

TEST_F(Group, CrossfadeHasEachChannelsOwnInput) {
    settings.limiter = false;
    settings.inputGain = 0.0f; // -20 dB
    Run(0.5f, 200);
    settings.bypass = true;
    std::array<std::vector<float>, 2> audio{
        std::vector<float>(Block, 0.5f), std::vector<float>(Block, -0.25f)};
    std::array<float*, 2> channels{audio[0].data(), audio[1].data()};
    group.Prepare(settings, 0, Block, 1);
    group.Process(channels, dry);
    const double mix = 1.0 - Kept(0.25, 48000.0, Block);
    EXPECT_NEAR(audio[0].back(), mix * 0.5 + (1.0 - mix) * 0.05, 1e-5);
    EXPECT_NEAR(audio[1].back(), mix * -0.25 + (1.0 - mix) * -0.025, 1e-5);
}

TEST_F(Group, LimiterRestsUnderFullBypass) {
    Run(0.5f, 100); // the delay holds 0.5
    settings.bypass = true;
    EXPECT_EQ(Run(0.25f, 300), 0.25f);
    settings.bypass = false;
    std::vector<float> samples(Block, 0.0f);
    std::array<float*, 1> channels{samples.data()};
    group.Prepare(settings, 0, Block, 1);
    group.Process(channels, dry);
    EXPECT_GT(samples[0], 0.0f) << "the content of the delay line before bypass was complete";
}
