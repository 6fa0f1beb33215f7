// The knobs of the macros: parameters as any other, with the macro's name in their hints.

#include "tests/device_gui/open_macros.h"

using namespace KAV;
using namespace KAV::Tests;

namespace {

class MacroKnob : public OpenMacros {};

} // namespace

TEST_F(MacroKnob, HintIsTheMacrosNameAndTheValueWithItsUnit) {
    EXPECT_EQ(Knob(0).GetText(false), u"Macro 1: 0.0 %");
    Knob(4).SetValue(0.75f, false);
    EXPECT_EQ(Knob(4).GetText(false), u"Macro 5: +50.0 %");
    Knob(4).SetValue(0.0f, false);
    EXPECT_EQ(Knob(4).GetText(false), u"Macro 5: -100.0 %");
}

TEST_F(MacroKnob, ANewNameIsInTheHintAtOnceAndStaysWhenTheValueMoves) {
    EXPECT_EQ(Knob(1).GetText(false), u"Macro 2: 0.0 %");
    Button(1).SetText(u"Push");
    EXPECT_EQ(Knob(1).GetText(false), u"Push: 0.0 %");
    Knob(1).SetValue(1.0f, false);
    EXPECT_EQ(Knob(1).GetText(false), u"Push: +100.0 %");
    EXPECT_EQ(Knob(0).GetText(false), u"Macro 1: 0.0 %");
}

TEST_F(MacroKnob, ANameThatAPatchBringsIsInTheHint) {
    EXPECT_EQ(Knob(2).GetText(false), u"Macro 3: 0.0 %");
    Read("<macro_group_names>Push|*|Calm|*|Hall</macro_group_names>");
    robot.Tick();
    EXPECT_EQ(Knob(2).GetText(false), u"Hall: 0.0 %");
}

TEST_F(MacroKnob, AnEmptyNameLeavesAHintThatBeginsWithTheColon) {
    Button(0).SetText(u"");
    EXPECT_EQ(Knob(0).GetText(false), u": 0.0 %");
}

TEST_F(MacroKnob, AnyNameIsInTheHintAsItIs) {
    for (const std::u16string& name : {std::u16string(u"<b>&amp;</name>"), std::u16string(u"a||b"),
             std::u16string(u"a|*|b"), std::u16string(u"\U0001F50A loud"), std::u16string(10000, u'm')}) {
        Button(3).SetText(name);
        EXPECT_EQ(Knob(3).GetText(false), name + u": 0.0 %");
    }
}

TEST_F(MacroKnob, TheTextOfTheValueIsTheNumberAlone) {
    EXPECT_EQ(Knob(0).GetText(true), u"0.0");
    Button(0).SetText(u"Push");
    Knob(0).SetValue(0.75f, false);
    EXPECT_EQ(Knob(0).GetText(true), u"+50.0");
}

TEST_F(MacroKnob, TheHintIsShownOverTheKnobAndFollowsARename) {
    Point(Knob(0));
    robot.Advance(600);
    EXPECT_EQ(Gui().Hint().Text(), u"Macro 1: 0.0 %");
    Device().State().NameMacro(0, u"Push");
    robot.Advance(50);
    EXPECT_EQ(Gui().Hint().Text(), u"Push: 0.0 %");
}

TEST_F(MacroKnob, ADragIsOneEditOfItsParameterAndOneStepOfHistory) {
    const auto [x, y] = MiddleOf(Knob(0));
    const auto before = Gui().Records();
    robot.Drag({x, y}, {x, y - 50}, 5);
    const auto value = Device().GetParam(24, BaseValue);
    EXPECT_NEAR(value, 0.6f, 1e-6f);
    const auto told = Told();
    ASSERT_GE(told.size(), 3u);
    EXPECT_EQ(told.front().substr(0, 6), "begin ");
    EXPECT_EQ(told.back().substr(0, 4), "end ");
    EXPECT_EQ(Gui().Records(), before + 1);
    Gui().Undo();
    EXPECT_EQ(Device().GetParam(24, BaseValue), 0.5f);
    Gui().Redo();
    EXPECT_EQ(Device().GetParam(24, BaseValue), value);
}

TEST_F(MacroKnob, IsTurnedTypedAndReset) {
    Wheel(Knob(1), 1.0f);
    EXPECT_NEAR(Device().GetParam(25, BaseValue), 0.52f, 1e-6f);
    Wheel(Knob(1), -1.0f, GUI::MouseShift);
    EXPECT_NEAR(Device().GetParam(25, BaseValue), 0.516f, 1e-6f);
    Click(Knob(1), GUI::MouseRight);
    ASSERT_TRUE(window.textBox.has_value());
    EXPECT_TRUE(window.textBox->numbersOnly);
    TypeOver(u"-50");
    EXPECT_EQ(Device().GetParam(25, BaseValue), 0.25f);
    Click(Knob(1), GUI::MouseLeft | GUI::MouseControl);
    EXPECT_EQ(Device().GetParam(25, BaseValue), 0.5f);
}

TEST_F(MacroKnob, FollowsTheHostsAutomation) {
    Device().SetParam(28, 0.9f, Normalized);
    robot.Advance(400);
    EXPECT_EQ(Knob(4).Value(), 0.9f);
    EXPECT_EQ(Knob(4).sValue.fValue, 0.9f);
    EXPECT_EQ(Told(), Lines{});
}
