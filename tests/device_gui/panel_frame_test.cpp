// The editor's frame: what each tick brings to all widgets, the edge by which it is resized, keys and
// commands.

#include "device/parameter_table.h"
#include "device/value_flags.h"
#include "device_gui/fx_button.h"
#include "device_gui/new_version_led.h"
#include "gui/knob.h"
#include "gui/settings.h"
#include "gui/value_display.h"
#include "tests/device_gui/open_panel.h"
#include "tests/support/own_settings.h"

#include <algorithm>

using namespace KAV;
using namespace KAV::Tests;

namespace {

class PanelFrame : public OpenPanel {
protected:
    /// The widgets of the rows that `accepts`, with their rows.
    template<typename TAccepts, typename TCheck>
    void ForEach(TAccepts accepts, TCheck check) {
        const auto rows = Panel::Rows();
        const auto first = Gui().AllWidgets().size() - rows.size();
        for (std::size_t n = 0; n < rows.size(); ++n) {
            if (!accepts(rows[n])) continue;
            SCOPED_TRACE(rows[n].name);
            check(*Gui().AllWidgets().at(first + n), rows[n]);
        }
    }
    static bool HasParameter(const Panel::SPanelRow& row) { return row.id >= 0; }
    /// The host's index of a row's parameter in the group that is shown.
    std::int32_t IndexOf(const Panel::SPanelRow& row) {
        return HostIndexOf(Device().ResolveTag(row.id, GroupRelative));
    }
    static GUI::CValueWidget& ValueOf(GUI::CWidget& widget) {
        return dynamic_cast<GUI::CValueWidget&>(widget);
    }
    /// Whether a tick in the next second draws anything.
    bool IsStill() {
        robot.Advance(1000); // what moves arrives
        renderers.Calls().clear();
        robot.Advance(1000);
        return renderers.Calls().empty();
    }
};

} // namespace

// What a tick brings

TEST_F(PanelFrame, AutomationOfEachParameterIsSeenInTheNextTickAndArrivesWithItsAnimation) {
    std::size_t parameters = 0;
    for (int group = 0; group < 4; ++group) {
        Gui().SetRouting("<map>0,-1|*|1,-1|*|2,-1|*|3,-1|*|4,-1|*|5,-1|*|6,-1|*|7,-1|*|8,-1|*|9,-1|*|10,-1|*|"
                         "11,-1|*|12,-1|*|13,-1|*|14,-1|*|15,-1</map>",
            group);
        ForEach(HasParameter, [&](GUI::CWidget& widget, const Panel::SPanelRow& row) {
            effect->Set(HostIndexOf(17 + group), 1.0f);
            robot.Advance(500);
            ASSERT_EQ(Device().GetCurrentGroup(), group);
            auto& value = ValueOf(widget);
            const auto index = IndexOf(row);
            const bool isKnob = dynamic_cast<GUI::CKnob*>(&widget) != nullptr;
            const float before = value.Value();
            // A group's button that goes off leaves no other on.
            if (row.widget == Panel::EClass::FxBtn && before == 1.0f) return;
            std::vector<float> positions{before > 0.5f ? 0.0f : 1.0f};
            if (isKnob) positions = {0.3125f, 1.0f, 0.0f};
            for (const float position : positions) {
                const float from = value.sValue.fValue;
                effect->Set(index, position);
                robot.Tick();
                EXPECT_EQ(value.Value(), position);
                const auto ms = position > from ? row.riseMs : row.fallMs;
                robot.Advance(static_cast<std::uint32_t>(ms) + 40);
                EXPECT_EQ(value.sValue.fValue, position) << "drawn";
                EXPECT_EQ(value.Value(), position);
            }
            ++parameters;
        });
    }
    // Of each group 16 channels, solo, mute and the six of the body; five macros, two main gains, two of the
    // oversampling and three other groups' buttons as seen from each group.
    EXPECT_EQ(parameters, 4u * (16 + 2 + 6 + 5 + 2 + 2 + 3));
    EXPECT_EQ(Gui().Records(), 0u);
}

