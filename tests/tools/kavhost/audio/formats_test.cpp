#include "tests/tools/kavhost/support.h"
#include "tools/kavhost/audio/audio_file.h"
#include "tools/kavhost/base/errors.h"
#include "tools/kavhost/base/text.h"
#include "tools/kavhost/bench/bench.h"
#include "tools/kavhost/measure/delay.h"
#include "tools/kavhost/measure/level_meter.h"
#include "tools/kavhost/measure/speaker_weights.h"

#include <algorithm>
#include <cmath>
#include <fstream>
#include <gtest/gtest.h>
#include <limits>
#include <numbers>
#include <sndfile.h>
#include <sstream>

using namespace KAV::Host;
using namespace KAV::Tests;

namespace {

class Formats : public testing::Test {
protected:
    SRun Run(const std::string& input, const std::string& output,
        const std::vector<std::string>& more = {}) const {
        std::vector<std::string> arguments{"render", "-p", Utf8(EffectFile("fader")),
            Utf8(_folder / PathOf(input)), "-o", Utf8(_folder / PathOf(output))};
        arguments.insert(arguments.end(), more.begin(), more.end());
        return RunHost(arguments);
    }
    SAudio Read(const std::string& name) const {
        CAudioReader reader(_folder / PathOf(name));
        SAudio audio{reader.Format(), {}};
        audio.samples.resize(1'000'000 * static_cast<std::size_t>(audio.format.channels));
        audio.samples.resize(reader.Read(audio.samples) * static_cast<std::size_t>(audio.format.channels));
        return audio;
    }

    std::filesystem::path _folder = NewFolder();
};

SAudio Sine(double frequency, double amplitude, double phase) {
    SAudio audio{{48000, 2, ESampleFormat::Float32}, {}};
    for (int i = 0; i < 5 * 48000; ++i) {
        const auto sample =
            static_cast<float>(amplitude * std::sin(2 * std::numbers::pi * frequency * i / 48000 + phase));
        audio.samples.insert(audio.samples.end(), {sample, sample});
    }
    return audio;
}

SLevels LevelsOf(const SAudio& audio) {
    CLevelMeter meter(WeightsFor(audio.format).channels, audio.format.rateHz);
    meter.Add(audio.samples);
    return meter.Levels();
}

std::string Content(const std::filesystem::path& file) {
    std::ostringstream text;
    text << std::ifstream(file, std::ios::binary).rdbuf();
    return text.str();
}

} // namespace

TEST_F(Formats, OfWholeNumbersKeepEveryBitFromFileToFile) {
    for (const auto format : {ESampleFormat::Int16, ESampleFormat::Int24}) {
        WriteWav(_folder / "in.wav", Noise(2, 3000, 0.9f, format));
        const auto samples = ReadWav(_folder / "in.wav").samples;
        ASSERT_EQ(Run("in.wav", "a.flac", {"--no-dither"}).code, 0);
        ASSERT_EQ(Run("a.flac", "b.aiff", {"--no-dither"}).code, 0);
        ASSERT_EQ(Run("b.aiff", "c.wav", {"--no-dither"}).code, 0);
        for (const char* name : {"a.flac", "b.aiff", "c.wav"}) {
            const auto audio = Read(name);
            EXPECT_EQ(audio.format.samples, format) << name;
            EXPECT_EQ(audio.samples, samples) << name;
        }
    }
}

TEST_F(Formats, ThatAContainerDoesNotHaveBecome24Bits) {
    WriteWav(_folder / "in.wav", Noise(2, 3000, 0.9f, ESampleFormat::Float32));
    ASSERT_EQ(Run("in.wav", "a.flac").code, 0);
    EXPECT_EQ(Read("a.flac").format.samples, ESampleFormat::Int24);
    ASSERT_EQ(Run("in.wav", "a.aiff", {"--format", "double"}).code, 0);
    EXPECT_EQ(Read("a.aiff").format.samples, ESampleFormat::Float64);
}

