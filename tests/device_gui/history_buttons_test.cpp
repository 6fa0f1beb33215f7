// Undo and redo: their buttons, their keys, and what is a step of history.

#include "device_gui/history_buttons.h"

#include "device/value_flags.h"

#include "device_gui/oversampling.h"
#include "device_gui/patch_display.h"
#include "device_gui/side_buttons.h"
#include "gui/knob.h"
#include "tests/device_gui/open_panel.h"

#include <thread>

using namespace KAV;
using namespace KAV::Tests;

namespace {

class HistoryButtons : public OpenPanel {
protected:
    CUndo& Undo() { return Widget<CUndo>(); }
    CRedo& Redo() { return Widget<CRedo>(); }
    void DragBy(const GUI::CWidget& widget, std::int32_t pixels) {
        const auto [x, y] = MiddleOf(widget);
        robot.Drag({x, y}, {x, y + pixels});
    }
    float Threshold() { return Device().GetParam(33, 0); }
    /// Whether undo and redo can be pressed, at the next frame.
    std::pair<bool, bool> Ready() {
        robot.Tick();
        return {Undo().bInteractive, Redo().bInteractive};
    }
    /// One step is there: undo brings the state of before back, redo the state of now, and nothing is left
    /// to undo or to redo at the ends.
    template<typename TState>
    void ExpectOneStep(TState state, const decltype(state())& before) {
        EXPECT_EQ(Gui().Records(), 1u);
        const auto after = state();
        ASSERT_NE(after, before);
        for (int round = 0; round < 2; ++round) {
            EXPECT_EQ(Ready(), (std::pair{true, false}));
            Click(Undo());
            EXPECT_EQ(state(), before);
            EXPECT_EQ(Ready(), (std::pair{false, true}));
            Click(Redo());
            EXPECT_EQ(state(), after);
        }
        EXPECT_EQ(Gui().Records(), 1u);
    }
    /// Which of its three frames is drawn at rest: 0 ready, 1 inert, 2 pressed.
    int Frame(const GUI::CWidget& button) {
        robot.Advance(300);
        return FrameOf(button, 3);
    }
};

} // namespace

// The buttons

TEST_F(HistoryButtons, AreInertWithoutAStep) {
    EXPECT_EQ(Ready(), (std::pair{false, false}));
    EXPECT_EQ(Frame(Undo()), 1);
    EXPECT_EQ(Frame(Redo()), 1);
    const auto before = Chunk(false);
    Click(Undo());
    Click(Redo());
    EXPECT_EQ(Chunk(false), before);
    EXPECT_EQ(Told(), Lines{});
    const auto [x, y] = MiddleOf(Undo());
    robot.Press(x, y);
    EXPECT_EQ(Frame(Undo()), 1) << "nothing gives way under the finger";
    robot.Release(x, y);
}

TEST_F(HistoryButtons, ShowWhetherThereIsAStepInTheirDirection) {
    DragBy(Named(u"Threshold"), 50);
    EXPECT_EQ(Ready(), (std::pair{true, false}));
    EXPECT_EQ(Frame(Undo()), 0);
    EXPECT_EQ(Frame(Redo()), 1);
    const auto [x, y] = MiddleOf(Undo());
    robot.Press(x, y);
    EXPECT_EQ(Frame(Undo()), 2);
    EXPECT_LT(Threshold(), 1.0f) << "undone at the click";
    robot.Release(x, y);
    EXPECT_EQ(Threshold(), 1.0f);
    EXPECT_EQ(Frame(Undo()), 1);
    EXPECT_EQ(Frame(Redo()), 0);
    Click(Redo());
    EXPECT_EQ(Frame(Undo()), 0);
    EXPECT_EQ(Frame(Redo()), 1);
}

TEST_F(HistoryButtons, OnlyTheLeftButtonCounts) {
    DragBy(Named(u"Threshold"), 50);
    robot.Tick();
    Click(Undo(), GUI::MouseRight);
    EXPECT_LT(Threshold(), 1.0f);
    Wheel(Undo(), 1.0f);
    EXPECT_LT(Threshold(), 1.0f);
    Click(Undo(), GUI::MouseLeft | GUI::MouseControl | GUI::MouseShift);
    EXPECT_EQ(Threshold(), 1.0f);
}

