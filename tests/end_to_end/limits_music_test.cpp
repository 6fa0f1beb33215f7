#include "tests/end_to_end/music.h"
#include "tests/support/scratch_home.h"

#include <cmath>
#include <gtest/gtest.h>

using namespace KAV::Tests;

namespace {

/// Renders `music` with kavhost and the library with these settings, as float.
SMusic Render(const SMusic& music, const std::string& settings) {
    const auto in = ScratchFolder() / "in.wav";
    const auto out = ScratchFolder() / "out.wav";
    std::filesystem::remove(out);
    WriteMusic(in, music);
    RunCommand(std::string("'" KAVHOST_PROGRAM "' render '") + in.string() + "' -o '" + out.string() +
               "' --format float " + settings);
    return ReadMusic(out);
}

} // namespace

TEST(RealMusic, StaysAtTheCeilingHoweverHardItIsDriven) {
    const auto music = RealMusic();
    for (const double thresholdDb : {-3.0, -12.0, -30.0}) {
        const auto limited = Render(music, "--set 'Threshold (1)=" + std::to_string(thresholdDb) + "'");
        ASSERT_EQ(limited.samples.size(), music.samples.size());
        // One tap of the smoothing window, of weight 1 / size^2, is a sample late, so this fraction of a
        // driven peak's gain step passes.
        const double peakIn = static_cast<double>(music.Peak()) * std::pow(10.0, -thresholdDb / 20.0);
        const double size = 33.0;
        const double lateTap = peakIn * (1.0 - 1.0 / peakIn) / (size * size);
        EXPECT_LE(static_cast<double>(limited.Peak()), 1.0 + lateTap + 1e-6) << thresholdDb;
        EXPECT_GT(limited.Peak(), 0.99f) << thresholdDb;
    }
}

TEST(RealMusic, CeilingScalesTheSameLimitedSignal) {
    const auto music = RealMusic();
    const auto full = Render(music, "--set 'Threshold (1)=-12'");
    const auto lower = Render(music, "--set 'Threshold (1)=-12' --set 'Output Ceiling (1)=-6 dB'");
    const float factor = static_cast<float>(std::pow(10.0, -0.3));
    for (std::size_t i = 0; i < full.samples.size(); ++i) {
        ASSERT_NEAR(lower.samples[i], full.samples[i] * factor, 2e-6f) << i;
    }
}

TEST(RealMusic, BelowTheThresholdItComesBackBitForBit) {
    auto music = RealMusic();
    for (float& x : music.samples) x *= 0.25f;
    EXPECT_EQ(Render(music, "").samples, music.samples) << "unity gain everywhere, and the delay removed";
}
