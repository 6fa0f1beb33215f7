#include "gui/knob.h"

#include "tests/gui/doubled_editor.h"

#include <memory>

using namespace KAV;
using namespace KAV::GUI;
using namespace KAV::Tests;

namespace {

class Knob : public DoubledEditor {
protected:
    CKnob knob{root, Info(5, 0.5f)};

    static SWidgetInfo Ranged(float minimum, float maximum, float value) {
        auto info = Info(6, value);
        info.fMin = minimum;
        info.fMax = maximum;
        return info;
    }
};

} // namespace

// Drags

TEST_F(Knob, ADragIsOneEditAndOneStepOfHistory) {
    robot.Drag({MidX, MidY}, {MidX, MidY - 100}, 4);
    EXPECT_EQ(Told(), (Lines{"begin 5", "5 = 0.550", "5 = 0.600", "5 = 0.650", "5 = 0.700", "end 5"}));
    EXPECT_EQ(root.Records(), 1u);
    root.Undo();
    EXPECT_EQ(knob.Value(), 0.5f);
    root.Redo();
    EXPECT_NEAR(static_cast<double>(knob.Value()), 0.7, 1e-6);
}

TEST_F(Knob, TakesAQuarterOfTheWayInFineModeAndMayChangeModeInADrag) {
    robot.Press(MidX, MidY);
    robot.Move(MidX, MidY - 50, MouseShift);
    EXPECT_NEAR(static_cast<double>(knob.Value()), 0.52, 1e-6);
    robot.Move(MidX, MidY - 50);
    EXPECT_NEAR(static_cast<double>(knob.Value()), 0.52, 1e-6) << "no jump";
    robot.Move(MidX, MidY);
    EXPECT_NEAR(static_cast<double>(knob.Value()), 0.42, 1e-6);
    robot.Release(MidX, MidY);
}

TEST_F(Knob, SidewaysMovesDoNothing) {
    robot.Drag({MidX, MidY}, {MidX + 300, MidY});
    EXPECT_EQ(Told(), (Lines{"begin 5", "end 5"}));
    knob.bHorizontal = true;
    robot.Advance(1000); // no double click
    robot.Drag({MidX, MidY}, {MidX + 50, MidY}, 1);
    EXPECT_EQ(knob.Value(), 0.6f);
}

TEST_F(Knob, NeedsAsManyPixelsAsItsRecordSays) {
    auto info = Info(6, 0.5f);
    info.fX = 300.0f;
    info.nDragPx = 100;
    CKnob quick(root, info);
    robot.Drag({320, MidY}, {320, MidY - 20}, 1);
    EXPECT_NEAR(static_cast<double>(quick.Value()), 0.7, 1e-6);
    EXPECT_EQ(SWidgetInfo{}.nDragPx, 500u);
}

TEST_F(Knob, FollowsTheHandAtOnceAndAnimatesAfterwards) {
    knob.sValue.nRiseMs = 250;
    knob.sValue.nFallMs = 350;
    robot.Press(MidX, MidY);
    robot.Move(MidX, MidY - 50);
    EXPECT_EQ(knob.GetDrawValue(), knob.Value());
    EXPECT_EQ(knob.sValue.nRiseMs, 250u);
    EXPECT_EQ(knob.sValue.nFallMs, 350u);
    robot.Release(MidX, MidY);
    knob.SetFromHost(1.0f);
    EXPECT_NE(knob.GetDrawValue(), 1.0f);
    EXPECT_EQ(knob.sValue.pfnEase, &OvershootHeld);
}

TEST_F(Knob, InTheHandIgnoresTheDevice) {
    robot.Press(MidX, MidY);
    knob.SetFromHost(0.125f);
    EXPECT_EQ(knob.Value(), 0.5f);
    robot.Release(MidX, MidY);
    knob.SetFromHost(0.125f);
    EXPECT_EQ(knob.Value(), 0.125f);
    EXPECT_EQ(Told(), (Lines{"begin 5", "end 5"}));
}

TEST_F(Knob, WithoutAParameterIgnoresTheDeviceAndMakesNoEdit) {
    auto info = Info(-1, 0.5f);
    info.fX = 300.0f;
    CKnob unbound(root, info);
    unbound.SetFromHost(0.25f);
    EXPECT_EQ(unbound.Value(), 0.5f);
    robot.Drag({320, MidY}, {320, MidY - 50}, 1);
    robot.Wheel(1.0f);
    unbound.SetPlain(0.25f, true);
    for (const auto& line : Told()) EXPECT_TRUE(line.starts_with("-1 = ")) << line;
    EXPECT_EQ(root.Records(), 0u);
}

