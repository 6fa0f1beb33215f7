// The small knobs on the panel of a macro: how strongly a control of each group follows it.

#include "tests/device_gui/open_macros.h"

using namespace KAV;
using namespace KAV::Tests;

namespace {

class MacroSens : public OpenMacros {
protected:
    void SetUp() override {
        OpenMacros::SetUp();
        Toggle(0);
    }
};

} // namespace

TEST_F(MacroSens, CarryTheNumbersOfTheirGroups) {
    EXPECT_EQ(Sens(0, 0).Text(), u"1");
    EXPECT_EQ(Sens(0, 3).Text(), u"4");
    EXPECT_EQ(Sens(0, 0).fFontSize, 0.37f);
    EXPECT_EQ(Sens(0, 0).nTextAlign, 4);
    EXPECT_EQ(Sens(0, 0).sImage, u"Knob04((63x8))##Sz-1x-1pxSb0.png");
    EXPECT_EQ(Sens(0, 0).fHintAt, -0.1f);
}

TEST_F(MacroSens, BeginInTheMiddle) {
    for (const auto* const knob : Gui().FindAll<CMacroSens>()) EXPECT_EQ(knob->Value(), 0.5f);
    EXPECT_EQ(Table(0), "") << "opening the panels assigns nothing";
}

TEST_F(MacroSens, HintNamesControlGroupAndPercentage) {
    auto& knob = Sens(1, 1);
    EXPECT_EQ(knob.GetText(false), u"Threshold FX2 Mod: Off");
    const std::vector<std::pair<float, std::u16string>> texts{{0.56f, u"+12%"}, {0.44f, u"-12%"},
        {1.0f, u"+100%"}, {0.0f, u"-100%"}, {0.503f, u"+1%"}, {0.501f, u"+0%"}, {0.5f, u"Off"}};
    for (const auto& [value, text] : texts) {
        knob.SetValue(value, false);
        EXPECT_EQ(knob.GetText(false), u"Threshold FX2 Mod: " + text) << value;
    }
}

TEST_F(MacroSens, TheTextOfTheValueIsTheNumberAlone) {
    auto& knob = Sens(1, 1);
    EXPECT_EQ(knob.GetText(true), u"0");
    knob.SetValue(0.56f, false);
    EXPECT_EQ(knob.GetText(true), u"+12");
    knob.SetValue(0.0f, false);
    EXPECT_EQ(knob.GetText(true), u"-100");
}

TEST_F(MacroSens, TheHintAppearsAboveTheKnob) {
    Point(Sens(3, 0));
    robot.Advance(800);
    EXPECT_EQ(Gui().Hint().Text(), u"Output Ceiling FX1 Mod: Off");
    const auto hint = Gui().Hint().PixelRect();
    EXPECT_LE(hint.nT + hint.nH, Sens(3, 0).PixelRect().nT);
}

TEST_F(MacroSens, ADragStoresTheSensitivityOfItsGroupsControl) {
    const auto [x, y] = MiddleOf(Sens(0, 0));
    robot.Drag({x, y}, {x, y - 125}, 5);
    EXPECT_EQ(Table(0), "32;0.750");
    const auto middle = MiddleOf(Sens(3, 3));
    robot.Drag(middle, {middle.x, middle.y + 100}, 5);
    EXPECT_EQ(Table(0), "32;0.750||337;0.300");
    const auto release = MiddleOf(Sens(2, 1));
    robot.Drag(release, {release.x, release.y - 50}, 5, GUI::MouseLeft | GUI::MouseShift);
    EXPECT_EQ(Table(0), "32;0.750||337;0.300||136;0.520") << "a fifth of the way";
    for (std::size_t macro = 1; macro < 5; ++macro) EXPECT_EQ(Table(macro), "") << macro;
}

TEST_F(MacroSens, TheWheelTurnsIt) {
    Wheel(Sens(1, 2), 1.0f);
    EXPECT_EQ(Table(0), "233;0.520");
    Wheel(Sens(1, 2), -2.0f);
    EXPECT_EQ(Table(0), "233;0.480");
    Wheel(Sens(1, 2), -1.0f, GUI::MouseShift);
    EXPECT_EQ(Table(0), "233;0.476");
}

TEST_F(MacroSens, ADoubleClickOrControlTurnsItOff) {
    for (const std::uint32_t flags : {GUI::MouseDouble, GUI::MouseControl}) {
        Sens(1, 0).SetValue(0.9f, true);
        EXPECT_EQ(Table(0), "33;0.900");
        Click(Sens(1, 0), GUI::MouseLeft | flags);
        EXPECT_EQ(Sens(1, 0).Value(), 0.5f);
        EXPECT_EQ(Table(0), "");
    }
}

