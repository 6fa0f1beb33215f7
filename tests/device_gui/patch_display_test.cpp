// The display of patches, with its menu and its wheel, and the keys around it.

#include "device_gui/patch_display.h"

#include "tests/device_gui/open_panel.h"

#include <cstdio>
#include <filesystem>
#include <system_error>

using namespace KAV;
using namespace KAV::Tests;

namespace {

class PatchDisplay : public OpenPanel {
protected:
    static constexpr std::int32_t Id = -1;
    static constexpr std::int32_t Commands = 200; // of a widget whose id is below 0

    CPatch& Display() { return Widget<CPatch>(); }
    void Write(const std::string& file, double threshold) {
        WriteText(documents.Patch(file),
            "<patch_format>textual</patch_format>\r\n<plugin_id>1936683628</plugin_id>\r\n<patch_name>"
            "inside</patch_name>\r\n<param tag=\"33\" >" +
                std::to_string(threshold) + "</param>\r\n");
    }
    /// Patches a, b, c, ... with the thresholds 0.1, 0.2, 0.3, ...
    void WriteLetters(int count) {
        for (int n = 0; n < count; ++n)
            Write(std::string(1, static_cast<char>('a' + n)) + ".kvp", 0.1 * (n + 1));
        Reopen();
    }
    /// As many patches, "p0000" and so on; more than the last time.
    void WriteMany(int count) {
        for (; _many < count; ++_many) {
            const auto file = Utils::ToUtf8(NameOf(_many)) + ".kvp";
            std::error_code error = std::make_error_code(std::errc::no_link);
            // Links are made in a fraction of the time of files.
            if (_many > 0)
                std::filesystem::create_hard_link(documents.Patch("p0000.kvp"), documents.Patch(file), error);
            if (error) Write(file, 0.5);
        }
        Reopen();
    }
    static std::u16string NameOf(int n) {
        std::array<char, 16> name{};
        std::snprintf(name.data(), name.size(), "p%04d", n);
        return Utils::ToUtf16(name.data());
    }
    float Threshold() { return Device().GetParam(33, 0); }
    /// What is on the screen after the next frame.
    std::u16string Shown() {
        robot.Tick();
        return Display().Text();
    }
    void ExpectShown(std::u16string_view name, std::int32_t place) {
        EXPECT_EQ(Utils::ToUtf8(Shown()), Utils::ToUtf8(name));
        EXPECT_EQ(Display().Item(), place);
        EXPECT_EQ(Device().State().PatchName(), name);
    }
    const GUI::Menu& OpenMenu() {
        Click(Display());
        return window.menus.back();
    }
    void Key(std::u16string_view name, std::uint32_t flags = GUI::MouseLeft) { Click(Named(name), flags); }
    std::u16string Path(const std::string& file) { return Utils::FromSystemPath(documents.Patch(file)); }

private:
    int _many = 0; // patches that there are so far
};

} // namespace

// The menu

TEST_F(PatchDisplay, OffersTheUsersPatchesAndTicksThePresentOne) {
    WriteLetters(3);
    const auto& menu = OpenMenu();
    ASSERT_EQ(menu.size(), 3u);
    for (std::size_t n = 0; n < 3; ++n) {
        EXPECT_EQ(menu[n].sText, std::u16string(1, static_cast<char16_t>(u'a' + n)));
        EXPECT_EQ(menu[n].bChecked, n == 0);
        EXPECT_TRUE(menu[n].bEnabled);
    }
    EXPECT_TRUE(robot.Choose(u"c"));
    ExpectShown(u"c", 2);
    EXPECT_EQ(Threshold(), 0.3f);
    EXPECT_TRUE(OpenMenu()[2].bChecked);
}

TEST_F(PatchDisplay, ReportsTheValuesOfAChosenPatchWithoutAnEdit) {
    WriteLetters(2);
    Told();
    OpenMenu();
    robot.Choose(u"b");
    EXPECT_EQ(Told(), Lines{"4 = " + std::to_string(effect->Get(4))}) << "it holds one parameter";
}

TEST_F(PatchDisplay, OpensItsMenuAtTheReleaseOfTheLeftButtonAlone) {
    const auto [x, y] = MiddleOf(Display());
    robot.Press(x, y);
    EXPECT_TRUE(window.menus.empty());
    robot.Release(x, y);
    EXPECT_EQ(window.menus.size(), 1u);
    Click(Display(), GUI::MouseRight);
    EXPECT_EQ(window.menus.size(), 1u);
    EXPECT_FALSE(window.textBox) << "names are typed nowhere here";
}

