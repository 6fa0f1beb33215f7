#include "tools/kavhost/render/render_batch.h"

#include "tests/tools/kavhost/support.h"
#include "tools/kavhost/base/text.h"
#include "tools/kavhost/plot/plot.h"

#include <filesystem>
#include <fstream>
#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

using namespace KAV::Host;
using namespace KAV::Tests;

namespace {

class Jobs : public testing::Test {
protected:
    /// Renders all inputs of the folder "in" to a folder of this name, with their pictures and data.
    SRun Run(const std::string& output, const std::vector<std::string>& more) {
        const auto path = Utf8(_folder / output);
        std::vector<std::string> arguments{"render", "-p", Utf8(EffectFile("fader")), "-o", path, "--set",
            "0:-6", "--format", "16", "--plot-data", path};
        if (CanDrawPlots()) arguments.insert(arguments.end(), {"--plot", path});
        for (const auto& name : FilesIn(_folder / "in")) arguments.push_back(Utf8(_folder / "in" / name));
        arguments.insert(arguments.end(), more.begin(), more.end());
        return RunHost(arguments);
    }

    void WriteInputs() {
        std::filesystem::create_directory(_folder / "in");
        for (int i = 0; i < 6; ++i) { // the last ones are the shortest, so they finish first
            auto audio =
                Noise(1 + i % 2, static_cast<std::size_t>(40000 >> i), 0.1f * static_cast<float>(i + 1));
            WriteWav(_folder / "in" / (std::to_string(i) + ".wav"), audio);
        }
    }

    std::filesystem::path _folder = NewFolder();
};

/// The reports without what depends on the clock or the name.
nlohmann::json WithoutTimes(const SRun& run) {
    auto reports = nlohmann::json::parse(run.out);
    for (auto& report : reports) {
        report.erase("real_time_factor");
        report.erase("output");
    }
    return reports;
}

} // namespace

TEST_F(Jobs, GiveTheSameFilesHoweverManyRunAtOnce) {
    WriteInputs();
    const auto one = Run("one", {"--jobs", "1", "--report", "json"});
    const auto four = Run("four", {"-j", "4", "--report", "json"});
    ASSERT_EQ(one.code, 0) << one.errors;
    ASSERT_EQ(four.code, 0) << four.errors;
    EXPECT_EQ(WithoutTimes(one), WithoutTimes(four));
    const auto names = FilesIn(_folder / "one");
    EXPECT_EQ(names.size(), CanDrawPlots() ? 18u : 12u);
    EXPECT_EQ(names, FilesIn(_folder / "four"));
    for (const auto& name : names)
        EXPECT_EQ(BytesOf(_folder / "one" / name), BytesOf(_folder / "four" / name)) << name;
}

TEST_F(Jobs, ReportInTheOrderOfTheInputs) {
    WriteInputs();
    const auto run = Run("out", {"--jobs", "4"});
    ASSERT_EQ(run.code, 0) << run.errors;
    std::size_t place = 0;
    for (int i = 0; i < 6; ++i) {
        const auto next = run.out.find(std::to_string(i) + ".wav -> ", place);
        ASSERT_NE(next, std::string::npos) << run.out;
        place = next;
    }
}

TEST_F(Jobs, GoOnWhenSomeOfThemFail) {
    WriteInputs();
    std::ofstream(_folder / "in" / "1a.wav") << "RIFFnothing";
    std::ofstream(_folder / "in" / "2a.wav") << "RIFFnothing";
    const auto run = Run("out", {"--jobs", "3", "--json"});
    EXPECT_EQ(run.code, 1);
    EXPECT_EQ(nlohmann::json::parse(run.out).size(), 6u);
    const auto first = run.errors.find("1a.wav: "), second = run.errors.find("2a.wav: ");
    EXPECT_LT(first, second) << run.errors;
    EXPECT_NE(second, std::string::npos) << run.errors;
}

TEST_F(Jobs, MayBeMoreThanThereAreFiles) {
    std::filesystem::create_directory(_folder / "in");
    WriteWav(_folder / "in" / "a.wav", Noise(1, 100, 0.5f));
    EXPECT_EQ(Run("out/", {"--jobs", "64"}).code, 0);
    EXPECT_EQ(Run("out/", {"--jobs", "0"}).code, 2);
}

TEST_F(Jobs, TakeOneFormOfReport) {
    WriteInputs();
    EXPECT_EQ(Run("out", {"--report", "xml"}).code, 2);
    EXPECT_EQ(Run("out", {"--report", "text", "--json"}).code, 2);
    EXPECT_EQ(Run("out", {"--report", "text"}).out.find('{'), std::string::npos);
}
