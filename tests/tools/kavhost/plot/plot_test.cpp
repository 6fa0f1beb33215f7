#include "tools/kavhost/plot/plot.h"

#include "tests/tools/kavhost/support.h"
#include "tools/kavhost/base/text.h"

#include <algorithm>
#include <cmath>
#include <filesystem>
#include <gtest/gtest.h>
#include <map>
#include <nlohmann/json.hpp>
#include <numbers>
#include <sstream>

using namespace KAV::Host;
using namespace KAV::Tests;

namespace {

/// Series of a picture's data by quantity and signal, as "peak before".
using Series = std::map<std::string, nlohmann::json>;

class Plot : public testing::Test {
protected:
    std::string Path(const std::string& name) const { return Utf8(_folder / PathOf(name)); }

    SRun Run(const std::vector<std::string>& more, const std::string& effect = "fader",
        const std::string& input = "in.wav") {
        std::vector<std::string> arguments{
            "render", "-p", Utf8(EffectFile(effect)), Path(input), "-o", Path("out.wav")};
        arguments.insert(arguments.end(), more.begin(), more.end());
        return RunHost(arguments);
    }

    Series DataOf(const std::string& name) const {
        Series series;
        const auto data = nlohmann::json::parse(BytesOf(_folder / name));
        for (const auto& one : data["series"]) {
            series[one["quantity"].get<std::string>() + " " + one["signal"].get<std::string>()] = one;
        }
        return series;
    }

    std::filesystem::path _folder = NewFolder();
};

SAudio Sine(int channels, double seconds, double amplitude) {
    constexpr int rateHz = 48000;
    SAudio audio{{rateHz, channels, ESampleFormat::Float32}, {}};
    for (int i = 0; i < seconds * rateHz; ++i) {
        const double sample = amplitude * std::sin(2 * std::numbers::pi * 997 * i / rateHz);
        audio.samples.insert(
            audio.samples.end(), static_cast<std::size_t>(channels), static_cast<float>(sample));
    }
    return audio;
}

std::vector<std::string> LinesOf(const std::string& text) {
    std::vector<std::string> lines;
    std::istringstream stream(text);
    for (std::string line; std::getline(stream, line);) lines.push_back(line);
    return lines;
}

bool Contains(const std::string& text, const std::string& part) {
    return text.find(part) != std::string::npos;
}

} // namespace

TEST_F(Plot, HasTheLevelsOfAKnownSound) {
    WriteWav(_folder / "in.wav", Sine(2, 5, 0.5));
    ASSERT_EQ(Run({"--set", "0:-6", "--plot-data", Path("d.json")}).code, 0);
    const auto data = DataOf("d.json");
    const double level = 20 * std::log10(0.5);
    for (const auto& peak : data.at("peak before")["highest"]) EXPECT_NEAR(peak.get<double>(), level, 1e-3);
    for (const auto& peak : data.at("peak after")["highest"])
        EXPECT_NEAR(peak.get<double>(), level - 6, 1e-3);
    // Two channels of a sine near 1 kHz are as loud in LUFS as their level in dBFS is (BS.1770).
    const auto& before = data.at("short_term_loudness before");
    const auto& after = data.at("short_term_loudness after");
    if (!before["highest"].empty()) { // only if the build measures it
        EXPECT_NEAR(before["bin_seconds"].get<double>(), 0.1, 1e-9);
        ASSERT_EQ(before["highest"].size(), 50u);
        EXPECT_TRUE(before["highest"][28].is_null()); // three seconds end with the thirtieth
        for (std::size_t i = 29; i < 50; ++i) {
            EXPECT_NEAR(before["highest"][i].get<double>(), level, 0.1);
            EXPECT_NEAR(after["highest"][i].get<double>(), level - 6, 0.1);
        }
    }
    // The fader has the same gain at any level, so there is no reduction.
    for (const auto& gain : data.at("gain effect")["lowest"]) EXPECT_NEAR(gain.get<double>(), -6, 1e-3);
    for (const auto& gain : data.at("gain_reduction effect")["lowest"])
        EXPECT_NEAR(gain.get<double>(), 0, 1e-3);
}

TEST_F(Plot, ShowsHowFarALimiterReducesATone) {
    WriteWav(_folder / "in.wav", Sine(2, 1, 0.5));
    const auto run =
        RunHost({"render", "-p", Utf8(PluginFile()), "--profile", Utf8(PluginProfile()), Path("in.wav"), "-o",
            Path("out.wav"), "--set", "Threshold (1)=-12 dB", "--plot-data", Path("d.json")});
    ASSERT_EQ(run.code, 0) << run.errors;
    // Driven by 12 dB, the tone would be 12 - 6.02 dB above full scale, which is the ceiling.
    const double expected = -(12 + 20 * std::log10(0.5));
    const auto reduction = DataOf("d.json").at("gain_reduction effect");
    ASSERT_EQ(reduction["lowest"].size(), 100u);
    for (std::size_t i = 10; i < 100; ++i) {
        EXPECT_NEAR(reduction["lowest"][i].get<double>(), expected, 0.1);
        EXPECT_NEAR(reduction["highest"][i].get<double>(), expected, 0.1);
    }
    const auto text = nlohmann::json::parse(BytesOf(_folder / "d.json"));
    EXPECT_EQ(text["title"], "in.wav");
    EXPECT_EQ(text["settings"], "Threshold (1) -12.00 dB");
    EXPECT_EQ(text["notes"][0], "gain without limiting 12.0 dB");
}

