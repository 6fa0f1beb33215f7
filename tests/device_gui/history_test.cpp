#include "device/value_flags.h"
#include "device_gui/fx_button.h"
#include "device_gui/macro_button.h"
#include "device_gui/patch_display.h"
#include "device_gui/routing_display.h"
#include "gui/value_display.h"
#include "tests/support/state_fixture.h"

using namespace KAV;
using namespace KAV::Tests;

namespace {

class History : public State {
protected:
    float Threshold() { return Device().GetParam(33, 0); }
    void Load(const std::string& value) {
        Read("<patch_name>" + value + "</patch_name>\r\n<param tag=\"33\" >" + value + "</param>");
    }
    /// A fader for a parameter of the shown group, as the panel will have them.
    std::unique_ptr<GUI::CValueDisplay> Fader(std::int32_t id) {
        GUI::SWidgetInfo info;
        info.nId = id;
        auto fader = std::make_unique<GUI::CValueDisplay>(Gui(), info);
        Gui().OnFrame(16);
        host.calls.clear();
        return fader;
    }
};

} // namespace

TEST_F(History, WithTheEditorClosedAChunkAddsNoRecord) {
    Load("0.25");
    EXPECT_EQ(Gui().Records(), 0u);
    Gui().Undo();
    EXPECT_EQ(Threshold(), 0.25f);
}

TEST_F(History, APatchIsUndoneAndRedoneWithItsMacros) {
    Gui().EnableHistory(true);
    Device().AssignMacro(2, 37, 0.875f);
    Load("0.25");
    EXPECT_EQ(Device().tags[2][0], CMacro::NoTag);
    EXPECT_TRUE(Gui().CanUndo());
    EXPECT_FALSE(Gui().CanRedo());
    Gui().Undo();
    EXPECT_EQ(Threshold(), 1.0f);
    EXPECT_EQ(Device().tags[2][0], 37);
    EXPECT_EQ(Device().State().PatchName(), u"No KVP patches found!");
    EXPECT_FALSE(Gui().CanUndo());
    Gui().Undo();
    Gui().Redo();
    EXPECT_EQ(Threshold(), 0.25f);
    EXPECT_EQ(Device().State().PatchName(), u"0.25");
    EXPECT_FALSE(Gui().CanRedo());
    EXPECT_EQ(Gui().Records(), 1u);
}

TEST_F(History, LeavesTheRoutingAlone) {
    Gui().EnableHistory(true);
    Gui().SetRouting("<map>1,-1</map>", 0);
    Load("0.25");
    Gui().SetRouting("<map>0,-1</map>", 0);
    Gui().Undo();
    EXPECT_EQ(Gui().GetRouting(0), "<map>0,-1</map>");
}

TEST_F(History, LoadingTwiceInARowAddsARecordForEachStateThatWasReplaced) {
    Gui().EnableHistory(true);
    Load("0.25");
    Load("0.25");
    EXPECT_EQ(Gui().Records(), 2u);
    Load("0.25");
    EXPECT_EQ(Gui().Records(), 2u);
}

TEST_F(History, ANewStepDropsWhatCouldHaveBeenRedone) {
    Gui().EnableHistory(true);
    Load("0.1");
    Load("0.2");
    Load("0.3");
    Gui().Undo();
    Gui().Undo();
    Gui().Undo();
    EXPECT_FALSE(Gui().CanUndo());
    EXPECT_TRUE(Gui().CanRedo());
    Load("0.4");
    EXPECT_EQ(Gui().Records(), 1u);
    EXPECT_FALSE(Gui().CanRedo());
    Gui().Undo();
    EXPECT_EQ(Threshold(), 1.0f);
}

TEST_F(History, AWidgetsValueIsOneStep) {
    Gui().EnableHistory(true);
    auto& display = Widget<GUI::CValueDisplay>(2); // the oversampling, the one that is bound
    ASSERT_EQ(display.Id(), 30);
    display.Step(1);
    display.Step(1);
    EXPECT_EQ(Device().GetParam(30, 0), 2.0f);
    Gui().Undo();
    EXPECT_EQ(Device().GetParam(30, 0), 1.0f);
    Gui().Undo();
    EXPECT_EQ(Device().GetParam(30, 0), 0.0f);
    Gui().Redo();
    Gui().Redo();
    EXPECT_EQ(Device().GetParam(30, 0), 2.0f);
}

