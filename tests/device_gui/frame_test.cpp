// The exchange of each frame: widgets take the values of the device, and the host hears of a new latency.

#include "device/parameter_table.h"
#include "device/value_flags.h"
#include "device_gui/channel_button.h"
#include "device_gui/fx_button.h"
#include "device_gui/macro_button.h"
#include "device_gui/patch_display.h"
#include "device_gui/routing_display.h"
#include "gui/value_display.h"
#include "tests/support/state_fixture.h"

using namespace KAV;
using namespace KAV::Tests;

namespace {

std::string Document(const std::string& name, int entries, const std::string& labels) {
    std::string map;
    for (int n = 0; n < entries; ++n) map += (n > 0 ? "|*|" : "") + std::to_string(n) + ",-1";
    return "<kav_input_routing>\r\n\t<name>" + name + "</name>\r\n\t<map>" + map + "</map>\r\n\t<ch_names>" +
           labels + "</ch_names>\r\n</kav_input_routing>";
}

class Frame : public State {
protected:
    static constexpr std::int32_t OversamplingIndex = 100;
    static constexpr std::int32_t FirstGroupButtonIndex = 88;

    GUI::CValueDisplay& Oversampling() { return Widget<GUI::CValueDisplay>(2); }
    void Next() { Gui().OnFrame(16); }
    void Idle() { effect->Dispatch(VST::effEditIdle); }
    /// A fader for a parameter of the shown group, as the panel will have them.
    std::unique_ptr<GUI::CValueDisplay> Fader(std::int32_t id) {
        GUI::SWidgetInfo info;
        info.nId = id;
        return std::make_unique<GUI::CValueDisplay>(Gui(), info);
    }
    void WriteRouting(const std::string& name, int entries) {
        WriteText(documents.Routing(name + ".kvt"), Document(name, entries, ""));
    }
    void WritePatch(const std::string& name, const std::string& threshold) {
        WriteText(documents.Patch(name + ".kvp"),
            "<patch_format>textual</patch_format>\r\n<plugin_id>1936683628</plugin_id>\r\n<patch_name></"
            "patch_name>\r\n<param tag=\"33\" >" +
                threshold + "</param>\r\n");
    }
    std::vector<std::pair<std::int32_t, float>> Automated() {
        std::vector<std::pair<std::int32_t, float>> told;
        for (const auto& call : host.calls) {
            if (call.opcode == VST::audioMasterAutomate) told.emplace_back(call.index, call.option);
        }
        return told;
    }
};

using Automations = std::vector<std::pair<std::int32_t, float>>;

} // namespace

TEST_F(Frame, ShowsASelectorAtEachOfItsPositions) {
    const std::array<std::u16string_view, 4> texts{u"OS x1", u"OS x2", u"OS x4", u"OS x8"};
    for (const std::size_t index : {1u, 2u, 3u, 0u}) {
        effect->Set(OversamplingIndex, static_cast<float>(index) / 3.0f);
        Next();
        EXPECT_EQ(Oversampling().Text(), texts[index]);
        EXPECT_EQ(Oversampling().Item(), static_cast<std::int32_t>(index));
        EXPECT_EQ(Device().GetParam(30, 0), static_cast<float>(index)) << "and leaves the device alone";
    }
}

TEST_F(Frame, ShowsTheChannelsOfTheGroupThatIsShown) {
    for (int g = 0; g < 4; ++g) {
        Gui().SetRouting(Document("all", 16, ""), g);
        for (int n = 0; n < 16; ++n) Device().SetParam(n + 1 + 100 * g, (n + g) % 3 == 0 ? 1.0f : 0.0f, 0);
    }
    for (const int g : {2, 0, 3, 1}) {
        Widget<CFxBtn>(static_cast<std::size_t>(g)).SetValue(1.0f, false);
        Next();
        for (int n = 0; n < 16; ++n) {
            EXPECT_EQ(
                Widget<CChannelBtn>(static_cast<std::size_t>(n)).Value(), (n + g) % 3 == 0 ? 1.0f : 0.0f)
                << n << " of group " << g;
        }
    }
}

TEST_F(Frame, ShowsAFaderOfTheShownGroupAndOneOfAllGroups) {
    const auto threshold = Fader(33);
    const auto mainGain = Fader(23);
    for (int g = 0; g < 4; ++g) Device().SetParam(33 + 100 * g, 0.125f * static_cast<float>(g + 1), 0);
    Device().SetParam(23, 0.875f, 0);
    for (int g = 3; g >= 0; --g) {
        Device().SetCurrentGroup(g);
        Next();
        EXPECT_EQ(threshold->Value(), 0.125f * static_cast<float>(g + 1));
        EXPECT_EQ(mainGain->Value(), 0.875f);
    }
}

