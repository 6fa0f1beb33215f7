// The exchange between widgets and device, which needs no window.

#include "device/value_flags.h"
#include "device_gui/channel_button.h"
#include "device_gui/fx_button.h"
#include "device_gui/patch_display.h"
#include "gui/value_display.h"
#include "tests/support/state_fixture.h"
#include "utils/location.h"

using namespace KAV;
using namespace KAV::Tests;

namespace {

class Widgets : public State {
protected:
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
    EXPECT_EQ(Told(), (std::vector<std::pair<std::int32_t, std::int32_t>>{{VST::audioMasterBeginEdit, 100},
                          {VST::audioMasterAutomate, 100}, {VST::audioMasterEndEdit, 100}}));
    EXPECT_EQ(Oversampling().Text(), u"OS x2");
    EXPECT_EQ(Device().GetParam(30, 0), 1.0f);
}

TEST_F(Widgets, TheChannelButtonsAreThoseOfTheCurrentGroup) {
    Gui().SetRouting("<map>0,-1|*|1,-1|*|2,-1</map>", 1);
    Device().SetCurrentGroup(1);
    Gui().ApplyRouting();
    Widget<CChannelBtn>(2).SetValue(1.0f, false);
    EXPECT_EQ(Device().GetParam(103, 0), 1.0f);
    EXPECT_EQ(Device().GetParam(3, 0), 0.0f);
}

TEST_F(Widgets, LatencyReachesTheHostOncePerChange) {
    Gui().OnFrame(16);
    EXPECT_EQ(effect->Record().initialDelay, 64);
    host.calls.clear();
    Gui().OnFrame(16);
    EXPECT_EQ(host.Count(VST::audioMasterIOChanged), 0u);
    effect->Set(100, 1.0f);
    Gui().OnFrame(16);
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
