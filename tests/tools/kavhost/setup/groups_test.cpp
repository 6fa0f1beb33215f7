// What the groups of the product's own library take, how they are connected, and what they leave out.

#include "tests/tools/kavhost/support.h"
#include "tools/kavhost/base/text.h"
#include "tools/kavhost/setup/state_text.h"
#include "utils/marked_text.h"

#include <algorithm>
#include <cmath>
#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

using namespace KAV::Host;
using namespace KAV::Tests;
using Json = nlohmann::json;

namespace {

using Arguments = std::vector<std::string>;

std::string RoutingText(const std::string& name, const std::string& map, const std::string& type = "") {
    return "<kav_input_routing>\r\n\t<kvt_version>1.0</kvt_version>\r\n\t<name>" + name + "</name>\r\n" +
           (type.empty() ? "" : "\t<type>" + type + "</type>\r\n") + "\t<map>" + map +
           "</map>\r\n</kav_input_routing>";
}

class Groups : public testing::Test {
protected:
    Groups() {
        WriteBytes(_folder / "right.kvt", RoutingText("Right", "1,-1"));
        WriteBytes(_folder / "swap.kvt", RoutingText("Swap", "1,-1|*|0,-1"));
        WriteBytes(_folder / "ms.kvt", RoutingText("Mid-Side", "0,-1|*|1,-1", "mid/side"));
        WriteBytes(_folder / "six.kvt", RoutingText("5.1", "0,-1|*|1,-1|*|2,-1|*|3,-1|*|4,-1|*|5,-1"));
    }

    std::string Path(const std::string& name) const { return Utf8(_folder / PathOf(name)); }

    SRun Run(Arguments arguments) const {
        arguments.insert(
            arguments.begin() + 1, {"--plugin", Utf8(PluginFile()), "--profile", Utf8(PluginProfile())});
        return RunHost(arguments);
    }
    /// Into out.wav, without what only takes time.
    SRun Render(Arguments more) const {
        more.insert(more.begin(), {"render", Path("in.wav"), "-o", Path("out.wav"), "--json", "--no-align",
                                      "--save-state", Path("state")});
        if (!_settles) more.emplace_back("--no-preroll");
        return Run(more);
    }
    /// The samples of a run that succeeds. Its report and its state are kept.
    std::vector<float> Rendered(const Arguments& more) {
        const auto run = Render(more);
        EXPECT_EQ(run.code, 0) << run.errors;
        if (run.code != 0) return {};
        _report = Json::parse(run.out)[0];
        _state = CStateText::Read(BytesOf(_folder / "state"));
        return ReadWav(_folder / "out.wav").samples;
    }
    void Input(int channels, float peak = 0.9f) { WriteWav(_folder / "in.wav", Noise(channels, 2000, peak)); }
    /// A patch of these settings, as a text without routings; `information` is put into it.
    void Patch(const std::string& name, Arguments settings, const std::string& information = "") {
        settings.insert(settings.begin(), {"info", "--save-state", Path("whole")});
        const auto run = Run(settings);
        ASSERT_EQ(run.code, 0) << run.errors;
        auto text = BytesOf(_folder / "whole");
        text = text.substr(0, text.find("<kav_input_routing>"));
        if (!information.empty()) text += "<patch_info>" + information + "</patch_info>\r\n";
        WriteBytes(_folder / (name + ".kvp"), text + std::string(1, '\0'));
    }
    std::vector<std::string> Notes() const { return _report["notes"]; }
    std::string Map(int group) const { return _state->Routing(group)->map; }

    std::filesystem::path _folder = NewFolder();
    Json _report;
    std::optional<CStateText> _state;
    bool _settles = false; ///< whether the gains are at their settings when the file begins
};

/// `buttons` of a group, the others of it off.
Arguments Buttons(int group, const std::vector<int>& buttons) {
    Arguments settings;
    for (int button = 1; button <= 16; ++button) {
        const bool isOn = std::ranges::count(buttons, button) > 0;
        settings.emplace_back("--set");
        settings.push_back(
            "ToolCh" + std::to_string(button) + " (" + std::to_string(group) + ")=" + (isOn ? "on" : "off"));
    }
    return settings;
}

Arguments Joined(Arguments a, const Arguments& b) {
    a.insert(a.end(), b.begin(), b.end());
    return a;
}

bool Contains(const std::string& text, const std::string& part) {
    return text.find(part) != std::string::npos;
}

const std::vector<std::string> None;

} // namespace

