// The exchange between widgets and device, which needs no window.

#include "device/value_flags.h"
#include "device_gui/channel_button.h"
#include "device_gui/fx_button.h"
#include "device_gui/macro_button.h"
#include "device_gui/patch_display.h"
#include "device_gui/routing_display.h"
#include "gui/value_display.h"
#include "panel/layout.h"
#include "tests/support/hand_clock.h"
#include "tests/support/state_fixture.h"
#include "utils/location.h"

using namespace KAV;
using namespace KAV::Tests;

namespace {

class Widgets : public State {
protected:
    CHandClock clock;

    void Idle(std::uint32_t afterMs) {
        clock.Advance(afterMs);
        effect->Dispatch(VST::effEditIdle);
    }
    GUI::CValueDisplay& Oversampling() { return Widget<GUI::CValueDisplay>(2); }
    std::vector<std::pair<std::int32_t, std::int32_t>> Told() {
        std::vector<std::pair<std::int32_t, std::int32_t>> told;
        for (const auto& call : host.calls) told.emplace_back(call.opcode, call.index);
        return told;
    }
};

} // namespace

TEST_F(Widgets, AFrameBringsTheDevicesValuesAndTellsTheHostNothing) {
    Gui().OnFrame(16);
    effect->Set(100, 1.0f);
    effect->Set(24 + 4 * 1, 0.0f); // channel 2 of group 1
    host.calls.clear();
    Gui().OnFrame(16);
    EXPECT_EQ(Oversampling().Text(), u"OS x8");
    EXPECT_EQ(Widget<CChannelBtn>(1).Value(), 0.0f);
    for (const auto& call : host.calls) EXPECT_NE(call.opcode, VST::audioMasterAutomate);
}

TEST_F(Widgets, AnAutomatedGroupButtonShowsItsGroupAndClearsTheOthers) {
    effect->Set(90, 1.0f);
    Gui().OnFrame(16);
    EXPECT_EQ(Device().GetCurrentGroup(), 2);
    EXPECT_EQ(effect->Get(88), 0.0f);
    EXPECT_EQ(effect->Get(90), 1.0f);
    Gui().OnFrame(16);
    EXPECT_EQ(Device().GetCurrentGroup(), 2);
}

TEST_F(Widgets, AnEditReachesTheHostBetweenItsBeginningAndEnd) {
    host.calls.clear();
    Oversampling().Step(1);
    using Calls = std::vector<std::pair<std::int32_t, std::int32_t>>;
    EXPECT_EQ(Told(), (Calls{{VST::audioMasterBeginEdit, 100}, {VST::audioMasterAutomate, 100}}));
    host.calls.clear();
    Idle(99);
    EXPECT_EQ(Told(), Calls{});
    Idle(1);
    EXPECT_EQ(Told(), (Calls{{VST::audioMasterEndEdit, 100}}));
    EXPECT_EQ(Oversampling().Text(), u"OS x2");
    EXPECT_EQ(Device().GetParam(30, 0), 1.0f);
}

TEST_F(Widgets, TheChannelButtonsAreThoseOfTheCurrentGroup) {
    Gui().SetRouting("<map>0,-1|*|1,-1|*|2,-1</map>", 1);
    Device().SetCurrentGroup(1);
    Device().State().ApplyRouting();
    Widget<CChannelBtn>(2).SetValue(1.0f, false);
    EXPECT_EQ(Device().GetParam(103, 0), 1.0f);
    EXPECT_EQ(Device().GetParam(3, 0), 0.0f);
}

TEST_F(Widgets, LatencyReachesTheHostOncePerChange) {
    Gui().OnFrame(16);
    Idle(0);
    EXPECT_EQ(effect->Record().initialDelay, 64);
    host.calls.clear();
    Gui().OnFrame(16);
    Idle(0);
    EXPECT_EQ(host.Count(VST::audioMasterIOChanged), 0u);
    effect->Set(100, 1.0f);
    Gui().OnFrame(16);
    EXPECT_EQ(effect->Record().initialDelay, 64) << "before the host's idle call";
    EXPECT_EQ(host.Count(VST::audioMasterIOChanged), 0u);
    Idle(0);
    EXPECT_EQ(effect->Record().initialDelay, 512);
    EXPECT_EQ(host.Count(VST::audioMasterIOChanged), 1u);
}

TEST_F(Widgets, LatencyIsRefreshedInSilenceWheneverTheHostSetsAChunk) {
    EXPECT_EQ(effect->Record().initialDelay, 0);
    host.calls.clear();
    SetChunk("<patch_format>textual</patch_format>\r\n<param tag=\"30\" >3</param>", true);
    EXPECT_EQ(effect->Record().initialDelay, 512);
    EXPECT_EQ(host.Count(VST::audioMasterIOChanged), 0u);
}

