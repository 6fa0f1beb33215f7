#include "tools/kavhost/render/render.h"

#include "tests/tools/kavhost/support.h"
#include "tools/kavhost/base/errors.h"
#include "tools/kavhost/base/text.h"

#include <algorithm>
#include <cmath>
#include <filesystem>
#include <fstream>
#include <gtest/gtest.h>
#include <limits>
#include <nlohmann/json.hpp>

using namespace KAV::Host;
using namespace KAV::Tests;

namespace {

/// Runs files in the test's own folder through kavhost, in this process.
class Render : public testing::Test {
protected:
    std::string Path(const std::string& name) const { return Utf8(_folder / PathOf(name)); }

    /// `more` are further arguments.
    SRun Run(const std::vector<std::string>& inputs, const std::string& output, const std::string& effect,
        const std::vector<std::string>& more = {}) {
        std::vector<std::string> arguments{
            "render", "--plugin", Utf8(EffectFile(effect)), "-o", Path(output)};
        for (const auto& input : inputs) arguments.push_back(Path(input));
        arguments.insert(arguments.end(), more.begin(), more.end());
        return RunHost(arguments);
    }

    std::filesystem::path _folder = NewFolder();
};

bool Contains(const std::string& text, const std::string& part) {
    return text.find(part) != std::string::npos;
}

} // namespace

TEST_F(Render, IsAlignedWithItsInputToTheSampleAndHasItsLength) {
    for (const std::size_t frames : {0u, 1u, 511u, 512u, 513u, 5000u}) {
        for (const char* block : {"1", "64", "512", "4096"}) {
            const auto audio = Noise(2, frames, 0.5f);
            WriteWav(_folder / "in.wav", audio);
            const auto run =
                Run({"in.wav"}, "out.wav", "fader", {"--block", block}); // 0 dB and 64 frames late
            ASSERT_EQ(run.code, 0) << run.errors;
            EXPECT_EQ(ReadWav(_folder / "out.wav").samples, audio.samples)
                << frames << " frames by " << block;
        }
    }
}

TEST_F(Render, WithoutAlignmentLeavesTheEffectsDelayIn) {
    const auto audio = Noise(2, 1000, 0.5f);
    WriteWav(_folder / "in.wav", audio);
    ASSERT_EQ(Run({"in.wav"}, "out.wav", "fader", {"--no-align"}).code, 0);
    std::vector<float> late(2 * 64);
    late.insert(late.end(), audio.samples.begin(), audio.samples.end() - 2 * 64);
    EXPECT_EQ(ReadWav(_folder / "out.wav").samples, late);
}

TEST_F(Render, SettlesTheFadeInOfAFreshEffectUnlessToldNotTo) {
    const auto audio = Noise(1, 48000, 0.5f);
    WriteWav(_folder / "in.wav", audio);
    ASSERT_EQ(Run({"in.wav"}, "settled.wav", "fader").code, 0);
    EXPECT_EQ(ReadWav(_folder / "settled.wav").samples, audio.samples);

    ASSERT_EQ(Run({"in.wav"}, "faded.wav", "fader", {"--no-preroll"}).code, 0);
    const auto faded = ReadWav(_folder / "faded.wav").samples;
    for (std::size_t i = 0; i < 12000 - 64; ++i) { // a quarter of a second from the effect's first frame on
        const float gain = static_cast<float>(static_cast<double>(i + 64) / 12000);
        EXPECT_NEAR(faded[i], audio.samples[i] * gain, 1e-6);
    }
    EXPECT_TRUE(std::equal(faded.begin() + 12000, faded.end(), audio.samples.begin() + 12000));
}

TEST_F(Render, AlignsAnEffectThatOnlyHasTwoChannels) {
    const auto audio = Noise(2, 3000, 0.5f);
    WriteWav(_folder / "in.wav", audio);
    ASSERT_EQ(Run({"in.wav"}, "out.wav", "old_stereo").code, 0);
    auto expected = audio.samples;
    for (float& sample : expected) sample = -sample;
    EXPECT_EQ(ReadWav(_folder / "out.wav").samples, expected);
}

