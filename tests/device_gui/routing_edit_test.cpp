// The edit of a routing: its button, the channel buttons meanwhile, and all that ends it.

#include "device_gui/routing_edit.h"

#include "gui/knob.h"
#include "tests/device_gui/routing_panel.h"

#include <thread>

using namespace KAV;
using namespace KAV::Tests;

namespace {

class RoutingEdit : public RoutingPanel {
protected:
    static constexpr std::uint32_t ShiftPress = GUI::MouseLeft | GUI::MouseShift;

    void Label(int number, std::u16string_view text) {
        Click(Channel(number));
        TypeOver(text);
    }
    /// A patch that gives group `group` a routing of one entry.
    static std::string PatchOf(int group) {
        return "<patch_format>textual</patch_format>\r\n<multi_fx>true</"
               "multi_fx>\r\n<kav_input_routing>\r\n\t<fx>" +
               std::to_string(group) +
               "</fx>\r\n\t<name>loaded</name>\r\n\t<map>1,-1</map>\r\n\t<ch_names>only</ch_names>\r\n"
               "</kav_input_routing>\r\n";
    }
    /// The host loads it on a thread of its own.
    void LoadElsewhere(const std::string& patch) {
        std::thread([this, &patch] { EXPECT_TRUE(SetChunk(patch, false)); }).join();
    }
    void ExpectEnded() {
        EXPECT_FALSE(IsEditing());
        EXPECT_TRUE(IsPanelAtRest());
    }
    void ExpectDefaultShown() {
        EXPECT_EQ(Display().Text(), u"Not found");
        EXPECT_EQ(Channel(1).Text(), u"L");
        EXPECT_EQ(Channel(2).Text(), u"R");
        EXPECT_EQ(Channel(3).Text(), u"");
        EXPECT_EQ(VisibleChannels(), 2u);
    }
    void ExpectLoadedShown() {
        EXPECT_EQ(Display().Text(), u"loaded");
        EXPECT_EQ(Channel(1).Text(), u"only");
        EXPECT_EQ(Channel(2).Text(), u"");
        EXPECT_EQ(VisibleChannels(), 1u);
        EXPECT_EQ(MapOfGroup(0), "1,-1");
    }
};

} // namespace

// On

TEST_F(RoutingEdit, ShowsEveryChannelWithALabelAndTheRoutingsAreOn) {
    effect->Set(HostIndexOf(2), 0.0f); // what is on is what the routing has
    robot.Tick();
    BeginEdit();
    EXPECT_EQ(VisibleChannels(), 16u);
    EXPECT_EQ(OnChannels(), "1 2");
    EXPECT_EQ(Channel(1).Text(), u"L");
    EXPECT_EQ(Channel(2).Text(), u"R");
    for (int n = 3; n <= 16; ++n) EXPECT_EQ(Channel(n).Text(), Utils::ToUtf16(std::to_string(n)));
    EXPECT_EQ(EditButton().Value(), 1.0f);
}

TEST_F(RoutingEdit, BeginsAtOnceAndNotWithTheNextFrame) {
    const auto [x, y] = MiddleOf(EditButton());
    robot.Press(x, y);
    EXPECT_FALSE(IsEditing()) << "with the click";
    robot.Release(x, y);
    Click(Channel(1), ShiftPress);
    EXPECT_EQ(OnChannels(), "1");
    EXPECT_TRUE(IsMember(1));
    EXPECT_TRUE(IsMember(2));
}

TEST_F(RoutingEdit, LeavesTheGroupAndTheHostAlone) {
    const auto before = Chunk(false);
    Click(EditButton());
    Click(Channel(6), ShiftPress);
    Label(2, u"Right");
    Click(Channel(1), ShiftPress);
    robot.Advance(100);
    EXPECT_EQ(Told(), Lines{});
    EXPECT_EQ(Chunk(false), before);
    EXPECT_FALSE(Gui().CanUndo());
    effect->Set(HostIndexOf(7), 1.0f);
    robot.Tick();
    EXPECT_EQ(OnChannels(), "1") << "nor does it listen to the host";
}