TEST_F(Formats, ThatAreLossyComeThroughAligned) {
    SAudio audio{{48000, 2, ESampleFormat::Float32}, std::vector<float>(2 * 24000)};
    MakeMaterial({.seconds = 0.5, .input = {}})
        .audio.GiveInterleaved(audio.samples); // coders are made for music
    WriteWav(_folder / "in.wav", audio);
    ASSERT_EQ(Run("in.wav", "a.ogg").code, 0);
    const auto coded = Read("a.ogg");
    EXPECT_EQ(coded.format.samples, ESampleFormat::Coded);
    ASSERT_EQ(coded.samples.size(), audio.samples.size());
    const std::span<const float> middle(audio.samples.data() + 4000, 20000);
    const auto match = FindSignal(middle, coded.samples);
    EXPECT_EQ(match->lag, 4000);
    EXPECT_GT(match->correlation, 0.99);
}

TEST_F(Formats, OfCodedInputsBecome24Bits) {
    auto audio = Noise(2, 20000, 0.5f);
    SF_INFO info{.frames = 0,
        .samplerate = 48000,
        .channels = 2,
        .format = SF_FORMAT_MPEG | SF_FORMAT_MPEG_LAYER_III,
        .sections = 0,
        .seekable = 0};
    SNDFILE* const mp3 = sf_open((_folder / "in.mp3").string().c_str(), SFM_WRITE, &info);
    ASSERT_NE(mp3, nullptr);
    sf_writef_float(mp3, audio.samples.data(), 20000);
    sf_close(mp3);
    std::filesystem::create_directory(_folder / "out");
    ASSERT_EQ(Run("in.mp3", "out").code, 0);
    const auto out = Read("out/in.wav");
    EXPECT_EQ(out.format.samples, ESampleFormat::Int24);
    EXPECT_EQ(out.samples.size(), Read("in.mp3").samples.size());
}

TEST_F(Formats, ThatCannotHoldTheChannelsFailWithoutAFile) {
    WriteWav(_folder / "in.wav", Noise(16, 100, 0.5f, ESampleFormat::Int24));
    const auto run = Run("in.wav", "out.flac");
    EXPECT_EQ(run.code, 1);
    EXPECT_NE(run.errors.find("out.flac: FLAC cannot hold 16 channels at 48000 Hz"), std::string::npos)
        << run.errors;
    EXPECT_EQ(FilesIn(_folder), std::vector<std::string>{"in.wav"});
}

TEST_F(Formats, HaveFilesWithNamesInAnyScript) {
    const std::string name = "Gr\xC3\xB6\xC3\x9F"
                             "e \xE2\x80\x93 \xE9\x9F\xB3 \xF0\x9F\x8E\x9A";
    WriteWav(_folder / PathOf(name + ".wav"), Noise(2, 3000, 0.9f, ESampleFormat::Int16));
    const auto samples = ReadWav(_folder / PathOf(name + ".wav")).samples;
    ASSERT_EQ(Run(name + ".wav", name + ".flac", {"--no-dither"}).code, 0);
    ASSERT_EQ(Run(name + ".flac", name + ".aiff", {"--no-dither"}).code, 0);
    ASSERT_EQ(Run(name + ".aiff", name + ".ogg").code, 0);
    EXPECT_EQ(Read(name + ".aiff").samples, samples);
    EXPECT_EQ(Read(name + ".ogg").Frames(), 3000u);
    EXPECT_EQ(FilesIn(_folder),
        (std::vector<std::string>{name + ".aiff", name + ".flac", name + ".ogg", name + ".wav"}));
}

TEST_F(Formats, GiveTheSameFileInEveryRun) {
    WriteWav(_folder / "in.wav", Noise(2, 3000, 0.9f, ESampleFormat::Float32));
    ASSERT_EQ(Run("in.wav", "a.wav").code, 0);
    std::filesystem::rename(_folder / "a.wav", _folder / "first.wav");
    ASSERT_EQ(Run("in.wav", "a.wav").code, 0);
    EXPECT_EQ(Content(_folder / "a.wav"), Content(_folder / "first.wav"));
}