TEST_F(History, UndoReportsEveryValueToTheHostInItsOrder) {
    Gui().EnableHistory(true);
    Read("<multi_fx>true</multi_fx>\r\n<param tag=\"137\" >0.25</param>\r\n<param tag=\"30\" >2</param>");
    for (const bool isRedo : {false, true}) {
        host.calls.clear();
        isRedo ? Gui().Redo() : Gui().Undo();
        std::int32_t next = 0;
        for (const auto& call : host.calls) {
            if (call.opcode != VST::audioMasterAutomate) continue;
            EXPECT_EQ(call.index, next);
            EXPECT_EQ(call.option, effect->Get(next)) << next;
            ++next;
        }
        EXPECT_EQ(next, 109);
        EXPECT_EQ(Device().GetParam(137, 0), isRedo ? 0.25f : 1.0f);
        EXPECT_EQ(Device().GetParam(30, 0), isRedo ? 2.0f : 0.0f);
    }
}

TEST_F(History, UndoOfAWidgetReportsItsValueAlone) {
    Gui().EnableHistory(true);
    const auto threshold = Fader(33);
    threshold->SetValue(0.25f, true);
    host.calls.clear();
    Gui().Undo();
    ASSERT_EQ(host.calls.size(), 1u);
    EXPECT_EQ(host.calls[0].opcode, VST::audioMasterAutomate);
    EXPECT_EQ(host.calls[0].index, 4);
    EXPECT_EQ(host.calls[0].option, 1.0f);
}

TEST_F(History, DoesNothingWhileTheEditorIsClosedAndGoesOnAfterwards) {
    Gui().EnableHistory(true);
    Load("0.25");
    Load("0.5");
    Gui().Undo();
    Gui().EnableHistory(false);
    host.calls.clear();
    Gui().Undo();
    Gui().Redo();
    EXPECT_EQ(Threshold(), 0.25f);
    EXPECT_TRUE(host.calls.empty());
    EXPECT_TRUE(Gui().CanUndo());
    EXPECT_TRUE(Gui().CanRedo());
    Gui().EnableHistory(true);
    Gui().Redo();
    EXPECT_EQ(Threshold(), 0.5f);
    Gui().Undo();
    Gui().Undo();
    EXPECT_EQ(Threshold(), 1.0f);
}

TEST_F(History, ADragFromTheValueOfTheLastOneIsTheSameStep) {
    Gui().EnableHistory(true);
    const auto threshold = Fader(33);
    threshold->SetValue(0.5f, true);
    threshold->SetValue(0.375f, false);
    effect->Set(4, 1.0f); // the host brings it back
    Gui().OnFrame(16);
    threshold->SetValue(0.75f, true);
    threshold->SetValue(0.625f, false);
    EXPECT_EQ(Gui().Records(), 1u);
    Gui().Undo();
    EXPECT_EQ(Threshold(), 1.0f);
    EXPECT_FALSE(Gui().CanUndo());
    Gui().Redo();
    EXPECT_EQ(Threshold(), 0.625f);
}

TEST_F(History, AWidgetAndAPatchAreStepsOfTheirOwnWhateverTheyHold) {
    Gui().EnableHistory(true);
    const auto threshold = Fader(33);
    threshold->SetValue(0.5f, true);
    effect->Set(4, 1.0f);
    Gui().OnFrame(16);
    Load("1"); // the same value again
    EXPECT_EQ(Gui().Records(), 2u);
    threshold->SetValue(0.5f, true);
    EXPECT_EQ(Gui().Records(), 3u);
    Gui().Undo();
    EXPECT_EQ(Threshold(), 1.0f);
    EXPECT_EQ(Device().State().PatchName(), u"1");
    Gui().Undo();
    EXPECT_EQ(Device().State().PatchName(), u"No KVP patches found!");
}