TEST_F(RoutingEdit, InAnotherGroupItIsThatGroupsRouting) {
    for (const auto* const name : {u"ToolBtnFx2", u"ToolBtnFx3", u"ToolBtnFx4"}) {
        Click(Named(name));
        robot.Tick();
        Told();
        BeginEdit();
        const auto before = Chunk(false);
        Click(Channel(9), ShiftPress);
        EXPECT_EQ(Chunk(false), before);
        EXPECT_EQ(Told(), Lines{});
        Click(Named(u"Toolbar")); // on nothing
        robot.Tick();
        ExpectEnded();
    }
}

// The channel buttons

TEST_F(RoutingEdit, ShiftAndAPressChooseUpToAChannel) {
    BeginEdit();
    Click(Channel(6), ShiftPress);
    EXPECT_EQ(OnChannels(), "1 2 3 4 5 6");
    Click(Channel(3), ShiftPress);
    EXPECT_EQ(OnChannels(), "1 2 3");
    Click(Channel(3), ShiftPress);
    EXPECT_EQ(OnChannels(), "1 2 3") << "again";
    Click(Channel(16), ShiftPress | GUI::MouseControl);
    EXPECT_EQ(OnChannels(), "1 2 3 4 5 6 7 8 9 10 11 12 13 14 15 16");
    Click(Channel(1), ShiftPress);
    EXPECT_EQ(OnChannels(), "1");
    EXPECT_EQ(window.Count("OpenTextBox"), 0u);
    EXPECT_TRUE(IsEditing());
}

TEST_F(RoutingEdit, APressAsksForTheLabel) {
    BeginEdit();
    Click(Channel(2));
    ASSERT_TRUE(window.textBox.has_value());
    EXPECT_EQ(window.textBox->text, u"R");
    EXPECT_FALSE(window.textBox->numbersOnly);
    EXPECT_EQ(window.textBox->place.nL, Channel(2).PixelRect().nL);
    EXPECT_EQ(window.textBox->place.nW, Channel(2).PixelRect().nW);
    TypeOver(u"Right");
    EXPECT_EQ(Channel(2).Text(), u"Right");
    Label(7, u"Seven");
    robot.Advance(100);
    EXPECT_EQ(Channel(2).Text(), u"Right");
    EXPECT_EQ(Channel(7).Text(), u"Seven");
    EXPECT_EQ(OnChannels(), "1 2") << "a label puts nothing on";
    Click(Channel(1));
    robot.Type(u"dropped");
    Click(Channel(2));
    EXPECT_EQ(Channel(1).Text(), u"L") << "a press ends a box without effect";
    EXPECT_TRUE(IsEditing());
}

TEST_F(RoutingEdit, OnlyTheLeftButtonCounts) {
    BeginEdit();
    Click(Channel(2), GUI::MouseRight);
    Click(Channel(6), GUI::MouseRight | GUI::MouseShift);
    Wheel(Channel(4), 1.0f);
    EXPECT_EQ(window.Count("OpenTextBox"), 0u);
    EXPECT_EQ(OnChannels(), "1 2");
    EXPECT_TRUE(IsEditing());
    Click(Channel(2), GUI::MouseLeft | GUI::MouseControl);
    EXPECT_EQ(window.Count("OpenTextBox"), 1u);
    Click(Channel(2), GUI::MouseLeft | GUI::MouseControl); // the second of a double click
    EXPECT_EQ(window.Count("OpenTextBox"), 2u);
    EXPECT_EQ(OnChannels(), "1 2");
}

TEST_F(RoutingEdit, WorksAtEverySizeOfThePanel) {
    for (const std::int32_t width : {500, 1508}) {
        Gui().ResizeTo(width, static_cast<std::int32_t>(static_cast<float>(width) / CDeviceState::Aspect));
        robot.Tick();
        BeginEdit();
        Click(Channel(12), ShiftPress);
        EXPECT_EQ(OnChannels(), "1 2 3 4 5 6 7 8 9 10 11 12") << width;
        Click(Channel(16));
        ASSERT_TRUE(window.textBox.has_value()) << width;
        EXPECT_EQ(window.textBox->place.nW, Channel(16).PixelRect().nW) << width;
        robot.Click(2, Gui().Height() / 2);
        robot.Tick();
        ExpectEnded();
    }
}