TEST_F(Render, FailsForChannelsThatTheEffectDoesNotTake) {
    WriteWav(_folder / "mono.wav", Noise(1, 100, 0.5f));
    WriteWav(_folder / "many.wav", Noise(17, 100, 0.5f));
    const auto mono = Run({"mono.wav"}, "out.wav", "old_stereo");
    EXPECT_EQ(mono.code, 1);
    EXPECT_TRUE(Contains(mono.errors, "mono.wav: unsupported channel count: old_stereo")) << mono.errors;
    EXPECT_TRUE(Contains(mono.errors, "cannot run with 1 channel (it has 2 in, 2 out)")) << mono.errors;
    const auto many = Run({"many.wav"}, "out.wav", "fader");
    EXPECT_EQ(many.code, 1);
    EXPECT_TRUE(Contains(many.errors, "many.wav: unsupported channel count: 17, at most 16")) << many.errors;
    EXPECT_EQ(FilesIn(_folder), (std::vector<std::string>{"many.wav", "mono.wav"}));
}

TEST_F(Render, TakesOneToSixteenChannels) {
    for (const int channels : {1, 2, 6, 16}) {
        const auto audio = Noise(channels, 1000, 0.5f);
        WriteWav(_folder / "in.wav", audio);
        ASSERT_EQ(Run({"in.wav"}, "out.wav", "fader").code, 0);
        EXPECT_EQ(ReadWav(_folder / "out.wav").samples, audio.samples);
    }
}

TEST_F(Render, KeepsRateAndSampleFormat) {
    for (const auto format : {ESampleFormat::Int8, ESampleFormat::Int16, ESampleFormat::Int24,
             ESampleFormat::Int32, ESampleFormat::Float32, ESampleFormat::Float64}) {
        auto audio = Noise(2, 1000, 0.5f, format);
        audio.format.rateHz = 22050;
        WriteWav(_folder / "in.wav", audio);
        ASSERT_EQ(Run({"in.wav"}, "out.wav", "fader").code, 0);
        EXPECT_EQ(ReadWav(_folder / "out.wav").format.samples, format);
        EXPECT_EQ(ReadWav(_folder / "out.wav").format.rateHz, 22050);
    }
}

TEST_F(Render, ReturnsTheSameBitsWithoutDitherWhenTheEffectDoesNothing) {
    for (const auto format : {ESampleFormat::Int8, ESampleFormat::Int16, ESampleFormat::Int24}) {
        WriteWav(_folder / "in.wav", Noise(2, 1000, 1.0f, format));
        ASSERT_EQ(Run({"in.wav"}, "out.wav", "fader", {"--no-dither"}).code, 0);
        EXPECT_EQ(ReadWav(_folder / "out.wav").samples, ReadWav(_folder / "in.wav").samples);
    }
}

TEST_F(Render, DithersByTwoStepsAtMostAndTheSameInEveryRun) {
    WriteWav(_folder / "in.wav", Noise(2, 1000, 0.5f, ESampleFormat::Int16));
    ASSERT_EQ(Run({"in.wav"}, "a.wav", "fader").code, 0);
    ASSERT_EQ(Run({"in.wav"}, "b.wav", "fader").code, 0);
    const auto in = ReadWav(_folder / "in.wav").samples;
    const auto a = ReadWav(_folder / "a.wav").samples;
    EXPECT_EQ(a, ReadWav(_folder / "b.wav").samples);
    EXPECT_NE(a, in);
    for (std::size_t i = 0; i < a.size(); ++i) EXPECT_LE(std::abs(a[i] - in[i]), 1.0f / 32768);
}

TEST_F(Render, ClipsWhatDoesNotFitAndReportsHowMuch) {
    const auto audio = Noise(1, 2000, 0.9f);
    WriteWav(_folder / "in.wav", audio);
    const auto run =
        Run({"in.wav"}, "out.wav", "fader", {"--set", "0:24", "--format", "16", "--no-dither", "--json"});
    ASSERT_EQ(run.code, 0);
    std::size_t clipped = 0;
    const auto out = ReadWav(_folder / "out.wav").samples;
    for (std::size_t i = 0; i < out.size(); ++i) {
        const double wanted = static_cast<double>(audio.samples[i]) * std::pow(10, 24 / 20.0);
        const double expected = std::clamp(wanted, -1.0, 32767.0 / 32768);
        EXPECT_NEAR(static_cast<double>(out[i]), expected, 0.51 / 32768);
        if (wanted > 1 || wanted < -1 - 1 / 32768.0) ++clipped; // more than a step off
    }
    EXPECT_GT(clipped, 1000u);
    EXPECT_EQ(nlohmann::json::parse(run.out)[0]["clipped"], clipped);
}

