// Every row of the panel under every gesture: what the host hears is whole and about that row alone, and the
// value goes where the gesture of its class leads.

#include "device/value_flags.h"
#include "gui/knob.h"
#include "tests/device_gui/open_panel.h"

#include <algorithm>
#include <functional>
#include <map>
#include <set>

using namespace KAV;
using namespace KAV::Tests;

namespace {

using Panel::EClass;

/// What a user can do to a control without knowing what it is.
struct SGesture {
    const char* name;
    void (*act)(CToolkitRobot& robot, CRecordingWindow& window, SPixel at);
};

constexpr std::uint32_t Left = GUI::MouseLeft;

constexpr std::array Gestures{
    SGesture{"press", [](CToolkitRobot& robot, CRecordingWindow&, SPixel at) { robot.Click(at.x, at.y); }},
    SGesture{"double click",
        [](CToolkitRobot& robot, CRecordingWindow&, SPixel at) {
            robot.Click(at.x, at.y);
            robot.Click(at.x, at.y, Left | GUI::MouseDouble);
        }},
    SGesture{"Shift and press", [](CToolkitRobot& robot, CRecordingWindow&,
                                    SPixel at) { robot.Click(at.x, at.y, Left | GUI::MouseShift); }},
    SGesture{"Control and press", [](CToolkitRobot& robot, CRecordingWindow&,
                                      SPixel at) { robot.Click(at.x, at.y, Left | GUI::MouseControl); }},
    SGesture{"right press",
        [](CToolkitRobot& robot, CRecordingWindow&, SPixel at) { robot.Click(at.x, at.y, GUI::MouseRight); }},
    SGesture{"typed value",
        [](CToolkitRobot& robot, CRecordingWindow& window, SPixel at) {
            robot.Click(at.x, at.y, GUI::MouseRight);
            if (!window.textBox) return;
            robot.Type(u"-3");
            robot.Enter();
        }},
    SGesture{"wheel up", [](CToolkitRobot& robot, CRecordingWindow&, SPixel) { robot.Wheel(1.0f); }},
    SGesture{"wheel down", [](CToolkitRobot& robot, CRecordingWindow&, SPixel) { robot.Wheel(-1.0f); }},
    SGesture{"Shift and wheel",
        [](CToolkitRobot& robot, CRecordingWindow&, SPixel) { robot.Wheel(1.0f, GUI::MouseShift); }},
    SGesture{"drag up",
        [](CToolkitRobot& robot, CRecordingWindow&, SPixel at) {
            robot.Drag(at, {at.x, at.y - 50}, 5);
        }},
    SGesture{"drag down",
        [](CToolkitRobot& robot, CRecordingWindow&, SPixel at) {
            robot.Drag(at, {at.x, at.y + 50}, 5);
        }},
};

/// What only says that a control belongs to the device: its value as a host sets it before the gesture.
constexpr float Middle = 0.5f;

class PanelMatrix : public OpenPanel {
protected:
    /// The host's indexes of what it was told. Edits of different parameters may overlap in time, as each end
    /// comes late; one parameter's never do. `loose`: of values outside an edit.
    static std::set<std::string> IndexesOf(const Lines& told, std::set<std::string>& loose) {
        std::set<std::string> indexes;
        std::set<std::string> open;
        for (const auto& line : told) {
            const auto blank = line.find(' ');
            const auto first = line.substr(0, blank);
            const bool isValue = first != "begin" && first != "end";
            const auto index = isValue ? first : line.substr(blank + 1);
            indexes.insert(index);
            if (first == "begin") {
                EXPECT_TRUE(open.insert(index).second) << line;
            } else if (first == "end") {
                EXPECT_EQ(open.erase(index), 1u) << line;
            } else if (!open.contains(index)) {
                loose.insert(index);
            }
        }
        EXPECT_TRUE(open.empty()) << "an edit that stays open";
        return indexes;
    }
    /// The host's indexes that a row's gestures may name.
    std::set<std::string> MayName(const Panel::SPanelRow& row) {
        std::set<std::string> indexes;
        const auto add = [&](std::int32_t tag) { indexes.insert(std::to_string(HostIndexOf(tag))); };
        if (row.id > 0) {
            add(row.id);
        } else if (row.widget == EClass::NextOversampling || row.widget == EClass::PreviousOversampling) {
            add(30);
        }
        return indexes;
    }
    /// All that the host hears; edits of one parameter follow each other at a distance.
    Lines AllTold() {
        Lines all;
        for (auto told = Told(); !told.empty(); told = Told())
            all.insert(all.end(), told.begin(), told.end());
        return all;
    }
    const GUI::CWidget* HitAt(SPixel at) {
        const auto& all = Gui().AllWidgets();
        const auto hit = std::find_if(all.rbegin(), all.rend(),
            [at](const auto* widget) { return widget->HitTest(at.x, at.y, false); });
        return hit == all.rend() ? nullptr : *hit;
    }
    /// The value after a gesture on a knob that stood in the middle.
    static float ExpectedOfKnob(const GUI::CKnob& knob, std::string_view gesture) {
        const float notch = 10.0f / 500.0f;
        if (gesture == "double click" || gesture == "Control and press") return knob.fDefault;
        if (gesture == "typed value") return std::clamp(knob.ToNormal(-3.0f), 0.0f, 1.0f);
        if (gesture == "wheel up") return Middle + notch;
        if (gesture == "wheel down") return Middle - notch;
        if (gesture == "Shift and wheel") return Middle + notch / 5.0f;
        if (gesture == "drag up") return Middle + 50.0f / 500.0f;
        if (gesture == "drag down") return Middle - 50.0f / 500.0f;
        return Middle;
    }
    static bool BringsMore(EClass row) {
        return row == EClass::FxBtn || row == EClass::RoutingEdit || row == EClass::PatchABInplace;
    }
    static bool IsSwitch(EClass row) {
        return row == EClass::Button || row == EClass::AutoRelease || row == EClass::ChannelBtn;
    }
    static bool IsPress(std::string_view gesture) {
        return gesture.find("press") != std::string_view::npos && gesture != "right press";
    }
    /// How often a gesture presses the left button.
    static int Presses(std::string_view gesture) {
        return gesture == "double click" ? 2 : IsPress(gesture) || gesture.starts_with("drag") ? 1 : 0;
    }

