#include "dsp/auto_gain.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <complex>
#include <gtest/gtest.h>
#include <limits>
#include <numbers>
#include <vector>

using namespace KAV::DSP;

namespace {

constexpr float Rate = 8000.0f;
constexpr std::size_t Block = 200;

class AutomaticGain : public testing::Test {
protected:
    AutoGainSettings settings;
    AutoGain stage;
    float position = 0.5f;

    void SetUp() override {
        settings.filter = 0;
        settings.rmsTime = 50.0;
        stage.SetRate(Rate);
        stage.Reserve(Block);
    }
    /// Square waves of one level before the groups and another one after them; returns the last sample.
    float Run(float before, float after, int blocks, bool autoOn = true, bool disabled = false) {
        std::vector<float> samples(Block);
        std::array<float*, 1> channels{samples.data()};
        const std::array<bool, 1> used{true};
        for (int block = 0; block < blocks; ++block) {
            std::fill(samples.begin(), samples.end(), before);
            stage.Prepare(settings, disabled, autoOn, channels, Block);
            std::fill(samples.begin(), samples.end(), after);
            if (!disabled) stage.Run(settings, channels, used, Block, position);
        }
        return samples.back();
    }
};

} // namespace

TEST_F(AutomaticGain, BringsTheOutputToTheInputsLoudness) {
    EXPECT_NEAR(Run(0.25f, 0.5f, 400), 0.25f, 1e-3f);
    EXPECT_NEAR(position, (20.0 * std::log10(0.5) + 24.0) / 48.0, 1e-3);
    EXPECT_FALSE(stage.IsAdjusting());
    EXPECT_NEAR(stage.CorrectedRatio(), 1.0, 1e-3);
    EXPECT_LT(Run(0.5f, 0.5f, 3), 0.45f);
    EXPECT_TRUE(stage.IsAdjusting()) << "outside the tolerance it starts again";
    EXPECT_NEAR(Run(0.5f, 0.5f, 400), 0.5f, 1e-3f);
}

TEST_F(AutomaticGain, LeavesADeviationWithinTheToleranceAlone) {
    settings.tolerance = 2.0;
    EXPECT_EQ(Run(0.5f, 0.45f, 100), 0.45f) << "0.9 dB";
    EXPECT_EQ(position, 0.5f);
    settings.tolerance = 0.0;
    EXPECT_NEAR(Run(0.5f, 0.45f, 400), 0.5f, 1e-3f);
}

TEST_F(AutomaticGain, StopsTheKnobAtItsLimitsButNotTheGainItself) {
    settings.maximumGain = 6.0;
    Run(0.8f, 0.05f, 400);
    EXPECT_NEAR(position, 30.0 / 48.0, 1e-6);
    EXPECT_NEAR(stage.Gain(), 16.0, 0.1);
    settings.maximumCut = 3.0;
    Run(0.05f, 0.8f, 800);
    EXPECT_NEAR(position, 21.0 / 48.0, 1e-6);
    EXPECT_NEAR(stage.Gain(), 1.0 / 16.0, 0.01);
}

TEST_F(AutomaticGain, AllZeroInputHasTheFloorOnBothSides) {
    settings.suspendLevel = 0.0;
    Run(0.0f, 0.0f, 10);
    EXPECT_EQ(stage.Ratio(), 1.0);
    EXPECT_EQ(stage.CorrectedRatio(), 1.0);
    EXPECT_EQ(position, 0.5f);
}

TEST_F(AutomaticGain, QuietInputStopsAllWindowsByItsSamples) {
    Run(0.5f, 0.5f, 10, false);
    EXPECT_EQ(stage.Ratio(), 1.0);
    settings.suspendLevel = -30.0;
    Run(0.01f, 0.9f, 50, false); // -40 dB in; the output doesn't count
    EXPECT_EQ(stage.Ratio(), 1.0);
    settings.suspendLevel = 0.0;
    Run(0.01f, 0.9f, 50, false);
    EXPECT_NEAR(stage.Ratio(), 0.01 / 0.9, 1e-6);
}

TEST_F(AutomaticGain, WithoutAutoModeTheGainFollowsTheKnob) {
    position = 0.625f; // +6 dB
    EXPECT_NEAR(Run(0.25f, 0.1f, 20, false), 0.1 * std::pow(10.0, 0.3), 1e-6);
    EXPECT_EQ(position, 0.625f);
    EXPECT_NEAR(stage.Gain(), std::pow(10.0, 0.3), 1e-12);
    EXPECT_NEAR(stage.Ratio(), 2.5, 1e-6);
}

