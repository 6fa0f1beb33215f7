// What a person does to buttons.

#include "gui/button.h"
#include "gui/button_mom.h"
#include "tests/gui/clicked_editor.h"

#include <memory>

using namespace KAV;
using namespace KAV::GUI;
using namespace KAV::Tests;

namespace {

using ButtonPress = ClickedEditor;

} // namespace

TEST_F(ButtonPress, TellsTheHostTheOldStateFirst) {
    CButton button(root, Info(5));
    robot.Press(MidX, MidY);
    EXPECT_EQ(Told(), (Lines{"begin 5", "5 = 0.000", "end 5", "begin 5", "5 = 1.000", "end 5"}));
    EXPECT_EQ(root.Hint().nWaitMs, 500u);
    robot.Release(MidX, MidY);
    EXPECT_TRUE(Told().empty());
    robot.Click(MidX, MidY);
    EXPECT_EQ(Told(), (Lines{"begin 5", "5 = 1.000", "end 5", "begin 5", "5 = 0.000", "end 5"}));
    EXPECT_EQ(root.Records(), 0u) << "presses leave no step";
}

TEST_F(ButtonPress, OnHalfwayTurnsOff) {
    CButton button(root, Info(5, 0.25f));
    robot.Click(MidX, MidY);
    EXPECT_EQ(button.Value(), 0.0f);
}

TEST_F(ButtonPress, InARadioGroupTellsTheStateOfTheOneThatIsOn) {
    CButton first(root, At(100, 1, 1.0f, 7));
    CButton second(root, At(200, 2, 0.0f, 7));
    robot.Click(220, MidY);
    EXPECT_EQ(Told(), (Lines{"begin 1", "1 = 1.000", "end 1", "begin 2", "1 = 0.000", "2 = 1.000", "end 2"}));
}

TEST_F(ButtonPress, InARadioGroupWithNoneOnTellsItsOwnState) {
    CButton first(root, At(100, 1, 0.0f, 7));
    CButton second(root, At(200, 2, 0.0f, 7));
    robot.Click(220, MidY);
    EXPECT_EQ(Told(), (Lines{"begin 2", "2 = 0.000", "end 2", "begin 2", "2 = 1.000", "end 2"}));
}

TEST_F(ButtonPress, TheOneThatIsOnInItsRadioGroupStaysOn) {
    CButton first(root, At(100, 1, 1.0f, 7));
    first.piOnClick = &clicks;
    root.Hint().nWaitMs = 0;
    robot.Click(MidX, MidY);
    EXPECT_EQ(first.Value(), 1.0f);
    EXPECT_TRUE(Told().empty());
    EXPECT_EQ(root.Hint().nWaitMs, 0u);
    EXPECT_EQ(clicks.buttons.size(), 1u) << "it is clicked nevertheless";
}

TEST_F(ButtonPress, WithoutAParameterMakesNoEdit) {
    CButton button(root, Info(-1));
    robot.Click(MidX, MidY);
    EXPECT_EQ(Told(), Lines{"-1 = 1.000"});
    CButton ofParameter0(root, At(200, 0));
    robot.Click(220, MidY);
    EXPECT_EQ(Told(), (Lines{"begin 0", "0 = 0.000", "end 0", "begin 0", "0 = 1.000", "end 0"}));
}

TEST_F(ButtonPress, AClickIsTheReleaseOfTheLeftButtonWhereverThePointerIs) {
    CButton button(root, Info(5));
    button.piOnClick = &clicks;
    robot.Press(MidX, MidY);
    EXPECT_TRUE(clicks.buttons.empty());
    robot.Release(500, 300);
    EXPECT_EQ(clicks.buttons, std::vector<CButton*>{&button});
}

TEST_F(ButtonPress, ARightClickIsNone) {
    CButton button(root, Info(5));
    button.piOnClick = &clicks;
    robot.Click(MidX, MidY, MouseRight);
    EXPECT_EQ(button.Value(), 0.0f);
    EXPECT_TRUE(Told().empty());
    robot.Press(MidX, MidY);
    robot.Release(MidX, MidY, MouseRight);
    robot.Press(MidX, MidY, MouseRight);
    button.OnMouseUp(MidX, MidY, MouseLeft);
    EXPECT_TRUE(clicks.buttons.empty()) << "the left button went up elsewhere";
}

TEST_F(ButtonPress, AClickIsHeardOfOnlyWhileTheButtonIsInteractive) {
    CButton button(root, Info(5));
    button.piOnClick = &clicks;
    robot.Press(MidX, MidY);
    button.SetInteractive(false);
    robot.Release(MidX, MidY);
    EXPECT_TRUE(clicks.buttons.empty());
    button.OnClick();
    EXPECT_TRUE(clicks.buttons.empty());
}

TEST_F(ButtonPress, AClickMayEndTheButton) {
    auto button = std::make_unique<CButtonMom>(root, Info(5));
    button->piOnClick = &clicks;
    clicks.during = [&] { button.reset(); };
    robot.Click(MidX, MidY);
    EXPECT_EQ(button, nullptr);
    robot.Click(MidX, MidY);
    EXPECT_EQ(clicks.buttons.size(), 1u);
}

TEST_F(ButtonPress, ReactsToThePointerUnlessItIsPassive) {
    EXPECT_TRUE(CButton(root, Info(5)).bInteractive);
    auto info = Info(5);
    info.bPassive = true;
    EXPECT_FALSE(CButton(root, info).bInteractive);
    EXPECT_EQ(CButton(root, info).fBumpY, 0.125f);
}

TEST_F(ButtonPress, ItsTextIsItsStateOrItsItem) {
    CButton button(root, Info(5));
    EXPECT_EQ(button.GetText(true), u"Off");
    EXPECT_EQ(button.GetText(false), u"Name: Off");
    button.SetValue(0.5f, false);
    EXPECT_EQ(button.GetText(true), u"On");
    auto info = Info(5, 1.0f, u"a||b");
    EXPECT_EQ(CButton(root, info).GetText(false), u"Name: b");
    info.sName.clear();
    EXPECT_EQ(CButton(root, info).GetText(true), u"");
}

TEST_F(ButtonPress, SoaksByAClickForEachItem) {
    CButton button(root, Info(5, 0.0f, u"a||b||c"));
    button.piOnClick = &clicks;
    const auto begin = Utils::TickMs();
    button.SoakTest();
    EXPECT_EQ(Utils::TickMs() - begin, 600u);
    EXPECT_EQ(clicks.buttons.size(), 3u);
    EXPECT_EQ(button.Value(), 1.0f);
}
