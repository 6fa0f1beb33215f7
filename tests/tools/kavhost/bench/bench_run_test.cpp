#include "tests/tools/kavhost/support.h"
#include "tools/kavhost/base/text.h"

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

} // namespace

TEST(Bench, ReportsTheCostOfOneEffect) {
    const auto run = Bench({"--json"});
    ASSERT_EQ(run.code, 0) << run.errors;
    const auto report = nlohmann::json::parse(run.out);
    EXPECT_EQ(report["first"]["plugin"], "Test Fader");
    EXPECT_EQ(report["first"]["runs_ns_per_frame"].size(), 3u);
    const double nsPerFrame = report["first"]["ns_per_frame"].get<double>();
    EXPECT_GT(nsPerFrame, 0);
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

TEST(Bench, MeasuresOnlyTheThreadsOwnTime) {
    // With "Slow" on, the fader sleeps for 5 ms in each call. The time of 36 calls must not count as work.
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