// The newest step is the last of the list, even when it can only be redone.
TEST_F(History, APatchFromTheStateOfTheLastStepIsTheSameStepEvenAfterUndo) {
    Gui().EnableHistory(true);
    Load("0.1");
    Load("0.2");
    Gui().Undo(); // the last step holds the state of the second patch from now on
    Gui().EnableHistory(false);
    Load("0.2");
    Gui().EnableHistory(true);
    Load("0.3");
    EXPECT_EQ(Gui().Records(), 2u);
    EXPECT_TRUE(Gui().CanRedo());
    Gui().Undo();
    EXPECT_EQ(Threshold(), 1.0f);
}

TEST_F(History, TheSamePatchAfterAChangeIsAnotherStep) {
    Gui().EnableHistory(true);
    Load("0.25");
    Load("0.25");
    ASSERT_EQ(Gui().Records(), 2u);
    Device().SetParam(333, 0.5f, 0);
    Load("0.25");
    EXPECT_EQ(Gui().Records(), 3u);
    Gui().Undo();
    EXPECT_EQ(Device().GetParam(333, 0), 0.5f);
    Gui().Undo();
    EXPECT_EQ(Device().GetParam(333, 0), 1.0f);
}

TEST_F(History, StatesOfTheSameLengthAreTwoSteps) {
    Gui().EnableHistory(true);
    Load("0.25");
    Load("0.75");
    Load("0.50");
    EXPECT_EQ(Gui().Records(), 3u);
}

TEST_F(History, KeepsNeitherRoutingNorNamesNorSettings) {
    Gui().EnableHistory(true);
    Load("0.25");
    Gui().SetRouting("<kav_input_routing>\r\n\t<map>0,-1</map>\r\n</kav_input_routing>", 3);
    Widget<CFxBtn>(1).SetText(u"Drums");
    Gui().ResizeTo(900, 660);
    Device().Simd() = true;
    Device().GroupsParallel() = true;
    Device().AutoGain().filter = 0;
    Device().AutoGain().rmsTime = 600.0;
    SPlainPatch plain;
    plain.routings[3] = Gui().GetRouting(3);
    plain.groupNames[1] = "Drums";
    plain.width = 900;
    plain.simd = 1;
    plain.parallel = 1;
    plain.filter = 0;
    plain.rms = 600;
    Gui().Undo();
    EXPECT_EQ(Chunk(false), plain.Text(191));
    Gui().Redo();
    plain.name = "0.25";
    plain.values[33] = 0.25;
    EXPECT_EQ(Chunk(false), plain.Text(191));
}

TEST_F(History, BringsTheBypassAndTheNamesOfMacrosBack) {
    Gui().EnableHistory(true);
    Device().SetHostBypass(true);
    Widget<CMacroBtn>(0).SetText(u"Push");
    Read("<host_bypass>0</host_bypass><macro_group_names>Air</macro_group_names>");
    Gui().Undo();
    EXPECT_TRUE(Device().GetHostBypass());
    EXPECT_EQ(Widget<CMacroBtn>(0).Text(), u"Push");
    Gui().Redo();
    EXPECT_FALSE(Device().GetHostBypass());
    EXPECT_EQ(Widget<CMacroBtn>(0).Text(), u"Air");
}

TEST_F(History, AWidgetUnderAMacroComesBackToWhatWasHeard) {
    Gui().EnableHistory(true);
    const auto threshold = Fader(33);
    Device().AssignMacro(0, 33, 1.0f);
    Device().SetParam(33, 0.5f, RawBase);
    Device().SetParam(24, 0.625f, RawBase); // moves the threshold by 0.25
    Gui().OnFrame(16);
    threshold->SetValue(0.375f, true);
    ASSERT_EQ(Device().GetParam(33, BaseValue), 0.125f);
    Gui().Undo();
    EXPECT_EQ(Threshold(), 0.75f);
    EXPECT_EQ(Device().GetParam(33, BaseValue), 0.5f);
    Gui().Redo();
    EXPECT_EQ(Threshold(), 0.375f);
    EXPECT_EQ(Device().GetParam(33, BaseValue), 0.125f);
    Device().SetParam(24, 0.5f, RawBase); // no longer moves it
    Gui().Undo();
    EXPECT_EQ(Threshold(), 0.75f);
    EXPECT_EQ(Device().GetParam(33, BaseValue), 0.75f);
}

