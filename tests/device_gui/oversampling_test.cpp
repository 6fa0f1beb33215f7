// The display of the oversampling factor and its keys.

#include "device_gui/oversampling.h"

#include "tests/device_gui/open_panel.h"

using namespace KAV;
using namespace KAV::Tests;

namespace {

class OversamplingDisplay : public OpenPanel {
protected:
    static constexpr std::int32_t Index = 100; // of the parameter

    COversampling& Display() { return Widget<COversampling>(); }
    /// An edit of the host's to the factor at this place.
    static Lines EditTo(int place) {
        const auto index = std::to_string(Index);
        return {"begin " + index, index + " = " + std::to_string(static_cast<float>(place) / 3.0f),
            "end " + index};
    }
    void ExpectFactor(int place) {
        constexpr std::array<std::u16string_view, 4> texts{u"OS x1", u"OS x2", u"OS x4", u"OS x8"};
        EXPECT_EQ(Display().Text(), texts.at(static_cast<std::size_t>(place)));
        EXPECT_EQ(Device().GetParam(30, 0), static_cast<float>(place));
    }
};

} // namespace

TEST_F(OversamplingDisplay, OffersItsFactorsAndReportsTheChoice) {
    Click(Display());
    const auto& menu = window.menus.back();
    ASSERT_EQ(menu.size(), 4u);
    for (std::size_t n = 0; n < 4; ++n) EXPECT_EQ(menu[n].bChecked, n == 0);
    EXPECT_TRUE(robot.Choose(u"OS x4"));
    ExpectFactor(2);
    EXPECT_EQ(Told(), EditTo(2));
    Click(Display());
    EXPECT_TRUE(window.menus.back()[2].bChecked);
    EXPECT_TRUE(robot.Choose(u"OS x4"));
    EXPECT_EQ(Told(), Lines{}) << "it is that already";
}

TEST_F(OversamplingDisplay, TheKeysStepWithoutGoingRound) {
    const auto& previous = Named(u"ToolBtnPrevOS");
    const auto& next = Named(u"ToolBtnNextOS");
    Click(previous);
    ExpectFactor(0);
    EXPECT_EQ(Told(), Lines{});
    for (int place = 1; place < 4; ++place) {
        Click(next);
        ExpectFactor(place);
        EXPECT_EQ(Told(), EditTo(place));
    }
    Click(next);
    Click(next, GUI::MouseRight);
    Click(previous, GUI::MouseRight);
    ExpectFactor(3);
    EXPECT_EQ(Told(), Lines{});
    Click(previous);
    ExpectFactor(2);
    EXPECT_EQ(Told(), EditTo(2));
    EXPECT_TRUE(window.menus.empty());
}

TEST_F(OversamplingDisplay, TheWheelStepsAsEdits) {
    Wheel(Display(), 1.0f);
    EXPECT_EQ(Told(), Lines{});
    Wheel(Display(), -1.0f);
    ExpectFactor(1);
    EXPECT_EQ(Told(), EditTo(1));
    Wheel(Display(), -1.0f, GUI::MouseShift);
    Wheel(Display(), -1.0f);
    Wheel(Display(), -1.0f);
    ExpectFactor(3);
}

TEST_F(OversamplingDisplay, ShowsWhatTheHostAutomates) {
    for (const int place : {3, 1, 2, 0}) {
        effect->Set(Index, static_cast<float>(place) / 3.0f);
        robot.Tick();
        ExpectFactor(place);
        EXPECT_EQ(Told(), Lines{});
    }
    EXPECT_EQ(Gui().Records(), 0u);
}

TEST_F(OversamplingDisplay, ANewDelayReachesTheHost) {
    Told(); // the first delay
    Click(Named(u"ToolBtnNextOS"));
    robot.Advance(100);
    effect->Dispatch(VST::effEditIdle);
    EXPECT_EQ(effect->Record().initialDelay, Device().GetLatency());
    EXPECT_GT(effect->Record().initialDelay, 64);
    EXPECT_EQ(host.Count(VST::audioMasterIOChanged), 1u);
}

TEST_F(OversamplingDisplay, WorksAtEveryWidth) {
    for (const std::int32_t width : {500, 754, 1508}) {
        Device().State().ResizeToWidth(width);
        robot.Advance(100);
        Click(Named(u"ToolBtnNextOS"));
        ExpectFactor(1);
        Click(Named(u"ToolBtnPrevOS"));
        ExpectFactor(0);
    }
}
