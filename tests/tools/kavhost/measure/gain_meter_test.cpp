#include "tools/kavhost/measure/gain_meter.h"

#include "tests/tools/kavhost/support.h"

#include <cmath>
#include <gtest/gtest.h>

using namespace KAV::Host;
using namespace KAV::Tests;

namespace {

constexpr std::size_t WindowFrames = 480; // 10 ms at 48 kHz

std::vector<float> Scaled(std::span<const float> samples, double gainDb) {
    std::vector<float> scaled(samples.begin(), samples.end());
    for (float& sample : scaled) sample *= static_cast<float>(std::pow(10, gainDb / 20));
    return scaled;
}

} // namespace

TEST(GainMeter, MeasuresAConstantGain) {
    const auto audio = Noise(2, 10 * WindowFrames, 0.5f);
    CGainMeter meter(2, 48000);
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
    CGainMeter meter(2, 48000);
    meter.AddInput(audio.samples);
    meter.AddOutput(output);
    EXPECT_NEAR(meter.Range()->lowest, 2 + 20 * std::log10(0.25), 1e-4);
    EXPECT_EQ(meter.Range()->lowestFrame, static_cast<std::int64_t>(4 * WindowFrames));
    EXPECT_NEAR(meter.Range()->highest, 2, 1e-4);
}

TEST(GainMeter, GivesTheSameInPiecesWithTheOutputLate) {
    const auto audio = Noise(1, 10 * WindowFrames, 0.5f);
    const auto output = Scaled(audio.samples, -3);
    CGainMeter meter(1, 48000);
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

TEST(GainMeter, LeavesQuietWindowsOut) {
    const auto quiet = Noise(1, 10 * WindowFrames, 0.001f); // RMS 0.001 / sqrt(3): -65 dBFS
    CGainMeter meter(1, 48000);
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
    CGainMeter meter(
        2, 48000, [&](std::span<const double> gains) { windows.emplace_back(gains.begin(), gains.end()); });
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
