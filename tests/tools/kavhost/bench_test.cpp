#include "tools/kavhost/bench.h"

#include "tests/tools/kavhost/support.h"
#include "tools/kavhost/text.h"

#include <algorithm>
#include <cmath>
#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

using namespace KAV::Host;
using namespace KAV::Tests;

namespace {

SRun Bench(std::vector<std::string> more) {
    std::vector<std::string> arguments{
        "bench", "-p", Utf8(EffectFile("fader")), "--seconds", "0.5", "--runs", "3"};
    arguments.insert(arguments.end(), more.begin(), more.end());
    return RunHost(arguments);
}

double Peak(const SMaterial& material) {
    float peak = 0;
    for (std::size_t c = 0; c < material.audio.Channels(); ++c) {
        for (const float sample : material.audio.Channel(c)) peak = std::max(peak, std::abs(sample));
    }
    return Decibels(static_cast<double>(peak));
}

} // namespace

TEST(Median, IsTheMiddleOfWhatIsSorted) {
    EXPECT_EQ(Median({3}), 3);
    EXPECT_EQ(Median({5, 1, 3}), 3);
    EXPECT_EQ(Median({4, 1, 3, 2}), 2.5);
}

TEST(MedianRatio, IsTakenRunByRun) {
    // The machine was twice as slow in the second run: each run's own ratio does not see it.
    EXPECT_EQ(MedianRatio({{10, 20, 10}, {5, 10, 5}}), 2);
}

TEST(Material, PeaksAtMinus3dBAndIsTheSameEveryTime) {
    for (const int rate : {8000, 48000, 192000}) {
        const SBenchOptions options{.rateHz = rate, .channels = 3, .seconds = 1, .input = {}};
        const auto material = MakeMaterial(options);
        EXPECT_EQ(material.audio.Channels(), 3u);
        EXPECT_EQ(material.audio.Frames(), static_cast<std::size_t>(rate));
        EXPECT_NEAR(Peak(material), -3, 0.2);
        const auto again = MakeMaterial(options);
        for (std::size_t c = 0; c < 3; ++c) {
            EXPECT_TRUE(std::ranges::equal(material.audio.Channel(c), again.audio.Channel(c)));
        }
        EXPECT_FALSE(std::ranges::equal(material.audio.Channel(0), material.audio.Channel(1)));
    }
}

TEST(Bench, TellsWhatOneEffectCosts) {
    const auto run = Bench({"--json"});
    ASSERT_EQ(run.code, 0) << run.errors;
    const auto report = nlohmann::json::parse(run.out);
    EXPECT_EQ(report["first"]["plugin"], "Test Fader");
    EXPECT_EQ(report["first"]["runs_ns_per_frame"].size(), 3u);
    const double nsPerFrame = report["first"]["ns_per_frame"].get<double>();
    EXPECT_GE(nsPerFrame, 0); // a clock of 16 ms may have stood still
    EXPECT_LT(nsPerFrame, 1e6);
    EXPECT_FALSE(report.contains("second"));
}

TEST(Bench, ComparesTwoEffectsInTurns) {
    const auto run = Bench({"--vs", Utf8(EffectFile("old_stereo"))});
    ASSERT_EQ(run.code, 0) << run.errors;
    EXPECT_NE(run.out.find("Test Fader"), std::string::npos) << run.out;
    EXPECT_NE(run.out.find("old_stereo"), std::string::npos) << run.out;
    EXPECT_NE(run.out.find("ratio "), std::string::npos) << run.out;
}

TEST(Bench, MeasuresTheThreadsOwnTimeAlone) {
    // With "Slow" on, the fader sleeps for 5 ms in each call: 36 calls' worth must not show as work.
    const auto run = Bench({"--set", "4:on", "--json", "--block", "4096"});
    ASSERT_EQ(run.code, 0) << run.errors;
    const double nsPerFrame = nlohmann::json::parse(run.out)["first"]["ns_per_frame"].get<double>();
    EXPECT_LT(nsPerFrame, 5e6 / 4096 / 2);
}

TEST(Bench, TakesAFilesRateAndChannels) {
    const auto folder = NewFolder();
    auto audio = Noise(1, 8000, 0.5f);
    audio.format.rateHz = 16000;
    WriteWav(folder / "in.wav", audio);
    const auto run = Bench({"--input", Utf8(folder / "in.wav"), "--json"});
    ASSERT_EQ(run.code, 0) << run.errors;
    const auto report = nlohmann::json::parse(run.out);
    EXPECT_EQ(report["rate"], 16000);
    EXPECT_EQ(report["channels"], 1);
    EXPECT_EQ(report["seconds"], 0.5);
    EXPECT_EQ(Bench({"--input", Utf8(folder / "in.wav"), "--rate", "48000"}).code, 2);
}

TEST(Bench, ComparesAnEffectWithItselfUnderOtherSettings) {
    const auto run = Bench({"--set", "0=0.5", "--set2", "0=1", "--json"});
    ASSERT_EQ(run.code, 0) << run.errors;
    const auto report = nlohmann::json::parse(run.out);
    EXPECT_EQ(report["second"]["plugin"], "Test Fader");
    EXPECT_TRUE(report.contains("median_ratio"));
}

TEST(Bench, FailsForChannelsThatTheEffectDoesNotTake) {
    const auto run = RunHost({"bench", "-p", Utf8(EffectFile("old_stereo")), "--channels", "6"});
    EXPECT_EQ(run.code, 1);
    EXPECT_NE(run.errors.find("unsupported channel count"), std::string::npos) << run.errors;
}
