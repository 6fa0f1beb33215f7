#include "dsp/lookahead_limiter.h"

#include "tests/dsp/processor_paths.h"
#include "tests/dsp/reference/limiter.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <gtest/gtest.h>
#include <limits>
#include <optional>
#include <span>
#include <vector>

using namespace KAV::DSP;

namespace {

constexpr float FullScale = 1.0f; // the position of threshold and ceiling for 0 dB
constexpr float NotANumber = std::numeric_limits<float>::quiet_NaN();

/// The release position at which the gain falls to 10 % in `seconds`.
float ReleasePosition(double seconds) {
    return static_cast<float>(1.0 + std::log10(seconds) / 5.0);
}

/// The engine's limiter on one of its paths, or the plain model.
class CSubject final {
public:
    /// What the running tests test; nothing means the model.
    static inline std::optional<EProcessorPath> Path;

    void SetRate(double rateHz) {
        _limiter.Reserve(rateHz);
        _limiter.SetRate(rateHz);
        _model.SetRate(rateHz);
    }
    void SetParams(float thresholdPos, float ceilingPos, float releasePos, bool autoRelease) {
        _limiter.SetParams(thresholdPos, ceilingPos, releasePos, autoRelease);
        const auto exact = [](float position) { return static_cast<double>(position); };
        _model.SetParams(exact(thresholdPos), exact(ceilingPos), exact(releasePos), autoRelease);
    }
    void Process(std::span<float* const> channels, std::size_t length) {
        if (Path) {
            _limiter.Process(channels, length, *Path);
        } else {
            _model.Process(channels, static_cast<int>(length));
        }
    }
    void Latch() {
        _limiter.Latch();
        _model.SetLatch();
    }
    double ReportedGain() const { return Path ? _limiter.ReportedGain() : _model.ReportedGain(); }

private:
    LookaheadLimiter _limiter;
    KAV::Reference::CCoverage _coverage;
    KAV::Reference::CLimiter _model{_coverage};
};

/// Every promise holds on each path that this processor has, and for the model.
class LimiterOnPath : public testing::TestWithParam<std::optional<EProcessorPath>> {
protected:
    LimiterOnPath() { CSubject::Path = GetParam(); }
};

std::vector<std::optional<EProcessorPath>> Subjects() {
    std::vector<std::optional<EProcessorPath>> subjects{std::nullopt};
    for (const auto path : KAV::Tests::ProcessorPaths()) subjects.emplace_back(path);
    return subjects;
}

class CLimiterOnAChannel {
public:
    explicit CLimiterOnAChannel(double rateHz, double releaseSeconds = 0.001, bool autoRelease = false) {
        limiter.SetRate(rateHz);
        limiter.SetParams(FullScale, FullScale, ReleasePosition(releaseSeconds), autoRelease);
    }
    std::vector<float> Run(std::vector<float> samples) {
        std::array<float*, 1> channels{samples.data()};
        limiter.Process(channels, samples.size());
        return samples;
    }
    CSubject limiter;
};

std::vector<float> Step(std::size_t quiet, std::size_t loud, float level) {
    std::vector<float> samples(quiet + loud, 0.0f);
    std::fill(samples.begin() + static_cast<std::ptrdiff_t>(quiet), samples.end(), level);
    return samples;
}

} // namespace

TEST(LookaheadLength, FollowsTheRateInStepsOfSixtyFour) {
    const struct {
        double rateHz;
        std::size_t samples;
    } table[] = {{44100, 64}, {48000, 64}, {88200, 128}, {96000, 128}, {176400, 256}, {192000, 256},
        {352800, 512}, {384000, 576}, {768000, 1088}, {1536000, 2176}};
    for (const auto& [rateHz, samples] : table) {
        EXPECT_EQ(LookaheadLength(rateHz), samples) << rateHz;
        EXPECT_EQ(KAV::Reference::CLimiter::LookAheadAt(rateHz), samples) << rateHz;
    }
}