TEST_F(Plot, LaysBeforeOverAfterToTheFrame) {
    SAudio audio{{48000, 1, ESampleFormat::Float32}, std::vector<float>(3000, 0.001f)};
    audio.samples[1234] = 0.9f;
    WriteWav(_folder / "in.wav", audio);
    ASSERT_EQ(Run({"--plot-data", Path("d.json")}).code, 0); // 64 frames late, and reports 256
    const auto data = DataOf("d.json");
    for (const char* signal : {"before", "after"}) {
        const auto highest =
            data.at(std::string("amplitude ") + signal)["highest"].get<std::vector<double>>();
        ASSERT_EQ(highest.size(), 3000u); // so few frames get a bin each
        EXPECT_EQ(std::ranges::max_element(highest) - highest.begin(), 1234) << signal;
    }
}

TEST_F(Plot, HasTheSameNumbersInBothForms) {
    WriteWav(_folder / "in.wav", Noise(2, 200000, 0.5f));
    ASSERT_EQ(Run({"--plot-data", Path("d.json")}).code, 0);
    ASSERT_EQ(Run({"--plot-data", Path("d.CSV")}).code, 0);
    const auto lines = LinesOf(BytesOf(_folder / "d.CSV"));
    EXPECT_EQ(lines.at(0), "quantity,signal,begin_s,end_s,lowest,highest");
    std::size_t line = 1;
    const auto data = nlohmann::json::parse(BytesOf(_folder / "d.json"));
    for (const auto& one : data["series"]) {
        for (std::size_t i = 0; i < one["lowest"].size(); ++i) {
            if (one["lowest"][i].is_null()) continue;
            const double begin = static_cast<double>(i) * one["bin_seconds"].get<double>();
            const double end = std::min(begin + one["bin_seconds"].get<double>(), 200000 / 48000.0);
            const int decimals = one["quantity"] == "amplitude" ? 9 : 4;
            ASSERT_EQ(lines.at(line++), one["quantity"].get<std::string>() + "," +
                                            one["signal"].get<std::string>() + "," + Fixed(begin, 6) + "," +
                                            Fixed(end, 6) + "," +
                                            Fixed(one["lowest"][i].get<double>(), decimals) + "," +
                                            Fixed(one["highest"][i].get<double>(), decimals));
        }
    }
    EXPECT_EQ(line, lines.size());
}

TEST_F(Plot, StaysSmallHoweverLongTheFile) {
    WriteWav(_folder / "in.wav", Noise(1, 300000, 0.5f, ESampleFormat::Int8));
    ASSERT_EQ(Run({"--plot-data", Path("d.json"), "--no-preroll"}).code, 0);
    for (const auto& [name, series] : DataOf("d.json")) EXPECT_LE(series["lowest"].size(), 4096u) << name;
    EXPECT_NEAR(DataOf("d.json").at("amplitude after")["bin_seconds"].get<double>(), 128 / 48000.0, 1e-9);
}

TEST_F(Plot, OfAnEmptyFileOrOneFrameIsNoError) {
    for (const std::size_t frames : {0u, 1u}) {
        WriteWav(_folder / "in.wav", Noise(2, frames, 0.5f));
        const auto run = Run({"--plot-data", Path("d.json")});
        ASSERT_EQ(run.code, 0) << run.errors;
        EXPECT_EQ(DataOf("d.json").at("amplitude after")["lowest"].size(), frames);
        EXPECT_EQ(DataOf("d.json").at("gain effect")["lowest"].size(), 0u);
    }
}

TEST_F(Plot, ReportsSamplesThatAreNotNumbersAndLeavesThemOut) {
    auto audio = Noise(1, 4800, 0.5f);
    audio.samples[700] = std::nanf("");
    audio.samples[701] = INFINITY;
    WriteWav(_folder / "in.wav", audio);
    ASSERT_EQ(Run({"--plot-data", Path("d.json")}).code, 0);
    const auto data = nlohmann::json::parse(BytesOf(_folder / "d.json"));
    EXPECT_EQ(data["notes"].back(), "not finite: 2 samples before, 2 after");
    const auto peaks = DataOf("d.json").at("peak after")["highest"];
    EXPECT_FALSE(peaks.empty());
    for (const auto& peak : peaks) EXPECT_LT(peak.get<double>(), -6);
    const auto gains = DataOf("d.json").at("gain effect")["highest"];
    EXPECT_TRUE(gains[1].is_null()); // the window of 480 frames that contains the two
    EXPECT_NEAR(gains[2].get<double>(), 0, 1e-3);
}

