#include "tests/support/scratch_home.h"
#include "tests/tools/kavhost/support.h"
#include "tools/kavhost/audio/audio_file.h"
#include "tools/kavhost/base/progress.h"
#include "tools/kavhost/base/text.h"
#include "tools/kavhost/effect/effect_library.h"
#include "tools/kavhost/render/render.h"
#include "tools/kavhost/setup/profile.h"
#include "tools/kavhost/setup/settings.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <ebur128.h>
#include <fstream>
#include <gtest/gtest.h>
#include <limits>
#include <nlohmann/json.hpp>
#include <numbers>

using namespace KAV::Host;
using namespace KAV::Tests;

namespace {

using Json = nlohmann::json;

constexpr int RateHz = 22050;

bool Contains(const std::string& text, const std::string& part) {
    return text.find(part) != std::string::npos;
}

/// A piece for one or more channels, from a function of the channel and the time in seconds.
template<typename SAMPLE>
SAudio Piece(int channels, double seconds, SAMPLE sample, ESampleFormat samples = ESampleFormat::Int24) {
    SAudio audio{{}, {}};
    audio.format.rateHz = RateHz;
    audio.format.channels = channels;
    audio.format.samples = samples;
    const auto frames = static_cast<int>(seconds * RateHz);
    for (int i = 0; i < frames; ++i) {
        for (int c = 0; c < channels; ++c)
            audio.samples.push_back(static_cast<float>(sample(c, static_cast<double>(i) / RateHz)));
    }
    return audio;
}

double Sine(double hertz, double seconds) {
    return std::sin(2 * std::numbers::pi * hertz * seconds);
}

double Decibel(double decibels) {
    return std::pow(10.0, decibels / 20);
}

/// Some seconds of one of the tracks of the package asc-music, from the minute on, at 44.1 kHz.
SAudio Song(const std::string& name, double seconds) {
    const auto cut = ScratchFolder() / (name + ".wav");
    if (!std::filesystem::exists(cut)) {
        const auto raw = ScratchFolder() / (name + ".raw.wav");
        CAudioReader reader("/usr/share/games/asc/music/" + name + ".mp3");
        const auto rate = static_cast<std::size_t>(reader.Format().rateHz);
        reader.Seek(60 * rate);
        SAudio audio{reader.Format(), {}};
        audio.format.samples = ESampleFormat::Float32;
        audio.samples.resize(static_cast<std::size_t>(seconds * static_cast<double>(rate)) *
                             static_cast<std::size_t>(reader.Format().channels));
        EXPECT_EQ(reader.Read(audio.samples), audio.Frames());
        WriteWav(raw, audio);
        const auto command =
            "sox -D " + Utf8(raw) + " -b 24 " + Utf8(cut) + " gain -1 rate -v 44100 fade 0.02 -0 0.02";
        EXPECT_EQ(std::system(command.c_str()), 0) << command;
    }
    return ReadWav(cut);
}

/// Syllables of a voice, with pauses in between.
SAudio Speech() {
    const auto noise = Noise(1, static_cast<std::size_t>(5 * RateHz), 1);
    std::size_t i = 0;
    return Piece(1, 5, [&](int, double t) {
        const double syllable = std::max(0.0, std::sin(2 * std::numbers::pi * 3.1 * t));
        const bool isPause = std::fmod(t, 1.7) > 1.1;
        const double voice = Sine(140, t) + 0.6 * Sine(280, t) + 0.4 * Sine(1120, t);
        const double breath = 0.2 * static_cast<double>(noise.samples[i++]);
        return isPause ? 1e-4 * breath : Decibel(-16) * syllable * syllable * (voice + breath);
    });
}

SAudio Crescendo() {
    const auto noise = Noise(1, static_cast<std::size_t>(5 * RateHz), 1);
    std::size_t i = 0;
    return Piece(2, 5, [&](int c, double t) {
        const double sound = 0.5 * static_cast<double>(noise.samples[c == 0 ? i : i++]) + 0.5 * Sine(220, t);
        return Decibel(-46 + 8 * t) * sound;
    });
}

SAudio Clicks() {
    return Piece(2, 4, [](int, double t) {
        const bool isClick = std::fmod(t, 0.5) < 0.0005;
        return Decibel(-40) * Sine(330, t) + (isClick ? 0.5 : 0.0);
    });
}

SAudio Halves() {
    const auto noise = Noise(2, static_cast<std::size_t>(4 * RateHz), 1);
    std::size_t i = 0;
    return Piece(2, 4,
        [&](int, double t) { return Decibel(t < 2 ? -12 : -26) * static_cast<double>(noise.samples[i++]); });
}

SAudio SineTone() {
    return Piece(2, 2, [](int, double t) { return Decibel(-20) * Sine(997, t); });
}

SAudio Surround() {
    const auto noise = Noise(6, static_cast<std::size_t>(3 * RateHz), 1);
    std::size_t i = 0;
    return Piece(6, 3, [&](int c, double t) {
        const double beat = std::fmod(t, 0.4) < 0.1 ? 1.0 : 0.2;
        return Decibel(-14 - 2 * c) * beat * static_cast<double>(noise.samples[i++]);
    });
}

struct SMeasured {
    double lufs;
    double truePeakDbtp;
};

/// By the library alone. Mono counts as one channel.
SMeasured Measured(const std::filesystem::path& file) {
    CAudioReader reader(file);
    const auto channels = static_cast<unsigned>(reader.Format().channels);
    std::vector<float> samples(reader.Frames() * channels);
    const auto frames = reader.Read(samples);
    auto* state = ebur128_init(channels, static_cast<unsigned long>(reader.Format().rateHz),
        EBUR128_MODE_I | EBUR128_MODE_TRUE_PEAK);
    ebur128_add_frames_float(state, samples.data(), frames);
    SMeasured measured{0, 0};
    ebur128_loudness_global(state, &measured.lufs);
    for (unsigned c = 0; c < channels; ++c) {
        double peak = 0;
        ebur128_true_peak(state, c, &peak);
        measured.truePeakDbtp = std::max(measured.truePeakDbtp, peak);
    }
    measured.truePeakDbtp = 20 * std::log10(measured.truePeakDbtp);
    ebur128_destroy(&state);
    return measured;
}

/// Files in the test's own folder, rendered to targets in this process.
class Target : public testing::Test {
protected:
    std::string Path(const std::string& name) const { return Utf8(_folder / PathOf(name)); }