TEST_F(Knob, OfParameter0MakesEdits) {
    auto info = Info(0, 0.5f);
    info.fX = 300.0f;
    CKnob first(root, info);
    robot.Drag({320, MidY}, {320, MidY - 50}, 1);
    EXPECT_EQ(Told(), (Lines{"begin 0", "0 = 0.600", "end 0"}));
    EXPECT_EQ(root.Records(), 1u);
    first.SetFromHost(0.25f);
    EXPECT_EQ(first.Value(), 0.25f);
}

TEST_F(Knob, ControlOrADoubleClickResetsAndBeginsADrag) {
    knob.SetDefault(0.75f);
    robot.Press(MidX, MidY, MouseLeft | MouseControl);
    EXPECT_EQ(Told(), (Lines{"begin 5", "5 = 0.750"}));
    EXPECT_EQ(root.Records(), 1u);
    robot.Move(MidX, MidY + 50);
    EXPECT_NEAR(static_cast<double>(knob.Value()), 0.65, 1e-6) << "off the default again";
    robot.Release(MidX, MidY);
    EXPECT_EQ(root.Records(), 2u);
    Told();
    robot.Advance(2000);
    robot.Click(MidX, MidY);
    robot.Press(MidX, MidY);
    EXPECT_EQ(knob.Value(), 0.75f);
    robot.Release(MidX, MidY);
    EXPECT_EQ(Told(), (Lines{"begin 5", "end 5", "begin 5", "5 = 0.750", "end 5"}));
}

TEST_F(Knob, ShowsItsHintAtOnceInADrag) {
    root.Hint().nWaitMs = 0;
    robot.Press(MidX, MidY);
    EXPECT_EQ(root.Hint().nWaitMs, 500u);
    EXPECT_EQ(knob.nGrabX, 20);
    EXPECT_EQ(knob.nGrabY, 10);
    robot.Release(MidX, MidY);
}

TEST_F(Knob, EndsItsDragWhicheverWayItLosesThePointer) {
    const auto dragsOn = [&] {
        Told();
        robot.Advance(1000); // so that the next press is no double click
        robot.Move(MidX, MidY - 50);
        return knob.bDragging || !Told().empty();
    };
    robot.Press(MidX, MidY);
    robot.Release(MidX, MidY, MouseRight);
    EXPECT_EQ(Told(), (Lines{"begin 5", "end 5"})) << "the release of another button";
    EXPECT_FALSE(dragsOn());
    robot.Press(MidX, MidY);
    robot.Press(500, 300);
    EXPECT_EQ(Told(), (Lines{"begin 5", "end 5"})) << "a press elsewhere";
    EXPECT_FALSE(dragsOn());
    robot.Press(MidX, MidY);
    window.client->OnCancel();
    EXPECT_EQ(Told(), (Lines{"begin 5", "end 5"}));
    EXPECT_FALSE(dragsOn());
    robot.Press(MidX, MidY);
    root.Show(false);
    EXPECT_EQ(Told(), (Lines{"begin 5", "end 5"})) << "a hidden window";
    root.Show(true);
    robot.Advance(1000);
    robot.Press(MidX, MidY);
    knob.OnCaptureLost();
    knob.OnCaptureLost();
    EXPECT_EQ(Told(), (Lines{"begin 5", "end 5"})) << "once";
}

TEST_F(Knob, APressOnOneThatIsDraggedEndsTheOldDragFirst) {
    knob.OnMouseDown(MidX, MidY, MouseLeft);
    knob.OnMouseDown(MidX, MidY, MouseLeft);
    EXPECT_EQ(Told(), (Lines{"begin 5", "end 5", "begin 5"}));
    knob.OnMouseDown(MidX, MidY, MouseRight);
    EXPECT_EQ(Told(), Lines{"end 5"});
    EXPECT_FALSE(knob.bDragging);
}

TEST_F(Knob, ThatEndsInADragEndsTheEdit) {
    {
        CKnob gone(root, Info(9));
        gone.OnMouseDown(MidX, MidY, MouseLeft);
    }
    EXPECT_EQ(Told(), (Lines{"begin 9", "end 9"}));
}

TEST_F(Knob, AStepOfAKnobThatIsGoneDoesNothing) {
    auto gone = std::make_unique<CKnob>(root, Info(9));
    gone->SetValue(0.5f, true);
    gone.reset();
    Told();
    root.Undo();
    root.Redo();
    EXPECT_TRUE(Told().empty());
    knob.SetValue(0.75f, true);
    EXPECT_EQ(root.Records(), 2u);
}

// The right button, the wheel, typing

TEST_F(Knob, ARightClickOpensTheTypedEntry) {
    robot.Click(MidX, MidY, MouseRight);
    ASSERT_TRUE(window.textBox);
    EXPECT_EQ(window.textBox->text, u"0.5");
    EXPECT_TRUE(window.textBox->numbersOnly);
    EXPECT_TRUE(Told().empty());
    robot.Type(u"0.25");
    robot.Enter();
    EXPECT_EQ(Told(), (Lines{"begin 5", "5 = 0.250", "end 5"}));
    EXPECT_EQ(root.Records(), 1u);
}