TEST_F(Plot, ToldNotToAlignHasNoGain) {
    WriteWav(_folder / "in.wav", Noise(1, 4800, 0.5f));
    ASSERT_EQ(Run({"--no-align", "--plot-data", Path("d.json")}).code, 0);
    EXPECT_TRUE(DataOf("d.json").at("gain effect")["lowest"].empty());
    EXPECT_TRUE(DataOf("d.json").at("gain_reduction effect")["lowest"].empty());
    EXPECT_FALSE(DataOf("d.json").at("peak after")["lowest"].empty());
}

TEST_F(Plot, NamesEachSettingThatDiffersFromTheBuiltInValues) {
    WriteWav(_folder / "in.wav", Noise(1, 4800, 0.5f));
    ASSERT_EQ(Run({"--set", "1:Hard", "--set", "0=0.5", "--plot-data", Path("d.json")}).code, 0);
    EXPECT_EQ(nlohmann::json::parse(BytesOf(_folder / "d.json"))["settings"], "Mode Hard");
    ASSERT_EQ(Run({"--plot-data", Path("d.json")}).code, 0);
    EXPECT_EQ(nlohmann::json::parse(BytesOf(_folder / "d.json"))["settings"],
        "all settings at their built-in values");
}

TEST_F(Plot, ThatCannotBeWrittenLeavesNoAudioEither) {
    WriteWav(_folder / "in.wav", Noise(1, 4800, 0.5f));
    const auto run = Run({"--plot-data", Path("missing/d.csv")});
    EXPECT_EQ(run.code, 1);
    EXPECT_TRUE(Contains(run.errors, "d.csv: cannot be written")) << run.errors;
    EXPECT_EQ(FilesIn(_folder), std::vector<std::string>{"in.wav"});
}

TEST_F(Plot, IsNotThereWhenTheAudioCannotBeWritten) {
    WriteWav(_folder / "in.wav", Noise(1, 4800, 0.5f));
    const auto run = RunHost({"render", "-p", Utf8(EffectFile("fader")), Path("in.wav"), "-o",
        Path("missing/out.wav"), "--plot-data", Path("d.csv")});
    EXPECT_EQ(run.code, 1);
    EXPECT_EQ(FilesIn(_folder), std::vector<std::string>{"in.wav"});
}

TEST_F(Plot, NeverReplacesAnInputOrTheOutput) {
    WriteWav(_folder / "in.wav", Noise(1, 4800, 0.5f));
    WriteWav(_folder / "in.csv", Noise(1, 4800, 0.5f)); // the extension of an input doesn't matter
    EXPECT_EQ(Run({"--plot-data", Path("in.csv")}, "fader", "in.csv").code, 2);
    EXPECT_EQ(Run({"--plot-data", Path("d.csv"), "--save-state", Path("d.csv")}, "keeper").code, 2);
    for (const char* name : {"d.txt", "out.wav", "d"}) {
        const auto run = Run({"--plot-data", Path(name)});
        EXPECT_EQ(run.code, 2) << name;
        EXPECT_TRUE(Contains(run.errors, "only .csv and .json are supported")) << run.errors;
    }
    EXPECT_EQ(FilesIn(_folder), (std::vector<std::string>{"in.csv", "in.wav"}));
}

TEST_F(Plot, OfSeveralFilesIsWrittenToAFolder) {
    WriteWav(_folder / "a.wav", Noise(1, 100, 0.5f));
    WriteWav(_folder / "b.wav", Noise(2, 200, 0.5f));
    const std::vector<std::string> render{"render", "-p", Utf8(EffectFile("fader")), Path("a.wav"),
        Path("b.wav"), "-o", Path("out"), "--plot-data"};
    auto arguments = render;
    arguments.push_back(Path("data"));
    EXPECT_EQ(RunHost(arguments).code, 0);
    EXPECT_EQ(FilesIn(_folder / "data"), (std::vector<std::string>{"a.csv", "b.csv"}));
    arguments.back() = Path("a.wav");
    EXPECT_EQ(RunHost(arguments).code, 2);
}

TEST_F(Plot, IsAPictureWhereTheBuildDrawsAndAClearRefusalElsewhere) {
    WriteWav(_folder / "in.wav", Noise(1, 4800, 0.5f));
    const auto run = Run({"--plot", Path("p.png")});
    if (CanDrawPlots()) {
        EXPECT_EQ(run.code, 0) << run.errors;
        EXPECT_EQ(FilesIn(_folder), (std::vector<std::string>{"in.wav", "out.wav", "p.png"}));
        EXPECT_EQ(Run({"--plot", Path("p.jpg")}).code, 2);
    } else {
        EXPECT_EQ(run.code, 2);
        EXPECT_TRUE(Contains(run.errors, "this build cannot draw pictures; --plot-data")) << run.errors;
        EXPECT_EQ(FilesIn(_folder), std::vector<std::string>{"in.wav"});
    }
}
