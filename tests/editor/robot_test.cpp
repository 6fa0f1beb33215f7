// Each gesture of a user once, on the delivered library and a real screen: what the state holds then, what
// the host has heard in which order, and whether the picture followed.

#include "tests/editor/robot.h"

#include <cmath>

namespace KAV::Tests {

namespace {

namespace fs = std::filesystem;

class RobotAtALargeScreen : public Robot {
protected:
    RobotAtALargeScreen() : Robot(CHostScreen::ESpace::Large) {}
};

} // namespace

// Values

TEST_F(Robot, DragsAFader) {
    const auto before = Still();
    Drag(MiddleOf("Threshold"), 0, 60);
    EXPECT_EQ(Heard(), EditOf("Threshold"));
    EXPECT_LT(Value(33), 1.0);
    EXPECT_NE(Still(), before);
    MoveTo(MiddleOf("Threshold"));
    Click();
    Click(); // a double click returns it
    EXPECT_TRUE(HasValue(33, 1.0));
}

TEST_F(Robot, TurnsAMainGainByWheelAndNumber) {
    Turn("Main Output Gain", 1);
    EXPECT_EQ(Heard(), EditOf("Main Output"));
    EXPECT_GT(Value(29), 0.5);
    Click("Main Output Gain", Right);
    Type({'-', '1', '2', EKey::Return});
    EXPECT_TRUE(HasValue(29, 0.25));
    EXPECT_EQ(Heard(), EditOf("Main Output"));
}

TEST_F(Robot, TypesAReleaseTimeAndLocksIt) {
    Click("Release", Right);
    Type({'1', '0', '0', EKey::Return});
    EXPECT_TRUE(Until([this] { return std::abs(Value(36) - 0.8) < 1e-4; })) << Value(36);
    Heard();
    const auto unlocked = Still();
    Click("Auto Release");
    EXPECT_TRUE(HasValue(35, 1.0));
    EXPECT_EQ(Heard(2), PressOf("Auto Release"));
    EXPECT_NE(Still(), unlocked);
    Drag(MiddleOf("Release"), 0, 60);
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
    Turn("Oversampling", -1); // the wheel, towards the end
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
    Heard();
    const auto first = Still();
    Click("ToolBtnFx2");
    EXPECT_NE(Still(), first);
    Heard(2); // the one group goes off, the other one on
    Drag(MiddleOf("Threshold"), 0, 30);
    EXPECT_EQ(Heard(), "b5 v5 e5") << "the threshold of group 2";
    EXPECT_LT(Value(133), 1.0);
}

TEST_F(Robot, SolosAndMutesGroups) {
    const auto before = Still();
    ShiftClick("ToolBtnFx1");
    EXPECT_TRUE(HasValue(22, 1.0));
    EXPECT_NE(Still(), before);
    Click("ToolBtnFx1");
    Click();
    EXPECT_TRUE(HasValue(21, 1.0));
    EXPECT_TRUE(HasValue(22, 0.0));
}

TEST_F(Robot, CopiesAGroup) {
    Drag(MiddleOf("Threshold"), 0, 60);
    Heard();
    Click("ToolBtnFxCopy");
    Click("ToolBtnFx3");
    EXPECT_TRUE(Until([this] { return Value(233) == Value(33) && Value(233) < 1.0; }));
}

TEST_F(Robot, NamesAGroupAMacroAndAChannel) {
    const auto before = Still();
    Click("ToolBtnFx1", Right);
    Type({'b', 'u', 's', EKey::Return});
    EXPECT_TRUE(StateHas("<fx_names>bus|*|"));
    MoveTo({290, 464}); // the button of macro 2
    Click(Right);
    Type({'a', 'i', 'r', EKey::Return});
    EXPECT_TRUE(StateHas("|*|air|*|"));
    EXPECT_NE(Still(), before);
}

// Routings

TEST_F(Robot, ChoosesARoutingFromItsList) {
    Click("ToolBtnDown");
    AwaitMenu();
    Type({EKey::Down, EKey::Down, EKey::Return});
    EXPECT_TRUE(Until([this] { return InState("<map>") == "0,-1"; })) << effect->Chunk();
    AwaitNoMenu();
}

TEST_F(Robot, LeavesTheRoutingEditByAPressElsewhere) {
    const auto before = Still();
    Click("ToolBtnRoutingEdit");
    ShiftClick("ToolCh9");
    Still();
    MoveTo({200, 250});
    Click();
    MoveTo({1, 1});
    EXPECT_TRUE(Until([&] { return Still() == before; }));
}

// Patches, sides, history

TEST_F(Robot, UndoesAndRedoesByButtonAndKey) {
    Drag(MiddleOf("Threshold"), 0, 60);
    Heard();
    const double dragged = Value(33);
    Click("ToolBtnUndo");
    EXPECT_TRUE(HasValue(33, 1.0));
    Still(); // the other button is inert until the next picture
    Click("ToolBtnRedo");
    EXPECT_TRUE(HasValue(33, dragged));
    screen.Key(EKey::Control, true);
    Type({'z'});
    screen.Key(EKey::Control, false);
    EXPECT_TRUE(HasValue(33, 1.0));
}

TEST_F(Robot, ComparesTwoSides) {
    Click("ToolBtnABCopy");
    Drag(MiddleOf("Threshold"), 0, 60);
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
    AwaitMenu();
    Type({EKey::Down, EKey::Down, EKey::Down, EKey::Down, EKey::Right, EKey::Down, EKey::Return});
    EXPECT_TRUE(Until([this] { return InState("<groups_parallel>") == "1"; }))
        << InState("<groups_parallel>");
    AwaitNoMenu();
}

TEST_F(Robot, ReadsTheVersionAndReturns) {
    MoveTo({1, 1});
    const auto before = Still();
    OpenAbout();
    MoveTo({static_cast<std::int32_t>(0.586 * 754), static_cast<std::int32_t>(0.92 * 553)}); // "OK"
    Click();
    MoveTo({1, 1});
    EXPECT_TRUE(Until([&] { return Still() == before; }));
}

TEST_F(Robot, SwitchesTheVectorCodeInTheAboutView) {
    const auto simd = InState("<simd>");
    OpenAbout();
    MoveTo({715, 133}); // the lower of the two switches at the right edge
    Click();
    EXPECT_TRUE(Until([&] { return InState("<simd>") != simd; }));
}

// Macros

TEST_F(Robot, AssignsAMacroAndMovesIt) {
    const auto before = Still();
    MoveTo({200, 464}); // the button of macro 1
    Click();
    EXPECT_NE(Still(), before);
    // The first of the four small knobs on the threshold's fader.
    const auto centre = MiddleOf("Threshold");
    MoveTo({centre.x - 18, centre.y});
    screen.Turn(1);
    EXPECT_TRUE(Until([this] { return effect->Chunk().find("<macro group=\"0\">33;") != std::string::npos; }))
        << effect->Chunk();
    Drag({204, 507}, 0, -60); // the knob of macro 1
    Still();
    EXPECT_NE(Value(24), 0.5);
}

// Sizes

TEST_F(RobotAtALargeScreen, FindsEveryCornerAtEverySize) {
    for (const std::int32_t width : {500, 1508}) {
        const auto size = screen.EditorSize();
        Drag({size.width - 2, size.height / 2}, width - size.width, 0);
        ASSERT_TRUE(Until([&] { return screen.EditorSize().width == width; })) << screen.EditorSize().width;
        Still();
        Drag(MiddleOf("Main Input Gain", width), 0, -30); // lower left
        EXPECT_EQ(Heard(), EditOf("Main Input"));
        Drag(MiddleOf("Main Output Gain", width), 0, -30); // lower right
        EXPECT_EQ(Heard(), EditOf("Main Output"));
        MoveTo(MiddleOf("ToolBtnFxCopy", width)); // upper right
        Click();
        Click();
        MoveTo(MiddleOf("ToolBtnDown", width)); // upper left
        Click();
        AwaitMenu();
        Type({EKey::Escape});
        AwaitNoMenu();
        Still();
    }
}

} // namespace KAV::Tests