TEST_F(Render, ReportsWhatItDid) {
    const auto audio = Noise(2, 48000, 0.5f);
    WriteWav(_folder / "in.wav", audio);
    const auto run = Run({"in.wav"}, "out.wav", "fader", {"--set", "0:-6", "--json"});
    const auto report = nlohmann::json::parse(run.out)[0];
    EXPECT_EQ(report["channels"], 2);
    EXPECT_EQ(report["rate"], 48000);
    EXPECT_EQ(report["format"], "float");
    EXPECT_EQ(report["frames"], 48000);
    EXPECT_EQ(report["delay"]["frames"], 64);
    EXPECT_EQ(report["delay"]["measured"], true);
    EXPECT_EQ(report["delay"]["reported"], 256);
    double peak = 0;
    for (const float sample : audio.samples) peak = std::max(peak, std::abs(static_cast<double>(sample)));
    EXPECT_NEAR(report["before"]["sample_peak_dbfs"].get<double>(), 20 * std::log10(peak), 1e-6);
    EXPECT_NEAR(report["after"]["sample_peak_dbfs"].get<double>(), 20 * std::log10(peak) - 6, 1e-3);
    EXPECT_NEAR(report["gain"]["largest_change_db"].get<double>(), -6, 1e-3);
    EXPECT_NEAR(report["gain"]["highest_db"].get<double>(), -6, 1e-3);
    EXPECT_GT(report["real_time_factor"].get<double>(), 0);
}

TEST_F(Render, SaysWhenTheDelayIsTheEffectsWord) {
    const auto audio = Noise(2, 3000, 0.5f);
    WriteWav(_folder / "in.wav", audio);
    const auto run = Run({"in.wav"}, "out.wav", "generator");
    ASSERT_EQ(run.code, 0) << run.errors;
    EXPECT_TRUE(Contains(run.out, "100 frames, reported by the effect: no clear correlation to measure"))
        << run.out;
    EXPECT_EQ(ReadWav(_folder / "out.wav").Frames(), 3000u);
}

TEST_F(Render, CountsSamplesThatAreNoNumbers) {
    SAudio audio = Noise(1, 1000, 0.5f);
    audio.samples[500] = std::nanf("");
    WriteWav(_folder / "in.wav", audio);
    const auto run = Run({"in.wav"}, "out.wav", "fader", {"--json"});
    const auto report = nlohmann::json::parse(run.out)[0];
    EXPECT_EQ(report["before"]["not_finite"], 1);
    EXPECT_EQ(report["after"]["not_finite"], 1);
    EXPECT_LT(report["after"]["sample_peak_dbfs"].get<double>(), 0);
}

TEST_F(Render, PutsManyFilesIntoAFolderThatItMakes) {
    WriteWav(_folder / "a.wav", Noise(1, 100, 0.5f));
    WriteWav(_folder / "b.wav", Noise(2, 200, 0.5f));
    const auto run = Run({"a.wav", "b.wav"}, "new/folder", "fader");
    ASSERT_EQ(run.code, 0) << run.errors;
    EXPECT_EQ(FilesIn(_folder / "new" / "folder"), (std::vector<std::string>{"a.wav", "b.wav"}));
    EXPECT_EQ(ReadWav(_folder / "new" / "folder" / "b.wav").Frames(), 200u);
}

TEST_F(Render, PutsOneFileIntoAFolderThatIsThere) {
    WriteWav(_folder / "a.wav", Noise(1, 100, 0.5f));
    std::filesystem::create_directory(_folder / "there");
    ASSERT_EQ(Run({"a.wav"}, "there", "fader").code, 0);
    EXPECT_EQ(FilesIn(_folder / "there"), std::vector<std::string>{"a.wav"});
}

TEST_F(Render, ContinuesWithTheOtherFilesWhenOneFails) {
    WriteWav(_folder / "b.wav", Noise(2, 200, 0.5f));
    std::ofstream(_folder / "broken.wav") << "RIFFnothing";
    const auto run = Run({"missing.wav", "broken.wav", "b.wav"}, "out", "fader");
    EXPECT_EQ(run.code, 1);
    EXPECT_TRUE(Contains(run.errors, "missing.wav: no such file\n")) << run.errors;
    EXPECT_TRUE(Contains(run.errors, "broken.wav: ")) << run.errors;
    EXPECT_EQ(FilesIn(_folder / "out"), std::vector<std::string>{"b.wav"});
}