TEST_F(AutomaticGain, AnotherTimeEmptiesAllWindows) {
    Run(0.5f, 0.25f, 10, false);
    EXPECT_NEAR(stage.Ratio(), 2.0, 1e-6);
    settings.rmsTime = 100.0;
    Run(0.25f, 0.25f, 1, false);
    EXPECT_NEAR(stage.Ratio(), 1.0, 1e-6) << "the louder part has left the window";
}

TEST_F(AutomaticGain, TimesOutsideTheWindowsRoomAreHeldToIt) {
    for (const double timeMs : {-1.0, 0.0, 1e9, std::numeric_limits<double>::infinity(),
             std::numeric_limits<double>::quiet_NaN(), -1e300}) {
        settings.rmsTime = timeMs;
        EXPECT_TRUE(std::isfinite(Run(0.5f, 0.25f, 5))) << timeMs;
        EXPECT_TRUE(std::isfinite(stage.Gain())) << timeMs;
    }
}

TEST_F(AutomaticGain, DisablingAsksForARefreshAndForgetsTheRatios) {
    EXPECT_FALSE(stage.TakeRefresh());
    Run(0.5f, 0.25f, 10);
    EXPECT_TRUE(stage.TakeRefresh());
    EXPECT_FALSE(stage.TakeRefresh());
    EXPECT_TRUE(stage.IsAdjusting());
    Run(0.5f, 0.25f, 1, true, true);
    EXPECT_TRUE(stage.TakeRefresh());
    EXPECT_EQ(stage.Ratio(), 1.0);
    EXPECT_EQ(stage.CorrectedRatio(), 1.0);
    EXPECT_FALSE(stage.IsAdjusting());
}

TEST_F(AutomaticGain, CleanSoundIsMeasuredAgainAfterNotANumberAndInfinity) {
    for (const std::uint8_t filter : {std::uint8_t{0}, std::uint8_t{1}}) {
        settings.filter = filter;
        for (const float bad :
            {std::numeric_limits<float>::quiet_NaN(), std::numeric_limits<float>::infinity()}) {
            Run(bad, bad, 2);
            Run(0.5f, 0.5f, 1);
            position = 0.5f;
            std::vector<float> tone(Block);
            EXPECT_TRUE(std::isfinite(Run(0.5f, 0.25f, 20, false)));
            EXPECT_NEAR(stage.Ratio(), 2.0, 1e-3) << int{filter} << bad;
        }
    }
}

TEST(KWeighting, HasTheMagnitudeOfTheStandardAt48KHz) {
    // From the coefficients that ITU-R BS.1770 lists for 48 kHz.
    const auto magnitude = [](const std::array<double, 3>& b, const std::array<double, 3>& a, double w) {
        const std::complex<double> z = std::polar(1.0, -w);
        return std::abs((b[0] + b[1] * z + b[2] * z * z) / (a[0] + a[1] * z + a[2] * z * z));
    };
    const SKWeighting weighting(48000.0);
    for (const double hz : {20.0, 38.0, 100.0, 1000.0, 1682.0, 5000.0, 15000.0}) {
        const double w = 2.0 * std::numbers::pi * hz / 48000.0;
        const double expected = magnitude({1.53512485958697, -2.69169618940638, 1.19839281085285},
                                    {1.0, -1.69065929318241, 0.73248077421585}, w) *
                                magnitude({1.0, -2.0, 1.0}, {1.0, -1.99004745483398, 0.99007225036621}, w);
        double actual = 1.0;
        for (const auto& s : weighting.stages) actual *= magnitude({s.b0, s.b1, s.b2}, {1.0, s.a1, s.a2}, w);
        EXPECT_NEAR(20.0 * std::log10(actual / expected), 0.0, 0.06) << hz;
    }
}

TEST(RmsWindow, ForgetsWhatIsOlderThanItsLength) {
    auto window = RmsWindow().WithRate(1000.0);
    window.SetTime(10.0);
    EXPECT_EQ(window.Rms(), RmsWindow::Floor);
    const std::array<double, 2> loud{1.0, 3.0}; // mean square 5
    window.Push(loud, 2.0);
    EXPECT_NEAR(window.Rms(), std::sqrt(20.0 / 10.0), 1e-12);
    const std::array<double, 1> silence{0.0};
    for (int i = 0; i < 9; ++i) window.Push(silence, 1.0);
    EXPECT_NEAR(window.Rms(), std::sqrt(20.0 / 10.0), 1e-12);
    window.Push(silence, 1.0);
    EXPECT_EQ(window.Rms(), RmsWindow::Floor);
}
