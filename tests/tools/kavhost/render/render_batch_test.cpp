#include "tools/kavhost/render/render_batch.h"

#include "tests/tools/kavhost/support.h"
#include "tools/kavhost/base/text.h"
#include "tools/kavhost/plot/plot.h"

#include <filesystem>
#include <fstream>
#include <gtest/gtest.h>
#include <nlohmann/json.hpp>
#include <sstream>

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
    const auto reports = nlohmann::json::parse(run.out);
    ASSERT_EQ(reports.size(), 8u);
    for (const auto& report : reports) {
        const auto name = report["input"].get<std::string>();
        const bool isBad = name.ends_with("a.wav");
        EXPECT_EQ(report.contains("error"), isBad) << report;
        EXPECT_TRUE(report.value("error", name + ": ").starts_with(name + ": ")) << report;
        EXPECT_TRUE(report["output"].get<std::string>().ends_with(PathOf(name).filename().string()));
    }
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

namespace {

/// Renders the fader's output of `inputs`.
SRun RenderFiles(const std::vector<std::filesystem::path>& inputs, const std::string& output,
    const std::vector<std::string>& more = {}) {
    std::vector<std::string> arguments{"render", "-p", Utf8(EffectFile("fader")), "-o", output};
    for (const auto& input : inputs) arguments.push_back(Utf8(input));
    arguments.insert(arguments.end(), more.begin(), more.end());
    return RunHost(arguments);
}

std::filesystem::path ShortWav(const std::filesystem::path& file, std::size_t frames = 100) {
    WriteWav(file, Noise(1, frames, 0.5f, ESampleFormat::Int16));
    return file;
}

bool Contains(const std::string& text, const std::string& part) {
    return text.find(part) != std::string::npos;
}

} // namespace

TEST_F(Jobs, DoNotTakeTheNameOfAFileForTheFolderOfSeveral) {
    const auto a = ShortWav(_folder / "a.wav"), b = ShortWav(_folder / "b.wav");
    const auto name = Utf8(_folder / "out.WAV");
    const auto refused = RenderFiles({a, b}, name);
    EXPECT_EQ(refused.code, 2);
    EXPECT_TRUE(Contains(refused.errors, "out.WAV: the name of a file, and there is more than one input"));
    EXPECT_EQ(FilesIn(_folder), (std::vector<std::string>{"a.wav", "b.wav"}));
    EXPECT_EQ(RenderFiles({a, b}, name + "/").code, 0); // whose name says what it is
    EXPECT_EQ(FilesIn(_folder / "out.WAV"), (std::vector<std::string>{"a.wav", "b.wav"}));
    EXPECT_EQ(RenderFiles({a, b}, name).code, 0); // by now it is one
    EXPECT_EQ(RenderFiles({a, b}, Utf8(_folder / "mix.v2")).code, 0);
    EXPECT_EQ(RenderFiles({a, b}, Utf8(_folder / "out"), {"--plot-data", Utf8(_folder / "all.csv")}).code, 2);
}

TEST_F(Jobs, PutASingleFileIntoAFolderThatExistsOrIsNamedLikeOne) {
    const auto a = ShortWav(_folder / "a.wav");
    std::filesystem::create_directory(_folder / "old");
    EXPECT_EQ(RenderFiles({a}, Utf8(_folder / "old")).code, 0);
    EXPECT_EQ(RenderFiles({a}, Utf8(_folder / "new") + "/").code, 0);
    for (const char* folder : {"old", "new"})
        EXPECT_EQ(FilesIn(_folder / folder), std::vector<std::string>{"a.wav"});
    const auto run = RenderFiles({a}, Utf8(_folder / "other"));
    EXPECT_EQ(run.code, 2);
    EXPECT_TRUE(Contains(run.errors, "a new folder's name ends in /")) << run.errors;
}

TEST_F(Jobs, TakeTheContainerThatIsNamed) {
    const auto flac = ShortWav(_folder / "a.flac"), other = ShortWav(_folder / "b.2.mp3");
    const auto out = Utf8(_folder / "out");
    ASSERT_EQ(RenderFiles({flac, other}, out, {"--ext", "wav"}).code, 0);
    EXPECT_EQ(FilesIn(_folder / "out"), (std::vector<std::string>{"a.wav", "b.2.wav"}));
    EXPECT_EQ(ReadWav(_folder / "out" / "a.wav").Frames(), 100u);
    EXPECT_EQ(RenderFiles({flac}, out, {"--ext", ".WAV"}).code, 0);
    EXPECT_EQ(RenderFiles({flac}, Utf8(_folder / "x.wav"), {"--ext", "wav"}).code, 0);
    EXPECT_EQ(RenderFiles({flac}, Utf8(_folder / "x.wav"), {"--ext", "flac"}).code, 2);
    EXPECT_EQ(RenderFiles({flac}, out, {"--ext", "mp3"}).code, 2);
    ASSERT_EQ(RenderFiles({flac}, Utf8(_folder / "no ending"), {"--ext", "wav"}).code, 0);
    EXPECT_EQ(ReadWav(_folder / "no ending").Frames(), 100u);
    const auto both = RenderFiles({flac, ShortWav(_folder / "a.aif")}, out, {"--ext", "wav"});
    EXPECT_TRUE(Contains(both.errors, "a.wav: two inputs would produce this file")) << both.errors;
}

