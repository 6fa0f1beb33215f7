#include "tools/kavhost/setup/setup.h"

#include "tests/tools/kavhost/records.h"
#include "tests/tools/kavhost/support.h"
#include "tools/kavhost/base/text.h"
#include "vst/vst2.h"

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

using namespace KAV::Host;
using namespace KAV::Tests;

namespace {

const std::int32_t Keeper = KAV::VST::FourCharacters('t', 'k', 'e', 'p');

/// The options for states, on effects of other vendors, with files in the test's own folder.
class Setup : public testing::Test {
protected:
    std::string Path(const std::string& name) const { return Utf8(_folder / PathOf(name)); }

    SRun Info(const std::string& effect, std::vector<std::string> more) {
        more.insert(more.begin(), {"info", "--json", "-p", Utf8(EffectFile(effect))});
        return RunHost(more);
    }
    double Value(const SRun& run, int parameter) {
        EXPECT_EQ(run.code, 0) << run.errors;
        return run.code == 0 ? nlohmann::json::parse(
                                   run.out)["parameters"][static_cast<std::size_t>(parameter)]["value"]
                                   .get<double>()
                             : -1;
    }
    /// Its channels times the keeper's gain.
    std::vector<float> Rendered(const SAudio& audio, std::vector<std::string> more) {
        WriteWav(_folder / "in.wav", audio);
        more.insert(more.begin(),
            {"render", "-p", Utf8(EffectFile("keeper")), Path("in.wav"), "-o", Path("out.wav")});
        const auto run = RunHost(more);
        EXPECT_EQ(run.code, 0) << run.errors;
        return ReadWav(_folder / "out.wav").samples;
    }

    std::filesystem::path _folder = NewFolder();
};

bool Contains(const std::string& text, const std::string& part) {
    return text.find(part) != std::string::npos;
}

} // namespace

TEST_F(Setup, AppliesStateThenPatchThenSettings) {
    WriteBytes(_folder / "s", KeeperChunk("BANK", {0.25f, 0.25f, 0.25f}));
    WriteBytes(_folder / "p.fxp", ValueRecord(Keeper, "P", {0.5f, 0.5f}));
    const auto run = Info("keeper", {"--set", "0=0.75", "--patch", Path("p.fxp"), "--state", Path("s")});
    EXPECT_EQ(Value(run, 0), 0.75);
    EXPECT_EQ(Value(run, 1), 0.5);
    EXPECT_EQ(Value(run, 2), 0.25);
    EXPECT_EQ(nlohmann::json::parse(run.out)["patch"], "P");
}

TEST_F(Setup, SavesAndRestoresAnyBytes) {
    ASSERT_EQ(Info("keeper", {"--set", "0=0.75", "--set", "2=0.5", "--save-state", Path("s")}).code, 0);
    EXPECT_EQ(BytesOf(_folder / "s"), KeeperChunk("BANK", {0.75f, 0, 0.5f}));
    EXPECT_EQ(Value(Info("keeper", {"--state", Path("s")}), 2), 0.5);
}

TEST_F(Setup, IsThatOfRenderToo) {
    WriteBytes(_folder / "s", KeeperChunk("BANK", {0.5f, 0, 0}));
    for (const int channels : {1, 2, 6, 16}) {
        const auto audio = Noise(channels, 1000, 0.5f);
        auto half = audio.samples;
        for (float& sample : half) sample *= 0.5f;
        EXPECT_EQ(Rendered(audio, {"--state", Path("s"), "--save-state", Path("again")}), half);
        EXPECT_EQ(BytesOf(_folder / "again"), BytesOf(_folder / "s"));
        EXPECT_EQ(Rendered(audio, {}), audio.samples); // no routing for a state that isn't text
    }
}

TEST_F(Setup, AppliesOnlyToTheFirstSubjectOfBench) {
    WriteBytes(_folder / "p.fxp", ValueRecord(Keeper, "P", {0.5f, 0.5f}));
    const auto bench = [&](const std::string& file) {
        return RunHost({"bench", "-p", Utf8(EffectFile("keeper")), "--seconds", "2", "--runs", "1", "--patch",
            Path(file), "--vs", Utf8(EffectFile("fader")), "--set2", "0=1"});
    };
    EXPECT_EQ(bench("p.fxp").code, 0) << bench("p.fxp").errors; // the fader would not take this patch
    EXPECT_EQ(bench("missing.fxp").code, 1);
}

TEST_F(Setup, FailsForAStateThatTheEffectRefuses) {
    WriteBytes(_folder / "s", KeeperChunk("PROG", {0.5f, 0, 0}));
    WriteBytes(_folder / "empty", "");
    const auto message = [&](const std::string& effect, const std::string& file) {
        const auto run = Info(effect, {"--state", Path(file)});
        EXPECT_EQ(run.code, 1);
        EXPECT_EQ(run.out, "");
        return run.errors;
    };
    EXPECT_TRUE(Contains(message("keeper", "s"), "s: Test Keeper does not accept this state\n"));
    EXPECT_TRUE(Contains(message("fader", "s"), "s: Test Fader does not accept this state\n"));
    EXPECT_TRUE(Contains(message("keeper", "empty"), "empty: empty\n"));
    EXPECT_TRUE(Contains(message("keeper", "missing"), "missing: no such file\n"));
    EXPECT_TRUE(Contains(message("keeper", "."), ": not a plain file\n"));
}