TEST_F(RoutingEdit, LabelsAreNotRefreshedMeanwhile) {
    BeginEdit();
    Label(1, u"mine");
    Gui().SetRouting(Document("other", MapOf(4), "a|*|b|*|c|*|d"), -1);
    robot.Advance(50);
    EXPECT_EQ(Channel(1).Text(), u"mine");
    EXPECT_EQ(Display().Text(), u"Not found");
    EXPECT_EQ(OnChannels(), "1 2");
    Click(Named(u"Toolbar"));
    robot.Tick();
    ExpectEnded();
    ExpectDefaultShown();
    EXPECT_EQ(Gui().GetRouting(0), PlainDefaultRouting()) << "what it began with is given back";
}

// Off: the dialog

TEST_F(RoutingEdit, AsksWhereToSaveAndTakesTheResult) {
    BeginEdit();
    Click(Channel(4), ShiftPress);
    Label(2, u"Right");
    Label(4, u"\U0001F3B5");
    Label(5, u"off");
    dialogs.answer = RoutingPath("Mine");
    Click(EditButton());
    robot.Tick();
    ASSERT_EQ(dialogs.questions.size(), 1u);
    EXPECT_EQ(dialogs.questions[0].filter, u"KAV Routing File||*.kvt");
    EXPECT_EQ(dialogs.questions[0].name, u"Not found (User)");
    EXPECT_EQ(dialogs.questions[0].folder, RoutingFolder());
    const auto expected = Document("Mine", MapOf(4), "L|*|Right|*|3|*|\xF0\x9F\x8E\xB5");
    EXPECT_EQ(ReadText(documents.Routing("Mine.kvt")), expected);
    EXPECT_EQ(Gui().GetRouting(0), expected);
    for (int group = 1; group < 4; ++group) EXPECT_EQ(Gui().GetRouting(group), PlainDefaultRouting());
    EXPECT_EQ(Display().Text(), u"Mine");
    EXPECT_EQ(Display().Items(), (Names{u"Mine", u"Not found"}));
    EXPECT_EQ(Display().Item(), 0);
    EXPECT_EQ(VisibleChannels(), 4u);
    EXPECT_EQ(Channel(5).Text(), u"");
    ExpectEnded();
    EXPECT_TRUE(IsMember(2)) << "what is in the group stays there";
    EXPECT_FALSE(IsMember(3));
}

TEST_F(RoutingEdit, SavesOnlyWhatIsOnUnderItsOwnNumber) {
    Gui().SetRouting(Document("x", "2,3|*|0,1", "S|*|F"), 0);
    robot.Tick();
    BeginEdit();
    EXPECT_EQ(OnChannels(), "1 2");
    Channel(1).SetValue(0.0f, false);
    Channel(16).SetValue(1.0f, false);
    dialogs.answer = RoutingPath("5.1 (User)");
    Click(EditButton());
    EXPECT_EQ(dialogs.questions[0].name, u"x (User)");
    EXPECT_EQ(
        ReadText(documents.Routing("5.1 (User).kvt")), Document("5.1 (User)", "1,-1|*|15,-1", "F|*|16"));
}

TEST_F(RoutingEdit, CancellingTheDialogGivesTheRoutingBack) {
    BeginEdit();
    Click(Channel(9), ShiftPress);
    Label(1, u"mine");
    Gui().SetRouting(Document("other", MapOf(1), "a"), -1);
    dialogs.answer.clear();
    Click(EditButton());
    robot.Tick();
    EXPECT_EQ(dialogs.questions.size(), 1u);
    ExpectEnded();
    ExpectDefaultShown();
    EXPECT_EQ(Gui().GetRouting(0), PlainDefaultRouting());
    EXPECT_FALSE(std::filesystem::exists(documents.Routing("")));
}