    void Write(const std::string& name, const SAudio& audio) const { WriteWav(_folder / name, audio); }

    SRun Run(const std::vector<std::string>& inputs, const std::string& output,
        const std::vector<std::string>& more) const {
        std::vector<std::string> arguments{
            "render", "--plugin", Utf8(PluginFile()), "--profile", Utf8(PluginProfile()), "-o", Path(output)};
        for (const auto& input : inputs) arguments.push_back(Path(input));
        arguments.insert(arguments.end(), more.begin(), more.end());
        return RunHost(arguments);
    }

    /// The report's object of a single file that must come out.
    Json RunForJson(
        const std::string& input, const std::string& output, std::vector<std::string> more) const {
        more.emplace_back("--json");
        const auto run = Run({input}, output, more);
        EXPECT_EQ(run.code, 0) << run.errors;
        return run.code == 0 ? Json::parse(run.out).at(0) : Json();
    }

    std::filesystem::path _folder = NewFolder();
};

/// Renders a file at any main input gain, by the same effect and without a search.
class CGrid final {
public:
    explicit CGrid(const std::filesystem::path& input) : _library(PluginFile()), _job{input, input} {
        const auto profile = ReadProfile(PluginProfile());
        _setup.emplace();
        _parameter = profile.Find(std::string_view("Main Input Gain"))->index;
        SRenderOptions options;
        _renderer.emplace(_library, *_setup, options);
    }

    /// The report of the sound, with everything else as in a fresh effect.
    SRenderReport At(double gainDb) {
        SGainChange change;
        change.settings.push_back({_parameter, static_cast<float>((gainDb + 24) / 48)});
        change.louderDb = gainDb;
        CProgress bar("", 0);
        CProgressPart part(bar, 0);
        return _renderer->Try(_job, change, {}, part);
    }

private:
    CEffectLibrary _library;
    SRenderJob _job;
    std::optional<CSetup> _setup;
    std::optional<CRenderer> _renderer;
    std::int32_t _parameter = 0;
};

} // namespace