    void Try(std::size_t row, const SGesture& gesture) {
        const auto& said = Panel::Rows()[row];
        SCOPED_TRACE(std::string(said.name) + ", " + gesture.name);
        auto& widget = *Gui().AllWidgets().at(Gui().AllWidgets().size() - Panel::Rows().size() + row);
        auto* const knob = dynamic_cast<GUI::CKnob*>(&widget);
        if (knob != nullptr && said.id > 0) effect->Set(HostIndexOf(said.id), Middle);
        robot.Advance(400);
        AllTold();
        const auto* const value = dynamic_cast<GUI::CValueWidget*>(&widget);
        const float before = value != nullptr ? value->Value() : 0.0f;
        const auto at = MiddleOf(widget);
        robot.Move(at.x, at.y);
        gesture.act(robot, window, at);
        const bool asks = window.textBox.has_value();
        if (asks) Gui().Edit().Drop();
        std::set<std::string> loose;
        const auto indexes = IndexesOf(AllTold(), loose);
        if (HitAt(at) != &widget) return; // another one lies over it
        // These bring a routing, which channels leave or join, or a whole state.
        if (BringsMore(said.widget)) return;
        for (const auto& index : indexes) EXPECT_TRUE(MayName(said).contains(index)) << index;
        EXPECT_TRUE(loose.empty());
        if (said.id <= 0) return;
        if (knob != nullptr) {
            EXPECT_NEAR(knob->Value(), ExpectedOfKnob(*knob, gesture.name), 1e-5);
            EXPECT_EQ(effect->Get(HostIndexOf(said.id)), knob->Value());
            EXPECT_EQ(asks, std::string_view(gesture.name) == "right press");
        } else if (IsSwitch(said.widget)) {
            const bool turns = Presses(gesture.name) % 2 == 1;
            EXPECT_EQ(value->Value(), turns ? 1.0f - before : before);
            EXPECT_EQ(effect->Get(HostIndexOf(said.id)), value->Value());
            EXPECT_FALSE(asks);
        }
    }
};

} // namespace

TEST_F(PanelMatrix, OfEveryRowAndEveryGestureTellsTheHostWholeEditsOfThatRowAlone) {
    dialogs.answer.clear(); // every question is cancelled
#if defined(KAV_SANITIZED)
    constexpr std::size_t step = 5; // neighbours are mostly of one class; a panel takes half a second to open
#else
    constexpr std::size_t step = 1;
#endif
    for (std::size_t row = 0; row < Panel::Rows().size(); row += step) {
        Reopen();
        for (const auto& gesture : Gestures) Try(row, gesture);
        if (HasFatalFailure()) return;
    }
}