TEST_F(PatchDisplay, PutsNamesWithAnUnderscoreIntoAMenuOfTheirOwn) {
    for (const char* const name : {"Loud.kvp", "USER_one.kvp", "USER_two.kvp"}) Write(name, 0.25);
    Reopen();
    const auto& menu = OpenMenu();
    ASSERT_EQ(menu.size(), 2u);
    EXPECT_EQ(menu[1].sText, u"USER");
    ASSERT_EQ(menu[1].vsSub.size(), 2u);
    EXPECT_TRUE(robot.Choose(u"USER_two"));
    ExpectShown(u"USER_two", 2);
}

// A menu has no more commands than 200 for this list. Wheel, keys and the dialog reach all patches.
TEST_F(PatchDisplay, ListsOfAnyLengthAreReached) {
    ExpectShown(u"No KVP patches found!", 0);
    EXPECT_EQ(OpenMenu().size(), 1u);
    for (const int count : {1, 199, 200, 201, 5000}) {
        WriteMany(count);
        ASSERT_EQ(Display().ItemCount(), count);
        EXPECT_EQ(OpenMenu().size(), static_cast<std::size_t>(std::min(count, Commands)));
        const int last = std::min(count, Commands) - 1;
        robot.Choose(NameOf(last));
        ExpectShown(NameOf(last), last);
        Key(u"ToolBtnNext");
        ExpectShown(NameOf(std::min(last + 1, count - 1)), std::min(last + 1, count - 1));
        Wheel(Display(), -1.0f);
        ExpectShown(NameOf(std::min(last + 2, count - 1)), std::min(last + 2, count - 1));
        dialogs.answer = Path(Utils::ToUtf8(NameOf(count - 1)) + ".kvp");
        Key(u"ToolBtnLoad");
        ExpectShown(NameOf(count - 1), count - 1);
        Key(u"ToolBtnNext");
        Wheel(Display(), -1.0f);
        ExpectShown(NameOf(count - 1), count - 1);
        Wheel(Display(), 1.0f);
        ExpectShown(NameOf(std::max(count - 2, 0)), std::max(count - 2, 0));
        Key(u"ToolBtnPrev");
        ExpectShown(NameOf(std::max(count - 3, 0)), std::max(count - 3, 0));
    }
}

TEST_F(PatchDisplay, ShowsNamesOfAnyCharacters) {
    std::vector<std::string> names{"0", "\xF0\x9F\x98\x80 loud", "a & b &amp; c", "x-sep-y"};
#if !defined(_WIN32) // where no file can be called so
    names.insert(names.end(), {"<b>bold", "one||two", "three|*|four"});
#endif
    for (const auto& name : names) Write(name + ".kvp", 0.5);
    Reopen();
    ASSERT_EQ(Display().ItemCount(), static_cast<std::int32_t>(names.size()));
    const auto items = Display().Items();
    for (std::size_t n = 1; n < items.size(); ++n) {
        Key(u"ToolBtnNext");
        ExpectShown(items[n], static_cast<std::int32_t>(n));
        EXPECT_NE(std::ranges::find(names, Utils::ToUtf8(items[n])), names.end());
        Picture();
    }
}

TEST_F(PatchDisplay, CutsALongNameWithAnEllipsis) {
    const std::string name(10000, 'W');
    SetChunk("<patch_format>textual</patch_format>\r\n<patch_name>" + name + "</patch_name>\r\n", false);
    EXPECT_EQ(Shown(), Utils::ToUtf16(name));
    pictures.lettered.clear();
    robot.Advance(500);
    for (const std::int32_t width : {500, 754, 1508}) {
        Device().State().ResizeToWidth(width);
        robot.Advance(500);
        const auto lettered = std::ranges::find_if(
            pictures.lettered, [&](const auto& lettering) { return lettering.sText.size() == name.size(); });
        ASSERT_NE(lettered, pictures.lettered.end()) << width;
        EXPECT_TRUE(lettered->bEllipsis);
        EXPECT_LE(lettered->nW, width);
        pictures.lettered.clear();
    }
}