TEST_F(Target, MusicNeedsSixRendersAtMost) {
    for (const char* const name : {"machine_wars", "time_to_strike", "frontiers"}) {
        Write("in.wav", Song(name, 3));
        for (const char* const lufs : {"-23", "-16", "-14", "-11", "-9"}) {
            SCOPED_TRACE(std::string(name) + " at " + lufs);
            const auto report = RunForJson("in.wav", "out.wav", {"--loudness", lufs, "--true-peak", "-1"});
            const auto& target = report["target"];
            EXPECT_LE(target["renders"], 6);
            const auto measured = Measured(_folder / "out.wav");
            EXPECT_NEAR(measured.lufs, std::stod(lufs), 0.1);
            EXPECT_LE(measured.truePeakDbtp, -1);
            if (target["output_gain_db"] < 0) {
                EXPECT_GE(measured.truePeakDbtp, -1.15);
            }
            EXPECT_NEAR(measured.lufs, target["reached"]["loudness_lufs"].get<double>(), 1e-6);
            EXPECT_NEAR(measured.truePeakDbtp, target["reached"]["true_peak_dbtp"].get<double>(), 1e-6);
            EXPECT_EQ(target["reached"]["loudness_lufs"], report["after"]["loudness_lufs"]);
        }
    }
}

/// The bound for the meter, which oversamples four times: at sixteen times the limit still holds.
TEST_F(Target, AFinerMeterAgreesThatThePeaksOfMusicAreBelowTheLimit) {
    for (const char* const name : {"machine_wars", "time_to_strike", "frontiers"}) {
        Write("in.wav", Song(name, 3));
        RunForJson("in.wav", "out.wav", {"--loudness", "-11", "--true-peak", "-1"});
        const auto fine = _folder / "fine.wav";
        const auto command = "sox -D " + Path("out.wav") + " -e floating-point -b 32 " + Utf8(fine) +
                             " gain -6 rate -v " + std::to_string(16 * 44100);
        ASSERT_EQ(std::system(command.c_str()), 0) << command;
        CAudioReader reader(fine);
        std::vector<float> samples(reader.Frames() * 2);
        reader.Read(samples);
        float peak = 0;
        for (const float sample : samples) peak = std::max(peak, std::abs(sample));
        EXPECT_LE(Decibels(static_cast<double>(peak)) + 6, -1) << name;
    }
}

TEST_F(Target, IsTheLowestInputGainOfAGridThatFits) {
    struct SPiece {
        const char* name;
        SAudio audio;
        std::vector<double> targets;
    };
    for (const auto& [name, audio, targets] : {SPiece{"song", Song("machine_wars", 3), {-14.03, -11}},
             SPiece{"another song", Song("time_to_strike", 3), {-13}}, SPiece{"speech", Speech(), {-17.03}},
             SPiece{"crescendo", Crescendo(), {-15}}, SPiece{"clicks", Clicks(), {-26}},
             SPiece{"halves", Halves(), {-10, -9.03}}, SPiece{"sine", SineTone(), {-12.04}},
             SPiece{"5.1", Surround(), {-14}}}) {
        Write("in.wav", audio);
        CGrid grid(_folder / "in.wav");
        for (const double lufs : targets) {
            for (const bool hasPeak : {false, true}) {
                SCOPED_TRACE(
                    std::string(name) + " at " + std::to_string(lufs) + (hasPeak ? " and -1 dBTP" : ""));
                std::vector<std::string> options{"--loudness", std::to_string(lufs)};
                if (hasPeak) options.insert(options.end(), {"--true-peak", "-1"});
                const auto target = RunForJson("in.wav", "out.wav", options)["target"];
                if (target.is_null()) continue;
                EXPECT_LE(target["renders"], 6);
                EXPECT_NEAR(target["reached"]["loudness_lufs"].get<double>(), lufs, 0.1);
                // What lies further below changes with the gain, decibel by decibel, as the first piece
                // shows.
                const double found = target["input_gain_db"];
                std::optional<double> lowest;
                for (double gain = std::floor(found * 10) / 10 - (lufs == -14.03 ? 8 : 1.5);
                     !lowest && gain < found + 0.3; gain += 0.1) {
                    const auto report = grid.At(gain);
                    const double output = hasPeak ? std::min(0.0, -1.1 - *report.after.truePeakDbtp) : 0;
                    if (std::abs(*report.after.loudnessLufs + output - lufs) <= 0.1) lowest = gain;
                }
                ASSERT_TRUE(lowest) << found;
                EXPECT_NEAR(found, *lowest, 0.2);
            }
        }
    }
}

