#include "tools/kavhost/render/pass.h"

#include "tests/tools/kavhost/child.h"
#include "tools/kavhost/audio/audio_file.h"
#include "tools/kavhost/base/errors.h"
#include "tools/kavhost/base/text.h"
#include "tools/kavhost/effect/blocks.h"
#include "tools/kavhost/effect/effect.h"
#include "tools/kavhost/effect/effect_library.h"
#include "tools/kavhost/report/report.h"

#include <algorithm>
#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

using namespace KAV::Host;
using namespace KAV::Tests;

namespace {

constexpr std::int64_t FaderDelay = 64;

/// A file through an effect that only delays it.
class Pass : public testing::Test {
protected:
    void Make(const SAudio& audio, std::int32_t blockSize = 512) {
        WriteWav(_file, audio);
        _effect.emplace(_library, SStream{48000, blockSize});
        _effect->SetChannels(audio.format.channels);
        _effect->Start();
        SettleFadeIn(*_effect);
        _reader.emplace(_file);
        const auto channels = static_cast<std::size_t>(audio.format.channels);
        _pass.emplace(*_reader, *_effect,
            SPassOptions{.delay = FaderDelay,
                .weights = std::vector<double>(channels, 1.0),
                .idleGainsDb = std::vector<double>(channels, 0.0)});
    }

    static void Ignore(std::uint64_t) {}

    std::filesystem::path _folder = NewFolder();
    std::filesystem::path _file = _folder / "in.wav";
    CEffectLibrary _library{EffectFile("fader")};
    std::optional<CEffect> _effect;
    std::optional<CAudioReader> _reader;
    std::optional<CPass> _pass;
};

} // namespace

TEST_F(Pass, StoresEverySampleOnceAndInOrderWhateverItsBlocks) {
    struct SCase {
        int channels;
        std::size_t frames;
        std::int32_t blockSize;
    };
    for (const auto& [channels, frames, blockSize] :
        {SCase{2, 8191, 512}, {2, 8192, 512}, {2, 8192 - 64, 512}, {2, 3 * 8192 + 1, 512}, {2, 50000, 4096},
            {2, 70000, 65536}, {2, 20000, 1}, {16, 5000, 512}, {16, 5000, 3000}, {1, 100001, 777}}) {
        const auto audio = Noise(channels, frames, 0.5f);
        Make(audio, blockSize);
        std::vector<float> stored;
        std::uint64_t read = 0;
        _pass->Run(
            [&](std::span<float> samples) { stored.insert(stored.end(), samples.begin(), samples.end()); },
            [&](std::uint64_t count) { read += count; });
        EXPECT_EQ(stored, audio.samples) << channels << " channels, " << frames << " by " << blockSize;
        EXPECT_EQ(read, frames);
        SRenderReport report;
        _pass->Report(report);
        EXPECT_EQ(report.frames, frames);
        EXPECT_NEAR(report.gain->lowest, 0, 1e-6);
        EXPECT_NEAR(report.gain->highest, 0, 1e-6);
        EXPECT_EQ(report.after.samplePeakDbfs, report.before.samplePeakDbfs);
        EXPECT_EQ(report.after.truePeakDbtp, report.before.truePeakDbtp);
        EXPECT_EQ(report.after.loudnessLufs, report.before.loudnessLufs);
    }
}

TEST_F(Pass, MeasuresWhatWasStored) {
    Make(Noise(2, 30000, 0.5f));
    _pass->Run([](std::span<float> samples) { std::ranges::fill(samples, 0.25f); }, Ignore);
    SRenderReport report;
    _pass->Report(report);
    EXPECT_NEAR(report.after.samplePeakDbfs, 20 * std::log10(0.25), 1e-9);
    EXPECT_LT(report.before.samplePeakDbfs, -6);
    EXPECT_GT(report.before.samplePeakDbfs, -6.1);
}

TEST_F(Pass, EndsCleanlyWhicheverStepFails) {
    const auto audio = Noise(2, 200000, 0.5f);
    for (const std::size_t failing : {0u, 1u, 12u, 24u}) { // of 25 blocks
        Make(audio);
        std::size_t stored = 0;
        const auto store = [&](std::span<float>) {
            if (stored++ == failing) throw CFailure("no more room");
        };
        EXPECT_THROW(_pass->Run(store, Ignore), CFailure) << failing;
        EXPECT_EQ(stored, failing + 1); // nothing is stored after that
    }
    Make(audio);
    std::uint64_t read = 0;
    const auto fail = [&](std::uint64_t frames) {
        if ((read += frames) > 100000) throw CInterruption();
    };
    EXPECT_THROW(_pass->Run([](std::span<float>) {}, fail), CInterruption);
}

TEST_F(Pass, EndsCleanlyWhenTheFileIsDamagedInTheMiddle) {
    const auto flac = _folder / "in.flac";
    WriteWav(_file, Noise(2, 200000, 0.5f, ESampleFormat::Int16));
    ASSERT_EQ(RunHost({"render", "-p", Utf8(EffectFile("fader")), Utf8(_file), "-o", Utf8(flac)}).code, 0);
    auto bytes = BytesOf(flac);
    std::fill(bytes.begin() + static_cast<std::ptrdiff_t>(bytes.size() / 2), bytes.end(), 'x');
    WriteBytes(flac, bytes);
    const auto before = FilesIn(_folder);
    const std::vector<std::string> arguments{
        "render", "-p", Utf8(EffectFile("fader")), Utf8(flac), "-o", Utf8(_folder / "out.wav"), "--strict"};
    const auto run = RunHost(arguments);
    EXPECT_EQ(run.code, 1);
    EXPECT_NE(run.errors.find("in.flac: the input is cut off or damaged"), std::string::npos) << run.errors;
    EXPECT_EQ(FilesIn(_folder), before);
}

TEST_F(Pass, GivesTheSameWithoutThreads) {
    WriteWav(_file, Noise(2, 100000, 0.9f, ESampleFormat::Int16));
    const auto arguments = [&](const char* output) {
        return std::vector<std::string>{"render", "-p", EffectFile("fader"), _file, "-o", _folder / output,
            "--set", "0:6", "--jobs", "2", "--json"};
    };
    const auto usual = CChild(arguments("usual.wav")).Wait();
    ASSERT_EQ(usual.code, 0) << usual.errors;
    // No thread can have a stack larger than the memory that a processor addresses.
    std::vector<std::string> limited{
        "-c", "ulimit -S -s 1099511627776 && exec \"$0\" \"$@\"", KAVHOST_PROGRAM};
    for (const auto& argument : arguments("alone.wav")) limited.push_back(argument);
    const auto alone = CChild(limited, {.program = "/bin/sh"}).Wait();
    ASSERT_EQ(alone.code, 0) << alone.errors;
    EXPECT_EQ(BytesOf(_folder / "alone.wav"), BytesOf(_folder / "usual.wav"));
    auto one = nlohmann::json::parse(usual.out).at(0), other = nlohmann::json::parse(alone.out).at(0);
    for (auto* const report : {&one, &other}) {
        report->erase("output");
        report->erase("real_time_factor");
    }
    EXPECT_EQ(other, one);
}