// The wheel

TEST_F(PatchDisplay, TheWheelStepsWithoutGoingRound) {
    WriteLetters(3);
    Wheel(Display(), 1.0f);
    ExpectShown(u"a", 0);
    Wheel(Display(), -1.0f);
    ExpectShown(u"b", 1);
    EXPECT_EQ(Threshold(), 0.2f);
    Wheel(Display(), -1.0f, GUI::MouseShift);
    Wheel(Display(), -1.0f, GUI::MouseControl);
    ExpectShown(u"c", 2);
    EXPECT_EQ(Threshold(), 0.3f);
    Wheel(Display(), 1.0f);
    ExpectShown(u"b", 1);
}

// What cannot be loaded

TEST_F(PatchDisplay, GoesBackToItsNameAndPlaceWhenAChoiceCannotBeLoaded) {
    WriteText(documents.Patch("foreign.kvp"), "<plugin_id>1</plugin_id>");
    WriteText(documents.Patch("empty.kvp"), "");
    WriteText(documents.Patch("no patch.kvp"), "<plugin_id>1936683628</plugin_id>");
    Write("gone.kvp", 0.75);
    WriteLetters(1);
    std::filesystem::remove(documents.Patch("gone.kvp"));
    Told();
    const auto before = Chunk(false);
    for (const auto* const name : {u"foreign", u"empty", u"no patch", u"gone"}) {
        OpenMenu();
        ASSERT_TRUE(robot.Choose(name));
        ExpectShown(u"a", 0);
        EXPECT_TRUE(OpenMenu()[0].bChecked);
    }
    Wheel(Display(), -1.0f);
    ExpectShown(u"a", 0);
    Key(u"ToolBtnNext");
    ExpectShown(u"a", 0);
    EXPECT_EQ(Chunk(false), before);
    EXPECT_EQ(Told(), Lines{});
    EXPECT_EQ(Gui().Records(), 0u);
    EXPECT_EQ(
        dialogs.errors, std::vector<std::u16string>{
                            u"KAV Sorrel Limiter: Patch \"foreign.kvp\" was created for another plug-in."});
}

TEST_F(PatchDisplay, GoesBackToANameThatIsNotInTheList) {
    WriteLetters(3);
    OpenMenu();
    robot.Choose(u"b");
    Device().State().SetPatchName(u"From a project");
    std::filesystem::remove(documents.Patch("c.kvp"));
    Wheel(Display(), -1.0f);
    ExpectShown(u"From a project", 1);
    for (const auto& item : OpenMenu()) EXPECT_FALSE(item.bChecked);
}

TEST_F(PatchDisplay, FollowsWhatIsLoadedElsewhere) {
    WriteLetters(3);
    SetChunk("<patch_format>textual</patch_format>\r\n<patch_name>c</patch_name>\r\n", false);
    ExpectShown(u"c", 2);
    SetChunk("<patch_format>textual</patch_format>\r\n<patch_name>Mine</patch_name>\r\n", false);
    ExpectShown(u"Mine", 2);
    Wheel(Display(), 1.0f);
    ExpectShown(u"b", 1);
}

// The keys around it

TEST_F(PatchDisplay, PreviousAndNextStepWithoutGoingRound) {
    WriteLetters(3);
    Key(u"ToolBtnPrev");
    ExpectShown(u"a", 0);
    EXPECT_EQ(Gui().Records(), 0u);
    Key(u"ToolBtnNext");
    ExpectShown(u"b", 1);
    EXPECT_EQ(Threshold(), 0.2f);
    Key(u"ToolBtnNext", GUI::MouseLeft | GUI::MouseDouble);
    ExpectShown(u"c", 2);
    EXPECT_EQ(Threshold(), 0.3f);
    effect->Set(4, 0.875f);
    Key(u"ToolBtnNext");
    EXPECT_EQ(Threshold(), 0.875f) << "the last one is not loaded again";
    Key(u"ToolBtnNext", GUI::MouseRight);
    Key(u"ToolBtnPrev", GUI::MouseRight);
    ExpectShown(u"c", 2);
    Key(u"ToolBtnPrev", GUI::MouseLeft | GUI::MouseShift);
    ExpectShown(u"b", 1);
    EXPECT_TRUE(window.menus.empty()) << "the keys lie over the display, and win";
}