#if !defined(_WIN32) // there a test shares the registry with all others
TEST_F(Widgets, TheEditorBeginsWithTheUsersWidth) {
    const std::int32_t width = 1000;
    ASSERT_NE(Utils::WriteUniversal(
                  u"HKEY_CURRENT_USER/Software/Kavelin/KAV Sorrel Limiter/Width", &width, sizeof(width)),
        0u);
    Renew();
    EXPECT_EQ(Gui().Width(), 1000);
    EXPECT_EQ(Gui().Height(), 733);
}
#endif

TEST_F(Widgets, AWidthHasTheHeightThatSinglePrecisionGivesIt) {
    // The aspect 1.363472 is the float 11437632 / 2^23. The quotient is rounded to 24 bits, ties to even, and
    // then truncated. Integers do all of that here.
    constexpr std::uint64_t AspectBits = 11437632;
    const auto heightOf = [](std::uint64_t widthAsked) {
        int bits = 23; // behind the point
        std::uint64_t dividend = widthAsked << bits;
        while (dividend / AspectBits < (1u << 23)) {
            dividend <<= 1;
            ++bits;
        }
        std::uint64_t quotient = dividend / AspectBits;
        const std::uint64_t twice = 2 * (dividend % AspectBits);
        if (twice > AspectBits || (twice == AspectBits && quotient % 2 == 1)) ++quotient;
        return static_cast<std::int32_t>(quotient >> (bits - 23));
    };
    for (std::int32_t width = 500; width <= 32767; ++width) {
        Device().State().ResizeToWidth(width);
        ASSERT_EQ(Gui().Width(), width);
        ASSERT_EQ(Gui().Height(), heightOf(static_cast<std::uint64_t>(width))) << width;
    }
    for (std::int32_t width = 2; width < 500; ++width) { // the least width, with the height of the one asked
        Device().State().ResizeToWidth(width);
        ASSERT_EQ(Gui().Width(), 500);
        ASSERT_EQ(Gui().Height(), heightOf(static_cast<std::uint64_t>(width))) << width;
    }
    for (const std::int32_t times : {1, 2, 3}) { // the panel as it is drawn, and whole multiples of it
        Device().State().ResizeToWidth(754 * times);
        EXPECT_EQ(Gui().Height(), 553 * times);
    }
}

TEST_F(Widgets, AProjectThatIsReloadedKeepsTheEditorsSize) {
    for (const std::int32_t width : {754, 1508, 2262}) {
        Device().State().ResizeToWidth(width);
        const std::int32_t height = Gui().Height();
        const auto project = Chunk(false);
        Renew();
        ASSERT_TRUE(SetChunk(project, false));
        EXPECT_EQ(Gui().Width(), width);
        EXPECT_EQ(Gui().Height(), height);
        EXPECT_EQ(Gui().Height(), width / 754 * 553);
    }
}

TEST_F(Widgets, AListMayBeEmptyOrOfOne) {
    GUI::SWidgetInfo info;
    GUI::CValueDisplay display(Gui(), info);
    display.Step(1);
    display.SetItem(0, false);
    EXPECT_EQ(display.Item(), 0);
    display.SetItems({u"one"});
    EXPECT_EQ(display.Text(), u"one");
    display.SetItem(0, false);
    display.Step(-1);
    EXPECT_EQ(display.Item(), 0);
    display.SetItems({u"one", u"two", u"three"});
    display.SetItem(2, false);
    EXPECT_EQ(display.Text(), u"three");
    EXPECT_EQ(display.Value(), 1.0f);
    display.SetItem(3, false);
    display.SetItem(-1, false);
    EXPECT_EQ(display.Item(), 2);
    display.SetValue(0.4f, false);
    EXPECT_EQ(display.Item(), 1);
    display.SetPlain(-3.0f, false);
    EXPECT_EQ(display.GetPlain(), 0.0f);
}

TEST_F(Widgets, ATextOutsideTheListLeavesThePlaceInIt) {
    GUI::SWidgetInfo info;
    info.sList = u"a||b||c";
    GUI::CValueDisplay display(Gui(), info);
    display.SetText(u"b");
    EXPECT_EQ(display.Item(), 1);
    display.SetText(u"x");
    EXPECT_EQ(display.Item(), 1);
    EXPECT_EQ(display.Text(), u"x");
    display.ShowItem(1);
    EXPECT_EQ(display.Text(), u"x");
    display.ShowItem(2);
    EXPECT_EQ(display.Text(), u"c");
}