TEST_F(PanelFrame, AnAnimationTakesTheTimeOfItsRow) {
    auto& knob = dynamic_cast<GUI::CKnob&>(Named(u"Threshold"));
    effect->Set(4, 0.0f);
    robot.Advance(160);
    EXPECT_NE(knob.sValue.fValue, 0.0f) << "after about half of the time";
    robot.Advance(160);
    EXPECT_EQ(knob.sValue.fValue, 0.0f);
}

TEST_F(PanelFrame, ADragOfEachKnobWinsOnScreenUntilItEnds) {
    std::size_t knobs = 0;
    const auto accepts = [](const Panel::SPanelRow& row) { return HasParameter(row) && row.visible; };
    ForEach(accepts, [&](GUI::CWidget& widget, const Panel::SPanelRow& row) {
        auto* const knob = dynamic_cast<GUI::CKnob*>(&widget);
        if (knob == nullptr || dynamic_cast<GUI::CButton*>(&widget) != nullptr) return;
        ++knobs;
        const auto [x, y] = MiddleOf(widget);
        const int way = knob->Value() > 0.5f ? 30 : -30;
        robot.Press(x, y);
        robot.Move(x, y + way);
        const float dragged = knob->Value();
        ASSERT_EQ(effect->Get(IndexOf(row)), dragged);
        const float automated = dragged > 0.5f ? 0.125f : 0.875f;
        effect->Set(IndexOf(row), automated);
        robot.Advance(100);
        EXPECT_EQ(knob->Value(), dragged);
        EXPECT_EQ(knob->sValue.fValue, dragged);
        EXPECT_EQ(effect->Get(IndexOf(row)), automated) << "the device has the last writer's";
        robot.Move(x, y + 2 * way);
        EXPECT_EQ(effect->Get(IndexOf(row)), knob->Value()) << "from where the hand was";
        EXPECT_NEAR(knob->Value(), dragged - static_cast<float>(way) / 500.0f, 1e-6);
        effect->Set(IndexOf(row), automated);
        robot.Release(x, y + 2 * way);
        robot.Tick();
        EXPECT_EQ(knob->Value(), automated);
    });
    EXPECT_EQ(knobs, 4u + 2u + 5u);
}

TEST_F(PanelFrame, WhatHasNoParameterAndIsNoMeterTakesNothing) {
    std::size_t ignored = 0;
    std::size_t meters = 0;
    const auto accepts = [](const Panel::SPanelRow& row) { return row.id < 0; };
    ForEach(accepts, [&](GUI::CWidget& widget, const Panel::SPanelRow& row) {
        auto* const value = dynamic_cast<GUI::CValueWidget*>(&widget);
        if (value == nullptr) return;
        const float before = value->Value();
        widget.SetFromHost(0.75f);
        if (row.widget == Panel::EClass::Meter) {
            EXPECT_EQ(value->Value(), 0.75f);
            ++meters;
        } else {
            EXPECT_EQ(value->Value(), before);
            ++ignored;
        }
    });
    EXPECT_EQ(meters, 16u + 4u + 16u + 16u);
    EXPECT_GE(ignored, 20u);
    EXPECT_EQ(Told(), Lines{});
}

TEST_F(PanelFrame, OfTwoGroupsAutomatedAtOnceTheLaterOneIsShown) {
    effect->Set(HostIndexOf(20), 1.0f);
    effect->Set(HostIndexOf(18), 1.0f);
    robot.Tick();
    EXPECT_EQ(Device().GetCurrentGroup(), 3);
    EXPECT_EQ(Device().GetParam(18, 0), 0.0f);
    robot.Tick();
    EXPECT_EQ(Device().GetCurrentGroup(), 3);
}

