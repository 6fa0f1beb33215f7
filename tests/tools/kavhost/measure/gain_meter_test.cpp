#include "tools/kavhost/measure/gain_meter.h"

#include "tests/tools/kavhost/support.h"

#include <array>
#include <cmath>
#include <gtest/gtest.h>

using namespace KAV::Host;
using namespace KAV::Tests;

namespace {

constexpr std::size_t WindowFrames = 480; // 10 ms at 48 kHz
constexpr std::array Idle1{0.0};
constexpr std::array Idle2{0.0, 0.0};

std::vector<float> Scaled(std::span<const float> samples, double gainDb) {
    std::vector<float> scaled(samples.begin(), samples.end());
    for (float& sample : scaled) sample *= static_cast<float>(std::pow(10, gainDb / 20));
    return scaled;
}

} // namespace

TEST(GainMeter, MeasuresAConstantGain) {
    const auto audio = Noise(2, 10 * WindowFrames, 0.5f);
    CGainMeter meter(Idle2, 48000);
    meter.AddInput(audio.samples);
    meter.AddOutput(Scaled(audio.samples, -6));
    ASSERT_TRUE(meter.Range());
    EXPECT_NEAR(meter.Range()->lowest, -6, 1e-4);
    EXPECT_NEAR(meter.Range()->highest, -6, 1e-4);
}

TEST(GainMeter, FindsWhereOneChannelIsHeldDown) {
    const auto audio = Noise(2, 10 * WindowFrames, 0.5f);
    auto output = Scaled(audio.samples, 2);
    for (std::size_t frame = 4 * WindowFrames; frame < 5 * WindowFrames; ++frame)
        output[2 * frame + 1] *= 0.25f;
    CGainMeter meter(Idle2, 48000);
    meter.AddInput(audio.samples);
    meter.AddOutput(output);
    EXPECT_NEAR(meter.Range()->lowest, 2 + 20 * std::log10(0.25), 1e-4);
    EXPECT_EQ(meter.Range()->lowestFrame, static_cast<std::int64_t>(4 * WindowFrames));
    EXPECT_NEAR(meter.Range()->highest, 2, 1e-4);
}

TEST(GainMeter, GivesTheSameInPiecesWithTheOutputLate) {
    const auto audio = Noise(1, 10 * WindowFrames, 0.5f);
    const auto output = Scaled(audio.samples, -3);
    CGainMeter meter(Idle1, 48000);
    std::size_t given = 0;
    const std::span<const float> in(audio.samples), out(output);
    for (std::size_t i = 0; i < in.size(); i += 100) {
        meter.AddInput(in.subspan(i, std::min<std::size_t>(100, in.size() - i)));
        if (i < 1000) continue;
        meter.AddOutput(out.subspan(given, 70));
        given += 70;
    }
    meter.AddOutput(out.subspan(given));
    EXPECT_NEAR(meter.Range()->lowest, -3, 1e-4);
    EXPECT_NEAR(meter.Range()->highest, -3, 1e-4);
}

TEST(GainMeter, GivesTheSameWhicheverSideComesFirst) {
    const auto audio = Noise(2, 10 * WindowFrames, 0.5f);
    const auto output = Scaled(audio.samples, -3);
    std::vector<std::vector<double>> windows;
    CGainMeter meter(Idle2, 48000,
        [&](std::span<const double> gains) { windows.emplace_back(gains.begin(), gains.end()); });
    meter.AddOutput(output);
    EXPECT_TRUE(windows.empty());
    meter.AddInput(audio.samples);
    ASSERT_EQ(windows.size(), 10u);
    for (const auto& gains : windows) EXPECT_NEAR(gains[0], -3, 1e-4);
    EXPECT_NEAR(meter.Range()->lowest, -3, 1e-4);
}

TEST(GainMeter, MeasuresReductionFromTheGainAtRest) {
    const auto audio = Noise(2, 10 * WindowFrames, 0.5f);
    auto output = Scaled(audio.samples, 6);
    const auto reduce = [&](std::size_t window, std::size_t channel, double decibels) {
        for (std::size_t frame = window * WindowFrames; frame < (window + 1) * WindowFrames; ++frame)
            output[2 * frame + channel] *= static_cast<float>(std::pow(10, -decibels / 20));
    };
    reduce(1, 0, 1.5);
    reduce(2, 1, 3.5);
    reduce(4, 0, 8);
    reduce(4, 1, 7);
    const std::array idle{6.0, 6.0};
    CGainMeter meter(idle, 48000);
    meter.AddInput(audio.samples);
    meter.AddOutput(output);
    const auto reduction = meter.Reduction();
    ASSERT_TRUE(reduction);
    EXPECT_NEAR(reduction->largestDb, 8, 1e-4);
    EXPECT_EQ(reduction->largestFrame, static_cast<std::int64_t>(4 * WindowFrames));
    EXPECT_DOUBLE_EQ(reduction->over1Db, 0.3);
    EXPECT_DOUBLE_EQ(reduction->over3Db, 0.2);
    EXPECT_DOUBLE_EQ(reduction->over6Db, 0.1);
}

TEST(GainMeter, TakesAMutedChannelForNoReduction) {
    const auto audio = Noise(2, 4 * WindowFrames, 0.5f);
    auto output = audio.samples;
    for (std::size_t i = 1; i < output.size(); i += 2) output[i] = 0;
    CGainMeter meter(Idle2, 48000);
    meter.AddInput(audio.samples);
    meter.AddOutput(output);
    EXPECT_NEAR(meter.Reduction()->largestDb, 0, 1e-4);
}

TEST(GainMeter, LeavesQuietWindowsOut) {
    const auto quiet = Noise(1, 10 * WindowFrames, 0.001f); // RMS 0.001 / sqrt(3): -65 dBFS
    CGainMeter meter(Idle1, 48000);
    meter.AddInput(quiet.samples);
    meter.AddOutput(Noise(1, 10 * WindowFrames, 0.5f).samples);
    EXPECT_FALSE(meter.Range());
}

TEST(GainMeter, LeavesWindowsOutThatHoldNoFiniteNumber) {
    auto audio = Noise(2, 4 * WindowFrames, 0.5f);
    auto output = Scaled(audio.samples, -6);
    audio.samples[0] = std::nanf("");
    output[2 * WindowFrames + 1] = INFINITY;
    std::vector<std::vector<double>> windows;
    CGainMeter meter(Idle2, 48000,
        [&](std::span<const double> gains) { windows.emplace_back(gains.begin(), gains.end()); });
    meter.AddInput(audio.samples);
    meter.AddOutput(output);
    ASSERT_TRUE(meter.Range());
    EXPECT_NEAR(meter.Range()->lowest, -6, 1e-4);
    EXPECT_NEAR(meter.Range()->highest, -6, 1e-4);
    ASSERT_EQ(windows.size(), 4u);
    EXPECT_TRUE(std::isnan(windows[0][0]));
    EXPECT_NEAR(windows[0][1], -6, 1e-4);
    EXPECT_NEAR(windows[1][0], -6, 1e-4);
    EXPECT_TRUE(std::isnan(windows[1][1]));
}
