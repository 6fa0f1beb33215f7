// What an effect begins with: its built-in values, or what its user has stored.

#include "platform/folders.h"
#include "tests/tools/kavhost/records.h"
#include "tests/tools/kavhost/support.h"
#include "tools/kavhost/base/text.h"
#include "utils/marked_text.h"
#include "utils/product.h"
#include "vst/vst2.h"

#include <cstdlib>
#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

using namespace KAV::Host;
using namespace KAV::Tests;
using Json = nlohmann::json;

namespace {

/// The first in the list, with a name that the interface to hosts has no room for.
const std::string FirstPatch = "A first one of twenty-seven";

/// A home whose user has stored patches and routings, or has not.
class BuiltIn : public testing::Test {
protected:
    BuiltIn() { WriteWav(_folder / "in.wav", Noise(2, 3000, 0.9f)); }
    ~BuiltIn() override { std::filesystem::remove_all(KAV::Platform::DocumentsFolder() / KAV_VENDOR); }

    std::string Path(const std::string& name) const { return Utf8(_folder / PathOf(name)); }

    SRun Run(std::vector<std::string> arguments) const {
        arguments.insert(
            arguments.begin() + 1, {"--plugin", Utf8(PluginFile()), "--profile", Utf8(PluginProfile())});
        return RunHost(arguments);
    }
    /// The samples; the state that the file was rendered with goes to `state`.
    std::vector<float> Rendered(std::vector<std::string> more, std::string* state = nullptr) {
        more.insert(more.begin(), {"render", Path("in.wav"), "-o", Path("out.wav"), "--no-preroll",
                                      "--no-align", "--json", "--save-state", Path("rendered")});
        const auto run = Run(more);
        EXPECT_EQ(run.code, 0) << run.errors;
        if (run.code != 0) return {};
        _report = Json::parse(run.out)[0];
        if (state != nullptr) *state = BytesOf(_folder / "rendered");
        return ReadWav(_folder / "out.wav").samples;
    }
    /// The whole state of an instance as a DAW makes it.
    std::string Saved(std::vector<std::string> more = {}) const {
        more.insert(more.begin(), {"info", "--save-state", Path("saved")});
        const auto run = Run(more);
        EXPECT_EQ(run.code, 0) << run.errors;
        return BytesOf(_folder / "saved");
    }
    /// A patch with everything in it that an instance begins with, and a routing, the first in their lists.
    void StorePatches() {
        auto patch = Saved({"--set", "Threshold (1)=-12 dB", "--set", "Output Ceiling (1)=-9 dB", "--set",
            "Threshold (3)=-3 dB", "--os", "4", "--simd", "on", "--parallel", "on"});
        using KAV::Utils::ReplaceAll;
        patch = ReplaceAll(patch, "<fx_names>1|", "<fx_names>Mine|");
        patch = ReplaceAll(patch, "<macro_group_names>Macro 1|", "<macro_group_names>Push|");
        patch = ReplaceAll(patch, "<macro group=\"0\"></macro>", "<macro group=\"0\">33;0.400</macro>");
        patch = ReplaceAll(patch, "<agc_rms>2000.000", "<agc_rms>3000.000");
        const auto documents = KAV::Platform::DocumentsFolder() / KAV_VENDOR;
        std::filesystem::create_directories(documents / KAV_PRODUCT);
        std::filesystem::create_directories(documents / "Routings");
        WriteBytes(documents / KAV_PRODUCT / (FirstPatch + ".kvp"), patch);
        WriteBytes(documents / "Routings" / "A first.kvt",
            "<kav_input_routing>\r\n\t<name>A first</name>\r\n\t<map>1,-1</map>\r\n</kav_input_routing>");
    }
    /// The value of a setting of the last report; empty if it isn't in there.
    std::string Setting(const std::string& name) const {
        for (const auto& setting : _report["settings"])
            if (setting["name"] == name) return setting["value"];
        return {};
    }

    std::filesystem::path _folder = NewFolder();
    Json _report;
};

bool Contains(const std::string& text, const std::string& part) {
    return text.find(part) != std::string::npos;
}

} // namespace

TEST_F(BuiltIn, IsTheStateOfAnInstanceWithoutADocumentsFolder) {
    ASSERT_FALSE(std::filesystem::exists(KAV::Platform::DocumentsFolder()));
    const auto fresh = Saved();
    std::string state;
    const auto audio = Rendered({}, &state);
    EXPECT_EQ(state, fresh);
    // Without any profile the instance is left as its entry point made it.
    ASSERT_EQ(RunHost({"render", "--plugin", Utf8(PluginFile()), Path("in.wav"), "-o", Path("plain.wav"),
                          "--no-preroll", "--no-align"})
                  .code,
        0);
    EXPECT_EQ(ReadWav(_folder / "plain.wav").samples, audio);
}