TEST_F(RoutingEdit, GoesOnUntilTheDialogIsAnswered) {
    dialogs.answersLater = true;
    BeginEdit();
    Click(Channel(3), ShiftPress);
    Click(EditButton());
    robot.Advance(500);
    EXPECT_TRUE(IsEditing());
    EXPECT_EQ(OnChannels(), "1 2 3");
    Click(EditButton());
    Click(EditButton());
    EXPECT_EQ(dialogs.questions.size(), 1u) << "asked once";
    EXPECT_TRUE(IsEditing());
    EXPECT_EQ(OnChannels(), "1 2 3");
    Channel(7).SetValue(1.0f, false);
    Channel(1).SetText(u"later");
    dialogs.AnswerNext(RoutingPath("Mine"));
    robot.Tick();
    ExpectEnded();
    EXPECT_EQ(Gui().GetRouting(0), Document("Mine", MapOf(3), "L|*|R|*|3")) << "as it was when asked";
    BeginEdit();
    Click(EditButton());
    dialogs.AnswerNext({});
    robot.Tick();
    ExpectEnded();
    EXPECT_EQ(Display().Text(), u"Mine");
}

TEST_F(RoutingEdit, IsCancelledWhenThereIsAnotherQuestion) {
    dialogs.answersLater = true;
    Device().State().SavePatch({}, 0);
    BeginEdit();
    Click(EditButton());
    robot.Tick();
    EXPECT_EQ(dialogs.questions.size(), 1u);
    ExpectEnded();
    ExpectDefaultShown();
    dialogs.AnswerNext({});
}

TEST_F(RoutingEdit, AFileThatCannotBeWrittenLeavesTheRoutingAsItWas) {
    BeginEdit();
    Click(Channel(9), ShiftPress);
    dialogs.answer = RoutingPath(std::string(10000, 'x'));
    Click(EditButton());
    robot.Tick();
    ExpectEnded();
    ExpectDefaultShown();
    EXPECT_EQ(Gui().GetRouting(0), PlainDefaultRouting());
    EXPECT_TRUE(dialogs.errors.empty()) << "silently";
}

TEST_F(RoutingEdit, AnAnswerAfterALoadSavesTheFileAndLeavesWhatWasLoaded) {
    for (const bool saves : {true, false}) {
        Reopen();
        dialogs.answersLater = true;
        BeginEdit();
        Click(Channel(3), ShiftPress);
        Click(EditButton());
        LoadElsewhere(PatchOf(0));
        dialogs.AnswerNext(saves ? RoutingPath("Mine") : std::u16string());
        robot.Tick();
        ExpectEnded();
        ExpectLoadedShown();
        EXPECT_EQ(std::filesystem::exists(documents.Routing("Mine.kvt")), saves);
        if (saves) {
            EXPECT_EQ(ReadText(documents.Routing("Mine.kvt")), Document("Mine", MapOf(3), "L|*|R|*|3"));
            EXPECT_EQ(Display().Items(), (Names{u"Mine", u"Not found"}));
        }
        std::filesystem::remove(documents.Routing("Mine.kvt"));
    }
}

TEST_F(RoutingEdit, AnAnswerAfterAChangeOfGroupIsForTheGroupThatWasEdited) {
    dialogs.answersLater = true;
    BeginEdit();
    Click(Channel(3), ShiftPress);
    Click(EditButton());
    effect->Set(HostIndexOf(18), 1.0f);
    robot.Tick();
    ASSERT_EQ(Device().GetCurrentGroup(), 1);
    EXPECT_FALSE(IsEditing());
    dialogs.AnswerNext(RoutingPath("Mine"));
    robot.Tick();
    EXPECT_EQ(MapOfGroup(0), MapOf(3));
    EXPECT_EQ(Gui().GetRouting(1), PlainDefaultRouting());
    ExpectDefaultShown();
}