TEST_F(MacroSens, ATypedNumberIsThePercentageThatIsShown) {
    const std::vector<std::pair<const char16_t*, float>> typed{{u"12", 0.56f}, {u"250", 1.0f},
        {u"-50", 0.25f}, {u"100", 1.0f}, {u"-1000", 0.0f}, {u"12.5", 0.5625f}, {u"-100", 0.0f}, {u"0", 0.5f}};
    for (const auto& [text, value] : typed) {
        Click(Sens(2, 0), GUI::MouseRight);
        ASSERT_TRUE(window.textBox.has_value());
        EXPECT_TRUE(window.textBox->numbersOnly);
        EXPECT_EQ(window.textBox->text, Sens(2, 0).GetText(true));
        TypeOver(text);
        EXPECT_EQ(Sens(2, 0).Value(), value) << Utils::ToUtf8(text);
        EXPECT_EQ(Device().Sensitivity(0, 36), value) << Utils::ToUtf8(text);
    }
}

TEST_F(MacroSens, EnterOnTheNumberThatIsShownLeavesIt) {
    Sens(2, 0).SetValue(0.56f, false);
    Click(Sens(2, 0), GUI::MouseRight);
    robot.Enter();
    EXPECT_EQ(Sens(2, 0).Value(), 0.56f);
    Sens(2, 0).SetValue(0.5f, false);
    Click(Sens(2, 0), GUI::MouseRight);
    robot.Enter();
    EXPECT_EQ(Sens(2, 0).Value(), 0.5f);
    EXPECT_EQ(Table(0), "");
}

TEST_F(MacroSens, APressThatChangesNothingTakesNoSlot) {
    Click(Sens(1, 0), GUI::MouseLeft | GUI::MouseControl);
    Click(Sens(1, 0));
    EXPECT_EQ(Table(0), "");
}

TEST_F(MacroSens, NeitherTheHostNorTheHistoryHearsOfIt) {
    const auto before = Gui().Records();
    const auto [x, y] = MiddleOf(Sens(0, 0));
    robot.Drag({x, y}, {x, y - 125}, 5);
    Wheel(Sens(0, 1), 1.0f);
    Click(Sens(0, 2), GUI::MouseRight);
    TypeOver(u"50");
    EXPECT_EQ(Told(), Lines{});
    EXPECT_EQ(Gui().Records(), before);
    EXPECT_EQ(Device().GetParam(32, Normalized), 1.0f);
}

// The colours are written over the white picture: one for what follows, one for what goes against the macro.
TEST_F(MacroSens, TurnsItsPictureAndColourWithTheDirection) {
    const auto rect = Sens(0, 0).PixelRect();
    const auto place = " to " + std::to_string(rect.nL) + "," + std::to_string(rect.nT) + " 12x12";
    const auto drawOf = [&](float value) {
        Sens(0, 0).SetValue(value, false);
        std::string draws;
        for (const auto& line : Picture()) {
            const auto at = line.find(place);
            if (at == std::string::npos) continue;
            const auto look = line.find_first_of("cs", at); // a colour, or a scale
            draws += look == std::string::npos ? " plain;" : " " + line.substr(look) + ";";
        }
        return draws;
    };
    EXPECT_EQ(drawOf(0.75f), " colour FFA7CDDF scale -1,-1,1; plain;") << "then the number, upright";
    EXPECT_EQ(drawOf(0.25f), " colour FFFF8E7B; plain;");
    EXPECT_EQ(drawOf(0.5f), " colour FFA7CDDF scale -1,-1,1; plain;");
    EXPECT_EQ(drawOf(0.499f), " colour FFFF8E7B; plain;");
    Point(Sens(0, 0));
    robot.Advance(50);
    EXPECT_EQ(drawOf(0.6f), " colour FFA7CDDF scale -1,-1,1; plain;") << "under the pointer as well";
    EXPECT_EQ(Sens(0, 0).nColorHover, Sens(0, 0).nColor);
}

TEST_F(MacroSens, ShowsAtOnceWhatItIsSetTo) {
    Sens(0, 0).SetValue(1.0f, false);
    EXPECT_EQ(Sens(0, 0).sValue.fValue, 1.0f);
}

TEST_F(MacroSens, TheMacroMovesTheControlByItsSensitivity) {
    Device().SetParam(33, 0.5f, Normalized);
    Sens(1, 0).SetValue(0.75f, true);
    const auto [x, y] = MiddleOf(Knob(0));
    robot.Drag({x, y}, {x, y - 125}, 5); // to 0.75: (0.75 - 0.5) x 4 x (0.75 - 0.5) = 0.25
    EXPECT_NEAR(Device().GetParam(33, Normalized), 0.75f, 1e-6f);
    EXPECT_EQ(Device().GetParam(33, Normalized | BaseValue), 0.5f);
    robot.Advance(400);
    auto& fader = dynamic_cast<GUI::CKnob&>(Named(u"Threshold"));
    EXPECT_NEAR(fader.Value(), 0.75f, 1e-6f) << "the fader shows what is heard";
}