TEST_F(Formats, ThatAreUnknownFailInOneLine) {
    std::ofstream(_folder / "in.wav") << "no audio at all, only text that goes on for a while";
    const auto run = Run("in.wav", "out.wav");
    EXPECT_EQ(run.code, 1);
    EXPECT_NE(run.errors.find("in.wav: cannot be read as audio: "), std::string::npos) << run.errors;
    EXPECT_EQ(std::ranges::count(run.errors, '\n'), 1);
}

TEST_F(Formats, BeyondFourGibibytesAreTheWideFormOfWav) {
    for (const auto& [frames, mark] :
        {std::pair{std::uint64_t{1000}, "RIFF"}, {std::uint64_t{1} << 30, "RF64"}}) {
        CAudioWriter writer(
            _folder / "a.wav", EContainer::Wav, {48000, 2, ESampleFormat::Int16}, false, frames);
        auto audio = Noise(2, 1000, 0.5f);
        writer.Write(audio.samples); // only the estimate decides
        writer.Commit();
        EXPECT_EQ(Content(_folder / "a.wav").substr(0, 4), mark);
        EXPECT_EQ(Read("a.wav").samples, audio.samples);
    }
}

TEST(LevelMeter, AgreesWithTheDefinitionOfLoudness) {
    // The K-weighting has 0.691 dB at 997 Hz, which the formula subtracts again. Two channels with a sine of
    // amplitude a each have the mean squares a^2 / 2, so together 20 log10(a) LUFS.
    EXPECT_NEAR(*LevelsOf(Sine(997, 0.1, 0)).loudnessLufs, -20, 0.05);
}

TEST(LevelMeter, SeesPeaksBetweenSamples) {
    // At a quarter of the rate and 45 degrees every sample is 3 dB below the crest between the samples.
    const auto levels = LevelsOf(Sine(12000, 0.5, std::numbers::pi / 4));
    EXPECT_NEAR(levels.samplePeakDbfs, 20 * std::log10(0.5 * std::numbers::sqrt2 / 2), 1e-4);
    EXPECT_NEAR(*levels.truePeakDbtp, 20 * std::log10(0.5), 0.2);
}

TEST(LevelMeter, HearsNothingInSilence) {
    const auto levels = LevelsOf({{48000, 2, ESampleFormat::Float32}, std::vector<float>(96000)});
    EXPECT_EQ(levels.samplePeakDbfs, -std::numeric_limits<double>::infinity());
    EXPECT_EQ(levels.loudnessLufs, -std::numeric_limits<double>::infinity());
}

TEST_F(Formats, AreReadOnFromAnyFrame) {
    WriteWav(_folder / "in.wav", Noise(2, 50'000, 0.5f));
    for (const std::string name : {"out.wav", "out.flac", "out.aiff"}) {
        ASSERT_EQ(Run("in.wav", name).code, 0);
        const auto whole = Read(name).samples;
        CAudioReader reader(_folder / name);
        for (const std::size_t frame : {40'000u, 0u, 12'345u}) {
            reader.Seek(frame);
            std::vector<float> read(200);
            ASSERT_EQ(reader.Read(read), 100u);
            for (std::size_t i = 0; i < 200; ++i) ASSERT_NEAR(read[i], whole[2 * frame + i], 1e-6) << name;
        }
        reader.Seek(1'000'000);
        std::vector<float> none(2);
        EXPECT_EQ(reader.Read(none), 0u) << name;
    }
}

TEST_F(Formats, ThatAreCodedAreReadOnNearAnyFrame) {
    WriteWav(_folder / "in.wav", Noise(2, 50'000, 0.5f));
    ASSERT_EQ(Run("in.wav", "out.ogg").code, 0);
    CAudioReader reader(_folder / "out.ogg");
    reader.Seek(40'000);
    std::vector<float> rest(100'000);
    EXPECT_NEAR(static_cast<double>(reader.Read(rest)), 10'000.0, 2048.0);
    reader.Seek(0);
    EXPECT_EQ(reader.Read(rest), 50'000u);
}
