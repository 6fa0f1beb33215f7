// The panels that a macro lays over the faders: which, where, and what a press on them does.

#include "tests/device_gui/open_macros.h"

#include <algorithm>
#include <array>
#include <memory>

using namespace KAV;
using namespace KAV::Tests;

namespace {

class MacroPanels : public OpenMacros {
protected:
    /// Another size, with everything at rest.
    void Resize(std::int32_t width) {
        Device().State().ResizeToWidth(width);
        robot.Advance(50);
    }
    std::size_t PlaceInList(const GUI::CWidget& widget) {
        const auto& all = Gui().AllWidgets();
        return static_cast<std::size_t>(std::find(all.begin(), all.end(), &widget) - all.begin());
    }
};

constexpr std::array<const char16_t*, 4> TargetNames{
    u"Input Gain", u"Threshold", u"Release", u"Output Ceiling"};

} // namespace

TEST_F(MacroPanels, AreMadeAtTheFirstPressAndStay) {
    const auto before = Gui().AllWidgets().size();
    constexpr std::size_t ofAMacro = Targets * (1 + Groups);
    Toggle(0);
    EXPECT_EQ(Gui().AllWidgets().size(), before + ofAMacro);
    const auto widgets = Gui().AllWidgets();
    Toggle(0);
    Toggle(0);
    EXPECT_EQ(Gui().AllWidgets(), widgets);
    Toggle(1);
    EXPECT_EQ(Gui().AllWidgets().size(), before + 2 * ofAMacro);
}

TEST_F(MacroPanels, StandOverTheFourFadersFromTheLeft) {
    Toggle(0);
    ASSERT_EQ(Gui().FindAll<CMacroPanels::CMacroPanel>().size(), Targets);
    for (std::size_t target = 0; target < Targets; ++target) {
        const auto fader = Named(TargetNames[target]).PixelRect();
        const auto panel = PanelOver(target).PixelRect();
        EXPECT_NEAR(panel.nL + panel.nW / 2.0, fader.nL + fader.nW / 2.0, 1.0) << target;
        EXPECT_NEAR(panel.nT + panel.nH / 2.0, fader.nT + fader.nH / 2.0, 1.0) << target;
        EXPECT_GE(panel.nL, fader.nL) << target;
        EXPECT_LE(panel.nL + panel.nW, fader.nL + fader.nW) << target;
        EXPECT_EQ(Sens(target, 0).Name(), std::u16string(TargetNames[target]) + u" FX1 Mod");
        EXPECT_EQ(Sens(target, 3).Name(), std::u16string(TargetNames[target]) + u" FX4 Mod");
    }
}

// The pattern of the knobs is 12 by 12 panel pixels: 12 x 1.2 x 4 groups, and 12 x 1.2.
TEST_F(MacroPanels, HaveTheSizeOfFourKnobsAtEveryWidth) {
    struct SExpected {
        std::int32_t width;
        GUI::SPixelRect panel; // over the input gain, whose rectangle is 61 by 337 at (110, 118)
        GUI::SPixelRect first, last;
    };
    // 500: pattern 8 x 8, fader 40 x 223 at (73, 78); 1508: pattern 24 x 24, fader 122 x 674 at (220, 236).
    // Knobs: width x 0.2, step x 0.2125; upwards by half of 1.2 knobs from the middle.
    const std::vector<SExpected> all{{754, {112, 279, 58, 14}, {116, 280, 12, 12}, {153, 280, 12, 12}},
        {500, {74, 185, 38, 10}, {77, 185, 8, 8}, {101, 185, 8, 8}},
        {1508, {223, 559, 115, 29}, {232, 559, 23, 23}, {305, 559, 23, 23}}};
    for (const auto& expected : all) {
        Reopen();
        Resize(expected.width);
        ASSERT_EQ(Gui().Width(), expected.width);
        Toggle(0);
        EXPECT_EQ(PanelOver(0).PixelRect(), expected.panel) << expected.width;
        EXPECT_EQ(Sens(0, 0).PixelRect(), expected.first) << expected.width;
        EXPECT_EQ(Sens(0, 3).PixelRect(), expected.last) << expected.width;
    }
}