/// The claim that lets one render tell the result for every output gain.
TEST_F(Target, WhatComesOutIsLinearInTheOutputGain) {
    Write("in.wav", Song("machine_wars", 3));
    for (const char* const factor : {"1", "4"}) {
        std::vector<Json> after;
        for (const char* const gain : {"0", "-7.37"}) {
            after.push_back(RunForJson("in.wav", "out.wav",
                {"--format", "double", "--os", factor, "--set", "Main Input Gain=9", "--set",
                    std::string("Main Output Gain=") + gain})["after"]);
        }
        for (const char* const key : {"loudness_lufs", "true_peak_dbtp"})
            EXPECT_NEAR(after[1][key].get<double>(), after[0][key].get<double>() - 7.37, 3e-6) << key;
    }
}

TEST_F(Target, TruePeakAloneLowersTheOutputGainAndLeavesTheInputGain) {
    Write("in.wav", Song("machine_wars", 3));
    const auto report =
        RunForJson("in.wav", "out.wav", {"--true-peak", "-6", "--set", "Main Input Gain=3.3"});
    const auto& target = report["target"];
    EXPECT_EQ(target["binds"], "true peak");
    EXPECT_NEAR(target["input_gain_db"].get<double>(), 3.3, 1e-5);
    EXPECT_LT(target["output_gain_db"], 0);
    EXPECT_EQ(target["renders"], 2);
    const auto measured = Measured(_folder / "out.wav");
    EXPECT_LE(measured.truePeakDbtp, -6);
    EXPECT_GE(measured.truePeakDbtp, -6.15);

    const auto soft = RunForJson("in.wav", "soft.wav", {"--true-peak", "6"})["target"];
    EXPECT_EQ(soft["binds"], "nothing");
    EXPECT_EQ(soft["output_gain_db"], 0);
}

TEST_F(Target, OutputGainOnlyGoesDownFromWhereItStands) {
    Write("in.wav", SineTone());
    ASSERT_EQ(
        Run({"in.wav"}, "start.wav", {"--set", "Main Output Gain=-5", "--save-state", Path("start.state")})
            .code,
        0);
    const auto target = RunForJson("in.wav", "out.wav",
        {"--state", Path("start.state"), "--loudness", "-14", "--true-peak", "-1"})["target"];
    EXPECT_NEAR(target["output_gain_db"].get<double>(), -5, 1e-4);
    // A sine in both channels: its level in dBFS less 0.69 LU, plus the weighting at 997 Hz, which is 0.69.
    EXPECT_NEAR(target["input_gain_db"].get<double>(), -14 + 20 + 5, 0.1);
}

TEST_F(Target, SavedStateBringsTheSameSamples) {
    Write("in.wav", Surround());
    const auto target = RunForJson("in.wav", "out.wav",
        {"--loudness", "-9", "--true-peak", "-2.3", "--set", "Threshold (1)=-7.37", "--save-state",
            Path("found.state")})["target"];
    EXPECT_LT(target["output_gain_db"], 0);
    ASSERT_EQ(Run({"in.wav"}, "again.wav", {"--state", Path("found.state")}).code, 0);
    EXPECT_TRUE(BytesOf(_folder / "again.wav") == BytesOf(_folder / "out.wav"));
}

TEST_F(Target, IsReadFromWhatIsStored) {
    Write("in.wav", Song("time_to_strike", 3));
    for (const auto& [output, format] :
        {std::pair{"out.ogg", ""}, std::pair{"out.flac", "16"}, std::pair{"out.wav", "8"}}) {
        SCOPED_TRACE(output);
        std::vector<std::string> options{"--loudness", "-12", "--true-peak", "-1"};
        if (*format != 0) options.insert(options.end(), {"--format", format});
        const auto target = RunForJson("in.wav", output, options)["target"];
        const auto measured = Measured(_folder / output);
        EXPECT_NEAR(measured.lufs, -12, 0.1);
        EXPECT_LE(measured.truePeakDbtp, -1);
        EXPECT_GE(measured.truePeakDbtp, -1.15);
        EXPECT_NEAR(measured.truePeakDbtp, target["reached"]["true_peak_dbtp"].get<double>(), 1e-6);
        EXPECT_LE(target["renders"], 10);
    }
}