TEST(LookaheadLength, NeverFallsBelowSixtyFour) {
    for (const double rate : {1.0, 8000.0, 18285.0, 18286.0, 18287.0}) {
        EXPECT_EQ(LookaheadLength(rate), 64u);
        EXPECT_EQ(KAV::Reference::CLimiter::LookAheadAt(rate), 64u);
    }
}

TEST_P(LimiterOnPath, DelaysWhatNeedsNoLimitingByTheLookaheadAndNothingElse) {
    for (const double rate : {48000.0, 96000.0}) {
        CLimiterOnAChannel channel(rate);
        std::vector<float> samples(300, 0.0f);
        samples[10] = 0.75f;
        samples[11] = -0.99f;
        const auto out = channel.Run(samples);
        const std::size_t n = LookaheadLength(rate);
        for (std::size_t i = 0; i < out.size(); ++i) EXPECT_EQ(out[i], i < n ? 0.0f : samples[i - n]) << i;
    }
}

TEST_P(LimiterOnPath, HoldsALastingStepAtTheCeiling) {
    for (const double rate : {44100.0, 96000.0, 384000.0}) {
        CLimiterOnAChannel channel(rate);
        const std::size_t n = LookaheadLength(rate);
        for (const float y : channel.Run(Step(n, 4 * n, 2.0f))) EXPECT_LE(y, 1.0f + 1e-6f);
    }
}

TEST_P(LimiterOnPath, HoldsTheNegativeHalfAsThePositiveOne) {
    CLimiterOnAChannel positive(48000);
    CLimiterOnAChannel negative(48000);
    const auto above = positive.Run(Step(64, 256, 2.0f));
    const auto below = negative.Run(Step(64, 256, -2.0f));
    for (std::size_t i = 0; i < above.size(); ++i) EXPECT_EQ(below[i], -above[i]) << i;
}

TEST_P(LimiterOnPath, LonePeakPassesByTheOneTapThatComesLate) {
    // The triangle has N + 1 taps and the window N values. So one tap, of weight 1 / size^2, uses the gain
    // one sample after the peak has left the window, when a release of 0.01 ms has nearly restored it to 1.
    for (const double rate : {44100.0, 96000.0, 384000.0}) {
        const double release = 1e-5;
        CLimiterOnAChannel channel(rate, release);
        const std::size_t n = LookaheadLength(rate);
        std::vector<float> samples(3 * n, 0.0f);
        samples[n] = 2.0f;
        const auto out = channel.Run(samples);
        const double size = static_cast<double>(n) / 2.0 + 1.0;
        const double kept = std::exp(std::log(0.1) / (release * rate));
        const double step = 0.5 * (1.0 - kept);
        EXPECT_NEAR(static_cast<double>(out[2 * n]), 2.0 * (0.5 + step / (size * size)), 1e-6) << rate;
        EXPECT_GT(out[2 * n], 1.0f);
    }
}

TEST_P(LimiterOnPath, GainHasReachedItsValueWhenTheStepLeavesTheDelay) {
    CLimiterOnAChannel channel(48000);
    const auto out = channel.Run(Step(64, 256, 2.0f));
    for (std::size_t i = 128; i < out.size(); ++i) EXPECT_NEAR(out[i] / 2.0f, 0.5f, 1e-6f) << i;
}

TEST_P(LimiterOnPath, ThresholdDrivesAndCeilingScales) {
    CLimiterOnAChannel channel(48000);
    channel.limiter.SetParams(0.8f, 0.6f, 0.4f, false); // -6 dB and -12 dB
    const auto quiet = channel.Run(std::vector<float>(300, 0.1f));
    EXPECT_NEAR(20.0 * std::log10(static_cast<double>(quiet[299]) / 0.1), 6.0 - 12.0, 1e-4);
    const auto loud = channel.Run(std::vector<float>(5000, 0.9f));
    EXPECT_NEAR(20.0 * std::log10(static_cast<double>(loud[4999])), -12.0, 1e-4);
}

