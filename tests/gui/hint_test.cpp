#include "gui/hint.h"

#include "tests/gui/hint_fixture.h"
#include "tests/support/own_renderers.h"

#include <gtest/gtest.h>
#include <limits>
#include <memory>

using namespace KAV;
using namespace KAV::GUI;
using namespace KAV::Tests;

namespace {

class Hint : public CHintTest {};

} // namespace

// When it appears

TEST_F(Hint, BeginsHiddenUnderItsOwnNames) {
    EXPECT_EQ(hint.sVisible.fValue, 0.0f);
    EXPECT_FALSE(hint.IsVisible());
    EXPECT_EQ(hint.sClass, u"Hint");
    EXPECT_EQ(hint.sName, u"Hint");
    EXPECT_EQ(hint.sImage, u"Hint##Sz-1x-1pxSb0.png");
    EXPECT_EQ(hint.piFor, nullptr);
    EXPECT_FALSE(hint.bPending);
}

TEST_F(Hint, AppearsHalfASecondAfterThePointerHasCome) {
    robot.Move(110, 110);
    EXPECT_EQ(hint.piFor, &widget);
    hint.Advance(499);
    EXPECT_FALSE(hint.IsVisible());
    EXPECT_EQ(window.Count("TrackLeave"), 0u);
    hint.Advance(1);
    EXPECT_TRUE(hint.IsVisible());
    EXPECT_FALSE(hint.bPending);
    EXPECT_EQ(window.Count("TrackLeave"), 1u);
}

TEST_F(Hint, TheWaitIsCountedByTheWindowsTicks) {
    robot.Tick();
    robot.Move(110, 110);
    robot.Advance(450);
    EXPECT_FALSE(hint.IsVisible());
    robot.Advance(70);
    EXPECT_TRUE(hint.IsVisible());
}

TEST_F(Hint, MovingOnTheSameWidgetDoesNotBeginTheWaitAnew) {
    robot.Move(110, 110);
    hint.Advance(300);
    robot.Move(120, 120);
    hint.Advance(100);
    hint.HoverChanged(&widget);
    hint.Advance(100);
    EXPECT_TRUE(hint.IsVisible());
    hint.HoverChanged(&widget);
    EXPECT_TRUE(hint.IsVisible());
}

TEST_F(Hint, AnotherWidgetHidesItAndBeginsTheWaitAnew) {
    Show(widget);
    robot.Move(310, 210);
    EXPECT_FALSE(hint.IsVisible());
    EXPECT_EQ(hint.piFor, &other);
    EXPECT_TRUE(hint.bFirst);
    EXPECT_EQ(hint.nWaitMs, 0u);
    hint.Advance(499);
    EXPECT_FALSE(hint.IsVisible());
    hint.Advance(1);
    EXPECT_TRUE(hint.IsVisible());
}

TEST_F(Hint, NoWidgetHidesIt) {
    Show(widget);
    robot.Move(600, 500);
    EXPECT_FALSE(hint.IsVisible());
    EXPECT_EQ(hint.piFor, nullptr);
    EXPECT_FALSE(hint.bPending);
    hint.Advance(CHint::DelayMs);
    EXPECT_FALSE(hint.IsVisible());
}

TEST_F(Hint, LeavingTheWindowHidesIt) {
    Show(widget);
    robot.LeaveWindow();
    EXPECT_FALSE(hint.IsVisible());
    EXPECT_EQ(hint.piFor, nullptr);
}

TEST_F(Hint, LeavingBeforeItAppearsEndsTheWait) {
    robot.Move(110, 110);
    robot.LeaveWindow();
    hint.Advance(CHint::DelayMs);
    EXPECT_FALSE(hint.IsVisible());
}

TEST_F(Hint, NeverAppearsForAWidgetThatWantsNone) {
    widget.bHint = false;
    robot.Move(110, 110);
    EXPECT_EQ(hint.piFor, &widget);
    EXPECT_FALSE(hint.bPending);
    hint.nWaitMs = CHint::DelayMs; // as at a press
    hint.Advance(CHint::DelayMs);
    EXPECT_FALSE(hint.IsVisible());
    hint.PrepareDraw();
    EXPECT_EQ(hint.Text(), u"");
}