TEST_F(Target, SaysWhatIsInTheWayAndTheBestThatCanBeHad) {
    Write("sine.wav", SineTone());
    Write("quiet.wav", Piece(2, 1, [](int, double t) { return Decibel(-64) * Sine(440, t); }));
    Write("silent.wav", Piece(2, 1, [](int, double) { return 0.0; }));
    Write("below.wav", Piece(2, 1, [](int, double t) { return Decibel(-78) * Sine(440, t); }));
    Write("short.wav", Piece(2, 0.3, [](int, double t) { return 0.1 * Sine(440, t); }));
    Write("nan.wav", Piece(
                         2, 1,
                         [](int, double t) {
                             return t == 0 ? std::numeric_limits<double>::quiet_NaN() : 0.1 * Sine(440, t);
                         },
                         ESampleFormat::Float32));
    Write("song.wav", Song("machine_wars", 3));
    const auto before = FilesIn(_folder);
    const auto expect = [&](const char* input, std::vector<std::string> options,
                            const std::vector<std::string>& parts) {
        const auto run = Run({input}, "out.wav", options);
        EXPECT_EQ(run.code, 1) << input;
        EXPECT_EQ(std::ranges::count(run.errors, '\n'), 1) << run.errors;
        for (const auto& part : parts)
            EXPECT_TRUE(Contains(run.errors, part)) << run.errors << "lacks " << part;
        EXPECT_EQ(FilesIn(_folder), before);
    };
    // -64 dBFS in both channels is -64 LUFS.
    expect("quiet.wav", {"--loudness", "-14"},
        {"quiet.wav: -14 LUFS needs an input gain above the maximum of +24 dB; at that gain the loudness is "
         "-40"});
    expect("song.wav", {"--loudness", "-2", "--true-peak", "-1", "--max-reduction", "3"},
        {"song.wav: -2 LUFS at -1 dBTP needs ", " dB of reduction at 0:0",
            ", more than 3; with 3 dB the loudness is -1"});
    expect("sine.wav", {"--loudness", "-50"},
        {"sine.wav: -50 LUFS needs an input gain below the minimum of -23.99 dB; at that gain the loudness "
         "is "
         "-44.0"});
    expect("sine.wav", {"--true-peak", "-40", "--set", "Main Input Gain=20"},
        {"sine.wav: -40 dBTP needs an output gain below the minimum of -23.99 dB"});
    for (const char* const input : {"silent.wav", "below.wav", "short.wav"})
        expect(input, {"--loudness", "-14"},
            {"has no loudness", "silent, below the gate", "shorter than 0.4 s"});
    expect("nan.wav", {"--loudness", "-14"}, {"nan.wav: 2 samples are not finite numbers"});
    expect("nan.wav", {"--loudness", "-14", "--nearest"}, {"not finite"});
    expect("song.wav", {"--loudness", "-9", "--true-peak", "-1", "--max-reduction", "4"},
        {"song.wav: -9 LUFS at -1 dBTP needs ", " dB of reduction at 0:0",
            ", more than 4; with 4 dB the loudness is -1"});
    // A full-scale sine is 3 LU below what no limiter exceeds.
    expect("sine.wav", {"--loudness", "-0.2", "--true-peak", "-1"}, {"sine.wav: -0.2 LUFS at -1 dBTP"});
}

TEST_F(Target, NearestWritesTheBestAndSaysSo) {
    Write("song.wav", Song("machine_wars", 3));
    const std::vector<std::string> options{"--loudness", "-9", "--true-peak", "-1", "--max-reduction", "4"};
    const auto refused = Run({"song.wav"}, "out.wav", options).errors;
    auto nearest = options;
    nearest.emplace_back("--nearest");
    const auto report = RunForJson("song.wav", "out.wav", nearest);
    const auto& target = report["target"];
    EXPECT_EQ(target["nearest"], true);
    EXPECT_EQ(target["binds"], "reduction");
    EXPECT_TRUE(Contains(refused, target["in_the_way"].get<std::string>())) << refused;
    EXPECT_LE(report["reduction"]["largest_db"], 4);
    EXPECT_GE(report["reduction"]["largest_db"], 3.7);
    EXPECT_LE(target["renders"], 10);
    const auto text = Run({"song.wav"}, "out.wav", nearest).out;
    EXPECT_TRUE(Contains(text, "the nearest")) << text;

    Write("silent.wav", Piece(2, 1, [](int, double) { return 0.0; }));
    EXPECT_EQ(
        RunForJson("silent.wav", "silence.wav", {"--loudness", "-14", "--nearest"})["target"]["nearest"],
        true);
    EXPECT_EQ(ReadWav(_folder / "silence.wav").Frames(), ReadWav(_folder / "silent.wav").Frames());
}

