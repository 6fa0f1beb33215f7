#include "tests/tools/kavhost/records.h"
#include "tests/tools/kavhost/support.h"
#include "tools/kavhost/base/text.h"
#include "tools/kavhost/setup/state_text.h"
#include "utils/marked_text.h"
#include "vst/vst2.h"

#include <algorithm>
#include <cmath>
#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

using namespace KAV::Host;
using namespace KAV::Tests;

namespace {

constexpr std::int32_t Limiter = KAV::VST::FourCharacters('s', 'o', 'r', 'l');

/// The product's own library with the options for states.
class State : public testing::Test {
protected:
    std::string Path(const std::string& name) const { return Utf8(_folder / PathOf(name)); }

    SRun Run(std::vector<std::string> arguments) const {
        arguments.insert(
            arguments.begin() + 1, {"--plugin", Utf8(PluginFile()), "--profile", Utf8(PluginProfile())});
        return RunHost(arguments);
    }
    nlohmann::json Info(std::vector<std::string> more) const {
        more.insert(more.begin(), {"info", "--json"});
        const auto run = Run(more);
        EXPECT_EQ(run.code, 0) << run.errors;
        return run.code == 0 ? nlohmann::json::parse(run.out) : nlohmann::json();
    }
    std::string Shown(const nlohmann::json& info, const std::string& name) const {
        for (const auto& parameter : info["parameters"]) {
            if (parameter["name"] == name) return parameter["display"];
        }
        return "no such parameter";
    }
    SAudio Rendered(std::vector<std::string> more) {
        more.insert(more.begin(), {"render", Path("in.wav"), "-o", Path("out.wav")});
        const auto run = Run(more);
        EXPECT_EQ(run.code, 0) << run.errors;
        return ReadWav(_folder / "out.wav");
    }
    /// The bank's state after these settings.
    std::string Saved(std::vector<std::string> more) {
        more.insert(more.end(), {"--save-state", Path("saved")});
        Info(more);
        return BytesOf(_folder / "saved");
    }
    /// The same as a patch: the text up to where a bank's routings begin, and its macros.
    std::string Patch(const std::vector<std::string>& settings) {
        const auto bank = Saved(settings);
        return bank.substr(0, bank.find("<kav_input_routing>")) + std::string(1, '\0');
    }

    std::filesystem::path _folder = NewFolder();
};

float Peak(const SAudio& audio, int channel) {
    float peak = 0;
    const auto channels = static_cast<std::size_t>(audio.format.channels);
    for (auto i = static_cast<std::size_t>(channel); i < audio.samples.size(); i += channels)
        peak = std::max(peak, std::abs(audio.samples[i]));
    return peak;
}

/// The document of the first group in a state.
std::string FirstRouting(const std::string& state) {
    return std::string(KAV::Utils::ExtractTag(state, "<kav_input_routing", ">", "</kav_input_routing>"));
}

std::string Map(const std::string& state) {
    return std::string(KAV::Utils::ExtractTag(FirstRouting(state), "<map", ">", "<"));
}

bool Contains(const std::string& text, const std::string& part) {
    return text.find(part) != std::string::npos;
}

const std::vector<std::string> Drive{"--set", "Threshold (1)=-12 dB", "--set", "Output Ceiling (1)=-6 dB"};

} // namespace

TEST_F(State, LimitsEveryChannelOfAFileAndLeavesNoneLate) {
    for (const int channels : {3, 6, 16}) {
        const auto audio = Noise(channels, 20000, 0.9f);
        WriteWav(_folder / "in.wav", audio);
        const auto out = Rendered(Drive);
        ASSERT_EQ(out.samples.size(), audio.samples.size());
        // The ceiling, plus what one tap of the smoothing window, of weight 1 / size^2, lets pass because it
        // is a sample late: this fraction of a driven peak's gain step.
        const double driven = 0.9 * std::pow(10.0, 12 / 20.0);
        const double most = std::pow(10.0, -6 / 20.0) * (1 + (driven - 1) / (33.0 * 33.0)) + 1e-6;
        for (int c = 0; c < channels; ++c) {
            EXPECT_LE(static_cast<double>(Peak(out, c)), most) << c;
            EXPECT_GT(Peak(out, c), 0.4f) << c;
        }
        // All channels have the same gain at the same time: each is its input, sample by sample.
        for (std::size_t i = 0; i + static_cast<std::size_t>(channels) <= audio.samples.size();
             i += static_cast<std::size_t>(channels)) {
            for (std::size_t c = 1; c < static_cast<std::size_t>(channels); ++c) {
                ASSERT_NEAR(
                    out.samples[i + c] * audio.samples[i], out.samples[i] * audio.samples[i + c], 1e-5f)
                    << i << " " << c;
            }
        }
    }
}