TEST_F(Setup, TakesNoFileOfAnAbsurdSize) {
    WriteBytes(_folder / "large", "x");
    std::filesystem::resize_file(
        _folder / "large", (std::uintmax_t{64} << 20) + 1); // zeros that take no disk space
    const auto run = Info("keeper", {"--state", Path("large")});
    EXPECT_EQ(run.code, 1);
    EXPECT_TRUE(Contains(run.errors, "large: too large\n")) << run.errors;
}

TEST_F(Setup, TakesNoPatchOrRoutingBeyond16Megabytes) {
    for (const char* const name : {"p.kvp", "p.fxp", "r.kvt"}) {
        WriteBytes(_folder / name, "x");
        std::filesystem::resize_file(_folder / name, (std::uintmax_t{16} << 20) + 1);
        const bool isRouting = std::string_view(name).ends_with("kvt");
        const auto run = Info("keeper", {isRouting ? "--routing" : "--patch", Path(name)});
        EXPECT_EQ(run.code, 1);
        EXPECT_TRUE(Contains(run.errors, std::string(name) + ": too large\n")) << run.errors;
    }
}

TEST_F(Setup, RefusesWhatHasNoPlaceInTheEffectsState) {
    WriteBytes(_folder / "r.kvt", RoutingOfChannels(2).document);
    for (const char* effect : {"keeper", "fader"}) {
        const auto routing = Info(effect, {"--routing", Path("r.kvt")});
        EXPECT_EQ(routing.code, 2);
        EXPECT_TRUE(Contains(routing.errors, "kavhost: --routing: the state of Test ")) << routing.errors;
        EXPECT_TRUE(Contains(routing.errors, " is not a text with a routing\n")) << routing.errors;
        const auto simd = Info(effect, {"--simd", "on"});
        EXPECT_EQ(simd.code, 2);
        EXPECT_TRUE(Contains(simd.errors, " is not a text with a switch of vector code\n")) << simd.errors;
        EXPECT_EQ(Info(effect, {"--os", "4"}).code, 2); // no parameter of that name
        EXPECT_EQ(Info(effect, {"--hq", "on"}).code, 2);
    }
}

TEST_F(Setup, TakesNoOtherWordsThanItsOptionsHave) {
    for (const auto& wrong : {std::vector<std::string>{"--simd", "1"}, {"--os", "3"}, {"--os", "x4"},
             {"--hq", ""}, {"--state"}, {"--patch", "a", "b"}, {"--state", "a", "--state", "b"}}) {
        EXPECT_EQ(Info("keeper", wrong).code, 2) << wrong[0];
    }
    EXPECT_EQ(RunHost({"bench", "--save-state", Path("s")}).code, 2);
}

TEST_F(Setup, SavesNoStateWhereThereIsNone) {
    const auto run = Info("fader", {"--save-state", Path("s")});
    EXPECT_EQ(run.code, 1);
    EXPECT_TRUE(Contains(run.errors, "s: Test Fader provides no state to save\n")) << run.errors;
    EXPECT_EQ(FilesIn(_folder), std::vector<std::string>{});
}

TEST_F(Setup, SavesTheStateOfOneFileWhenThatIsDone) {
    WriteWav(_folder / "a.wav", Noise(1, 100, 0.5f));
    WriteWav(_folder / "b.wav", Noise(1, 100, 0.5f));
    const auto save = [&](const std::vector<std::string>& inputs, const std::string& output,
                          const std::string& state) {
        std::vector<std::string> arguments{
            "render", "-p", Utf8(EffectFile("keeper")), "-o", Path(output), "--save-state", Path(state)};
        for (const auto& input : inputs) arguments.push_back(Path(input));
        return RunHost(arguments);
    };
    const std::vector<std::string> inputs{"a.wav", "b.wav"};
    EXPECT_EQ(save(inputs, "out", "s").errors, "kavhost: --save-state: there is more than one input\n");
    EXPECT_TRUE(Contains(save({"a.wav"}, "o.wav", "a.wav").errors, "a.wav: would replace an input\n"));
    EXPECT_TRUE(Contains(save({"a.wav"}, "o.wav", "./o.wav").errors, "is named for both"));
    EXPECT_EQ(save({"missing.wav"}, "o.wav", "s").code, 1);
    EXPECT_EQ(save({"a.wav"}, "o.wav", "no/such/folder/s").code, 1);
    EXPECT_EQ(save({"a.wav"}, "no/such/folder/o.wav", "s").code, 1);
    EXPECT_EQ(FilesIn(_folder), inputs);
    EXPECT_EQ(save({"a.wav"}, "o.wav", "s").code, 0);
    EXPECT_EQ(FilesIn(_folder), (std::vector<std::string>{"a.wav", "b.wav", "o.wav", "s"}));
}

TEST_F(Setup, LetsInfoListTheProgramsThatThereAre) {
    const auto programs = [&](const char* effect) {
        return nlohmann::json::parse(Info(effect, {}).out)["patches"];
    };
    EXPECT_EQ(programs("keeper"), nlohmann::json::array({"First", "Second", "Third"}));
    EXPECT_EQ(programs("fader"), nlohmann::json::array());
    const auto text = RunHost({"info", "-p", Utf8(EffectFile("keeper"))}).out;
    EXPECT_TRUE(Contains(text, "patch       First\npatches     3\n    0  First\n    1  Second\n")) << text;
}