TEST_F(Groups, GetTheRoutingsThatAreForThem) {
    Input(2);
    Rendered({"--routing", "2:" + Path("right.kvt"), "--routing", "4:" + Path("swap.kvt")});
    EXPECT_EQ(Map(0), "0,-1|*|1,-1");
    EXPECT_EQ(Map(1), "1,-1");
    EXPECT_EQ(Map(2), "0,-1|*|1,-1");
    EXPECT_EQ(Map(3), "1,-1|*|0,-1");
    EXPECT_TRUE(_state->IsToggled(1, 0)); // of each entry, as in the first group
    EXPECT_FALSE(_state->IsToggled(1, 1));
    EXPECT_TRUE(_state->IsToggled(3, 1));
    EXPECT_FALSE(_state->IsToggled(2, 0));
    Rendered({"--routing", "all:" + Path("swap.kvt"), "--routing", "3:" + Path("right.kvt")});
    for (const int group : {0, 1, 3}) EXPECT_EQ(Map(group), "1,-1|*|0,-1") << group;
    EXPECT_EQ(Map(2), "1,-1");
    Rendered(
        {"--routing", "3:" + Path("right.kvt"), "--routing", "all:" + Path("swap.kvt")}); // the later one
    EXPECT_EQ(Map(2), "1,-1|*|0,-1");
    Rendered({"--routing", Path("swap.kvt"), "--routing", "1:" + Path("right.kvt")});
    EXPECT_EQ(Map(0), "1,-1");
}

TEST_F(Groups, ThatAreNotThereGetNone) {
    const auto errors = [&](const std::string& routing) {
        const auto run = Run({"info", "--routing", routing});
        EXPECT_EQ(run.code, 2) << routing;
        return run.errors;
    };
    EXPECT_TRUE(Contains(errors("0:" + Path("swap.kvt")), "--routing: groups count from 1, not 0\n"));
    EXPECT_TRUE(Contains(errors("5:" + Path("swap.kvt")), " is not a text with a routing of group 5\n"));
    EXPECT_EQ(Run({"info", "--routing", "2:" + Path("none.kvt")}).code, 1);
    EXPECT_EQ(Run({"info", "--routing", "2:" + Path("in")}).code, 1);
    EXPECT_EQ(Run({"info", "--routing", "two:" + Path("swap.kvt")}).code, 1); // a file of that name
    EXPECT_EQ(Run({"info", "--parallel", "yes"}).code, 2);
    EXPECT_EQ(Run({"info", "--channels", "2"}).code, 2);
}

TEST_F(Groups, OfOtherEffectsAreUnknown) {
    for (const Arguments& option : {Arguments{"--routing", "2:" + Path("swap.kvt")},
             {"--routing", "all:" + Path("swap.kvt")}, {"--parallel", "on"}, {"--channels", "all"}}) {
        const auto run = RunHost({"info", "--plugin", Utf8(EffectFile("keeper")), option[0], option[1]});
        EXPECT_EQ(run.code, 2) << option[0];
        EXPECT_TRUE(Contains(run.errors, option[0] + ": the state of Test Keeper is not a text with "))
            << run.errors;
    }
}