TEST_F(Frame, ShowsWhatIsHeardAndNotTheBaseUnderAMacro) {
    const auto threshold = Fader(33);
    Device().SetParam(33, 0.5f, RawBase);
    Device().SetParam(33, 0.25f, MacroOffset);
    Next();
    EXPECT_EQ(threshold->Value(), 0.75f);
    EXPECT_EQ(Device().GetParam(33, BaseValue), 0.5f);
}

TEST_F(Frame, LeavesTheSelectedPatchAlone) {
    for (const char* const name : {"a", "b", "c"}) WritePatch(name, "0.25");
    Renew();
    Gui().SelectPatch(1, false);
    Device().SetParam(33, 0.75f, 0);
    host.calls.clear();
    for (int i = 0; i < 3; ++i) Next();
    EXPECT_EQ(Device().State().CurrentPatch(), 1);
    EXPECT_EQ(Device().State().PatchName(), u"b");
    EXPECT_EQ(Widget<CPatch>().Item(), 1);
    EXPECT_EQ(Device().GetParam(33, 0), 0.75f);
    EXPECT_EQ(Automated(), Automations{});
}

TEST_F(Frame, LeavesTheSelectedRoutingAlone) {
    for (const char* const name : {"a", "b", "c"}) WriteRouting(name, 2);
    Renew();
    Device().State().SelectRouting(1, false);
    const auto before = Gui().GetRouting(0);
    for (int i = 0; i < 3; ++i) Next();
    EXPECT_EQ(Widget<CRouting>().Text(), u"b");
    EXPECT_EQ(Widget<CRouting>().Item(), 1);
    EXPECT_EQ(Gui().GetRouting(0), before);
}

TEST_F(Frame, LeavesCopyModeOn) {
    Device().SetParam(33, 0.25f, 0);
    Widget<CFxBtnCopy>().SetValue(1.0f, false);
    for (int i = 0; i < 3; ++i) Next();
    EXPECT_EQ(Widget<CFxBtnCopy>().Value(), 1.0f);
    Widget<CFxBtn>(1).SetValue(1.0f, false);
    EXPECT_EQ(Device().GetParam(133, 0), 0.25f);
}

TEST_F(Frame, LeavesTheNamesOfMacrosAlone) {
    Widget<CMacroBtn>(3).SetText(u"Air");
    Next();
    EXPECT_EQ(Widget<CMacroBtn>(3).Text(), u"Air");
    EXPECT_EQ(Widget<CMacroBtn>(3).Value(), 0.0f);
}

TEST_F(Frame, MakesNoStepOfHistory) {
    Gui().EnableHistory(true);
    effect->Set(OversamplingIndex, 1.0f);
    effect->Set(FirstGroupButtonIndex + 2, 1.0f);
    effect->Set(24 + 4 * 1, 0.0f); // channel 2 of group 1
    Next();
    Next();
    EXPECT_EQ(Gui().Records(), 0u);
}

TEST_F(Frame, AnAutomatedGroupComesWithItsRouting) {
    Gui().SetRouting(Document("LCR", 3, "L|*|C|*|R"), 2);
    effect->Set(FirstGroupButtonIndex + 2, 1.0f);
    Next();
    EXPECT_EQ(Device().GetCurrentGroup(), 2);
    EXPECT_EQ(Widget<CRouting>().Text(), u"LCR");
    EXPECT_EQ(Widget<CChannelBtn>(1).Text(), u"C");
    EXPECT_TRUE(Widget<CChannelBtn>(2).IsVisible());
    EXPECT_FALSE(Widget<CChannelBtn>(3).IsVisible());
    effect->Set(FirstGroupButtonIndex, 1.0f);
    Next();
    EXPECT_EQ(Device().GetCurrentGroup(), 0);
    EXPECT_EQ(Widget<CRouting>().Text(), u"Not found");
    EXPECT_EQ(Widget<CChannelBtn>(1).Text(), u"R");
    EXPECT_FALSE(Widget<CChannelBtn>(2).IsVisible());
}

TEST_F(Frame, AnAutomatedGroupReportsTheButtonThatItTurnsOffAndNothingElse) {
    effect->Set(FirstGroupButtonIndex + 2, 1.0f);
    // Its channels 1 and 2 are off, and the fourteen others leave it with the routing of two entries.
    Gui().SetRouting(Document("all", 16, ""), 2);
    host.calls.clear();
    Next();
    EXPECT_EQ(Automated(), (Automations{{FirstGroupButtonIndex, 0.0f}}));
    host.calls.clear();
    Next();
    EXPECT_EQ(Automated(), Automations{});
}

