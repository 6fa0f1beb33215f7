// Each gesture of a user once, on the delivered library and a real display: what the state holds then, what
// the host has heard in which order, and whether the picture followed.

#include "tests/editor/editor_fixture.h"

#include "platform/folders.h"
#include "platform/settings_store.h"
#include "tests/support/file_text.h"
#include "utils/maker_service.h"
#include "utils/text.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <optional>
#include <string>
#include <utility>
#include <xkbcommon/xkbcommon-keysyms.h>

namespace KAV::Tests {

namespace {

namespace fs = std::filesystem;
using namespace VST;

/// A user at the open editor.
class Robot : public CEditorFixture {
protected:
    using Picture = std::vector<std::uint32_t>;

    using CEditorFixture::CEditorFixture;

    std::optional<CEditorHost> effect;
    xcb_window_t editor = 0;

    void SetUp() override {
        setenv("KAV_FILE_DIALOG", "list", 1);
        fs::remove_all(Documents() / "Kavelin");
        for (const auto& [name, map] : {std::pair{"a", "0,-1|*|1,-1"}, std::pair{"b", "0,-1"}})
            WriteText(Documents() / "Kavelin" / "Routings" / (std::string(name) + ".kvt"),
                std::string("<kav_input_routing>\r\n\t<name>") + name + "</name>\r\n\t<map>" + map +
                    "</map>\r\n\t<ch_names></ch_names>\r\n</kav_input_routing>");
        effect.emplace(library, 60);
        editor = OpenEditor(*effect);
        Still();
        heard = effect->Calls().size();
    }
    void TearDown() override {
        effect.reset();
        unsetenv("KAV_FILE_DIALOG");
    }
    /// Types a name into the editor's own list of files, when that is up.
    void AnswerList(std::initializer_list<int> keys) {
        const auto list = AwaitPopUp().at(0);
        EXPECT_TRUE(Until([&] { return windows.Focused() == list; }));
        Type(keys);
        EXPECT_TRUE(Until([this] { return PopUps().empty(); }));
    }