TEST_F(MacroPanels, KnobsLieSideBySideWithinTheirPanel) {
    for (const std::int32_t width : {500, 754, 1508}) {
        Reopen();
        Resize(width);
        Toggle(0);
        for (std::size_t target = 0; target < Targets; ++target) {
            const auto panel = PanelOver(target).PixelRect();
            for (std::size_t group = 0; group < Groups; ++group) {
                const auto knob = Sens(target, group).PixelRect();
                EXPECT_EQ(knob.nW, knob.nH);
                EXPECT_GE(knob.nL, panel.nL);
                EXPECT_LE(knob.nL + knob.nW, panel.nL + panel.nW);
                EXPECT_GE(knob.nT, panel.nT);
                EXPECT_LE(knob.nT + knob.nH, panel.nT + panel.nH);
                if (group == 0) continue;
                const auto before = Sens(target, group - 1).PixelRect();
                EXPECT_GE(knob.nL, before.nL + before.nW);
                EXPECT_EQ(knob.nT, before.nT);
            }
        }
    }
}

TEST_F(MacroPanels, StayInPlaceWhenTheWindowGetsAnotherSize) {
    Toggle(0);
    for (const std::int32_t width : {1508, 500, 1131, 754}) {
        Resize(width);
        const double scale = width / 754.0;
        const auto panel = PanelOver(2).PixelRect();
        const auto fader = Named(u"Release").PixelRect();
        EXPECT_NEAR(panel.nW, 58 * scale, 0.51) << width;
        EXPECT_NEAR(panel.nH, 14 * scale, 0.6) << width;
        EXPECT_NEAR(panel.nL + panel.nW / 2.0, fader.nL + fader.nW / 2.0, 1.0 * scale + 0.5) << width;
        EXPECT_NEAR(panel.nT + panel.nH / 2.0, fader.nT + fader.nH / 2.0, 1.0 * scale + 0.5) << width;
        EXPECT_NEAR(Sens(2, 1).PixelRect().nW, 12 * scale, 0.51) << width;
    }
    EXPECT_EQ(PanelOver(0).PixelRect(), (GUI::SPixelRect{112, 279, 58, 14})) << "back where they began";
}

TEST_F(MacroPanels, AreDrawnAboveTheFadersWithTheirKnobsOnTop) {
    Toggle(0);
    const auto last = PlaceInList(Named(u"Gain Reduction"));
    for (std::size_t target = 0; target < Targets; ++target) {
        EXPECT_GT(PlaceInList(PanelOver(target)), last);
        for (std::size_t group = 0; group < Groups; ++group)
            EXPECT_GT(PlaceInList(Sens(target, group)), PlaceInList(PanelOver(target)));
    }
    EXPECT_EQ(PanelOver(0).sImage, u"ToolBtnMacro((2))##Sz-1x-1pxSb0.png");
    EXPECT_TRUE(Contains(Picture(), " to 112,279 58x14 from 0..1,0..0.5")) << "as a button that is off";
}

TEST_F(MacroPanels, APressBetweenTheKnobsReachesTheFader) {
    Toggle(0);
    const auto panel = PanelOver(1).PixelRect();
    const SPixel edge{panel.nL + 1, panel.nT + panel.nH / 2};
    ASSERT_LT(edge.x, Sens(1, 0).PixelRect().nL);
    robot.Drag(edge, {edge.x, edge.y + 50}, 5);
    EXPECT_NEAR(Device().GetParam(33, Normalized), 0.9f, 1e-6f);
    EXPECT_EQ(Table(0), "");
    EXPECT_EQ(Button(0).Value(), 1.0f) << "the panels stay open";
}

TEST_F(MacroPanels, APressOnAKnobLeavesTheFaderAlone) {
    Toggle(0);
    const auto middle = MiddleOf(Sens(1, 2));
    robot.Drag(middle, {middle.x, middle.y - 50}, 5);
    EXPECT_EQ(Device().GetParam(33, Normalized), 1.0f);
    EXPECT_EQ(Table(0), "233;0.600");
}

TEST_F(MacroPanels, TakeNothingFromThePointerOnceTheyAreHidden) {
    Toggle(0);
    const auto middle = MiddleOf(Sens(1, 2));
    Toggle(0);
    robot.Drag(middle, {middle.x, middle.y + 50}, 5);
    EXPECT_NEAR(Device().GetParam(33, Normalized), 0.9f, 1e-6f);
    EXPECT_EQ(Table(0), "");
}