TEST_F(State, LeavesStereoAndMonoToTheRoutingThatIsThere) {
    for (const int channels : {1, 2}) {
        WriteWav(_folder / "in.wav", Noise(channels, 5000, 0.9f));
        Rendered({"--save-state", Path("s")});
        EXPECT_EQ(Map(BytesOf(_folder / "s")), "0,-1|*|1,-1");
    }
}

TEST_F(State, TakesARoutingsEntriesAndNoOthers) {
    const auto audio = Noise(6, 5000, 0.9f);
    WriteWav(_folder / "in.wav", audio);
    WriteBytes(_folder / "r.kvt", "<kav_input_routing>\n\t<map>4,-1|*|0,2</map>\n</kav_input_routing>\n");
    auto arguments = Drive;
    arguments.insert(arguments.end(), {"--routing", Path("r.kvt"), "--save-state", Path("s")});
    const auto out = Rendered(arguments);
    for (std::size_t c = 0; c < 6; ++c) {
        const bool isRouted = c == 0 || c == 2 || c == 4;
        // A channel of no group passes unchanged.
        bool isSame = true;
        for (std::size_t i = c; i < audio.samples.size(); i += 6)
            isSame = isSame && out.samples[i] == audio.samples[i];
        EXPECT_EQ(isSame, !isRouted) << c;
    }
    EXPECT_EQ(Map(BytesOf(_folder / "s")), "4,-1|*|0,2");
    const auto info = Info({"--state", Path("s")});
    EXPECT_EQ(Shown(info, "ToolCh2 (1)"), "On");
    EXPECT_EQ(Shown(info, "ToolCh3 (1)"), "Off");
}

TEST_F(State, BringsItsOwnRoutingUnlessAnotherIsAskedFor) {
    WriteWav(_folder / "in.wav", Noise(6, 1000, 0.9f));
    WriteBytes(_folder / "r.kvt", RoutingOfChannels(3).document);
    WriteBytes(_folder / "stereo", Saved({}));
    Rendered({"--state", Path("stereo"), "--save-state", Path("s")});
    EXPECT_EQ(Map(BytesOf(_folder / "s")), "0,-1|*|1,-1");
    Rendered({"--state", Path("stereo"), "--routing", Path("r.kvt"), "--save-state", Path("s")});
    EXPECT_EQ(Map(BytesOf(_folder / "s")), "0,-1|*|1,-1|*|2,-1");
    WriteBytes(_folder / "p.kvp", Patch({}));
    Rendered({"--patch", Path("p.kvp"), "--save-state", Path("s")});
    EXPECT_EQ(Map(BytesOf(_folder / "s")), "0,-1|*|1,-1|*|2,-1|*|3,-1|*|4,-1|*|5,-1");
    EXPECT_EQ(Shown(Info({"--state", Path("s")}), "ToolCh6 (1)"), "Off"); // as in the patch
}

TEST_F(State, SavedIsTheOneThatWasHeard) {
    for (const int channels : {2, 6}) {
        WriteWav(_folder / "in.wav", Noise(channels, 20000, 0.9f));
        const auto first = Rendered({"--set", "Threshold (1)=-12 dB", "--set", "Release (1)=1 ms", "--os",
            "2", "--simd", "on", "--save-state", Path("s")});
        EXPECT_NE(first.samples, Rendered({}).samples);
        // A state stores six decimals of each value, while the first run used all of them.
        const auto again = Rendered({"--state", Path("s"), "--save-state", Path("s2")});
        float difference = 0;
        for (std::size_t i = 0; i < first.samples.size(); ++i)
            difference = std::max(difference, std::abs(first.samples[i] - again.samples[i]));
        EXPECT_LT(difference, 1e-4f);
        EXPECT_EQ(Rendered({"--state", Path("s2")}).samples, again.samples);
    }
}

TEST_F(State, IsThatOfTheInstanceThatMeasuresTheDelayToo) {
    WriteWav(_folder / "in.wav", Noise(3, 500, 0.1f));
    WriteBytes(_folder / "s", Saved({"--os", "4", "--hq", "on"}));
    const auto delay = [&](std::vector<std::string> more) {
        more.insert(more.begin(), {"render", Path("in.wav"), "-o", Path("out.wav"), "--json"});
        return nlohmann::json::parse(Run(more).out)[0]["delay"]["frames"].get<int>();
    };
    EXPECT_EQ(delay({"--state", Path("s")}), delay({"--os", "4", "--hq", "on"}));
    EXPECT_NE(delay({"--state", Path("s")}), delay({}));
}