TEST_F(PanelFrame, ComparesTheLatencyAfterTheWidgetsHaveChangedIt) {
    // Group 3 works on a channel that its routing of two entries doesn't have: to show it frees the channel.
    Device().SetParam(205, 1.0f, 0);
    robot.Tick();
    effect->Dispatch(VST::effEditIdle);
    EXPECT_EQ(effect->Record().initialDelay, 128) << "two groups in series";
    effect->Set(HostIndexOf(19), 1.0f);
    Gui().OnFrame(16);
    effect->Dispatch(VST::effEditIdle);
    EXPECT_EQ(Device().GetParam(205, 0), 0.0f);
    EXPECT_EQ(effect->Record().initialDelay, 64);
}

TEST_F(PanelFrame, WithoutMovementDrawsNothingAndTellsNothing) {
    EXPECT_TRUE(IsStill());
    EXPECT_EQ(Told(), Lines{});
    effect->Set(4, 0.5f);
    EXPECT_TRUE(IsStill()) << "again";
    EXPECT_EQ(Told(), Lines{});
}

// The size

TEST_F(PanelFrame, TheEdgeBeginsAtNinetyEightPartsOfTheWidth) {
    const COwnSettings settings;
    for (const auto& [width, inside] : {std::pair{754, 738}, std::pair{500, 490}, std::pair{1508, 1477}}) {
        Gui().ResizeTo(width, static_cast<std::int32_t>(static_cast<float>(width) / 1.363472f));
        ASSERT_EQ(Gui().Width(), width);
        const std::int32_t y = 24 * width / 754; // within the button that copies a group
        robot.Move(inside, y);
        EXPECT_EQ(window.cursor, GUI::ECursor::Arrow);
        robot.Press(inside, y);
        EXPECT_EQ(Widget<CFxBtnCopy>().Value(), 1.0f) << "the button's";
        robot.Move(inside + 100, y);
        robot.Release(inside, y);
        EXPECT_EQ(Gui().Width(), width);
        robot.Move(inside + 1, y);
        EXPECT_EQ(window.cursor, GUI::ECursor::SizeWidth);
        robot.Press(inside + 1, y);
        EXPECT_EQ(Widget<CFxBtnCopy>().Value(), 1.0f) << "the edge's";
        robot.Move(inside + 101, y);
        EXPECT_EQ(Gui().Width(), width + 100);
        EXPECT_EQ(Gui().Height(), static_cast<std::int32_t>(static_cast<float>(Gui().Width()) / 1.363472f));
        robot.Release(inside + 101, y);
        EXPECT_EQ(GUI::StoredNumber(u"Width"), static_cast<std::uint32_t>(width + 100));
        robot.Advance(1000);
        Click(Widget<CFxBtnCopy>());
        EXPECT_EQ(Widget<CFxBtnCopy>().Value(), 0.0f);
    }
}

TEST_F(PanelFrame, IsNeverDraggedBelowItsLeastWidth) {
    const COwnSettings settings;
    robot.Drag({750, 300}, {20, 300});
    EXPECT_EQ(Gui().Width(), 500);
    EXPECT_EQ(Gui().Height(), 366);
    EXPECT_EQ(GUI::StoredNumber(u"Width"), 500u);
    robot.Press(499, 300, GUI::MouseRight);
    robot.Move(600, 300);
    robot.Release(600, 300, GUI::MouseRight);
    EXPECT_EQ(Gui().Width(), 500) << "the left button only";
}

TEST_F(PanelFrame, BeginsAtItsLeastWidthIfLessIsStored) {
    const COwnSettings settings;
    GUI::StoreNumber(u"Width", 300);
    Reopen();
    EXPECT_EQ(Gui().Width(), 500);
    EXPECT_EQ(window.width, 500);
    EXPECT_EQ(Gui().Height(), 220) << "of the width that was asked for";
    GUI::StoreNumber(u"Width", 501);
    Reopen();
    EXPECT_EQ(Gui().Width(), 501);
}

// Keys and commands