TEST_P(LimiterOnPath, FixedReleaseRecoversNinetyPercentInItsTime) {
    for (const double seconds : {0.01, 0.1, 1.0}) {
        const double rate = 48000;
        CLimiterOnAChannel channel(rate, seconds);
        channel.Run(std::vector<float>(2000, 2.0f)); // gain 0.5
        const auto length = static_cast<std::size_t>(seconds * rate);
        // The window holds the peak for N samples, and the averages lag by about another N/2.
        const auto out = channel.Run(std::vector<float>(length + 64 + 64, 0.5f));
        const double gain = static_cast<double>(out.back()) / 0.5;
        EXPECT_NEAR(gain, 0.5 + 0.9 * 0.5, 0.01) << seconds;
    }
}

TEST_P(LimiterOnPath, FixedReleaseIsExponential) {
    constexpr std::size_t rate = 8000;
    constexpr std::size_t n = 64;
    CLimiterOnAChannel channel(static_cast<double>(rate), 1.0);
    std::vector<float> samples(3 * rate, 0.5f);
    std::fill_n(samples.begin(), rate, 2.0f);
    const auto out = channel.Run(samples);
    // The window holds the last peak for its length; then the averages lag by half the window.
    const std::size_t start = rate + n - 1 + n / 2;
    EXPECT_NEAR(out[start + rate] / 0.5, 1.0 - 0.5 * 0.1, 5e-4);
    EXPECT_NEAR(out[start + rate / 2] / 0.5, 1.0 - 0.5 * std::sqrt(0.1), 5e-4);
}

TEST_P(LimiterOnPath, AutoReleaseLeavesNothingButTheSlowEnvelopeAMillisecondAfterATransient) {
    constexpr std::size_t rate = 44100;
    CLimiterOnAChannel channel(static_cast<double>(rate), 0.01, true);
    std::vector<float> samples(rate, 0.5f);
    samples[1000] = 1.1f;
    const auto out = channel.Run(samples);
    // The envelope fell for as long as the window held the minimum.
    const double slowDrop = (1.0 - 1.0 / 1.1) * (1.0 - std::pow(0.1, 64.0 / (0.25 * rate)));
    EXPECT_NEAR(out[1000 + 3 * 64 + rate / 1000] / 0.5, 1.0 - slowDrop, 5e-5);
}

TEST_P(LimiterOnPath, AutoReleaseRecoversFastAfterATransientAndSlowlyAfterSustainedReduction) {
    const double rate = 48000;
    const auto samplesToRecover = [rate](std::size_t loudSamples, float level) {
        CLimiterOnAChannel channel(rate, 0.001, true);
        channel.Run(std::vector<float>(2000, 0.1f));
        channel.Run(std::vector<float>(loudSamples, level));
        const auto out = channel.Run(std::vector<float>(96000, 0.1f));
        for (std::size_t i = 64; i < out.size(); ++i) {
            if (out[i] > 0.095f) return i;
        }
        return out.size();
    };
    EXPECT_LT(samplesToRecover(5, 1.5f), 1000u);
    EXPECT_GT(samplesToRecover(96000, 8.0f), 5000u);
}

TEST_P(LimiterOnPath, LinkIsTotal) {
    CSubject limiter;
    limiter.SetParams(FullScale, FullScale, 0.4f, false);
    std::vector<float> loud(1000, 2.0f);
    std::vector<float> soft(1000, 0.5f);
    std::array<float*, 2> channels{loud.data(), soft.data()};
    limiter.Process(channels, 1000);
    EXPECT_NEAR(loud[999], 1.0f, 1e-6f);
    EXPECT_NEAR(soft[999], 0.25f, 1e-6f);
}