TEST_F(HistoryButtons, WalkBackAndForthThroughThreeStepsOfWhichANewOneDropsTheRest) {
    for (const auto* const name : {u"Threshold", u"Input Gain", u"Output Ceiling"}) DragBy(Named(name), 50);
    for (int n = 0; n < 3; ++n) {
        EXPECT_TRUE(Ready().first);
        Click(Undo());
    }
    EXPECT_EQ(Ready(), (std::pair{false, true}));
    EXPECT_EQ(Threshold(), 1.0f);
    Click(Undo()); // inert
    EXPECT_EQ(Gui().Records(), 3u);
    DragBy(Named(u"Threshold"), 100);
    EXPECT_EQ(Ready(), (std::pair{true, false}));
    EXPECT_EQ(Gui().Records(), 1u);
}

TEST_F(HistoryButtons, FollowTheKeysOfTheKeyboard) {
    DragBy(Named(u"Threshold"), 50);
    robot.Key(GUI::KeyZ);
    EXPECT_EQ(Ready(), (std::pair{true, false})) << "without left Control";
    window.leftControl = true;
    robot.Key(GUI::KeyZ);
    EXPECT_EQ(Ready(), (std::pair{false, true}));
    EXPECT_EQ(Threshold(), 1.0f);
    robot.Key(GUI::KeyZ);
    EXPECT_EQ(Ready(), (std::pair{false, true}));
    robot.Key(GUI::KeyY);
    EXPECT_EQ(Ready(), (std::pair{true, false}));
    EXPECT_LT(Threshold(), 1.0f);
}

TEST_F(HistoryButtons, FollowAPatchOfTheHosts) {
    SetChunk("<patch_format>textual</patch_format>\r\n<param tag=\"33\" >0.5</param>\r\n", false);
    EXPECT_EQ(Ready(), (std::pair{true, false}));
    Click(Undo());
    EXPECT_EQ(Threshold(), 1.0f);
    std::thread([this] {
        SetChunk("<patch_format>textual</patch_format>\r\n<param tag=\"33\" >0.25</param>\r\n", false);
    }).join();
    EXPECT_EQ(Ready(), (std::pair{true, false}));
}

TEST_F(HistoryButtons, KeepTheirStepsWhileTheEditorIsClosed) {
    DragBy(Named(u"Threshold"), 50);
    Close();
    SetChunk("<patch_format>textual</patch_format>\r\n<param tag=\"133\" >0.5</param>\r\n", false);
    EXPECT_EQ(Gui().Records(), 1u);
    Open();
    EXPECT_EQ(Ready(), (std::pair{true, false}));
    Click(Undo());
    EXPECT_EQ(Threshold(), 1.0f);
}

TEST_F(HistoryButtons, CostNothingWhileNothingChanges) {
    EXPECT_TRUE(IsStill());
    DragBy(Named(u"Threshold"), 50);
    robot.LeaveWindow();
    EXPECT_TRUE(IsStill());
}

// What is a step

TEST_F(HistoryButtons, ADragIsOneStep) {
    DragBy(Named(u"Threshold"), 50);
    ExpectOneStep([this] { return Threshold(); }, 1.0f);
    Told();
    Click(Undo());
    EXPECT_EQ(Told(), Lines{"4 = 1.000000"}) << "the host hears of it";
}

TEST_F(HistoryButtons, ADragThatWasUndoneShowsItsOldPlace) {
    DragBy(Named(u"Threshold"), 50);
    Click((robot.Tick(), Undo()));
    EXPECT_EQ(dynamic_cast<GUI::CKnob&>(Named(u"Threshold")).Value(), 1.0f);
}

TEST_F(HistoryButtons, EachNotchOfTheWheelIsAStep) {
    Wheel(Named(u"Threshold"), -1.0f);
    Wheel(Named(u"Threshold"), -1.0f);
    EXPECT_EQ(Gui().Records(), 2u);
    robot.Tick();
    Click(Undo());
    EXPECT_NEAR(Threshold(), 0.98f, 1e-6f);
    Click(Undo());
    EXPECT_EQ(Threshold(), 1.0f);
    EXPECT_EQ(Ready(), (std::pair{false, true}));
}