TEST_F(PanelFrame, UndoAndRedoWithoutAStepChangeNothing) {
    const auto before = Chunk(false);
    window.leftControl = true;
    for (const auto key : {GUI::KeyZ, GUI::KeyY, GUI::KeyZ}) robot.Key(key);
    EXPECT_EQ(Chunk(false), before);
    EXPECT_EQ(Told(), Lines{});
    EXPECT_FALSE(Gui().CanUndo());
    EXPECT_FALSE(Gui().CanRedo());
    effect->Set(4, 0.5f); // the host's; no step
    robot.Tick();
    robot.Key(GUI::KeyZ);
    EXPECT_EQ(effect->Get(4), 0.5f);
    robot.Drag(MiddleOf(Named(u"Threshold")), {MiddleOf(Named(u"Threshold")).x, 300}, 3);
    const float dragged = effect->Get(4);
    ASSERT_NE(dragged, 0.5f);
    robot.Key(GUI::KeyZ);
    EXPECT_EQ(effect->Get(4), 0.5f) << "and the history works as ever";
    robot.Key(GUI::KeyY);
    EXPECT_EQ(effect->Get(4), dragged);
}

TEST_F(PanelFrame, CommandsOfNoWidgetDoNothing) {
    const auto before = Chunk(false);
    const auto hasDisplay = [](std::uint32_t command) {
        const bool isNegative = command < 1100;
        const auto id = isNegative ? -static_cast<std::int32_t>(command / 200)
                                   : static_cast<std::int32_t>(command / 1100);
        return id == -1 || id == -2 || id == -3 || id == 30;
    };
    std::size_t tried = 0;
    for (std::uint32_t command = 0; command < 0x10000; command += command < 1100 ? 1 : 13) {
        if (hasDisplay(command)) continue;
        Gui().OnCommand(command, 0);
        ++tried;
    }
    EXPECT_GT(tried, 4000u);
    Gui().OnCommand(30 * 1100 + 2, 1); // of a control
    Gui().OnCommand(0x10000 + 30 * 1100 + 2, 0);
    Gui().OnCommand(30 * 1100 + 4, 0); // past the end of its list
    EXPECT_EQ(Chunk(false), before);
    EXPECT_EQ(Told(), Lines{});
    Gui().OnCommand(30 * 1100 + 2, 0);
    EXPECT_EQ(Device().GetParam(30, 0), 2.0f) << "and one of a widget does";
}

// The lamp

TEST_F(PanelFrame, TheLampBreathesOnScreenOnceItIsShown) {
    auto& lamp = Widget<CNewVersionLED>();
    EXPECT_TRUE(IsStill()) << "hidden";
    lamp.SetVisible(true, 0);
    robot.Tick();
    robot.Tick();
    bool hasBeenDark = false;
    bool hasBeenBright = false;
    for (int n = 0; n < 200; ++n) {
        renderers.Calls().clear();
        robot.Tick();
        ASSERT_FALSE(renderers.Calls().empty()) << n;
        if (lamp.GetDrawValue() < 0.1f) hasBeenDark = true;
        if (lamp.GetDrawValue() > 0.9f) hasBeenBright = true;
    }
    EXPECT_TRUE(hasBeenDark && hasBeenBright);
    const auto rect = lamp.PixelRect();
    const auto place = " to " + std::to_string(rect.nL) + "," + std::to_string(rect.nT) + " 15x15 from ";
    const auto picture = Picture();
    EXPECT_GE(std::count_if(picture.begin(), picture.end(),
                  [&](const auto& line) { return line.find(place) != std::string::npos; }),
        1);
    lamp.SetVisible(false, 0);
    EXPECT_TRUE(IsStill());
}

TEST_F(PanelFrame, TheLampLeavesPressesToTheButtonBelow) {
    auto& lamp = Widget<CNewVersionLED>();
    lamp.SetVisible(true, 0);
    robot.Advance(100);
    Point(lamp);
    EXPECT_EQ(Gui().Pointer().Hover(), &Named(u"ToolAbout"));
}