TEST_F(History, AMacroThatComesBackMovesItsTargets) {
    Gui().EnableHistory(true);
    const auto macro = Fader(26);
    Device().AssignMacro(2, 133, 1.0f);
    Device().SetParam(133, 0.5f, RawBase);
    Gui().OnFrame(16);
    macro->SetValue(0.625f, true);
    ASSERT_EQ(Device().GetParam(133, 0), 0.75f);
    Gui().Undo();
    EXPECT_EQ(Device().GetParam(133, 0), 0.5f);
    Gui().Redo();
    EXPECT_EQ(Device().GetParam(133, 0), 0.75f);
    EXPECT_EQ(Device().GetParam(133, BaseValue), 0.5f);
}

TEST_F(History, APatchUnderAMacroComesBackToItsBasesAndItsOffsets) {
    Gui().EnableHistory(true);
    Device().AssignMacro(0, 33, 1.0f);
    Device().SetParam(33, 0.5f, RawBase);
    Device().SetParam(24, 0.625f, RawBase);
    Read("<param tag=\"33\" >0.125</param>\r\n<param tag=\"24\" >0.5</param>\r\n<macro "
         "group=\"0\">33;0.000</macro>");
    EXPECT_EQ(Threshold(), 0.125f);
    Gui().Undo();
    EXPECT_EQ(Device().GetParam(33, BaseValue), 0.5f);
    EXPECT_EQ(Threshold(), 0.75f);
    Gui().Redo();
    EXPECT_EQ(Device().GetParam(33, BaseValue), 0.125f);
    EXPECT_EQ(Threshold(), 0.125f);
}

TEST_F(History, ASelectedGroupIsAStep) {
    Gui().EnableHistory(true);
    Gui().SetRouting(
        "<kav_input_routing>\r\n\t<name>G3</name>\r\n\t<map>0,-1</map>\r\n</kav_input_routing>", 2);
    const auto shown = [this] {
        EXPECT_EQ(Widget<CRouting>().Text(), Device().GetCurrentGroup() == 2 ? u"G3" : u"Not found");
        for (int g = 0; g < 4; ++g) {
            const float isOn = g == Device().GetCurrentGroup() ? 1.0f : 0.0f;
            EXPECT_EQ(Widget<CFxBtn>(static_cast<std::size_t>(g)).Value(), isOn) << g;
            EXPECT_EQ(Device().GetParam(17 + g, 0), isOn) << g;
        }
        return Device().GetCurrentGroup();
    };
    Widget<CFxBtn>(2).SetValue(1.0f, true);
    Widget<CFxBtn>(3).SetValue(1.0f, true);
    EXPECT_EQ(Gui().Records(), 2u);
    for (int turn = 0; turn < 2; ++turn) {
        EXPECT_EQ(shown(), 3);
        Gui().Undo();
        EXPECT_EQ(shown(), 2);
        Gui().Undo();
        EXPECT_EQ(shown(), 0);
        Gui().Redo();
        EXPECT_EQ(shown(), 2);
        Gui().Redo();
    }
    EXPECT_EQ(shown(), 3);
}

TEST_F(History, WhatHasNoParameterIsNoStepOfItsOwn) {
    for (const char* const name : {"a", "b"}) {
        WriteText(documents.Patch(std::string(name) + ".kvp"),
            "<patch_format>textual</patch_format>\r\n<plugin_id>1936683628</plugin_id>\r\n<patch_name></"
            "patch_name>\r\n<param tag=\"33\" >" +
                std::string(name[0] == 'a' ? "0.25" : "0.75") + "</param>\r\n");
        WriteText(documents.Routing(std::string(name) + ".kvt"), "<map>0,-1</map>");
    }
    Renew();
    Gui().EnableHistory(true);
    Widget<CRouting>().Step(1);
    Widget<CFxBtnCopy>().SetValue(1.0f, true);
    Widget<CMacroBtn>(0).SetValue(1.0f, true);
    EXPECT_EQ(Gui().Records(), 0u);
    Widget<CPatch>().Step(1);
    EXPECT_EQ(Gui().Records(), 1u) << "the patch that was loaded, and not its place in the list";
    Gui().Undo();
    EXPECT_EQ(Threshold(), 0.25f);
    EXPECT_FALSE(Gui().CanUndo());
    Gui().Redo();
    EXPECT_EQ(Threshold(), 0.75f);
}
