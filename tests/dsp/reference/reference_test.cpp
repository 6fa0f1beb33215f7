#include "tests/dsp/reference/coverage.h"
#include "tests/dsp/reference/gain_stage.h"
#include "tests/dsp/reference/limiter.h"
#include "tests/dsp/reference/silence_gate.h"
#include "tests/dsp/reference/smoother.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <span>
#include <vector>

namespace KAV::Reference {
namespace {

constexpr float Infinity = std::numeric_limits<float>::infinity();
constexpr float NotANumber = std::numeric_limits<float>::quiet_NaN();

/// A limiter at drive 1 and ceiling 1.
class CUnityLimiter {
public:
    explicit CUnityLimiter(double rateHz, double releasePos = 0.4, bool automatic = false)
        : _limiter(_coverage) {
        _limiter.SetRate(rateHz);
        _limiter.SetParams(1.0, 1.0, releasePos, automatic);
    }
    void Run(std::vector<float>& channel) {
        float* const buffer = channel.data();
        _limiter.Process(std::span(&buffer, 1), static_cast<int>(channel.size()));
    }
    CLimiter& Limiter() { return _limiter; }

private:
    CCoverage _coverage;
    CLimiter _limiter;
};

TEST(ReferenceWindowMinimum, ForgetsAValueExactlyLengthPushesLater) {
    CWindowMinimum minimum;
    minimum.SetLength(64);
    EXPECT_EQ(minimum.Push(2.0), 1.0);
    EXPECT_EQ(minimum.Push(0.25), 0.25);
    for (int i = 1; i < 64; ++i) EXPECT_EQ(minimum.Push(1.0), 0.25);
    EXPECT_EQ(minimum.Push(1.0), 1.0);
}

TEST(ReferenceMovingAverage, TakesAStepInEqualParts) {
    CMovingAverage average;
    average.SetLength(4);
    EXPECT_EQ(average.Push(1.0), 1.0);
    EXPECT_EQ(average.Push(0.0), 0.75);
    EXPECT_EQ(average.Push(0.0), 0.5);
    EXPECT_EQ(average.Push(0.0), 0.25);
    EXPECT_EQ(average.Push(0.0), 0.0);
}

TEST(ReferenceSmoother, CoversNinetyNinePercentOfAStepInItsTime) {
    CCoverage coverage;
    CSmoother smoother(100.0f, 50.0f);
    smoother.SetRate(1000.0f);
    float rising = 0.0f;
    for (int i = 0; i < 100; ++i) rising = smoother.Step(rising, 10.0f, coverage);
    EXPECT_NEAR(rising, 9.9f, 1e-3f);
    float falling = 10.0f;
    for (int i = 0; i < 50; ++i) falling = smoother.Step(falling, 0.0f, coverage);
    EXPECT_NEAR(falling, 0.1f, 1e-3f);
}

TEST(ReferenceSmoother, ArrivesOnceWithinAHundredth) {
    CCoverage coverage;
    CSmoother smoother(100.0f, 100.0f);
    smoother.SetRate(1000.0f);
    EXPECT_EQ(smoother.Step(0.991f, 1.0f, coverage), 1.0f);
    EXPECT_EQ(smoother.Step(0.009f, 0.0f, coverage), 0.0f);
    EXPECT_LT(smoother.Step(0.989f, 1.0f, coverage), 1.0f);
    EXPECT_EQ(smoother.Step(0.3f, 0.3f, coverage), 0.3f);
}

TEST(ReferenceSmoother, WithoutTimeArrivesInOneStep) {
    CCoverage coverage;
    CSmoother smoother(0.0f, 0.0f);
    smoother.SetRate(10.0f);
    EXPECT_EQ(smoother.Step(0.0f, 0.7f, coverage), 0.7f);
}

TEST(ReferenceGainStage, AtUnityTouchesNothingElseTurnsInfinityIntoNan) {
    CCoverage coverage;
    CGainStage stage;
    float samples[3] = {Infinity, -0.0f, 0.5f};
    stage.Apply(samples, 3, coverage);
    EXPECT_EQ(samples[0], Infinity);
    stage.SetGain(2.0f);
    stage.Apply(samples, 3, coverage);
    EXPECT_TRUE(std::isnan(samples[0]));
    EXPECT_TRUE(std::signbit(samples[1]));
    EXPECT_EQ(samples[2], 1.0f);
}

TEST(ReferenceSilenceGate, ClosesOneSampleAfterFiveSeconds) {
    CCoverage coverage;
    CSilenceGate gate;
    gate.SetRate(8000.9f);
    const std::vector<float> quiet(40000, 1.9e-8f);
    gate.Watch(quiet.data(), 40000, coverage);
    EXPECT_FALSE(gate.IsSilent());
    gate.Watch(quiet.data(), 1, coverage);
    EXPECT_TRUE(gate.IsSilent());
    const float atLimit = 2e-8f;
    gate.Watch(&atLimit, 1, coverage);
    EXPECT_FALSE(gate.IsSilent());
    gate.Watch(quiet.data(), 40000, coverage);
    EXPECT_FALSE(gate.IsSilent());
}

TEST(ReferenceSilenceGate, StartsAtTheLimitOfTheUsualRateAndHearsNan) {
    CCoverage coverage;
    CSilenceGate gate;
    std::vector<float> channel(5 * 44100 + 1, 0.0f);
    channel.front() = NotANumber;
    gate.Watch(channel.data(), static_cast<int>(channel.size()), coverage);
    EXPECT_FALSE(gate.IsSilent());
    gate.Watch(channel.data() + 1, 1, coverage);
    EXPECT_TRUE(gate.IsSilent());
}

TEST(ReferenceSilenceGate, PassesALimitThatShrinksBelowItsCount) {
    CCoverage coverage;
    CSilenceGate gate;
    gate.SetRate(2000.0f);
    const std::vector<float> silence(20000, 0.0f);
    gate.Watch(silence.data(), 9000, coverage);
    gate.SetRate(1000.0f);
    gate.Watch(silence.data(), 20000, coverage);
    EXPECT_FALSE(gate.IsSilent());
}

TEST(ReferenceLimiter, LooksAheadByAboutOneAndAHalfMilliseconds) {
    CCoverage coverage;
    CLimiter limiter(coverage);
    EXPECT_EQ(limiter.LookAhead(), 64u);
    const struct {
        double rateHz;
        std::size_t samples;
    } table[] = {{8000, 64}, {18287, 64}, {44100, 64}, {48000, 64}, {88200, 128}, {96000, 128}, {176400, 256},
        {192000, 256}, {352800, 512}, {384000, 576}, {768000, 1088}, {1536000, 2176}};
    for (const auto& row : table) {
        limiter.SetRate(row.rateHz);
        EXPECT_EQ(limiter.LookAhead(), row.samples) << row.rateHz;
    }
}

TEST(ReferenceLimiter, DelaysWhatNeedsNoLimitingAndNothingElse) {
    CUnityLimiter limiter(96000.0);
    std::vector<float> channel(300, 0.0f);
    channel[10] = 0.75f;
    channel[11] = -0.99f;
    limiter.Run(channel);
    for (std::size_t i = 0; i < channel.size(); ++i) {
        const float expected = i == 138 ? 0.75f : i == 139 ? -0.99f : 0.0f;
        EXPECT_EQ(channel[i], expected) << i;
    }
}

TEST(ReferenceLimiter, HasHalvedTheGainWhenAStepOfTwoLeavesTheDelay) {
    constexpr std::size_t LookAhead = 64;
    CUnityLimiter limiter(44100.0);
    std::vector<float> channel(1000, 2.0f);
    for (std::size_t i = 0; i < 100; ++i) channel[i] = 0.0f;
    limiter.Run(channel);
    for (std::size_t i = 0; i < 100 + LookAhead; ++i) EXPECT_EQ(channel[i], 0.0f) << i;
    for (std::size_t i = 100 + LookAhead; i < channel.size(); ++i) EXPECT_NEAR(channel[i], 1.0, 1e-6) << i;
}

TEST(ReferenceLimiter, LetsOneSampleOvershootByTheTapThatComesTooLate) {
    constexpr double Rate = 44100.0;
    constexpr double BoxSize = 33.0;
    // The minimum forgets the peak as it leaves the delay; that newest value has the weight of one corner.
    const double recovery = 1.0 - std::pow(0.1, 1.0 / (1e-5 * Rate)); // one sample of the shortest release
    const double gain = 0.5 + 0.5 * recovery / (BoxSize * BoxSize);
    CUnityLimiter limiter(Rate, 0.0);
    std::vector<float> channel(300, 0.0f);
    channel[100] = 2.0f;
    limiter.Run(channel);
    EXPECT_NEAR(channel[164], 2.0 * gain, 1e-6);
    EXPECT_GT(channel[164], 1.0f);
}

TEST(ReferenceLimiter, RecoversNinetyPercentInTheReleaseTime) {
    constexpr std::size_t Rate = 8000;
    constexpr std::size_t LookAhead = 64;
    CUnityLimiter limiter(static_cast<double>(Rate), 1.0); // one second
    std::vector<float> channel(3 * Rate, 0.5f);
    for (std::size_t i = 0; i < Rate; ++i) channel[i] = 2.0f;
    limiter.Run(channel);
    // The window holds the last peak for its length; then the averages lag by half the window.
    const std::size_t start = Rate + LookAhead - 1 + LookAhead / 2;
    EXPECT_NEAR(channel[start + Rate] / 0.5, 1.0 - 0.5 * 0.1, 5e-4);
    EXPECT_NEAR(channel[start + Rate / 2] / 0.5, 1.0 - 0.5 * std::sqrt(0.1), 5e-4);
}

TEST(ReferenceLimiter, AutoReleaseIsQuickAfterATransientAndSlowAfterLongReduction) {
    constexpr std::size_t Rate = 44100;
    constexpr std::size_t Window = 3 * 64; // held minimum, and both averages
    CUnityLimiter transient(Rate, 0.4, true);
    std::vector<float> channel(Rate, 0.5f);
    channel[1000] = 1.1f;
    transient.Run(channel);
    // A millisecond later only the slow envelope is missing, which fell for as long as the minimum held.
    const double slowDrop = (1.0 - 1.0 / 1.1) * (1.0 - std::pow(0.1, 64.0 / (0.25 * Rate)));
    EXPECT_NEAR(channel[1000 + Window + Rate / 1000] / 0.5, 1.0 - slowDrop, 5e-5);

    CUnityLimiter sustained(Rate, 0.4, true);
    std::vector<float> loud(3 * Rate, 0.05f);
    for (std::size_t i = 0; i < 2 * Rate; ++i) loud[i] = 10.0f;
    sustained.Run(loud);
    EXPECT_NEAR(loud[2 * Rate - 1], 1.0f, 1e-3f);
    EXPECT_LT(loud[2 * Rate + Window + Rate / 50] / 0.05f, 0.3f);
}

TEST(ReferenceLimiter, SharesTheGainTheLoudestChannelNeeds) {
    CUnityLimiter limiter(44100.0);
    std::vector<float> loud(500, 4.0f);
    std::vector<float> quiet(500, 0.4f);
    float* const channels[2] = {quiet.data(), loud.data()};
    limiter.Limiter().Process(channels, 500);
    EXPECT_NEAR(loud.back(), 1.0f, 1e-6f);
    EXPECT_NEAR(quiet.back(), 0.1f, 1e-7f);
}

TEST(ReferenceLimiter, DrivesByTheThresholdAndScalesToTheCeiling) {
    CUnityLimiter limiter(44100.0);
    limiter.Limiter().SetParams(0.8, 0.6, 0.4, false); // -6 dB and -12 dB
    std::vector<float> quiet(200, 0.1f);
    limiter.Run(quiet);
    EXPECT_NEAR(quiet.back(), 0.1 * std::pow(10.0, 6.0 / 20.0) * std::pow(10.0, -12.0 / 20.0), 1e-7);
    std::vector<float> loud(1000, -1.0f);
    limiter.Run(loud);
    EXPECT_NEAR(loud.back(), -std::pow(10.0, -12.0 / 20.0), 1e-6);
}

TEST(ReferenceLimiter, LetsNanThroughWithoutTouchingTheGain) {
    CUnityLimiter limiter(44100.0);
    std::vector<float> channel(300, 0.5f);
    channel[20] = NotANumber;
    limiter.Run(channel);
    for (std::size_t i = 64; i < channel.size(); ++i) {
        if (i == 84) {
            EXPECT_TRUE(std::isnan(channel[i]));
        } else {
            EXPECT_EQ(channel[i], 0.5f) << i;
        }
    }
}

TEST(ReferenceLimiter, StartsAgainWithSilenceAndUnityGainAtAnotherRate) {
    CUnityLimiter limiter(44100.0);
    std::vector<float> loud(1000, 9.0f);
    limiter.Run(loud);
    limiter.Limiter().SetRate(96000.0);
    std::vector<float> channel(300, 0.5f);
    limiter.Run(channel);
    for (std::size_t i = 0; i < channel.size(); ++i) EXPECT_EQ(channel[i], i < 128 ? 0.0f : 0.5f) << i;
}

TEST(ReferenceLimiter, AnswersALatchWithTheLowestGainSinceTheLastOne) {
    CUnityLimiter limiter(44100.0);
    std::vector<float> loud(1000, 4.0f);
    limiter.Run(loud);
    EXPECT_EQ(limiter.Limiter().ReportedGain(), 1.0);
    limiter.Limiter().SetLatch();
    std::vector<float> nothing;
    limiter.Run(nothing);
    EXPECT_NEAR(limiter.Limiter().ReportedGain(), 0.25, 1e-9);
    limiter.Limiter().SetLatch();
    limiter.Run(nothing);
    EXPECT_EQ(limiter.Limiter().ReportedGain(), 1.0);
}

TEST(ReferenceLimiter, KeepsTheLowestGainOverARateChange) {
    CUnityLimiter limiter(44100.0);
    std::vector<float> loud(1000, 4.0f);
    limiter.Run(loud);
    limiter.Limiter().SetRate(48000.0);
    limiter.Limiter().SetLatch();
    std::vector<float> nothing;
    limiter.Run(nothing);
    EXPECT_NEAR(limiter.Limiter().ReportedGain(), 0.25, 1e-9);
}

} // namespace
} // namespace KAV::Reference