TEST_F(Target, InABatchTheOtherFilesGoOn) {
    Write("a.wav", SineTone());
    Write("silent.wav", Piece(2, 1, [](int, double) { return 0.0; }));
    Write("b.wav", Clicks());
    const auto run = Run({"a.wav", "silent.wav", "b.wav"}, "out/", {"--loudness", "-26", "--jobs", "2"});
    EXPECT_EQ(run.code, 1);
    EXPECT_TRUE(Contains(run.errors, "silent.wav: has no loudness")) << run.errors;
    EXPECT_EQ(FilesIn(_folder / "out"), (std::vector<std::string>{"a.wav", "b.wav"}));
    EXPECT_NEAR(Measured(_folder / "out/a.wav").lufs, -26, 0.1);
    EXPECT_NEAR(Measured(_folder / "out/b.wav").lufs, -26, 0.1);
}

TEST_F(Target, AlbumIsOneProgrammeWithOnePairOfGains) {
    Write("loud.wav", Song("machine_wars", 3));
    auto soft = Piece(1, 4, [](int, double t) { return Decibel(-24) * Sine(440, t); });
    soft.format.rateHz = 32000;
    Write("soft.wav", soft);
    const auto run = Run(
        {"loud.wav", "soft.wav"}, "out/", {"--album", "--loudness", "-15", "--true-peak", "-1", "--json"});
    ASSERT_EQ(run.code, 0) << run.errors;
    const auto reports = Json::parse(run.out);
    ASSERT_EQ(reports.size(), 2u);
    EXPECT_EQ(reports[0]["target"], reports[1]["target"]);
    EXPECT_EQ(reports[0]["target"]["files"], 2);
    EXPECT_LE(reports[0]["target"]["renders"], 6);

    std::vector<ebur128_state*> states;
    double highest = 0;
    for (const char* const name : {"out/loud.wav", "out/soft.wav"}) {
        const auto audio = ReadWav(_folder / name);
        const auto channels = static_cast<unsigned>(audio.format.channels);
        states.push_back(ebur128_init(channels, static_cast<unsigned long>(audio.format.rateHz),
            EBUR128_MODE_I | EBUR128_MODE_TRUE_PEAK));
        ebur128_add_frames_float(states.back(), audio.samples.data(), audio.Frames());
        for (unsigned c = 0; c < channels; ++c) {
            double peak = 0;
            ebur128_true_peak(states.back(), c, &peak);
            highest = std::max(highest, 20 * std::log10(peak));
        }
        if (highest == 0) highest = -100;
    }
    double lufs = 0;
    ebur128_loudness_global_multiple(states.data(), states.size(), &lufs);
    for (auto*& state : states) ebur128_destroy(&state);
    EXPECT_NEAR(lufs, -15, 0.1);
    EXPECT_GT(Measured(_folder / "out/loud.wav").lufs, Measured(_folder / "out/soft.wav").lufs + 3);
    EXPECT_LE(std::max(Measured(_folder / "out/loud.wav").truePeakDbtp,
                  Measured(_folder / "out/soft.wav").truePeakDbtp),
        -1);
}

TEST_F(Target, AlbumWritesNothingIfAFileCannotBeRead) {
    Write("a.wav", SineTone());
    Write("c.wav", SineTone());
    WriteBytes(_folder / "b.wav", "no sound");
    const auto run = Run({"a.wav", "b.wav", "c.wav"}, "out/", {"--album", "--loudness", "-14"});
    EXPECT_EQ(run.code, 1);
    EXPECT_TRUE(Contains(run.errors, "b.wav")) << run.errors;
    EXPECT_EQ(FilesIn(_folder / "out"), std::vector<std::string>{});
}