TEST_F(MacroPanels, HaveNoHintOfTheirOwn) {
    Toggle(0);
    const auto panel = PanelOver(0).PixelRect();
    robot.Move(panel.nL + 1, panel.nT + panel.nH / 2);
    robot.Advance(700);
    EXPECT_EQ(Gui().Hint().piFor, &Named(u"Input Gain"));
}

TEST_F(MacroPanels, OneThatWouldCoverAnotherGoesBelowIt) {
    GUI::SWidgetInfo info;
    info.nId = 32;
    info.sName = u"Beside";
    info.fX = 113; // three pixels to the right of the input gain, in the same line
    info.fY = 118;
    info.fW = 61;
    info.fH = 337;
    const CPluginKnob beside(Gui(), info);
    Toggle(0);
    const auto first = PanelOver(0).PixelRect();
    const auto second = PanelOver(1).PixelRect();
    EXPECT_EQ(Sens(1, 0).Name(), u"Beside FX1 Mod");
    EXPECT_NEAR(second.nT, first.nT + first.nH, 1.0);
    EXPECT_NEAR(Sens(1, 0).PixelRect().nT, Sens(0, 0).PixelRect().nT + first.nH, 1.0) << "with its knobs";
    EXPECT_EQ(PanelOver(2).PixelRect().nT, first.nT) << "the next one is free again";
}

TEST_F(MacroPanels, OneThatCoversLessThanHalfItsHeightStaysInLine) {
    GUI::SWidgetInfo info;
    info.nId = 32;
    info.sName = u"Beside";
    info.fX = 110 + 57.6f - 6; // an overlap of six pixels; half the height is 7.2
    info.fY = 118;
    info.fW = 61;
    info.fH = 337;
    const CPluginKnob beside(Gui(), info);
    Toggle(0);
    EXPECT_EQ(PanelOver(1).PixelRect().nT, PanelOver(0).PixelRect().nT);
}

TEST_F(MacroPanels, KnobsAreSortedByLinesAndThoseWithStepsOrWithoutParameterLeftOut) {
    const auto make = [this](std::int32_t id, const char16_t* name, float x, float y, const char16_t* list) {
        GUI::SWidgetInfo info;
        info.nId = id;
        info.sName = name;
        info.fX = x;
        info.fY = y;
        info.fW = info.fH = 61;
        info.sList = list;
        return std::make_unique<CPluginKnob>(Gui(), info);
    };
    const std::vector<std::unique_ptr<CPluginKnob>> knobs = [&] {
        std::vector<std::unique_ptr<CPluginKnob>> made;
        made.push_back(make(33, u"Lower", 20, 350, u""));
        made.push_back(make(34, u"Upper", 690, 100, u""));
        made.push_back(make(32, u"Steps", 20, 100, u"a||b"));
        made.push_back(make(-1, u"Nothing", 20, 200, u""));
        made.push_back(make(35, u"Macro of its own", 20, 250, u""));
        made.push_back(make(36, u"Old Main Input Gain", 20, 260, u""));
        made.push_back(make(37, u"Old Main Output Gain", 20, 270, u""));
        return made;
    }();
    Toggle(0);
    std::vector<std::u16string> names;
    for (const auto* const knob : Gui().FindAll<CMacroSens>()) names.push_back(knob->Name());
    ASSERT_EQ(names.size(), 6 * Groups);
    EXPECT_EQ(names[0], u"Upper FX1 Mod");
    for (std::size_t target = 0; target < Targets; ++target)
        EXPECT_EQ(names[(1 + target) * Groups], std::u16string(TargetNames[target]) + u" FX1 Mod");
    EXPECT_EQ(names[5 * Groups], u"Lower FX1 Mod");
}

TEST_F(MacroPanels, CostNothingWhileNothingMoves) {
    Toggle(0);
    Gui().OnMouseMove(5, 300, 0);
    robot.Advance(1000);
    renderers.Calls().clear();
    robot.Advance(1000);
    EXPECT_TRUE(renderers.Calls().empty()) << renderers.Calls().size();
}