TEST_F(RoutingEdit, AnAnswerDoesNotEndTheEditThatCameAfterIt) {
    dialogs.answersLater = true;
    BeginEdit();
    Click(EditButton());
    LoadElsewhere(PatchOf(0));
    robot.Tick();
    BeginEdit();
    Label(1, u"second");
    dialogs.AnswerNext({});
    robot.Tick();
    EXPECT_TRUE(IsEditing());
    EXPECT_EQ(Channel(1).Text(), u"second");
}

// A press elsewhere

TEST_F(RoutingEdit, APressOnAnythingElseCancelsIt) {
    for (const auto* const name :
        {u"Threshold", u"ToolInputRouting", u"ToolBtnDown", u"ToolBtnFx3", u"ToolBtnFxCopy", u"Limiter",
            u"ToolPatch", u"Oversampling", u"ToolBtnA", u"ToolBtnUndo", u"Main Input Gain", u"Macro 2"}) {
        SCOPED_TRACE(Utils::ToUtf8(name));
        for (const std::uint32_t flags :
            std::initializer_list<std::uint32_t>{GUI::MouseLeft, GUI::MouseRight}) {
            Reopen();
            BeginEdit();
            Label(1, u"mine");
            Gui().SetRouting(Document("other", MapOf(1), "a"), -1);
            const auto [x, y] = MiddleOf(Named(name));
            robot.Press(x, y, flags);
            EXPECT_FALSE(IsEditing());
            EXPECT_EQ(Gui().GetRouting(0), PlainDefaultRouting()) << "given back";
            robot.Release(x, y, flags);
            robot.Tick();
            ExpectEnded();
            if (Device().GetCurrentGroup() == 0) ExpectDefaultShown();
        }
    }
}

TEST_F(RoutingEdit, APressOnTheBarOrOnNothingCancelsIt) {
    for (const SPixel place : {SPixel{110, 5}, SPixel{300, 100}, SPixel{300, 449}}) {
        BeginEdit();
        robot.Click(place.x, place.y);
        EXPECT_FALSE(IsEditing()) << place.x << "," << place.y;
    }
    BeginEdit();
    Gui().OnFocus(&Gui().Edit());
    EXPECT_TRUE(IsEditing()) << "the text box belongs to it";
    Gui().OnFocus(&EditButton());
    Gui().OnFocus(&Channel(3));
    EXPECT_TRUE(IsEditing());
    Gui().OnFocus(nullptr);
    EXPECT_FALSE(IsEditing());
}

TEST_F(RoutingEdit, AWheelElsewhereCancelsItAndAMoveDoesNot) {
    BeginEdit();
    Point(Named(u"Threshold"));
    robot.Tick();
    robot.LeaveWindow();
    EXPECT_TRUE(IsEditing());
    Wheel(Named(u"Threshold"), 1.0f);
    EXPECT_FALSE(IsEditing());
}

TEST_F(RoutingEdit, AChannelThatIsPressedAfterwardsBelongsToTheGroupAgain) {
    BeginEdit();
    Click(Channel(1), ShiftPress);
    robot.Click(110, 5);
    EXPECT_EQ(OnChannels(), "1 2") << "with the group's values, before the next frame";
    Told();
    Click(Channel(2));
    EXPECT_FALSE(IsMember(2));
    EXPECT_FALSE(Told().empty());
}

// What ends it from outside

TEST_F(RoutingEdit, APatchEndsItAndNothingIsGivenBackOverIt) {
    BeginEdit();
    Label(1, u"mine");
    ASSERT_TRUE(Gui().ReadPatch(PatchOf(0), 0));
    robot.Tick();
    ExpectEnded();
    ExpectLoadedShown();
    robot.Click(110, 5);
    robot.Tick();
    ExpectLoadedShown();
}

TEST_F(RoutingEdit, AChunkOnAnotherThreadEndsIt) {
    BeginEdit();
    Click(Channel(6), ShiftPress);
    LoadElsewhere(PatchOf(0));
    EXPECT_FALSE(IsEditing());
    robot.Tick();
    ExpectEnded();
    ExpectLoadedShown();
}