TEST_F(Target, AlbumOfOneChannelCountHasOneState) {
    Write("a.wav", SineTone());
    Write("b.wav", Clicks());
    ASSERT_EQ(
        Run({"a.wav", "b.wav"}, "out/", {"--album", "--loudness", "-20", "--save-state", Path("album.state")})
            .code,
        0);
    for (const std::string name : {"a.wav", "b.wav"}) {
        ASSERT_EQ(Run({name}, "again.wav", {"--state", Path("album.state")}).code, 0);
        EXPECT_TRUE(BytesOf(_folder / "again.wav") == BytesOf(_folder / "out" / name)) << name;
    }
    Write("mono.wav", Piece(1, 1, [](int, double t) { return 0.1 * Sine(440, t); }));
    const auto mixed = Run({"a.wav", "mono.wav"}, "mixed/",
        {"--album", "--loudness", "-20", "--save-state", Path("mixed.state")});
    EXPECT_EQ(mixed.code, 2);
    EXPECT_TRUE(Contains(mixed.errors, "--save-state: ")) << mixed.errors;
    EXPECT_FALSE(std::filesystem::exists(_folder / "mixed.state"));
}

TEST_F(Target, MonoCountsAsOneChannelOrAsTwo) {
    Write("in.wav", Piece(1, 2, [](int, double t) { return Decibel(-20) * Sine(997, t); }));
    const auto once = RunForJson("in.wav", "once.wav", {"--loudness", "-20"});
    const auto twice = RunForJson("in.wav", "twice.wav", {"--loudness", "-20", "--dual-mono"});
    EXPECT_NEAR(
        once["target"]["input_gain_db"].get<double>() - twice["target"]["input_gain_db"].get<double>(),
        10 * std::log10(2), 0.02);
    EXPECT_NEAR(twice["after"]["loudness_lufs"].get<double>(), -20, 0.1);
    EXPECT_TRUE(Contains(Run({"in.wav"}, "once.wav", {"--loudness", "-20"}).out, "counts as one channel"));
    EXPECT_TRUE(
        Contains(Run({"in.wav"}, "once.wav", {"--loudness", "-20", "--dual-mono"}).out, "counts as two"));
}

TEST_F(Target, IsForThisEffectAndItsOwnGains) {
    Write("in.wav", SineTone());
    const auto before = FilesIn(_folder);
    const auto expect = [&](std::vector<std::string> options, const std::string& part) {
        const auto run = Run({"in.wav"}, "out.wav", options);
        EXPECT_EQ(run.code, 2) << part;
        EXPECT_TRUE(Contains(run.errors, part)) << run.errors;
        EXPECT_EQ(FilesIn(_folder), before);
    };
    expect({"--loudness", "-14", "--set", "Main Input Gain=3"},
        "--set: --loudness searches for the Main Input Gain");
    expect({"--loudness", "-14", "--set", "103=0.5"}, "--set: --loudness searches for the Main Input Gain");
    expect({"--true-peak", "-1", "--set", "Main Output Gain=3"},
        "--set: --true-peak searches for the Main Output Gain");
    expect({"--loudness", "loud"}, "--loudness: \"loud\" is not accepted, only -60 to 0 LUFS");
    expect({"--nearest"}, "--nearest needs --loudness or --true-peak");
    expect({"--album"}, "--album needs --loudness or --true-peak");
    expect({"--true-peak", "-1", "--max-reduction", "3"}, "--max-reduction");
    expect({"--loudness", "-14", "--no-measure"}, "--no-measure");
    const auto other = RunHost({"render", "--plugin", Utf8(EffectFile("fader")), Path("in.wav"), "-o",
        Path("out.wav"), "--loudness", "-14"});
    EXPECT_EQ(other.code, 2);
    EXPECT_TRUE(Contains(other.errors, "--loudness and --true-peak need the KAV Sorrel Limiter"))
        << other.errors;
    EXPECT_EQ(FilesIn(_folder), before);
}

TEST_F(Target, PictureShowsTheLastRender) {
    Write("in.wav", Song("machine_wars", 3));
    const auto report = RunForJson(
        "in.wav", "out.wav", {"--loudness", "-11", "--true-peak", "-1", "--plot-data", Path("data.json")});
    double highest = -100;
    const auto data = Json::parse(BytesOf(_folder / "data.json"));
    for (const auto& series : data["series"]) {
        if (series["quantity"] != "peak" || series["signal"] != "after") continue;
        for (const auto& peak : series["highest"]) {
            if (peak.is_number()) highest = std::max(highest, peak.get<double>());
        }
    }
    EXPECT_NEAR(highest, report["after"]["sample_peak_dbfs"].get<double>(), 1e-3);
}