TEST_F(State, OfAPatchIsNamedLikeItsFile) {
    WriteBytes(_folder / "p.kvp", Patch({"--set", "Threshold (2)=-15 dB", "--os", "8"}));
    const std::string name = "\xC3\xA4\xE2\x82\xAC loud.kvp";
    std::filesystem::rename(_folder / "p.kvp", _folder / PathOf(name));
    const auto info = Info({"--patch", Path(name), "--set", "Threshold (3)=-6 dB"});
    EXPECT_EQ(info["patch"], name.substr(0, name.size() - 4));
    EXPECT_EQ(Shown(info, "Threshold (2)"), "-15.0");
    EXPECT_EQ(Shown(info, "Threshold (3)"), "-6.0");
    EXPECT_EQ(Shown(info, "Oversampling"), "OS x8");
}

TEST_F(State, OfAPatchFromAHostsFile) {
    const auto patch = Patch({"--set", "Threshold (2)=-15 dB"});
    WriteBytes(_folder / "chunk.fxp", ChunkRecord(Limiter, patch));
    EXPECT_EQ(Shown(Info({"--patch", Path("chunk.fxp")}), "Threshold (2)"), "-15.0");
    std::vector<float> values(109, 0.5f);
    WriteBytes(_folder / "values.fxp", ValueRecord(Limiter, "Half", values));
    const auto info = Info({"--patch", Path("values.fxp")});
    EXPECT_EQ(Shown(info, "Threshold (4)"), "-15.0"); // halfway from -30 to 0
    EXPECT_EQ(info["patch"], "Half");
    WriteBytes(_folder / "foreign.fxp", ChunkRecord(Limiter + 1, patch));
    const auto run = Run({"info", "--patch", Path("foreign.fxp")});
    EXPECT_EQ(run.code, 1);
    EXPECT_EQ(run.errors, "kavhost: Patch \"foreign.fxp\" was created for another plug-in\n");
}

TEST_F(State, OfAPatchCutOffAnywhereIsTakenOrRefused) {
    const auto whole = Patch({});
    const auto named = whole.find("</plugin_id>") + 1; // from here on the number is complete
    const auto next = [named](std::size_t size) {      // each place near the number's end
        if (size + 8 >= named && size < named + 4) return size + 1;
        return size + (size < 400 ? 5 : 97);
    };
    for (std::size_t size = 1; size < whole.size(); size = next(size)) {
        WriteBytes(_folder / "cut.kvp", whole.substr(0, size));
        EXPECT_EQ(Run({"info", "--patch", Path("cut.kvp")}).code, size < named ? 1 : 0) << size;
    }
}

TEST_F(State, CutOffAnywhereIsTakenOrRefused) {
    const auto whole = Saved({});
    for (std::size_t size = 1; size < whole.size(); size += size < 100 ? 1 : 97) {
        WriteBytes(_folder / "cut", whole.substr(0, size));
        EXPECT_EQ(Run({"info", "--state", Path("cut")}).code, size <= 36 ? 1 : 0) << size;
    }
}

TEST_F(State, SwitchesVectorCodeOversamplingAndQuality) {
    const auto simd = [&](const std::string& state) {
        return std::string(KAV::Utils::ExtractTag(state, "<simd", ">", "<"));
    };
    EXPECT_EQ(simd(Saved({"--simd", "on"})), "1");
    EXPECT_EQ(simd(Saved({"--simd", "off"})), "0");
    EXPECT_EQ(simd(Saved({"--simd", "off", "--state", Path("saved")})), "0");
    const auto info = Info({"--os", "4", "--hq", "on"});
    EXPECT_EQ(Shown(info, "Oversampling"), "OS x4");
    EXPECT_EQ(Shown(info, "Hiqh Quality"), "On");
    EXPECT_EQ(Shown(Info({"--set", "Oversampling=x2", "--os", "4"}), "Oversampling"), "OS x2");
}

TEST_F(State, RefusesFilesThatAreNoRouting) {
    const auto whole = RoutingOfChannels(2).document;
    for (const auto& bytes : {std::string("x"), whole.substr(0, 60), Saved({})}) {
        WriteBytes(_folder / "r.kvt", bytes);
        const auto run = Run({"info", "--routing", Path("r.kvt")});
        EXPECT_EQ(run.code, 1);
        EXPECT_TRUE(Contains(run.errors, "r.kvt: not a routing\n")) << run.errors;
    }
    EXPECT_EQ(Run({"info", "--routing", Path("missing.kvt")}).code, 1);
}

TEST_F(State, IsMeasuredByBench) {
    WriteBytes(_folder / "s", Saved({"--os", "2"}));
    const auto run = Run({"bench", "--state", Path("s"), "--simd", "off", "--channels", "3", "--seconds", "1",
        "--runs", "1", "--set2", "Oversampling=x1"});
    EXPECT_EQ(run.code, 0) << run.errors;
    WriteBytes(_folder / "s", "x");
    EXPECT_EQ(Run({"bench", "--state", Path("s")}).code, 1);
}