TEST_P(LimiterOnPath, SameOutputForBlocksOfAnyLength) {
    std::vector<float> input(4096);
    for (std::size_t i = 0; i < input.size(); ++i)
        input[i] = 1.8f * std::sin(static_cast<float>(i * i) * 0.0003f);
    for (const bool autoRelease : {false, true}) {
        CLimiterOnAChannel whole(48000, 0.02, autoRelease);
        const auto expected = whole.Run(input);
        for (const std::size_t block : {1u, 7u, 512u}) {
            CLimiterOnAChannel pieces(48000, 0.02, autoRelease);
            std::vector<float> joined;
            for (std::size_t i = 0; i < input.size(); i += block) {
                const auto end = std::min(i + block, input.size());
                const auto out = pieces.Run({input.begin() + static_cast<std::ptrdiff_t>(i),
                    input.begin() + static_cast<std::ptrdiff_t>(end)});
                joined.insert(joined.end(), out.begin(), out.end());
            }
            EXPECT_EQ(joined, expected) << block;
        }
    }
}

TEST_P(LimiterOnPath, SwitchingBackToAutoReleaseUsesItsOldCoefficientForTheFirstSample) {
    // Two limiters whose automatic release has the same history. One of them spends some time in the fixed
    // release, during which the automatic one's state and coefficient must stay as they are.
    CLimiterOnAChannel steady(48000, 0.05, true);
    CLimiterOnAChannel switched(48000, 0.05, true);
    std::vector<float> past(3000, 3.0f);
    steady.Run(past);
    switched.Run(past);
    switched.limiter.SetParams(FullScale, FullScale, ReleasePosition(0.05), false);
    switched.Run(
        std::vector<float>(500, 3.0f)); // the same constant: window and averages end in the same state
    switched.limiter.SetParams(FullScale, FullScale, ReleasePosition(0.05), true);
    const auto a = steady.Run(std::vector<float>(400, 0.5f));
    const auto b = switched.Run(std::vector<float>(400, 0.5f));
    for (std::size_t i = 0; i < a.size(); ++i) ASSERT_NEAR(a[i], b[i], 1e-6f) << i;
}

TEST_P(LimiterOnPath, BothReleaseStatesAreKeptWhenTheReleaseIsSwitched) {
    CLimiterOnAChannel channel(48000, 1.0);
    channel.Run(std::vector<float>(1000, 4.0f)); // fixed state at 0.25
    channel.limiter.SetParams(FullScale, FullScale, ReleasePosition(1.0), true);
    channel.Run(std::vector<float>(48000, 0.1f)); // the automatic one stays at unity
    channel.limiter.SetParams(FullScale, FullScale, ReleasePosition(1.0), false);
    const auto out = channel.Run(std::vector<float>(400, 0.1f));
    EXPECT_NEAR(out[399] / 0.1f, 0.25f, 0.02f) << "the fixed release continues from its previous state";
}

TEST_P(LimiterOnPath, RateChangeRestartsWithSilence) {
    CLimiterOnAChannel channel(48000);
    channel.Run(std::vector<float>(500, 4.0f));
    channel.limiter.SetRate(96000);
    const auto out = channel.Run(std::vector<float>(200, 0.5f));
    for (std::size_t i = 0; i < 128; ++i) EXPECT_EQ(out[i], 0.0f);
    EXPECT_EQ(out[128], 0.5f) << "the gain is back at unity";
}

TEST_P(LimiterOnPath, LatchReportsTheLowestGainSinceTheLastOne) {
    CLimiterOnAChannel channel(48000, 0.001);
    EXPECT_EQ(channel.limiter.ReportedGain(), 1.0);
    channel.Run(std::vector<float>(2000, 4.0f));
    EXPECT_EQ(channel.limiter.ReportedGain(), 1.0) << "not requested yet";
    channel.Run(std::vector<float>(48000, 0.1f));
    channel.limiter.Latch();
    channel.Run({0.1f});
    EXPECT_NEAR(channel.limiter.ReportedGain(), 0.25, 1e-6);
    channel.limiter.Latch();
    channel.Run({0.1f});
    EXPECT_NEAR(channel.limiter.ReportedGain(), 1.0, 1e-6) << "the latch restarts the minimum";
}