TEST_F(RoutingEdit, APatchWithoutARoutingEndsItAndTheGroupsIsShown) {
    BeginEdit();
    Label(1, u"mine");
    LoadElsewhere("<patch_format>textual</patch_format>\r\n<multi_fx>true</"
                  "multi_fx>\r\n<plugin_id>1936683628</plugin_id>\r\n");
    robot.Tick();
    ExpectEnded();
    ExpectDefaultShown();
}

TEST_F(RoutingEdit, WhatIsNoPatchLetsItGoOn) {
    BeginEdit();
    Label(1, u"mine");
    EXPECT_FALSE(Gui().ReadPatch("", 0));
    Device().State().OpenPatch(Utils::FromSystemPath(documents.Patch("none.kvp")));
    robot.Tick();
    EXPECT_TRUE(IsEditing());
    EXPECT_EQ(Channel(1).Text(), u"mine");
}

TEST_F(RoutingEdit, APressBetweenALoadAndTheNextFrameChangesNothing) {
    BeginEdit();
    LoadElsewhere(PatchOf(0));
    Click(EditButton()); // off, as the user sees it
    EXPECT_TRUE(dialogs.questions.empty());
    robot.Tick();
    ExpectEnded();
    ExpectLoadedShown();
    BeginEdit();
    Click(Channel(1));
    robot.Type(u"typed");
    LoadElsewhere(PatchOf(0));
    robot.Enter();
    robot.Tick();
    ExpectLoadedShown();
    BeginEdit();
    LoadElsewhere(PatchOf(0));
    robot.Click(110, 5); // would cancel it
    robot.Tick();
    ExpectEnded();
    ExpectLoadedShown();
}

TEST_F(RoutingEdit, ALabelThatIsBeingTypedGoesWithIt) {
    BeginEdit();
    Click(Channel(1));
    ASSERT_TRUE(window.textBox.has_value());
    LoadElsewhere(PatchOf(0));
    robot.Tick();
    EXPECT_FALSE(window.textBox.has_value());
    ExpectLoadedShown();
    // The text box of another widget has nothing to do with it.
    const auto [x, y] = MiddleOf(Named(u"Threshold"));
    robot.Click(x, y, GUI::MouseRight);
    ASSERT_TRUE(window.textBox.has_value());
    LoadElsewhere(PatchOf(1));
    robot.Tick();
    EXPECT_TRUE(window.textBox.has_value());
}

TEST_F(RoutingEdit, AnotherGroupEndsIt) {
    Gui().SetRouting(Document("second", MapOf(3), "a|*|b|*|c"), 1);
    BeginEdit();
    Click(Channel(6), ShiftPress);
    Label(1, u"mine");
    effect->Set(HostIndexOf(18), 1.0f); // by automation
    robot.Tick();
    ASSERT_EQ(Device().GetCurrentGroup(), 1);
    ExpectEnded();
    EXPECT_EQ(Display().Text(), u"second");
    EXPECT_EQ(Channel(1).Text(), u"a");
    EXPECT_EQ(VisibleChannels(), 3u);
    EXPECT_EQ(MapOfGroup(1), MapOf(3));
    EXPECT_EQ(Gui().GetRouting(0), PlainDefaultRouting());
    Click(Named(u"ToolBtnFx1"));
    robot.Tick();
    ExpectDefaultShown();
}

TEST_F(RoutingEdit, ASideEndsIt) {
    for (const int side : {0, 1, 0}) {
        BeginEdit();
        Label(1, u"mine");
        Device().State().SwitchAB(static_cast<std::uint8_t>(side));
        robot.Tick();
        ExpectEnded();
        ExpectDefaultShown();
    }
    BeginEdit();
    Device().State().SwitchAB(0);
    Device().State().CopyAB();
    EXPECT_TRUE(IsEditing()) << "nothing was loaded";
}