TEST_F(MacroSens, AChangeTakesEffectWithTheMacrosNextMove) {
    Device().SetParam(33, 0.5f, Normalized);
    Device().SetParam(24, 0.75f, Normalized);
    Sens(1, 0).SetValue(0.75f, true);
    EXPECT_EQ(Device().GetParam(33, Normalized), 0.5f);
    Device().SetParam(24, 1.0f, Normalized); // 0.5 x 4 x 0.25
    EXPECT_EQ(Device().GetParam(33, Normalized), 1.0f);
    Sens(1, 0).SetValue(0.5f, true);
    Device().SetParam(24, 0.5f, Normalized);
    EXPECT_EQ(Device().GetParam(33, Normalized), 1.0f) << "what no longer follows stays where it is";
}

TEST_F(MacroSens, TheGroupThatIsShownDoesNotMatter) {
    Click(Named(u"ToolBtnFx3"));
    robot.Advance(300);
    Sens(1, 0).SetValue(0.75f, true);
    Sens(1, 2).SetValue(0.25f, true);
    EXPECT_EQ(Table(0), "33;0.750||233;0.250");
}

TEST_F(MacroSens, APatchThatIsLoadedIsShownAtTheNextFrame) {
    Sens(1, 0).SetValue(0.9f, true);
    Read("<multi_fx>true</multi_fx>\r\n<macro group=\"0\">132;0.200||337;0.800</macro>");
    robot.Tick();
    EXPECT_EQ(Sens(1, 0).Value(), 0.5f);
    EXPECT_EQ(Sens(0, 1).Value(), 0.2f);
    EXPECT_EQ(Sens(3, 3).Value(), 0.8f);
    EXPECT_EQ(Table(0), "132;0.200||337;0.800") << "showing it writes nothing back";
}

TEST_F(MacroSens, APatchThatDiffersInNothingElseIsShown) {
    const auto before = Chunk(true);
    Sens(1, 0).SetValue(0.9f, true);
    robot.Tick();
    SetChunk(before, true);
    robot.Tick();
    EXPECT_EQ(Sens(1, 0).Value(), 0.5f);
}

TEST_F(MacroSens, AProjectThatIsLoadedWhileTheEditorIsClosedIsShown) {
    auto chunk = Chunk(false);
    const std::string empty = "<macro group=\"0\">";
    chunk.insert(chunk.find(empty) + empty.size(), "33;0.750");
    Close();
    SetChunk(chunk, false);
    Open();
    robot.Tick();
    EXPECT_EQ(Sens(1, 0).Value(), 0.75f);
}

TEST_F(MacroSens, TheTwoSidesHaveSensitivitiesOfTheirOwn) {
    Sens(1, 0).SetValue(0.9f, true);
    auto& state = Device().State();
    state.SwitchAB(0); // a copy of the present side, the first time
    Sens(1, 0).SetValue(0.2f, true);
    state.SwitchAB(1);
    robot.Tick();
    EXPECT_EQ(Sens(1, 0).Value(), 0.9f);
    EXPECT_EQ(Table(0), "33;0.900");
    state.SwitchAB(0);
    robot.Tick();
    EXPECT_EQ(Sens(1, 0).Value(), 0.2f);
}

TEST_F(MacroSens, UndoOfALoadBringsTheSensitivitiesBack) {
    Sens(1, 0).SetValue(0.9f, true);
    Read("<multi_fx>true</multi_fx>\r\n<macro group=\"0\">33;0.200</macro>");
    robot.Tick();
    EXPECT_EQ(Sens(1, 0).Value(), 0.2f);
    Gui().Undo();
    robot.Tick();
    EXPECT_EQ(Sens(1, 0).Value(), 0.9f);
    EXPECT_EQ(Table(0), "33;0.900");
    Gui().Redo();
    robot.Tick();
    EXPECT_EQ(Sens(1, 0).Value(), 0.2f);
}

TEST_F(MacroSens, HiddenOnesShowTheTableWhenTheyOpen) {
    Toggle(0);
    Device().AssignMacro(0, 33, 0.3f);
    Toggle(0);
    EXPECT_EQ(Sens(1, 0).Value(), 0.3f);
    EXPECT_EQ(Table(0), "33;0.300");
}

TEST_F(MacroSens, OneThatFindsNoFreeSlotIsOffAtTheNextOpening) {
    for (std::int32_t slot = 0; slot < static_cast<std::int32_t>(CMacro::Slots); ++slot)
        Device().AssignMacro(0, 1000 + slot, 0.9f);
    Sens(1, 0).SetValue(0.75f, true);
    EXPECT_EQ(Sens(1, 0).Value(), 0.75f) << "in the hand it follows";
    Toggle(0);
    Toggle(0);
    EXPECT_EQ(Sens(1, 0).GetText(false), u"Threshold FX1 Mod: Off");
}

TEST_F(MacroSens, ASavedProjectBringsThemToAnotherInstance) {
    Sens(1, 0).SetValue(0.75f, true);
    Sens(2, 3).SetValue(0.125f, true);
    const auto project = Chunk(false);
    Reopen();
    SetChunk(project, false);
    Toggle(0);
    EXPECT_EQ(Sens(1, 0).Value(), 0.75f);
    EXPECT_EQ(Sens(2, 3).Value(), 0.125f);
}