TEST_F(Jobs, ReplaceNoFileThatIsToStay) {
    const auto a = ShortWav(_folder / "a.wav"), b = ShortWav(_folder / "b.wav"),
               c = ShortWav(_folder / "c.wav");
    std::filesystem::create_directory(_folder / "out");
    WriteBytes(_folder / "out" / "a.wav", "precious");
    WriteBytes(_folder / "out" / "b.csv", "numbers");
    const auto out = Utf8(_folder / "out");
    const auto run = RenderFiles({a, b, c}, out, {"-n", "--plot-data", out});
    EXPECT_EQ(run.code, 0) << run.errors;
    EXPECT_EQ(BytesOf(_folder / "out" / "a.wav"), "precious");
    EXPECT_EQ(BytesOf(_folder / "out" / "b.csv"), "numbers");
    EXPECT_EQ(FilesIn(out), (std::vector<std::string>{"a.wav", "b.csv", "c.csv", "c.wav"}));
    EXPECT_TRUE(Contains(run.out, "a.wav\n  skipped: ")) << run.out;
    EXPECT_TRUE(Contains(run.out, "b.csv exists\n")) << run.out;
    const auto again = RenderFiles({a, c}, out, {"--no-clobber", "--json"});
    EXPECT_EQ(again.code, 0);
    for (const auto& entry : nlohmann::json::parse(again.out)) {
        EXPECT_TRUE(entry["skipped"].get<std::string>().ends_with(".wav exists")) << entry;
        EXPECT_FALSE(entry.contains("error"));
    }
    EXPECT_EQ(RenderFiles({a}, out).code, 0); // without it the file is replaced
    EXPECT_EQ(ReadWav(_folder / "out" / "a.wav").Frames(), 100u);
}

TEST_F(Jobs, PrintALinePerFileForPrograms) {
    const auto a = ShortWav(_folder / "a.wav");
    WriteBytes(_folder / "b.wav", "RIFFnothing");
    const auto run = RenderFiles({a, _folder / "b.wav"}, Utf8(_folder / "out"), {"--report", "jsonl"});
    EXPECT_EQ(run.code, 1);
    std::istringstream lines(run.out);
    std::string first, second, none;
    ASSERT_TRUE(std::getline(lines, first) && std::getline(lines, second)) << run.out;
    EXPECT_FALSE(std::getline(lines, none)) << none;
    EXPECT_EQ(nlohmann::json::parse(first)["frames"], 100);
    EXPECT_EQ(nlohmann::json::parse(second)["input"], Utf8(_folder / "b.wav"));
    EXPECT_TRUE(nlohmann::json::parse(second).contains("error"));
}

TEST_F(Jobs, CountTheNamesOfOneFileAsOne) {
    const auto a = ShortWav(_folder / "a.wav"), b = ShortWav(_folder / "b.wav");
    std::filesystem::create_directory(_folder / "out");
    ShortWav(_folder / "out" / "a.wav", 7);
    std::filesystem::create_hard_link(_folder / "out" / "a.wav", _folder / "out" / "b.wav");
    const auto run = RenderFiles({a, b}, Utf8(_folder / "out"));
    EXPECT_EQ(run.code, 2);
    EXPECT_TRUE(Contains(run.errors, "b.wav: two inputs would produce this file")) << run.errors;
    EXPECT_EQ(ReadWav(_folder / "out" / "a.wav").Frames(), 7u);
    std::filesystem::create_hard_link(_folder / "out" / "a.wav", _folder / "state");
    const auto state =
        RenderFiles({a}, Utf8(_folder / "out" / "a.wav"), {"--save-state", Utf8(_folder / "state")});
    EXPECT_EQ(state.code, 2);
    EXPECT_TRUE(Contains(state.errors, "is named for both")) << state.errors;
}

TEST_F(Jobs, SayThatAnInputIsCutOff) {
    const auto whole = ShortWav(_folder / "a.wav");
    const auto bytes = BytesOf(whole);
    WriteBytes(_folder / "cut.wav", bytes.substr(0, bytes.size() - 60));
    const auto run = RenderFiles({_folder / "cut.wav"}, Utf8(_folder / "out.wav"), {"--json"});
    EXPECT_EQ(run.code, 0) << run.errors;
    const auto entry = nlohmann::json::parse(run.out)[0];
    EXPECT_EQ(entry["frames"], 70);
    EXPECT_TRUE(
        entry["notes"].dump().find(
            "the input is cut off: it announces 200 bytes of audio but contains 140") != std::string::npos)
        << entry["notes"];
    const auto strict = RenderFiles({_folder / "cut.wav"}, Utf8(_folder / "strict.wav"), {"--strict"});
    EXPECT_EQ(strict.code, 1);
    EXPECT_FALSE(std::filesystem::exists(_folder / "strict.wav"));
    EXPECT_FALSE(Contains(RenderFiles({whole}, Utf8(_folder / "out.wav")).out, "cut off"));
}

TEST_F(Jobs, SaveNoStateToStandardOutput) {
    const auto a = ShortWav(_folder / "a.wav");
    EXPECT_EQ(RenderFiles({a}, Utf8(_folder / "out.wav"), {"--save-state", "-"}).code, 2);
}

TEST_F(Jobs, ShareStandardOutputWithNone) {
    const auto a = ShortWav(_folder / "a.wav"), b = ShortWav(_folder / "b.wav");
    EXPECT_TRUE(Contains(RenderFiles({a, b}, "-").errors, "there is more than one input"));
    EXPECT_TRUE(Contains(RenderFiles({"-", "-"}, "out/").errors, "standard input can be read only once"));
}