TEST_P(LimiterOnPath, LatchIsAnsweredOnce) {
    CLimiterOnAChannel channel(48000, 0.001);
    channel.limiter.Latch();
    channel.Run(std::vector<float>(2000, 2.0f));
    channel.Run(std::vector<float>(2000, 4.0f));
    EXPECT_NEAR(channel.limiter.ReportedGain(), 0.5, 1e-6);
}

TEST_P(LimiterOnPath, LatchIsAnsweredByACallOfNoLength) {
    CLimiterOnAChannel channel(48000, 0.001);
    channel.Run(std::vector<float>(2000, 2.0f));
    channel.limiter.Latch();
    channel.Run({});
    EXPECT_NEAR(channel.limiter.ReportedGain(), 0.5, 1e-6);
    channel.limiter.Latch();
    channel.Run({});
    EXPECT_EQ(channel.limiter.ReportedGain(), 1.0) << "no samples since, so no reduction";
}

TEST_P(LimiterOnPath, RateChangeDoesNotResetTheMinimum) {
    CLimiterOnAChannel channel(48000);
    channel.Run(std::vector<float>(2000, 2.0f));
    channel.limiter.SetRate(44100);
    channel.limiter.Latch();
    channel.Run({});
    EXPECT_NEAR(channel.limiter.ReportedGain(), 0.5, 1e-6);
}

TEST_P(LimiterOnPath, NotANumberMovesNoGainAndComesOutDelayed) {
    // In the first channel and in the last, and at every place of the window.
    for (const std::size_t spoilt : {0u, 1u}) {
        for (std::size_t place = 0; place < 64; ++place) {
            CSubject limiter;
            limiter.SetParams(FullScale, FullScale, 0.4f, false);
            std::array<std::vector<float>, 2> audio{
                std::vector<float>(300, 0.5f), std::vector<float>(300, 0.5f)};
            audio[spoilt][place] = NotANumber;
            std::array<float*, 2> channels{audio[0].data(), audio[1].data()};
            limiter.Process(channels, 300);
            for (std::size_t i = 64; i < 300; ++i) {
                ASSERT_EQ(audio[1 - spoilt][i], 0.5f) << place;
                ASSERT_EQ(std::isnan(audio[spoilt][i]), i == place + 64) << place;
            }
        }
    }
}

TEST_P(LimiterOnPath, InfinityShutsTheGainAndPasses) {
    CLimiterOnAChannel channel(48000, 0.001);
    std::vector<float> samples(20000, 0.5f);
    samples[100] = std::numeric_limits<float>::infinity();
    const auto out = channel.Run(samples);
    EXPECT_TRUE(std::isnan(out[164]) || std::isinf(out[164]));
    EXPECT_NEAR(out[19999], 0.5f, 1e-5f);
}

TEST_P(LimiterOnPath, SilenceIsLeftAtUnity) {
    CLimiterOnAChannel channel(48000);
    for (const float y : channel.Run(std::vector<float>(500, 0.0f))) EXPECT_EQ(y, 0.0f);
    channel.limiter.Latch();
    channel.Run({});
    EXPECT_EQ(channel.limiter.ReportedGain(), 1.0);
}

TEST_P(LimiterOnPath, DelayLinesBelongToPlacesInTheList) {
    CSubject limiter;
    limiter.SetParams(FullScale, FullScale, 0.4f, false);
    std::vector<float> first(64, 0.25f);
    std::vector<float> second(64, 0.5f);
    std::array<float*, 2> both{first.data(), second.data()};
    limiter.Process(both, 64);
    std::vector<float> third(64, 0.0f);
    std::array<float*, 1> one{third.data()};
    limiter.Process(one, 64);
    EXPECT_EQ(third[0], 0.25f) << "a channel takes over the delay of the previous one at its place";
}

INSTANTIATE_TEST_SUITE_P(
    LookaheadLimiter, LimiterOnPath, testing::ValuesIn(Subjects()), [](const auto& parameter) {
        return parameter.param ? KAV::Tests::NameOf(*parameter.param) : std::string("Model");
    });