TEST_F(Knob, ATypedValueIsPlainAndLimited) {
    auto info = Ranged(-20.0f, 20.0f, 0.5f);
    CKnob gain(root, info);
    gain.SetPlain(-10.0f, true);
    EXPECT_EQ(gain.Value(), 0.25f);
    EXPECT_EQ(gain.GetPlain(), -10.0f);
    gain.SetPlain(1000.0f, true);
    EXPECT_EQ(gain.Value(), 1.0f);
    EXPECT_EQ(gain.GetPlain(), 20.0f);
    gain.SetPlain(-1000.0f, true);
    EXPECT_EQ(gain.GetPlain(), -20.0f);
    EXPECT_EQ(root.Records(), 3u);
}

TEST_F(Knob, WithAListARightClickDoesNothing) {
    auto info = Info(6, 0.0f, u"a||b||c");
    info.fX = 300.0f;
    CKnob listed(root, info);
    robot.Click(320, MidY, MouseRight);
    EXPECT_FALSE(window.textBox);
    EXPECT_TRUE(Told().empty());
}

TEST_F(Knob, ANotchOfTheWheelIsAnEditOfAFiftieth) {
    knob.sValue.nRiseMs = 250;
    robot.Move(MidX, MidY);
    robot.Wheel(1.0f);
    EXPECT_EQ(Told(), (Lines{"begin 5", "5 = 0.520", "end 5"}));
    EXPECT_EQ(knob.GetDrawValue(), knob.Value());
    EXPECT_EQ(knob.sValue.nRiseMs, 250u);
    robot.Wheel(-2.0f);
    EXPECT_EQ(Told(), (Lines{"begin 5", "5 = 0.480", "end 5"}));
    robot.Wheel(1.0f, MouseShift);
    EXPECT_EQ(Told(), (Lines{"begin 5", "5 = 0.484", "end 5"}));
    EXPECT_EQ(root.Records(), 3u);
}

TEST_F(Knob, WithAListANotchIsAnItemAndUpIsTheNext) {
    auto info = Info(6, 0.0f, u"a||b||c");
    info.fX = 300.0f;
    CKnob listed(root, info);
    robot.Move(320, MidY);
    robot.Wheel(3.0f);
    EXPECT_EQ(Told(), (Lines{"begin 6", "6 = 0.500", "end 6"}));
    robot.Wheel(-1.0f);
    EXPECT_EQ(Told(), (Lines{"begin 6", "6 = 0.000", "end 6"}));
    robot.Wheel(-1.0f);
    EXPECT_EQ(Told(), (Lines{"begin 6", "end 6"})) << "at the end";
    EXPECT_EQ(root.Records(), 2u);
}

TEST_F(Knob, WheelAndTypingWithinADragArePartOfItsEdit) {
    robot.Press(MidX, MidY);
    robot.Wheel(1.0f);
    knob.SetPlain(0.25f, true);
    robot.Release(MidX, MidY);
    EXPECT_EQ(Told(), (Lines{"begin 5", "5 = 0.520", "5 = 0.250", "end 5"}));
}

TEST_F(Knob, ReactsToThePointerUnlessItIsPassive) {
    EXPECT_TRUE(knob.bInteractive);
    auto info = Info(6);
    info.bPassive = true;
    EXPECT_FALSE(CKnob(root, info).bInteractive);
}

TEST_F(Knob, ItsRecordGivesEveryFieldItsDefault) {
    auto info = Info(6, 0.5f);
    info.fDefault = 0.25f;
    info.nWheelPx = 100;
    info.fTravelFrom = 0.125f;
    info.fTravelTo = 0.75f;
    const CKnob made(root, info);
    EXPECT_EQ(made.fDefault, 0.25f);
    EXPECT_EQ(made.nWheelPx, 100u);
    EXPECT_EQ(made.fTravelFrom, 0.125f);
    EXPECT_EQ(made.fTravelTo, 0.75f);
    EXPECT_FALSE(made.bPointerHidden);
    EXPECT_FALSE(made.bHorizontal);
    EXPECT_EQ(made.fTextFor, 0.51f);
}

TEST_F(Knob, SoaksFromEndToEndAndBackToItsDefault) {
    knob.SetDefault(0.25f);
    const auto begin = Utils::TickMs();
    knob.SoakTest();
    EXPECT_EQ(Utils::TickMs() - begin, 300u);
    const auto told = Told();
    ASSERT_GE(told.size(), 6u);
    EXPECT_EQ(told.front(), "begin 5");
    EXPECT_NE(std::find(told.begin(), told.end(), "5 = 1.000"), told.end());
    EXPECT_NE(std::find(told.begin(), told.end(), "5 = 0.000"), told.end());
    EXPECT_EQ(Lines(told.end() - 4, told.end()), (Lines{"end 5", "begin 5", "5 = 0.250", "end 5"}));
}