TEST_F(Hint, AppearsAtTheNextTickAfterAPress) {
    robot.Move(110, 110);
    hint.nWaitMs = CHint::DelayMs; // as widgets set it when they are pressed
    hint.Advance(1);
    EXPECT_TRUE(hint.IsVisible());
}

TEST_F(Hint, AWaitOfDaysDoesNotBeginAnew) {
    robot.Move(110, 110);
    hint.nWaitMs = 400;
    hint.Advance(std::numeric_limits<std::uint32_t>::max());
    EXPECT_TRUE(hint.IsVisible());
}

TEST_F(Hint, AWidgetThatEndsTakesItsHintAlong) {
    auto passing = std::make_unique<CWidget>(root, Info(u"Passing", 500, 300));
    Show(*passing);
    EXPECT_TRUE(hint.IsVisible());
    passing.reset();
    ASSERT_EQ(hint.piFor, nullptr);
    EXPECT_FALSE(hint.IsVisible());
    hint.PrepareDraw();
}

TEST_F(Hint, AWidgetThatEndsLeavesTheHintOfAnotherAlone) {
    auto passing = std::make_unique<CWidget>(root, Info(u"Passing", 500, 300));
    Show(widget);
    passing.reset();
    EXPECT_EQ(hint.piFor, &widget);
    EXPECT_TRUE(hint.IsVisible());
}

// What it says

TEST_F(Hint, TakesTheTextOfItsWidgetInEachPicture) {
    widget.sHint = u"Gain: 1";
    Show(widget);
    EXPECT_EQ(hint.Text(), u"Gain: 1");
    widget.sHint = u"Gain: 2.5";
    EXPECT_EQ(hint.Text(), u"Gain: 1");
    hint.PrepareDraw();
    EXPECT_EQ(hint.Text(), u"Gain: 2.5");
}

TEST_F(Hint, KeepsItsTextForAWidgetThatWantsNoneAnyMore) {
    Show(widget);
    widget.bHint = false;
    widget.sHint = u"Another text";
    hint.PrepareDraw();
    EXPECT_EQ(hint.Text(), u"Widget");
}

TEST_F(Hint, KeepsItsTextWhileItDisappears) {
    Show(widget);
    robot.Move(310, 210);
    hint.PrepareDraw();
    EXPECT_EQ(hint.Text(), u"Widget");
}

TEST_F(Hint, ANewSizeOfTheEditorClearsItsText) {
    Show(widget);
    root.Resize(1508, 1106);
    EXPECT_EQ(hint.Text(), u"");
    EXPECT_EQ(hint.sW.fTarget, 0.0f);
    EXPECT_EQ(hint.sH.fTarget, 0.0f);
    hint.PrepareDraw();
    EXPECT_EQ(hint.Text(), u"Widget");
}

TEST_F(Hint, ItsFontFollowsTheEditorsSize) {
    hint.fFontSize = 0.013f;
    EXPECT_EQ(hint.FontBasis(), static_cast<float>(Width));
    hint.fFontSize = -0.013f;
    EXPECT_EQ(hint.FontBasis(), static_cast<float>(Height));
}

TEST_F(Hint, IsDrawnAsALabelWithItsPicture) {
    Show(widget);
    hint.DrawOnTop(16);
    EXPECT_EQ(pictures.Count("LoadImage Hint##Sz-1x-1pxSb0.png"), 1u);
    EXPECT_EQ(pictures.Count("Letter Widget 36x10"), 1u);
}

TEST_F(Hint, TakesTheTextBeforeItIsDrawn) {
    robot.Move(110, 110);
    hint.Advance(CHint::DelayMs);
    hint.DrawOnTop(16);
    EXPECT_EQ(hint.Text(), u"Widget");
}

TEST_F(Hint, AsksForAPictureWhenItMoves) {
    const COwnRenderers renderers;
    ASSERT_TRUE(root.Screen().Create());
    root.Show(true);
    Show(widget);
    robot.Advance(1000);
    ASSERT_FALSE(root.Frame().IsRedrawDue());
    hint.PrepareDraw();
    EXPECT_FALSE(root.Frame().IsRedrawDue());
    hint.sX.Jump(static_cast<float>(Width));
    hint.PrepareDraw();
    EXPECT_TRUE(root.Frame().IsRedrawDue());
    root.DestroyGUIWindow();
    root.Screen().Release();
}