TEST_F(Render, NeverReplacesAnInput) {
    const auto audio = Noise(1, 100, 0.5f);
    WriteWav(_folder / "a.wav", audio);
    WriteWav(_folder / "b.wav", audio);
    std::filesystem::create_directory(_folder / "sub");
    for (const char* output : {"a.wav", "./a.wav", "sub/../a.wav", "."}) {
        const auto run = Run({"a.wav"}, output, "fader", {"--set", "0:-6"});
        EXPECT_EQ(run.code, 2) << output;
        EXPECT_TRUE(Contains(run.errors, ": would replace an input\n")) << run.errors;
    }
    WriteWav(_folder / "sub" / "a.wav", audio);
    EXPECT_EQ(Run({"a.wav", "sub/a.wav"}, "elsewhere", "fader").code, 2); // both would be elsewhere/a.wav
    EXPECT_EQ(Run({"a.wav", "b.wav"}, "a.wav", "fader").code, 2);
    EXPECT_EQ(ReadWav(_folder / "a.wav").samples, audio.samples);
}

TEST_F(Render, RefusesOutputsOfNoKnownFormat) {
    WriteWav(_folder / "a.wav", Noise(1, 100, 0.5f));
    const auto run = Run({"a.wav"}, "out.xyz", "fader");
    EXPECT_EQ(run.code, 2);
    EXPECT_TRUE(Contains(run.errors, "out.xyz: unknown output format; .wav, .flac")) << run.errors;
    EXPECT_EQ(Run({"a.wav"}, "out.wav", "fader", {"--format", "12"}).code, 2);
    EXPECT_EQ(Run({"a.wav"}, "out.flac", "fader", {"--format", "float"}).code, 2);
}

TEST_F(Render, ReportsProblemsInOneLine) {
    WriteWav(_folder / "a.wav", Noise(1, 100, 0.5f));
    const auto unknown = Run({"a.wav"}, "out.wav", "fader", {"--set", "9=0"});
    EXPECT_EQ(unknown.code, 2);
    EXPECT_EQ(unknown.errors, "kavhost: unknown parameter 9: the effect has 5, 0 to 4\n");
    const auto option = Run({"a.wav"}, "out.wav", "fader", {"--bogus"});
    EXPECT_EQ(option.code, 2);
    EXPECT_EQ(std::ranges::count(option.errors, '\n'), 1);
    EXPECT_EQ(Run({"a.wav"}, "out.wav", "fader", {"--align", "--no-align"}).code, 2);
    EXPECT_EQ(Run({"a.wav"}, "out.wav", "fader", {"--block", "0"}).code, 2);
    EXPECT_EQ(Run({"a.wav"}, "missing/out.wav", "fader").code, 1);
    EXPECT_EQ(Run({"a.wav"}, "out.wav", "no_entry").code, 1);
    EXPECT_EQ(FilesIn(_folder), std::vector<std::string>{"a.wav"});
}

TEST_F(Render, CountsWhatIsNoFiniteNumberInTheInputAsAFailureOnlyIfItIsStrict) {
    auto audio = Noise(2, 1000, 0.5f);
    audio.samples[500] = std::numeric_limits<float>::quiet_NaN();
    audio.samples[501] = -std::numeric_limits<float>::infinity();
    WriteWav(_folder / "bad.wav", audio);
    WriteWav(_folder / "good.wav", Noise(2, 1000, 0.5f));
    const auto lenient = Run({"bad.wav"}, "out.wav", "fader");
    EXPECT_EQ(lenient.code, 0);
    EXPECT_TRUE(Contains(lenient.out, "2 samples of the input are infinite or not a number\n"))
        << lenient.out;
    const auto json = nlohmann::json::parse(Run({"bad.wav"}, "out.wav", "fader", {"--json"}).out);
    EXPECT_EQ(json[0]["notes"], nlohmann::json{"2 samples of the input are infinite or not a number"});
    EXPECT_EQ(json[0]["before"]["not_finite"], 2);

    std::filesystem::remove(_folder / "out.wav");
    const auto strict = Run({"bad.wav"}, "out.wav", "fader", {"--strict"});
    EXPECT_EQ(strict.code, 1);
    EXPECT_TRUE(Contains(strict.errors, "bad.wav: 2 samples of the input are infinite or not a number\n"))
        << strict.errors;
    EXPECT_EQ(Run({"bad.wav"}, "out.wav", "fader", {"--strict", "--no-measure"}).code, 1);
    EXPECT_EQ(FilesIn(_folder), (std::vector<std::string>{"bad.wav", "good.wav"}));
    EXPECT_EQ(Run({"good.wav"}, "out.wav", "fader", {"--strict"}).code, 0);
}