TEST_F(PatchDisplay, TheKeysBeginAndEndNoEdit) {
    WriteLetters(2);
    Told();
    Key(u"ToolBtnNext");
    EXPECT_EQ(Told(), Lines{"4 = " + std::to_string(effect->Get(4))});
}

TEST_F(PatchDisplay, TheKeysWorkAtEveryWidth) {
    WriteLetters(2);
    for (const std::int32_t width : {500, 754, 1508}) {
        Device().State().ResizeToWidth(width);
        robot.Advance(100);
        Key(u"ToolBtnNext");
        ExpectShown(u"b", 1);
        Key(u"ToolBtnPrev");
        ExpectShown(u"a", 0);
    }
}

TEST_F(PatchDisplay, LoadAsksForAFile) {
    WriteLetters(2);
    dialogs.answer = Path("b.kvp");
    Key(u"ToolBtnLoad", GUI::MouseRight);
    EXPECT_TRUE(dialogs.questions.empty());
    const auto [x, y] = MiddleOf(Named(u"ToolBtnLoad"));
    robot.Press(x, y);
    EXPECT_TRUE(dialogs.questions.empty());
    robot.Release(x, y);
    ASSERT_EQ(dialogs.questions.size(), 1u);
    EXPECT_EQ(dialogs.questions[0].filter,
        u"Preset File||*.fxp;*.kvp|||VST Preset File||*.fxp|||KAV Preset File||*.kvp");
    ExpectShown(u"b", 1);
    EXPECT_EQ(Threshold(), 0.2f);
    dialogs.answer.clear();
    Key(u"ToolBtnLoad");
    ExpectShown(u"b", 1);
    EXPECT_EQ(dialogs.questions.size(), 2u);
}

TEST_F(PatchDisplay, SaveProposesANameAndRenewsTheList) {
    WriteLetters(2);
    effect->Set(4, 0.625f);
    dialogs.answer = Path("Mine");
    Key(u"ToolBtnSave", GUI::MouseRight);
    EXPECT_TRUE(dialogs.questions.empty());
    Key(u"ToolBtnSave");
    ASSERT_EQ(dialogs.questions.size(), 1u);
    EXPECT_EQ(dialogs.questions[0].name, u"USER_a");
    EXPECT_EQ(dialogs.questions[0].filter, u"KAV Preset File||*.kvp");
    ExpectShown(u"Mine", 0);
    EXPECT_EQ(Display().Items(), (std::vector<std::u16string>{u"Mine", u"a", u"b"}));
    EXPECT_EQ(Told(), Lines{});
    EXPECT_EQ(Gui().Records(), 0u);
    Key(u"ToolBtnNext");
    EXPECT_EQ(Threshold(), 0.1f);
    Key(u"ToolBtnPrev");
    EXPECT_EQ(Threshold(), 0.625f);
}

TEST_F(PatchDisplay, SavesNoSettingsAndNoRoutingWithAPatch) {
    dialogs.answer = Path("Mine.kvp");
    Key(u"ToolBtnSave");
    const auto saved = ReadText(documents.Patch("Mine.kvp"));
    EXPECT_NE(saved.find("<param "), std::string::npos);
    for (const char* const element : {"<simd", "<gui_width", "<kav_input_routing", "<agc_"})
        EXPECT_EQ(saved.find(element), std::string::npos) << element;
}

TEST_F(PatchDisplay, TheEditorGoesOnWhileAQuestionIsOpen) {
    WriteLetters(2);
    dialogs.answersLater = true;
    Key(u"ToolBtnLoad");
    Key(u"ToolBtnLoad");
    Key(u"ToolBtnSave");
    EXPECT_EQ(dialogs.questions.size(), 1u) << "one at a time";
    Wheel(Display(), -1.0f);
    ExpectShown(u"b", 1);
    dialogs.AnswerNext(Path("a.kvp"));
    ExpectShown(u"a", 0);
    Key(u"ToolBtnSave");
    EXPECT_EQ(dialogs.questions.size(), 2u);
    dialogs.AnswerNext({});
}

TEST_F(PatchDisplay, CostsNothingWhileNothingChanges) {
    WriteLetters(2);
    EXPECT_TRUE(IsStill());
    Key(u"ToolBtnNext");
    EXPECT_FALSE(Picture().empty());
    EXPECT_TRUE(IsStill());
}