TEST_F(Groups, RunSideBySideOrInARow) {
    _settles = true;
    Input(2, 0.1f);
    const auto both = Joined(Buttons(1, {1, 2}), Buttons(2, {1, 2}));
    const auto row = Rendered(Joined({"--parallel", "off"}, both));
    EXPECT_FALSE(_state->IsParallel());
    EXPECT_EQ(Rendered(both), row);
    const auto sides = Rendered(Joined({"--parallel", "on"}, both));
    EXPECT_TRUE(_state->IsParallel());
    // Below full scale nothing is limited: each adds the same, and in a row they are late twice.
    double inRow = 0, sideBySide = 0;
    for (const float sample : row) inRow += static_cast<double>(sample) * sample;
    for (const float sample : sides) sideBySide += static_cast<double>(sample) * sample;
    EXPECT_NEAR(std::sqrt(sideBySide / inRow), 2, 0.1);
}

TEST_F(Groups, KeepTheButtonsOfAPatchWhateverTheRouting) {
    Input(6);
    Patch("mine", Joined(Buttons(1, {2}), Buttons(2, {4, 6})));
    Rendered({"--patch", Path("mine.kvp"), "--routing", "all:" + Path("six.kvt"), "--parallel", "on"});
    for (std::size_t button = 0; button < 16; ++button) {
        EXPECT_EQ(_state->IsToggled(0, button), button == 1) << button;
        EXPECT_EQ(_state->IsToggled(1, button), button == 3 || button == 5) << button;
        EXPECT_FALSE(_state->IsToggled(2, button)) << button;
    }
    for (const int group : {0, 1, 2, 3}) EXPECT_EQ(_state->Routing(group)->name, "5.1") << group;
    EXPECT_TRUE(_state->IsParallel());
    EXPECT_EQ(_report["patch"], "mine");
    EXPECT_EQ(Notes(), std::vector<std::string>{"channels 1, 3, 5 pass unlimited"});
}

TEST_F(Groups, SoundAsInAStateThatHasAllOfIt) {
    Input(2);
    Patch("pair", Joined(Joined(Buttons(1, {1}), Buttons(2, {2})),
                      {"--set", "Threshold (1)=-9 dB", "--set", "Threshold (2)=-20 dB"}));
    const auto audio = Rendered({"--routing", "1:" + Path("ms.kvt"), "--routing", "2:" + Path("ms.kvt"),
        "--parallel", "on", "--patch", Path("pair.kvp")});
    ASSERT_EQ(Run({"info", "--patch", Path("pair.kvp"), "--save-state", Path("s")}).code, 0);
    auto state = BytesOf(_folder / "s");
    const auto document = RoutingText("Mid-Side", "0,-1|*|1,-1", "mid/side");
    for (const char* group : {"0", "1"}) {
        const auto head = "<kav_input_routing>\r\n\t<fx>" + std::string(group) + "</fx>";
        const auto begin = state.find(head);
        ASSERT_NE(begin, std::string::npos);
        const auto end = state.find("</kav_input_routing>", begin);
        auto block = document;
        block.replace(0, std::string("<kav_input_routing>").size(), head);
        state.replace(begin, end + std::string("</kav_input_routing>").size() - begin, block);
    }
    state = KAV::Utils::ReplaceAll(state, "<groups_parallel>0<", "<groups_parallel>1<");
    WriteBytes(_folder / "s", state);
    EXPECT_EQ(Rendered({"--state", Path("s")}), audio);
    EXPECT_NE(Rendered({"--patch", Path("pair.kvp")}), audio);
}

TEST_F(Groups, ThatLeaveChannelsOutAreReported) {
    _settles = true;
    Input(6);
    Patch("stereo", {"--set", "Threshold (1)=-12 dB", "--set", "Output Ceiling (1)=-12 dB"});
    const auto out = Rendered({"--patch", Path("stereo.kvp")});
    EXPECT_EQ(Notes(), std::vector<std::string>{"channels 3-6 pass unlimited"});
    const auto in = ReadWav(_folder / "in.wav").samples;
    for (std::size_t i = 0; i < in.size(); ++i) {
        if (i % 6 < 2) continue;
        ASSERT_EQ(out[i], in[i]) << i;
    }
    const auto text = Run({"render", Path("in.wav"), "-o", Path("out.wav"), "--patch", Path("stereo.kvp")});
    EXPECT_TRUE(Contains(text.out, "channels 3-6 pass unlimited\n")) << text.out;

    std::filesystem::remove(_folder / "out.wav");
    const auto strict = Render({"--patch", Path("stereo.kvp"), "--strict"});
    EXPECT_EQ(strict.code, 1);
    EXPECT_TRUE(Contains(strict.errors, "in.wav: channels 3-6 pass unlimited\n")) << strict.errors;
    EXPECT_FALSE(std::filesystem::exists(_folder / "out.wav"));

    const auto all = Rendered({"--patch", Path("stereo.kvp"), "--channels", "all", "--strict"});
    EXPECT_EQ(Notes(), None);
    const float most = std::pow(10.0f, -12 / 20.0f) * 1.01f;
    for (const float sample : all) ASSERT_LE(std::abs(sample), most);
}