TEST_F(HistoryButtons, ATypedValueIsAStep) {
    Click(Named(u"Threshold"), GUI::MouseRight);
    TypeOver(u"-15");
    EXPECT_EQ(Threshold(), 0.5f);
    ExpectOneStep([this] { return Threshold(); }, 1.0f);
}

TEST_F(HistoryButtons, AReturnToTheDefaultIsAStep) {
    effect->Set(4, 0.25f);
    robot.Advance(300);
    Click(Named(u"Threshold"), GUI::MouseLeft | GUI::MouseControl);
    EXPECT_EQ(Threshold(), 1.0f);
    ExpectOneStep([this] { return Threshold(); }, 0.25f);
}

TEST_F(HistoryButtons, AMacroIsAStepAndItsTargetsFollow) {
    Device().AssignMacro(0, 33, 1.0f);
    Device().SetParam(33, 0.5f, RawBase);
    robot.Tick();
    DragBy(WithId(24), 50);
    ExpectOneStep(
        [this] { return std::pair(Device().GetParam(24, 0), Threshold()); }, {50.0f / 100.0f, 0.5f});
}

TEST_F(HistoryButtons, AFactorFromTheMenuOrTheKeysIsAStepAndOneFromTheWheelIsNone) {
    const auto factor = [this] { return Device().GetParam(30, 0); };
    Wheel(Widget<COversampling>(), -1.0f);
    EXPECT_EQ(factor(), 1.0f);
    EXPECT_EQ(Gui().Records(), 0u);
    Click(Named(u"ToolBtnNextOS"));
    ExpectOneStep(factor, 1.0f);
    Click(Widget<COversampling>());
    robot.Choose(u"OS x8");
    EXPECT_EQ(Gui().Records(), 2u);
    robot.Tick();
    Click(Undo());
    EXPECT_EQ(factor(), 2.0f);
    EXPECT_EQ(Widget<COversampling>().Text(), u"OS x4");
}

TEST_F(HistoryButtons, APressOfASwitchIsNone) {
    for (const auto* const name : {u"Limiter", u"Auto Release", u"Hiqh Quality", u"ToolCh1", u"ToolBtnFx3"})
        Click(Named(name));
    EXPECT_EQ(Device().GetCurrentGroup(), 2);
    EXPECT_EQ(Gui().Records(), 0u);
    EXPECT_EQ(Ready(), (std::pair{false, false}));
}

TEST_F(HistoryButtons, APatchIsAStepHoweverItWasChosen) {
    for (const char* const name : {"a", "b"}) {
        WriteText(documents.Patch(std::string(name) + ".kvp"),
            "<patch_format>textual</patch_format>\r\n<plugin_id>1936683628</plugin_id>\r\n<patch_name>"
            "</patch_name>\r\n<param tag=\"33\" >" +
                std::string(name[0] == 'a' ? "0.25" : "0.75") + "</param>\r\n");
    }
    const auto state = [this] {
        robot.Tick();
        return std::pair(Threshold(), Widget<CPatch>().Text());
    };
    const std::vector<std::function<void()>> ways{[this] { Click(Named(u"ToolBtnNext")); },
        [this] { Wheel(Widget<CPatch>(), -1.0f); },
        [this] {
            Click(Widget<CPatch>());
            robot.Choose(u"b");
        },
        [this] {
            dialogs.answer = Utils::FromSystemPath(documents.Patch("b.kvp"));
            Click(Named(u"ToolBtnLoad"));
        }};
    for (const auto& choose : ways) {
        Reopen();
        choose();
        ExpectOneStep(state, {0.25f, u"a"});
    }
}

TEST_F(HistoryButtons, AChangeOfSideIsAStepThatLeavesTheSide) {
    Click(Widget<CPatchABInplace>()); // nothing is loaded
    EXPECT_EQ(Gui().Records(), 0u);
    effect->Set(4, 0.5f);
    Click(Widget<CPatchABInplace>());
    EXPECT_EQ(Threshold(), 1.0f);
    ExpectOneStep([this] { return Threshold(); }, 0.5f);
    EXPECT_EQ(Widget<CPatchABInplace>().ShownSide(), 1);
    Click(Widget<CPatchABCopy>());
    EXPECT_EQ(Gui().Records(), 1u) << "a copy changes nothing that is heard";
}