TEST_F(RoutingEdit, ACopyOfAGroupEndsIt) {
    BeginEdit();
    Device().State().CopyGroup(1, 0);
    robot.Tick();
    ExpectEnded();
}

TEST_F(RoutingEdit, AChoiceFromTheListEndsIt) {
    WriteRouting("a", 2);
    WriteRouting("b", 1);
    Reopen();
    BeginEdit();
    Device().State().ChooseRouting(1, u"b");
    robot.Tick();
    ExpectEnded();
    EXPECT_EQ(Display().Text(), u"b");
    EXPECT_EQ(Display().Item(), 1);
    EXPECT_EQ(VisibleChannels(), 1u);
    BeginEdit();
    Device().State().SelectRouting(0, true);
    robot.Tick();
    ExpectEnded();
    EXPECT_EQ(Display().Text(), u"a");
}

TEST_F(RoutingEdit, UndoAndRedoEndItFirst) {
    auto& fader = dynamic_cast<GUI::CKnob&>(Named(u"Threshold"));
    const auto [x, y] = MiddleOf(fader);
    robot.Drag({x, y}, {x, y + 60});
    const auto dragged = fader.Value();
    ASSERT_LT(dragged, 1.0f);
    window.leftControl = true;
    for (const auto key : {GUI::KeyZ, GUI::KeyY}) {
        BeginEdit();
        Label(1, u"mine");
        robot.Key(key == GUI::KeyZ ? GUI::KeyY : GUI::KeyZ);
        EXPECT_TRUE(IsEditing()) << "there is no such step";
        robot.Key(key);
        EXPECT_EQ(fader.Value(), key == GUI::KeyZ ? 1.0f : dragged);
        robot.Tick();
        ExpectEnded();
        ExpectDefaultShown();
    }
}

TEST_F(RoutingEdit, AStepAboutAPatchEndsItAndTheRoutingStays) {
    ASSERT_TRUE(Gui().ReadPatch(PatchOf(0), 0));
    robot.Tick();
    window.leftControl = true;
    for (const auto key : {GUI::KeyZ, GUI::KeyY}) {
        BeginEdit();
        Label(1, u"mine");
        robot.Key(key);
        robot.Tick();
        ExpectEnded();
        ExpectLoadedShown();
    }
}

TEST_F(RoutingEdit, EndsWithTheWindow) {
    BeginEdit();
    Label(1, u"mine");
    host.calls.clear();
    Close();
    EXPECT_FALSE(IsEditing());
    EXPECT_EQ(host.Count(VST::audioMasterAutomate), 0u);
    Open();
    robot.Tick();
    ExpectEnded();
    ExpectDefaultShown();
}

TEST_F(RoutingEdit, AnInstanceMayEndWithinItAndBeforeTheAnswer) {
    dialogs.answersLater = true;
    BeginEdit();
    Click(EditButton());
    effect.reset();
    dialogs.AnswerNext(RoutingPath("Mine"));
    EXPECT_FALSE(std::filesystem::exists(documents.Routing("Mine.kvt")));
}

// Its button

TEST_F(RoutingEdit, IsHiddenForARoutingOfMidAndSide) {
    for (const auto& [type, isVisible] :
        {std::pair{"<type>mid/side</type>", false}, {"<type>stereo</type>", true},
            {"<type>mid/sides</type>", true}, {"", true}, {"<type>dualmono</type>", true}}) {
        Gui().SetRouting(Document("x", MapOf(2), "M|*|S", type), 0);
        robot.Tick();
        EXPECT_EQ(EditButton().IsVisible(), isVisible) << type;
        robot.Advance(300);
        Click(EditButton());
        EXPECT_EQ(IsEditing(), isVisible) << type;
        robot.Click(110, 5);
    }
    Gui().SetRouting(Document("x", MapOf(2), "M|*|S", "<type>mid/side</type>"), 1);
    robot.Tick();
    EXPECT_TRUE(EditButton().IsVisible()) << "another group's";
    Click(Named(u"ToolBtnFx2"));
    robot.Tick();
    EXPECT_FALSE(EditButton().IsVisible());
}