TEST_F(Groups, AreExaminedForEachFileOfItsChannels) {
    Input(1);
    Rendered({});
    EXPECT_EQ(Notes(), None);
    Rendered({"--set", "Limiter (1)=off"});
    EXPECT_EQ(Notes(), std::vector<std::string>{"channel 1 passes unlimited"});
    Input(16);
    Rendered({});
    EXPECT_EQ(Notes(), None);
    Rendered({"--set", "Limiter (1)=off"});
    EXPECT_EQ(Notes(), std::vector<std::string>{"channels 1-16 pass unlimited"});
    Rendered({"--set", "ToolCh1 (1)=off", "--set", "ToolCh3 (1)=off", "--set", "ToolCh16 (1)=off"});
    EXPECT_EQ(Notes(), std::vector<std::string>{"channels 1, 3, 16 pass unlimited"});
}

TEST_F(Groups, LimitAChannelOnlyWhileOneOfThemRunsWithItsLimiterOn) {
    Input(2);
    const auto notes = [&](const Arguments& settings) {
        Rendered(settings);
        return Notes();
    };
    const std::vector<std::string> both{"channels 1-2 pass unlimited"};
    const auto second = Buttons(2, {1, 2});
    EXPECT_EQ(notes(Joined({"--set", "Limiter (1)=off"}, second)), None);
    EXPECT_EQ(notes(Joined({"--set", "Limiter (1)=off", "--set", "Limiter (2)=off"}, second)), both);
    EXPECT_EQ(notes({"--set", "ToolFxMute (1)=on"}), both);
    EXPECT_EQ(notes(Joined({"--set", "ToolFxMute (1)=on"}, second)), None);
    // A solo silences what only other groups take.
    EXPECT_EQ(notes(Joined({"--set", "ToolFxSolo (2)=on"}, Buttons(2, {1}))), None);
    EXPECT_EQ(notes(Joined({"--set", "ToolFxSolo (2)=on", "--set", "Limiter (2)=off"}, Buttons(2, {1}))),
        std::vector<std::string>{"channel 1 passes unlimited"});
    // Of a pair of middle and side both channels are taken, whichever half is limited.
    EXPECT_EQ(notes(Joined({"--routing", Path("ms.kvt")}, Buttons(1, {2}))), None);
    EXPECT_EQ(
        notes({"--routing", Path("right.kvt")}), std::vector<std::string>{"channel 1 passes unlimited"});
    ASSERT_EQ(Run({"info", "--save-state", Path("s")}).code, 0);
    WriteBytes(
        _folder / "s", KAV::Utils::ReplaceAll(BytesOf(_folder / "s"), "<host_bypass>0", "<host_bypass>1"));
    EXPECT_EQ(notes({"--state", Path("s")}), both);
}

TEST_F(Groups, TakeAllChannelsWithTheRoutingThatReachesThem) {
    Input(2);
    Patch("right", Buttons(1, {2}));
    Rendered({"--patch", Path("right.kvp"), "--routing", Path("swap.kvt"), "--channels", "all"});
    EXPECT_EQ(Map(0), "1,-1|*|0,-1");
    EXPECT_TRUE(_state->IsToggled(0, 0) && _state->IsToggled(0, 1));
    EXPECT_FALSE(_state->IsToggled(0, 2));
    EXPECT_EQ(Notes(), None);
    Input(3); // which that routing does not reach
    Rendered({"--patch", Path("right.kvp"), "--routing", Path("swap.kvt"), "--channels", "all"});
    EXPECT_EQ(Map(0), "0,-1|*|1,-1|*|2,-1");
    EXPECT_EQ(Notes(), None);
}