    /// The picture when it moves no more.
    Picture Still() {
        Picture last;
        EXPECT_TRUE(Until([&] {
            const auto idles = effect->Idles();
            auto now = Shown();
            const bool isSame = now == last;
            last = std::move(now);
            // A few ticks of the editor lie between two looks.
            return Until([&] { return effect->Idles() > idles + 12; }) && isSame;
        })) << "the picture never stands still";
        return last;
    }
    Picture Shown() {
        const auto place = windows.Place(editor);
        return windows.Pixels(editor, 0, 0, place.width, place.height);
    }
    void Click(std::string_view name, int button = 1) {
        MoveTo(MiddleOf(name));
        windows.Click(button);
    }
    void ShiftClick(std::string_view name) {
        windows.Key(XKB_KEY_Shift_L, true);
        Click(name);
        windows.Key(XKB_KEY_Shift_L, false);
    }
    void Type(std::initializer_list<int> keys) {
        for (const int key : keys) windows.Type(static_cast<std::uint32_t>(key));
    }
    /// The host's calls that belong to edits since this was asked last, as "b4 v4 e4", when `ends` edits have
    /// ended; values of one parameter that follow each other are one.
    std::string Heard(std::size_t ends = 1) {
        expected += ends;
        EXPECT_TRUE(Until([&] { return effect->Count(audioMasterEndEdit) >= expected; }));
        const auto calls = effect->Calls();
        std::string lines;
        std::string last;
        for (; heard < calls.size(); ++heard) {
            const auto& call = calls[heard];
            const char* const kind = call.opcode == audioMasterBeginEdit  ? "b"
                                     : call.opcode == audioMasterEndEdit  ? "e"
                                     : call.opcode == audioMasterAutomate ? "v"
                                                                          : nullptr;
            if (kind == nullptr) continue;
            auto line = kind + std::to_string(call.index);
            if (line != last) lines += (lines.empty() ? "" : " ") + line;
            last = std::move(line);
        }
        return lines;
    }
    /// The user's documents, as the library finds them.
    static fs::path Documents() { return Platform::DocumentsFolder(); }
    std::string EditOf(std::string_view parameter) {
        const auto index = std::to_string(effect->IndexOf(parameter));
        return "b" + index + " v" + index + " e" + index;
    }
    /// A switch tells the old state within an edit, too.
    std::string PressOf(std::string_view parameter) { return EditOf(parameter) + " " + EditOf(parameter); }
    /// By the menu's last entry.
    void OpenAbout() {
        MoveTo({1, 1});
        const auto before = Still();
        Click("ToolAbout");
        AwaitPopUp();
        Type({XKB_KEY_End, XKB_KEY_Return});
        EXPECT_TRUE(Until([this] { return PopUps().empty(); }));
        EXPECT_TRUE(Until([&] { return Shown() != before; })); // the mark in the view pulses for ever
    }
    /// What the state has between these; empty if it isn't there.
    std::string InState(const std::string& before, const std::string& after = "<") {
        const auto chunk = effect->Chunk();
        const auto found = chunk.find(before);
        if (found == std::string::npos) return {};
        const auto begin = found + before.size();
        return chunk.substr(begin, chunk.find(after, begin) - begin);
    }
    /// A parameter's value 0..1 in the state.
    double Value(int tag) {
        const auto element = InState("<param tag=\"" + std::to_string(tag) + "\"", "</");
        return element.empty() ? -1.0 : std::strtod(element.substr(element.find('>') + 1).c_str(), nullptr);
    }
    bool HasValue(int tag, double value) {
        return Until([&] { return Value(tag) == value; });
    }

private:
    std::size_t heard = 0;    ///< of the host's calls
    std::size_t expected = 0; ///< ends of edits
};

class RobotAtALargeScreen : public Robot {
protected:
    RobotAtALargeScreen() : Robot({.screen = "1920x1400x24", .width = 800, .height = 600}) {}
};

} // namespace

// Values

TEST_F(Robot, DragsAFader) {
    const auto before = Still();
    Drag(MiddleOf("Threshold"), 0, 60);
    windows.Release(1);
    EXPECT_EQ(Heard(), EditOf("Threshold"));
    EXPECT_LT(Value(33), 1.0);
    EXPECT_NE(Still(), before);
    MoveTo(MiddleOf("Threshold"));
    windows.Click(1);
    windows.Click(1); // a double click returns it
    EXPECT_TRUE(HasValue(33, 1.0));
}

TEST_F(Robot, TurnsAMainGainByWheelAndNumber) {
    Click("Main Output Gain", 4);
    EXPECT_EQ(Heard(), EditOf("Main Output"));
    EXPECT_GT(Value(29), 0.5);
    Click("Main Output Gain", 3);
    Type({XKB_KEY_minus, XKB_KEY_1, XKB_KEY_2, XKB_KEY_Return});
    EXPECT_TRUE(HasValue(29, 0.25));
    EXPECT_EQ(Heard(), EditOf("Main Output"));
}

TEST_F(Robot, TypesAReleaseTimeAndLocksIt) {
    Click("Release", 3);
    Type({XKB_KEY_1, XKB_KEY_0, XKB_KEY_0, XKB_KEY_Return});
    EXPECT_TRUE(Until([this] { return std::abs(Value(36) - 0.8) < 1e-4; })) << Value(36);
    Heard();
    const auto unlocked = Still();
    Click("Auto Release");
    EXPECT_TRUE(HasValue(35, 1.0));
    EXPECT_EQ(Heard(2), PressOf("Auto Release"));
    EXPECT_NE(Still(), unlocked);
    Drag(MiddleOf("Release"), 0, 60);
    windows.Release(1);
    Still();
    EXPECT_EQ(Heard(0), "");
    EXPECT_NEAR(Value(36), 0.8, 1e-4);
}

TEST_F(Robot, SwitchesTheLimiter) {
    const auto before = Still();
    Click("Limiter");
    EXPECT_TRUE(HasValue(34, 0.0));
    EXPECT_EQ(Heard(2), PressOf("Limiter"));
    EXPECT_NE(Still(), before);
}

TEST_F(Robot, StepsThroughTheOversampling) {
    Click("ToolBtnNextOS");
    EXPECT_TRUE(HasValue(30, 1.0)) << Value(30);
    EXPECT_EQ(Heard(), EditOf("Oversampling"));
    Click("ToolBtnNextOS");
    Click("ToolBtnPrevOS");
    Click("Oversampling", 5); // the wheel, towards the end
    EXPECT_TRUE(HasValue(30, 2.0)) << Value(30);
    Heard(3);
    Click("Hiqh Quality");
    EXPECT_TRUE(HasValue(31, 1.0));
}

// Groups and channels

TEST_F(Robot, TakesAChannelOutOfTheGroup) {
    Click("ToolCh2");
    EXPECT_TRUE(HasValue(2, 0.0));
    const auto edit = Heard(2);
    EXPECT_EQ(std::count(edit.begin(), edit.end(), 'e'), 2) << edit;
}

TEST_F(Robot, ShowsAnotherGroup) {
    Drag(MiddleOf("Threshold"), 0, 60);
    windows.Release(1);
    Heard();
    const auto first = Still();
    Click("ToolBtnFx2");
    EXPECT_NE(Still(), first);
    Heard(2); // the one group goes off, the other one on
    Drag(MiddleOf("Threshold"), 0, 30);
    windows.Release(1);
    EXPECT_EQ(Heard(), "b5 v5 e5") << "the threshold of group 2";
    EXPECT_LT(Value(133), 1.0);
}

TEST_F(Robot, SolosAndMutesGroups) {
    const auto before = Still();
    ShiftClick("ToolBtnFx1");
    EXPECT_TRUE(HasValue(22, 1.0));
    EXPECT_NE(Still(), before);
    Click("ToolBtnFx1");
    windows.Click(1);
    EXPECT_TRUE(HasValue(21, 1.0));
    EXPECT_TRUE(HasValue(22, 0.0));
}

TEST_F(Robot, CopiesAGroup) {
    Drag(MiddleOf("Threshold"), 0, 60);
    windows.Release(1);
    Heard();
    Click("ToolBtnFxCopy");
    Click("ToolBtnFx3");
    EXPECT_TRUE(Until([this] { return Value(233) == Value(33) && Value(233) < 1.0; }));
}

TEST_F(Robot, NamesAGroupAMacroAndAChannel) {
    const auto before = Still();
    Click("ToolBtnFx1", 3);
    Type({XKB_KEY_b, XKB_KEY_u, XKB_KEY_s, XKB_KEY_Return});
    EXPECT_TRUE(Until([this] { return effect->Chunk().find("<fx_names>bus|*|") != std::string::npos; }));
    MoveTo({290, 464}); // the button of macro 2
    windows.Click(3);
    Type({XKB_KEY_a, XKB_KEY_i, XKB_KEY_r, XKB_KEY_Return});
    EXPECT_TRUE(Until([this] { return effect->Chunk().find("|*|air|*|") != std::string::npos; }));
    EXPECT_NE(Still(), before);
}

// Routings

TEST_F(Robot, ChoosesARoutingFromItsList) {
    Click("ToolBtnDown");
    AwaitPopUp();
    Type({XKB_KEY_Down, XKB_KEY_Down, XKB_KEY_Return});
    EXPECT_TRUE(Until([this] { return InState("<map>") == "0,-1"; })) << effect->Chunk();
    EXPECT_TRUE(Until([this] { return PopUps().empty(); }));
}

TEST_F(Robot, MakesARoutingAndSavesIt) {
    const auto before = Still();
    Click("ToolBtnRoutingEdit");
    const auto editing = Still();
    EXPECT_NE(editing, before);
    Click("ToolCh3"); // names the third channel
    Type({XKB_KEY_x, XKB_KEY_Return});
    ShiftClick("ToolCh4");
    EXPECT_NE(Still(), editing);
    Click("ToolBtnRoutingEdit");
    AnswerList({XKB_KEY_q, XKB_KEY_Return});
    const auto file = Documents() / "Kavelin" / "Routings" / "q.kvt";
    EXPECT_TRUE(Until([&] { return fs::exists(file); }));
    EXPECT_NE(ReadText(file).find("<map>0,-1|*|1,-1|*|2,-1|*|3,-1</map>"), std::string::npos)
        << ReadText(file);
    EXPECT_TRUE(Until([this] { return effect->Chunk().find("<name>q<") != std::string::npos; }));
}

TEST_F(Robot, LeavesTheRoutingEditByAPressElsewhere) {
    const auto before = Still();
    Click("ToolBtnRoutingEdit");
    ShiftClick("ToolCh9");
    Still();
    MoveTo({200, 250});
    windows.Click(1);
    MoveTo({1, 1});
    EXPECT_TRUE(Until([&] { return Still() == before; }));
}

// Patches, sides, history

TEST_F(Robot, SavesAPatchAndLoadsItAgain) {
    Click("ToolBtnSave");
    AnswerList({XKB_KEY_o, XKB_KEY_n, XKB_KEY_e, XKB_KEY_Return});
    const auto file = Documents() / "Kavelin" / "KAV Sorrel Limiter" / "one.kvp";
    EXPECT_TRUE(Until([&] { return fs::exists(file); }));
    Still();
    Drag(MiddleOf("Threshold"), 0, 60);
    windows.Release(1);
    Heard();
    EXPECT_LT(Value(33), 1.0);
    Click("ToolBtnLoad");
    AnswerList({XKB_KEY_Down, XKB_KEY_Down, XKB_KEY_Return}); // "..", the patch
    EXPECT_TRUE(HasValue(33, 1.0));
}

TEST_F(Robot, StepsThroughPatchesAndChoosesFromTheirList) {
    Click("ToolBtnSave");
    AnswerList({XKB_KEY_o, XKB_KEY_n, XKB_KEY_e, XKB_KEY_Return});
    Still();
    Drag(MiddleOf("Threshold"), 0, 60);
    windows.Release(1);
    Heard();
    const double dragged = Value(33);
    Click("ToolBtnSave");
    AnswerList({XKB_KEY_t, XKB_KEY_w, XKB_KEY_o, XKB_KEY_Return});
    Still();
    Click("ToolBtnPrev");
    EXPECT_TRUE(HasValue(33, 1.0));
    Click("ToolBtnNext");
    EXPECT_TRUE(HasValue(33, dragged));
    Click("ToolPatch");
    AwaitPopUp();
    Type({XKB_KEY_Home, XKB_KEY_Return});
    EXPECT_TRUE(HasValue(33, 1.0));
    EXPECT_TRUE(Until([this] { return InState("<patch_name>") == "one"; })) << InState("<patch_name>");
}

TEST_F(Robot, UndoesAndRedoesByButtonAndKey) {
    Drag(MiddleOf("Threshold"), 0, 60);
    windows.Release(1);
    Heard();
    const double dragged = Value(33);
    Click("ToolBtnUndo");
    EXPECT_TRUE(HasValue(33, 1.0));
    Still(); // the other button is inert until the next picture
    Click("ToolBtnRedo");
    EXPECT_TRUE(HasValue(33, dragged));
    windows.Key(XKB_KEY_Control_L, true);
    windows.Type(XKB_KEY_z);
    windows.Key(XKB_KEY_Control_L, false);
    EXPECT_TRUE(HasValue(33, 1.0));
}

TEST_F(Robot, ComparesTwoSides) {
    Click("ToolBtnABCopy");
    Drag(MiddleOf("Threshold"), 0, 60);
    windows.Release(1);
    Heard();
    const double dragged = Value(33);
    Click("ToolBtnA");
    EXPECT_TRUE(HasValue(33, 1.0));
    Click("ToolBtnA");
    EXPECT_TRUE(HasValue(33, dragged));
}

// Settings, About

TEST_F(Robot, ConnectsTheGroupsInParallelByTheMenu) {
    Click("ToolAbout");
    AwaitPopUp();
    Type({XKB_KEY_Down, XKB_KEY_Down, XKB_KEY_Down, XKB_KEY_Down, XKB_KEY_Right, XKB_KEY_Down,
        XKB_KEY_Return});
    EXPECT_TRUE(Until([this] { return InState("<groups_parallel>") == "1"; }))
        << InState("<groups_parallel>");
    EXPECT_TRUE(Until([this] { return PopUps().empty(); }));
}

TEST_F(Robot, ReadsTheVersionAndReturns) {
    MoveTo({1, 1});
    const auto before = Still();
    OpenAbout();
    MoveTo({static_cast<std::int32_t>(0.586 * 754), static_cast<std::int32_t>(0.92 * 553)}); // "OK"
    windows.Click(1);
    MoveTo({1, 1});
    EXPECT_TRUE(Until([&] { return Still() == before; }));
}

TEST_F(Robot, SwitchesTheVectorCodeInTheAboutView) {
    const auto simd = InState("<simd>");
    OpenAbout();
    MoveTo({715, 133}); // the lower of the two switches at the right edge
    windows.Click(1);
    EXPECT_TRUE(Until([&] { return InState("<simd>") != simd; }));
}

TEST_F(Robot, TriesAnotherRendererInTheAboutView) {
    OpenAbout();
    const auto shownSwitch = [this] { return windows.Pixels(editor, 685, 17, 58, 56); };
    MoveTo({715, 45}); // the upper switch
    Until([this, idles = effect->Idles()] { return effect->Idles() > idles + 60; });
    const auto before = shownSwitch();
    const auto stored = [](const void* number = nullptr) -> std::uint32_t {
        constexpr auto root = Platform::ESettingsRoot::CurrentUser;
        constexpr const char* key = "Software/Kavelin/KAV Sorrel Limiter";
        if (number != nullptr) Platform::WriteSetting(root, key, "GFX", number, sizeof(std::uint32_t));
        const auto bytes = Platform::ReadSetting(root, key, "GFX");
        std::uint32_t read = ~0u;
        if (bytes.size == sizeof(read)) std::memcpy(&read, bytes.data.get(), sizeof(read));
        return read;
    };
    const std::uint32_t direct2D = 3;
    ASSERT_EQ(stored(&direct2D), direct2D);
    windows.Click(1); // a click alone leaves it
    Until([this, idles = effect->Idles()] { return effect->Idles() > idles + 12; });
    EXPECT_EQ(stored(), direct2D);
    windows.Click(4); // the next one is OpenGL, without which the software renderer draws
    EXPECT_TRUE(Until([&] { return stored() == 0; })) << stored();
    EXPECT_TRUE(Until([&] { return shownSwitch() == before; })) << "the switch shows what draws";
    EXPECT_TRUE(PopUps().empty());
}

TEST_F(Robot, PressesTheMarkWhichOpensTheMakersSiteIfThisBuildHasOne) {
    const auto folder = Documents() / "browser";
    const auto said = folder / "said";
    WriteText(folder / "xdg-open", "#!/bin/sh\necho \"$1\" >'" + said.string() + ".new'\nmv '" +
                                       said.string() + ".new' '" + said.string() + "'\n");
    fs::permissions(folder / "xdg-open", fs::perms::owner_all);
    fs::remove(said);
    const std::string before = std::getenv("PATH");
    setenv("PATH", (folder.string() + ":" + before).c_str(), 1);
    OpenAbout();
    const auto mark = [this] { return windows.Pixels(editor, 320, 17, 114, 74); };
    MoveTo({377, 54});
    windows.Click(1);
    if (const auto site = Utils::ToUtf8(Utils::SiteAddress(Utils::ConfiguredService())); !site.empty()) {
        EXPECT_TRUE(Until([&] { return fs::exists(said); }));
        EXPECT_EQ(ReadText(said), site + "\n");
    }
    const auto bright = mark();
    EXPECT_TRUE(Until([&] { return mark() != bright; })) << "the mark pulses on";
    EXPECT_EQ(fs::exists(said), !Utils::SiteAddress(Utils::ConfiguredService()).empty());
    setenv("PATH", before.c_str(), 1);
}

// Macros

TEST_F(Robot, AssignsAMacroAndMovesIt) {
    const auto before = Still();
    MoveTo({200, 464}); // the button of macro 1
    windows.Click(1);
    EXPECT_NE(Still(), before);
    // The first of the four small knobs on the threshold's fader.
    const auto centre = MiddleOf("Threshold");
    MoveTo({centre.x - 18, centre.y});
    windows.Click(4);
    EXPECT_TRUE(Until([this] { return effect->Chunk().find("<macro group=\"0\">33;") != std::string::npos; }))
        << effect->Chunk();
    Drag({204, 507}, 0, -60); // the knob of macro 1
    windows.Release(1);
    Still();
    EXPECT_NE(Value(24), 0.5);
}

// Sizes

TEST_F(RobotAtALargeScreen, FindsEveryCornerAtEverySize) {
    for (const std::int32_t width : {500, 1508}) {
        const auto place = windows.Place(editor);
        windows.Resize(windows.Top(), 1700, 1300);
        windows.Resize(windows.Parent(), 1600, 1200);
        Drag({place.width - 2, place.height / 2}, width - place.width, 0);
        windows.Release(1);
        ASSERT_TRUE(Until([&] { return windows.Place(editor).width == width; }))
            << windows.Place(editor).width;
        Still();
        Drag(MiddleOf("Main Input Gain", width), 0, -30); // lower left
        windows.Release(1);
        EXPECT_EQ(Heard(), EditOf("Main Input"));
        Drag(MiddleOf("Main Output Gain", width), 0, -30); // lower right
        windows.Release(1);
        EXPECT_EQ(Heard(), EditOf("Main Output"));
        MoveTo(MiddleOf("ToolBtnFxCopy", width)); // upper right
        windows.Click(1);
        windows.Click(1);
        MoveTo(MiddleOf("ToolBtnDown", width)); // upper left
        windows.Click(1);
        AwaitPopUp();
        Type({XKB_KEY_Escape});
        EXPECT_TRUE(Until([this] { return PopUps().empty(); }));
        Still();
    }
}

} // namespace KAV::Tests