TEST_F(Frame, AGroupSelectedByTheUserComesWithItsRoutingAtOnce) {
    Gui().SetRouting(Document("LCR", 3, "L|*|C|*|R"), 3);
    Widget<CFxBtn>(3).SetValue(1.0f, true);
    EXPECT_EQ(Widget<CRouting>().Text(), u"LCR");
    EXPECT_EQ(Widget<CChannelBtn>(2).Text(), u"R");
    EXPECT_TRUE(Widget<CChannelBtn>(2).IsVisible());
}

TEST_F(Frame, AnEditGoesToTheGroupThatIsShown) {
    const auto threshold = Fader(33);
    Widget<CFxBtn>(2).SetValue(1.0f, false);
    Next();
    host.calls.clear();
    threshold->SetValue(0.25f, true);
    EXPECT_EQ(Device().GetParam(233, BaseValue), 0.25f);
    EXPECT_EQ(Device().GetParam(33, BaseValue), 1.0f);
    EXPECT_EQ(Automated(), (Automations{{HostIndexOf(233), 0.25f}}));
}

TEST_F(Frame, AnEditUnderAMacroSetsWhatIsHeardAndReportsTheBase) {
    const auto threshold = Fader(33);
    Device().SetParam(33, 0.5f, RawBase);
    Device().SetParam(33, 0.25f, MacroOffset);
    Next();
    host.calls.clear();
    threshold->SetValue(0.625f, true);
    EXPECT_EQ(Device().GetParam(33, 0), 0.625f);
    EXPECT_EQ(Device().GetParam(33, BaseValue), 0.375f);
    EXPECT_EQ(Automated(), (Automations{{HostIndexOf(33), 0.375f}}));
    Next();
    EXPECT_EQ(threshold->Value(), 0.625f);
}

TEST_F(Frame, ALatencyIsInTheRecordBeforeTheHostHearsOfIt) {
    std::vector<std::int32_t> seen;
    host.answer = [&](VST::AEffect* record, std::int32_t opcode, std::int32_t, void*, float) {
        if (opcode == VST::audioMasterIOChanged) seen.push_back(record->initialDelay);
        return std::intptr_t{0};
    };
    for (const float position : {0.0f, 1.0f, 0.0f}) {
        effect->Set(OversamplingIndex, position);
        Next();
        Idle();
        Next();
        Idle();
    }
    host.answer = nullptr;
    EXPECT_EQ(seen, (std::vector<std::int32_t>{64, 512, 64}));
}

TEST_F(Frame, ALatencyIsReportedOnceEvenIfTheHostAsksForTheNextFrameMeanwhile) {
    host.answer = [&](VST::AEffect*, std::int32_t opcode, std::int32_t, void*, float) {
        if (opcode == VST::audioMasterIOChanged && host.Count(opcode) < 10) Next();
        return std::intptr_t{0};
    };
    host.calls.clear();
    Next();
    Idle();
    host.answer = nullptr;
    Idle();
    EXPECT_EQ(host.Count(VST::audioMasterIOChanged), 1u);
}

TEST_F(Frame, ALatencyThatIsBackByTheNextFrameIsNotReported) {
    Next();
    Idle();
    host.calls.clear();
    effect->Set(OversamplingIndex, 1.0f);
    effect->Set(OversamplingIndex, 0.0f);
    Next();
    Idle();
    EXPECT_EQ(host.Count(VST::audioMasterIOChanged), 0u);
}

TEST_F(Frame, BringsWhatThePatchKeepsToAnOpenWindow) {
    Gui().CreateGUIWindow();
    Read("<patch_name>other</patch_name><fx_names>a|*|b</fx_names>");
    EXPECT_EQ(Widget<CFxBtn>(1).Text(), u"2") << "the widgets are the window's";
    Next();
    EXPECT_EQ(Widget<CFxBtn>(1).Text(), u"b");
    EXPECT_EQ(Widget<CPatch>().Text(), u"other");
    Gui().DestroyGUIWindow();
    Read("<fx_names>c</fx_names>");
    EXPECT_EQ(Widget<CFxBtn>(0).Text(), u"c") << "without a window at once";
}

TEST_F(Frame, AWindowBeginsWithThePresentState) {
    Gui().CreateGUIWindow();
    Read("<patch_name>one</patch_name>");
    Gui().DestroyGUIWindow();
    EXPECT_EQ(Widget<CPatch>().Text(), u"one");
}