TEST_F(Groups, AreComparedWithWhatAPatchNeeds) {
    Input(2);
    Patch("needs", Buttons(2, {1, 2}),
        "Needs: routing Mid-Side in groups 1 and 2; groups connected in parallel");
    const std::string routing = "routing Mid-Side in groups 1 and 2";
    const std::string parallel = "groups connected in parallel";
    const std::string missing = "a need of the patch is not met: ";
    const Arguments patch{"--patch", Path("needs.kvp")};
    Rendered(patch);
    EXPECT_EQ(Notes(), (std::vector{missing + routing, missing + parallel}));
    EXPECT_EQ(Render(Joined(patch, {"--strict"})).code, 1);
    Rendered(Joined(patch, {"--parallel", "on", "--routing", Path("ms.kvt")}));
    EXPECT_EQ(Notes(), std::vector{missing + routing}); // in one of the two only
    const Arguments met{"--parallel", "on", "--routing", "all:" + Path("ms.kvt"), "--strict"};
    Rendered(Joined(patch, met));
    EXPECT_EQ(Notes(), None);

    const auto info = Run(Joined({"info", "--json", "--routing", "all:" + Path("ms.kvt")}, patch));
    EXPECT_EQ(Json::parse(info.out)["needs"],
        Json::array({{{"need", routing}, {"met", true}}, {{"need", parallel}, {"met", false}}}));
    const auto text = Run(Joined({"info", "--parallel", "on"}, patch)).out;
    EXPECT_TRUE(Contains(text, "needs       " + routing + ", which is missing\n")) << text;
    EXPECT_TRUE(Contains(text, "needs       " + parallel + "\n")) << text;
    EXPECT_EQ(Json::parse(Run({"info", "--json"}).out)["needs"], Json::array());

    const auto inspected = RunHost({"inspect", Path("needs.kvp")}).out;
    EXPECT_TRUE(Contains(inspected, "needs       " + routing + "\nneeds       " + parallel + "\n"))
        << inspected;
    EXPECT_EQ(Json::parse(RunHost({"inspect", "--json", Path("needs.kvp")}).out)["needs"],
        Json::array({routing, parallel}));
}

TEST_F(Groups, AreNotComparedWithWhatNoProgramUnderstands) {
    Input(2);
    Patch("odd", {}, "Needs: a good ear");
    Rendered({"--patch", Path("odd.kvp"), "--strict"});
    EXPECT_EQ(Notes(), std::vector<std::string>{"the patch needs a good ear"});
    Patch("plain", {}, "made on a Sunday");
    Rendered({"--patch", Path("plain.kvp"), "--strict"});
    EXPECT_EQ(Notes(), None);
}

TEST_F(Groups, AreJudgedByTheButtonsOfAPatchThatNamesNoNeed) {
    Patch("film", Joined(Buttons(1, {1, 2}), Buttons(2, {3, 5, 6})));
    const std::string note =
        "the patch uses buttons 3, 5-6 of group 2, which the routing \"Not found\" does not have";
    Input(6);
    Rendered({"--patch", Path("film.kvp")});
    EXPECT_EQ(Notes(), (std::vector<std::string>{note, "channels 3-6 pass unlimited"}));
    Rendered({"--patch", Path("film.kvp"), "--routing", "2:" + Path("six.kvt")});
    EXPECT_EQ(Notes(), std::vector<std::string>{"channel 4 passes unlimited"});
    Input(2); // the channels that the buttons are for aren't there
    Rendered({"--patch", Path("film.kvp"), "--strict"});
    EXPECT_EQ(Notes(), std::vector<std::string>{note});
}