TEST_F(RoutingEdit, ARoutingThatComesBetweenPressAndClickIsNotEditedUnlessItCanBe) {
    const auto [x, y] = MiddleOf(EditButton());
    robot.Press(x, y);
    Gui().SetRouting(Document("x", MapOf(2), "M|*|S", "<type>mid/side</type>"), 0);
    robot.Release(x, y);
    EXPECT_FALSE(IsEditing());
    EXPECT_EQ(EditButton().Value(), 0.0f);
}

TEST_F(RoutingEdit, APressThatBecomesNoClickChangesNothing) {
    const auto [x, y] = MiddleOf(EditButton());
    const auto expectUnchanged = [this](bool isEditing) {
        robot.Tick();
        EXPECT_EQ(IsEditing(), isEditing);
        EXPECT_EQ(EditButton().Value(), isEditing ? 1.0f : 0.0f);
        EXPECT_TRUE(dialogs.questions.empty());
    };
    for (const bool isEditing : {false, true}) {
        if (isEditing) BeginEdit();
        robot.Press(x, y);
        robot.Press(x, y, GUI::MouseRight);
        robot.Release(x, y, GUI::MouseRight);
        robot.Release(x, y);
        expectUnchanged(isEditing);
        robot.Press(x, y);
        window.client->OnCancel();
        robot.Release(x, y);
        expectUnchanged(isEditing);
    }
}

TEST_F(RoutingEdit, ARightPressOrAWheelOnItDoesNothing) {
    for (const bool isEditing : {false, true}) {
        if (isEditing) BeginEdit();
        Click(EditButton(), GUI::MouseRight);
        Wheel(EditButton(), 1.0f);
        EXPECT_EQ(IsEditing(), isEditing);
        EXPECT_EQ(EditButton().Value(), isEditing ? 1.0f : 0.0f);
    }
    EXPECT_TRUE(dialogs.questions.empty());
}

TEST_F(RoutingEdit, AReleaseElsewhereIsAClick) {
    const auto [x, y] = MiddleOf(EditButton());
    robot.Press(x, y);
    robot.Move(x, y + 300);
    robot.Release(x, y + 300);
    EXPECT_TRUE(IsEditing());
}

// Names

TEST_F(RoutingEdit, ALabelOfAnyKindLeavesTheMapWhole) {
    const Names labels{u"<b>&amp;</name>", u"a||b", u"a|*|b", u"\U0001F3B5", u"</kav_input_routing>", u"",
        std::u16string(10000, u'x'), u"<map>9,-1</map>"};
    for (const auto& label : labels) {
        SCOPED_TRACE(Utils::ToUtf8(label.substr(0, 40)));
        std::filesystem::remove(documents.Routing("Mine.kvt")); // or the next instance begins with it
        Reopen();
        BeginEdit();
        Click(Channel(3), ShiftPress);
        Label(2, label.empty() ? std::u16string(1, u'\b') : label);
        EXPECT_EQ(Channel(2).Text(), label);
        dialogs.answer = RoutingPath("Mine.kvt");
        Click(EditButton());
        robot.Tick();
        const auto text = ReadText(documents.Routing("Mine.kvt"));
        EXPECT_EQ(text, Document("Mine", MapOf(3), "L|*|" + Utils::ToUtf8(label) + "|*|3"));
        EXPECT_EQ(MapOfGroup(0), MapOf(3));
        EXPECT_EQ(VisibleChannels(), 3u);
        ExpectEnded();
        EXPECT_FALSE(Picture().empty());
        if (label.find_first_of(u"<|") == std::u16string::npos) {
            EXPECT_EQ(Channel(2).Text(), label);
            EXPECT_EQ(Channel(3).Text(), u"3");
        }
    }
}

TEST_F(RoutingEdit, AnUnchangedPanelDrawsNothingMeanwhile) {
    BeginEdit();
    robot.Advance(1000);
    renderers.Calls().clear();
    robot.Advance(500);
    EXPECT_EQ(renderers.Calls(), Lines{});
}