TEST_F(BuiltIn, IsWhatRenderBeginsWithWhateverItsUserHasStored) {
    const auto fresh = Saved();
    for (const char* hot : {"0.9", "8"}) { // within full scale, and beyond it
        auto audio = Noise(2, 3000, std::stof(hot));
        WriteWav(_folder / "in.wav", audio);
        const auto before = Rendered({});
        StorePatches();
        ASSERT_NE(Saved(), fresh); // a DAW's instance begins with it
        std::string state;
        EXPECT_EQ(Rendered({}, &state), before);
        EXPECT_EQ(state, fresh);
        EXPECT_EQ(_report["patch"], Json());
        EXPECT_EQ(_report["settings"], Json::array());
        std::filesystem::remove_all(KAV::Platform::DocumentsFolder() / KAV_VENDOR);
    }
}

TEST_F(BuiltIn, IsWhatAnIncompleteStateIsLaidOver) {
    WriteBytes(_folder / "part", "<patch_format>textual</patch_format>\r\n<multi_fx>true</multi_fx>\r\n"
                                 "<param tag=\"33\" >0.5</param>\r\n");
    const auto before = Rendered({"--state", Path("part")});
    StorePatches();
    EXPECT_EQ(Rendered({"--state", Path("part")}), before);
    EXPECT_EQ(Setting("Threshold (1)"), "-15.00 dB");
    EXPECT_EQ(_report["settings"].size(), 1u) << _report["settings"];
}

TEST_F(BuiltIn, IsWhatBenchBeginsWith) {
    const auto bench = [&](std::vector<std::string> more) {
        more.insert(more.begin(), {"bench", "--json", "--seconds", "0.05", "--runs", "1"});
        const auto run = Run(more);
        EXPECT_EQ(run.code, 0) << run.errors;
        return Json::parse(run.out);
    };
    StorePatches();
    const auto report = bench({"--set", "Threshold (2)=-6 dB"});
    EXPECT_EQ(report["patch"], Json());
    EXPECT_EQ(report["settings"], Json::array({{{"name", "Threshold (2)"}, {"value", "-6.00 dB"}}}));
    EXPECT_EQ(bench({"--patch", "default"})["patch"], FirstPatch);
    const auto text =
        Run({"bench", "--seconds", "0.05", "--runs", "1", "--patch", "default", "--set", "Limiter (4)=off"})
            .out;
    EXPECT_TRUE(Contains(text, "  patch " + FirstPatch + "\n")) << text;
    EXPECT_TRUE(Contains(text, "Limiter (4) off")) << text;
}

TEST_F(BuiltIn, IsNotWhatInfoBeginsWith) {
    StorePatches();
    const auto info = Json::parse(Run({"info", "--json"}).out);
    const auto shown = FirstPatch.substr(0, 23); // as far as the interface has room
    EXPECT_EQ(info["patch"], shown);
    EXPECT_EQ(Json::parse(Run({"info", "--json", "--patch", "default"}).out)["patch"], shown);
    EXPECT_TRUE(Contains(Saved(), "<simd>1</simd>"));
    EXPECT_TRUE(Contains(Saved(), "<name>A first</name>"));
}

TEST_F(BuiltIn, GivesWayToTheUsersFirstPatchWhenThatIsAskedFor) {
    WriteBytes(_folder / "s", Saved({"--set", "Threshold (1)=-1 dB", "--set", "Release (2)=77 ms"}));
    StorePatches();
    const auto file = KAV::Platform::DocumentsFolder() / KAV_VENDOR / KAV_PRODUCT / (FirstPatch + ".kvp");
    std::string named, byDefault;
    const auto audio = Rendered({"--patch", Utf8(file)}, &named);
    EXPECT_EQ(Rendered({"--patch", "default"}, &byDefault), audio);
    EXPECT_EQ(_report["patch"], FirstPatch);
    EXPECT_EQ(Setting("Threshold (1)"), "-12.00 dB");
    EXPECT_NE(audio, Rendered({}));
    // A file may contain settings that patches don't apply; all the values are the same.
    const auto values = [](const std::string& state) { return state.substr(0, state.find("<host_bypass>")); };
    EXPECT_EQ(values(byDefault), values(named));
    // After a state it still counts.
    EXPECT_EQ(Rendered({"--state", Path("s"), "--patch", "default"}), audio);
}

TEST_F(BuiltIn, IsWhatTheDefaultPatchIsInAHomeWithoutPatches) {
    const auto plain = Rendered({});
    EXPECT_EQ(Rendered({"--patch", "default"}), plain);
    EXPECT_EQ(_report["patch"], Json());
}