TEST_F(Widgets, TheTextThatIsShownAlreadyLeavesThePlaceInTheList) {
    GUI::SWidgetInfo info;
    info.sList = u"a||b||a||b";
    GUI::CValueDisplay display(Gui(), info);
    display.SetItem(2, false);
    display.SetText(u"a");
    EXPECT_EQ(display.Item(), 2);
    EXPECT_EQ(display.Value(), 2.0f / 3.0f);
    display.ShowItem(3);
    display.SetText(u"b");
    EXPECT_EQ(display.Item(), 3);
    EXPECT_EQ(display.Value(), 1.0f);
    display.SetText(u"a");
    EXPECT_EQ(display.Item(), 0) << "a new text is looked for from the beginning";
}

TEST_F(Widgets, ASizeNeedsAWidthAndAHeight) {
    const std::pair<std::int32_t, std::int32_t> before{Gui().Width(), Gui().Height()};
    for (const auto& [width, height] :
        std::vector<std::pair<std::int32_t, std::int32_t>>{{900, 0}, {0, 700}, {900, -1}, {-1, 700}}) {
        Gui().ResizeTo(width, height);
        EXPECT_EQ(Gui().Width(), before.first) << width << " x " << height;
        EXPECT_EQ(Gui().Height(), before.second) << width << " x " << height;
    }
    Gui().ResizeTo(1, 1);
    EXPECT_EQ(Gui().Width(), 500);
    EXPECT_EQ(Gui().Height(), 1);
    VST::ERect* rectangle = nullptr;
    effect->Dispatch(VST::effEditGetRect, 0, 0, &rectangle);
    ASSERT_NE(rectangle, nullptr);
    EXPECT_EQ(rectangle->left, 0);
    EXPECT_EQ(rectangle->top, 0);
    EXPECT_EQ(rectangle->right, 500);
    EXPECT_EQ(rectangle->bottom, 1);
}

TEST_F(Widgets, WhatHasNoParameterBeginsAndEndsNoEditOfTheHosts) {
    for (const char* const name : {"a.kvp", "b.kvp"})
        WriteText(documents.Patch(name), "<patch_format>textual</patch_format>\r\n<plugin_id>1936683628</"
                                         "plugin_id><patch_name></patch_name>");
    for (const char* const name : {"a.kvt", "b.kvt"}) WriteText(documents.Routing(name), "<map>0,-1</map>");
    Renew();
    host.calls.clear();
    Widget<CPatch>().Step(1);
    Widget<CRouting>().Step(1);
    Idle(1000);
    EXPECT_EQ(Device().State().PatchName(), u"b");
    EXPECT_EQ(Gui().GetRouting(0), "<map>0,-1</map>");
    EXPECT_EQ(host.Count(VST::audioMasterBeginEdit), 0u);
    EXPECT_EQ(host.Count(VST::audioMasterEndEdit), 0u);
}

TEST_F(Widgets, TheHintIsMadeFromItsRowOfThePanel) {
    const auto& row = Panel::HintRow();
    const auto& hint = Gui().Hint();
    EXPECT_EQ(hint.fFontSize, static_cast<float>(row.textSize));
    EXPECT_EQ(hint.nTextColor, row.textColour);
    for (const auto margin : {hint.nMrgL, hint.nMrgT, hint.nMrgR, hint.nMrgB}) EXPECT_EQ(margin, row.margin);
    for (const auto inset : {hint.HotL(), hint.HotT(), hint.HotR(), hint.HotB()}) EXPECT_EQ(inset, row.inset);
    EXPECT_GT(row.margin, 0);
    EXPECT_GT(row.inset, 0);
    EXPECT_EQ(hint.sVisible.nRiseMs, static_cast<std::uint32_t>(row.fadeMs));
    EXPECT_EQ(hint.sVisible.nFallMs, static_cast<std::uint32_t>(row.fadeMs));
    EXPECT_GT(row.fadeMs, 0);
}

// Names of any length come from the user and from files.
TEST_F(Widgets, TextsOfTheUserEndInAnEllipsis) {
    std::size_t widgets = 0;
    const auto expectEllipses = [&](const auto& labels) {
        for (const auto* const label : labels) EXPECT_TRUE(label->bEllipsis);
        widgets += labels.size();
    };
    expectEllipses(Gui().FindAll<CPatch>());
    expectEllipses(Gui().FindAll<CRouting>());
    expectEllipses(Gui().FindAll<CFxBtn>());
    expectEllipses(Gui().FindAll<CChannelBtn>());
    expectEllipses(Gui().FindAll<CMacroBtn>());
    EXPECT_EQ(widgets, 1u + 1u + 4u + 16u + 5u);
    EXPECT_FALSE(Oversampling().bEllipsis);
}

TEST_F(Widgets, AGroupThatIsTurnedOffStaysTheOneThatIsShown) {
    Widget<CFxBtnCopy>().SetValue(1.0f, false);
    Widget<CFxBtn>(0).SetValue(0.0f, false);
    EXPECT_EQ(Device().GetCurrentGroup(), 0);
    EXPECT_EQ(Widget<CFxBtnCopy>().Value(), 1.0f);
}