TEST_F(Render, ReportsDurationsRoundedToTheHundredth) {
    // At 8 kHz 39 frames are 4.875 ms and 40 are 5; 480000 are a minute.
    const std::vector<std::pair<std::size_t, std::string>> expected{
        {39, "0:00.00\n"}, {40, "0:00.01\n"}, {8000 - 16, "0:01.00\n"}, {480000 - 1, "1:00.00\n"}};
    for (const auto& [frames, text] : expected) {
        WriteWav(_folder / "in.wav", {{8000, 1, ESampleFormat::Int16}, std::vector<float>(frames)});
        const auto run = Run({"in.wav"}, "out.wav", "fader", {"--no-align", "--no-preroll"});
        EXPECT_TRUE(Contains(run.out, ", " + text)) << frames << run.out;
    }
}

TEST_F(Render, ReportsNoSignInFrontOfZero) {
    // -0.0005 dB is 0.00 with two decimals.
    std::vector<float> samples(1000, static_cast<float>(std::pow(10, -0.0005 / 20)));
    WriteWav(_folder / "in.wav", {{48000, 1, ESampleFormat::Float32}, samples});
    const auto run = Run({"in.wav"}, "out.wav", "fader");
    ASSERT_EQ(run.code, 0) << run.errors;
    EXPECT_TRUE(Contains(run.out, "  sample peak                 0.00      0.00 dBFS\n")) << run.out;
    EXPECT_FALSE(Contains(run.out, "-0.00")) << run.out;
    EXPECT_FALSE(Contains(run.out, "+0.00")) << run.out;
}

TEST_F(Render, TakesPathsThatBeginWithASlash) {
    const auto run =
        RunHost({"render", "/no/such/in.wav", "-o", Path("out.wav"), "-p", Utf8(EffectFile("fader"))});
    EXPECT_EQ(run.code, 1) << run.errors;
    EXPECT_EQ(run.errors, "kavhost: /no/such/in.wav: no such file\n");
}

TEST_F(Render, TakesNamesInAnyScript) {
    const std::string name = "\xC3\xA4\xE2\x82\xAC\xE9\x9F\xB3.wav";
    WriteWav(_folder / PathOf(name), Noise(1, 100, 0.5f));
    const auto run = Run({name}, "out-" + name, "fader");
    ASSERT_EQ(run.code, 0) << run.errors;
    EXPECT_EQ(ReadWav(_folder / PathOf("out-" + name)).Frames(), 100u);
}

TEST_F(Render, TakesQuantitiesFromAProfile) {
    WriteWav(_folder / "a.wav", Noise(1, 100, 0.5f));
    std::ofstream(_folder / "profile.json")
        << R"({"name": "Test Fader", "unique_id": 1952866660, "parameters": [
        {"index": 0, "name": "Overall Gain", "unit": "dB", "law": "linear", "minimum": -24, "maximum": 24}]})";
    const auto run = Run(
        {"a.wav"}, "out.wav", "fader", {"--profile", Path("profile.json"), "--set", "overall gain=-12 dB"});
    ASSERT_EQ(run.code, 0) << run.errors;
    const auto in = ReadWav(_folder / "a.wav").samples;
    const auto out = ReadWav(_folder / "out.wav").samples;
    EXPECT_NEAR(out[50] / in[50], std::pow(10, -12 / 20.0), 1e-5);
    EXPECT_EQ(Run({"a.wav"}, "out.wav", "old_stereo", {"--profile", Path("profile.json")}).code, 1);
}

TEST(Info, DescribesItForProgramsToo) {
    const auto run = RunHost({"info", "--json", "-p", Utf8(EffectFile("fader")), "--set", "1:Hard"});
    ASSERT_EQ(run.code, 0) << run.errors;
    const auto info = nlohmann::json::parse(run.out);
    EXPECT_EQ(info["name"], "Test Fader");
    EXPECT_EQ(info["unique_id_text"], "tfad");
    EXPECT_EQ(info["flags"], nlohmann::json::array({"replacing"}));
    EXPECT_EQ(info["latency"], 256);
    ASSERT_EQ(info["parameters"].size(), 5u);
    EXPECT_EQ(info["parameters"][1]["name"], "Mode");
    EXPECT_EQ(info["parameters"][1]["display"], "Hard");
}

TEST(Help, IsNoError) {
    for (const auto& arguments : {std::vector<std::string>{"--help"}, {"render", "--help"}, {"--version"}}) {
        const auto run = RunHost(arguments);
        EXPECT_EQ(run.code, 0);
        EXPECT_TRUE(Contains(run.out, "kavhost")) << run.out;
        EXPECT_EQ(run.errors, "");
    }
    EXPECT_EQ(RunHost({}).code, 2);
    EXPECT_EQ(RunHost({"dance"}).code, 2);
}