TEST_F(BuiltIn, LeavesOtherEffectsAsTheyBegin) {
    const auto state = [&](std::vector<std::string> more) {
        more.insert(more.begin(), {"render", "--plugin", Utf8(EffectFile("keeper")), Path("in.wav"), "-o",
                                      Path("out.wav"), "--json", "--save-state", Path("s")});
        const auto run = RunHost(more);
        EXPECT_EQ(run.code, 0) << run.errors;
        _report = Json::parse(run.out)[0];
        return BytesOf(_folder / "s");
    };
    const auto fresh = state({});
    EXPECT_EQ(_report["patch"], "First"); // of its own programs
    EXPECT_EQ(_report["settings"], Json::array());
    WriteBytes(_folder / "quiet", KeeperChunk("BANK", {0.25f, 0.5f, 0}));
    EXPECT_NE(state({"--state", Path("quiet")}), fresh);
    EXPECT_EQ(_report["settings"].size(), 2u) << _report["settings"];
    EXPECT_EQ(state({"--state", Path("quiet"), "--patch", "default"}), fresh);
}

TEST_F(BuiltIn, IsComparedWithEachSettingOfAReport) {
    auto state = Saved({"--set", "Oversampling=x4", "--simd", "on", "--parallel", "on"});
    using KAV::Utils::ReplaceAll;
    state = ReplaceAll(state, "<patch_name>No KVP patches found!", "<patch_name>Mine");
    state = ReplaceAll(state, "<fx_names>1|*|2|", "<fx_names>1|*|Drums|");
    state = ReplaceAll(state, "|*|Macro 3|*|", "|*|Push|*|");
    state = ReplaceAll(state, "<macro group=\"2\"></macro>", "<macro group=\"2\">33;0.400||136;0.6</macro>");
    state = ReplaceAll(state, "<agc_rms>2000.000", "<agc_rms>3000.000");
    WriteBytes(_folder / "s", state);
    WriteBytes(_folder / "r.kvt", "<kav_input_routing><name>Right</name><map>1,-1</map></kav_input_routing>");
    Rendered({"--state", Path("s"), "--routing", "2:" + Path("r.kvt"), "--set", "Release (3)=100 ms"});
    EXPECT_EQ(_report["patch"], "Mine");
    std::map<std::string, std::string> settings;
    for (const auto& setting : _report["settings"]) settings[setting["name"]] = setting["value"];
    const std::map<std::string, std::string> wanted{{"Oversampling", "OS x4"}, {"Release (3)", "100.00 ms"},
        {"ToolCh1 (2)", "on"}, {"vector code", "on"}, {"groups in parallel", "on"},
        {"Routing (2)", "\"Right\""}, {"Group 2 name", "\"Drums\""}, {"Macro 3 name", "\"Push\""},
        {"Macro 3 moves", "Threshold (1), Release (2)"}, {"gain compensation RMS time", "3000.000"}};
    EXPECT_EQ(settings, wanted);
}

TEST_F(BuiltIn, IsNamedInTextAndPicture) {
    const auto run = Run({"render", Path("in.wav"), "-o", Path("out.wav"), "--plot-data", Path("d.json"),
        "--set", "Threshold (1)=-6 dB", "--set", "Limiter (2)=off"});
    ASSERT_EQ(run.code, 0) << run.errors;
    EXPECT_TRUE(Contains(run.out, "settings              Threshold (1) -6.00 dB, Limiter (2) off\n"))
        << run.out;
    EXPECT_EQ(Json::parse(BytesOf(_folder / "d.json"))["settings"],
        "Threshold (1) -6.00 dB \xC2\xB7 Limiter (2) off");
    StorePatches();
    const auto named = Run({"render", Path("in.wav"), "-o", Path("out.wav"), "--plot-data", Path("d.json"),
        "--patch", "default"});
    ASSERT_EQ(named.code, 0) << named.errors;
    EXPECT_TRUE(Contains(named.out, "patch                 " + FirstPatch + "\n")) << named.out;
    EXPECT_TRUE(
        Contains(Json::parse(BytesOf(_folder / "d.json"))["settings"], "patch " + FirstPatch + " \xC2\xB7 "));
    ASSERT_EQ(Run({"render", Path("in.wav"), "-o", Path("out.wav"), "--plot-data", Path("d.json")}).code, 0);
    EXPECT_EQ(Json::parse(BytesOf(_folder / "d.json"))["settings"], "all settings at their built-in values");
}

TEST_F(BuiltIn, IsNoTextWithoutATextInTheProfile) {
    auto profile = Json::parse(BytesOf(PluginProfile()));
    profile["state"] = 7;
    WriteBytes(_folder / "p.json", profile.dump());
    const auto run = RunHost({"render", "--plugin", Utf8(PluginFile()), "--profile", Path("p.json"),
        Path("in.wav"), "-o", Path("out.wav")});
    EXPECT_EQ(run.code, 1);
    EXPECT_TRUE(Contains(run.errors, "p.json: not an effect profile: \"state\" has the wrong type\n"))
        << run.errors;
    profile["state"] = "x";
    WriteBytes(_folder / "p.json", profile.dump());
    const auto refused = RunHost({"render", "--plugin", Utf8(PluginFile()), "--profile", Path("p.json"),
        Path("in.wav"), "-o", Path("out.wav")});
    EXPECT_EQ(refused.code, 1);
    EXPECT_TRUE(Contains(refused.errors, "does not accept the state of built-in values in its profile\n"))
        << refused.errors;
}
