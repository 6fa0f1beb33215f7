// What a host hears from an instance, and when: from the edit to the host's callback.

#include "gui/value_display.h"
#include "tests/support/hand_clock.h"
#include "tests/support/state_fixture.h"

#include <thread>

using namespace KAV;
using namespace KAV::Tests;
using namespace KAV::VST;

namespace {

using Calls = std::vector<std::string>;

class HostRoad : public State {
protected:
    static constexpr std::int32_t Threshold = 33; // its host index is 4 in the first group

    CHandClock clock;

    /// The host's calls since the last query, as words.
    Calls Heard() {
        Calls heard;
        for (const auto& call : host.calls) {
            const auto index = std::to_string(call.index);
            switch (call.opcode) {
            case audioMasterBeginEdit:
                heard.push_back("begin " + index);
                break;
            case audioMasterAutomate:
                heard.push_back("value " + index + " " + std::to_string(call.option).substr(0, 5));
                break;
            case audioMasterEndEdit:
                heard.push_back("end " + index);
                break;
            case audioMasterSizeWindow:
                heard.push_back("size " + index + " " + std::to_string(call.value));
                break;
            default:
                heard.push_back("opcode " + std::to_string(call.opcode));
            }
        }
        host.calls.clear();
        return heard;
    }
    Calls HeardInIdle(std::uint32_t afterMs = 0) {
        clock.Advance(afterMs);
        effect->Dispatch(effEditIdle);
        return Heard();
    }
    Calls HeardAtClose() {
        effect->Dispatch(effEditClose);
        return Heard();
    }
    void Gesture(std::int32_t id, float normal) {
        Gui().BeginEdit(id);
        Gui().SetParameter(id, normal);
        Gui().EndEdit(id);
    }
    void SetUp() override { host.calls.clear(); }
};

const std::string IoChanged = "opcode 13";

} // namespace

TEST_F(HostRoad, SendsNothingToAnIdleHost) {
    EXPECT_EQ(HeardInIdle(), Calls{});
    EXPECT_EQ(HeardAtClose(), Calls{});
}

TEST_F(HostRoad, SendsAnEditAtOnceAndItsEndInALaterIdleCall) {
    Gui().BeginEdit(Threshold);
    EXPECT_EQ(Heard(), Calls{"begin 4"});
    Gui().SetParameter(Threshold, 0.25f);
    EXPECT_EQ(Heard(), Calls{"value 4 0.250"});
    Gui().EndEdit(Threshold);
    EXPECT_EQ(Heard(), Calls{});
    EXPECT_EQ(HeardInIdle(99), Calls{});
    EXPECT_EQ(HeardInIdle(1), Calls{"end 4"});
    EXPECT_EQ(HeardInIdle(1000), Calls{});
}

TEST_F(HostRoad, SendsAnEndThatWaitsWhenTheEditorCloses) {
    Gesture(Threshold, 0.25f);
    Heard();
    EXPECT_EQ(HeardAtClose(), Calls{"end 4"});
    EXPECT_EQ(HeardInIdle(1000), Calls{});
}

TEST_F(HostRoad, SendsAHostWithoutIdleCallsTheEndAfterALaterEdit) {
    Gesture(Threshold, 0.25f);
    Heard();
    clock.Advance(99);
    Gui().SetParameter(32, 0.5f);
    EXPECT_EQ(Heard(), Calls{"value 0 0.500"});
    clock.Advance(1);
    Gui().SetParameter(32, 0.75f);
    EXPECT_EQ(Heard(), (Calls{"end 4", "value 0 0.750"})) << "the older one first";
}

TEST_F(HostRoad, EmptiesTheQueueOnlyAfterOperationsThatAddToIt) {
    Gesture(Threshold, 0.25f);
    Heard();
    clock.Advance(1000);
    EXPECT_FALSE(Chunk(false).empty());
    Device().State().SetPatchName(u"name");
    Gui().OnFrame(16);
    Gui().BeginEdit(38); // names nothing
    Gui().EndEdit(38);
    effect->Set(4, 0.5f);
    EXPECT_EQ(Heard(), Calls{});
}

TEST_F(HostRoad, SendsAnUndoneValueAfterTheEndOfItsEdit) {
    Gui().EnableHistory(true);
    auto& oversampling = Widget<GUI::CValueDisplay>(2);
    oversampling.Step(1);
    Gui().Undo();
    EXPECT_EQ(Heard(), (Calls{"begin 100", "value 100 0.333"}));
    EXPECT_EQ(HeardInIdle(100), (Calls{"end 100", "value 100 0.000"}));
}

TEST_F(HostRoad, NamesTheParameterOfTheGroupInWhichItWasEdited) {
    host.answer = [this](AEffect*, std::int32_t opcode, std::int32_t, void*, float) -> std::intptr_t {
        if (opcode == audioMasterBeginEdit && host.calls.size() == 1) { // before anything else is passed on
            Gui().SetParameter(Threshold, 0.25f);
            Gui().EndEdit(Threshold);
            Device().SetCurrentGroup(2);
        }
        return 0;
    };
    Gui().BeginEdit(Threshold);
    host.answer = nullptr;
    EXPECT_EQ(Heard(), (Calls{"begin 4", "value 4 0.250"}));
    EXPECT_EQ(HeardInIdle(100), Calls{"end 4"});
    Gui().BeginEdit(Threshold);
    EXPECT_EQ(Heard(), Calls{"begin 6"});
}

TEST_F(HostRoad, SendsTheValueOfTheEditAndNotALaterOneOfTheHosts) {
    host.answer = [this](AEffect*, std::int32_t opcode, std::int32_t, void*, float) -> std::intptr_t {
        if (opcode == audioMasterBeginEdit) {
            Gui().SetParameter(Threshold, 0.25f);
            effect->Set(4, 0.75f);
        }
        return 0;
    };
    Gui().BeginEdit(Threshold);
    host.answer = nullptr;
    EXPECT_EQ(Heard(), (Calls{"begin 4", "value 4 0.250"}));
    EXPECT_EQ(effect->Get(4), 0.75f);
}

TEST_F(HostRoad, CallsAParameterEditedUntilItIsLetGoWhateverTheHostHasHeard) {
    Gui().BeginEdit(Threshold);
    EXPECT_TRUE(Device().IsEdited(4));
    Gui().SetParameter(Threshold, 0.25f);
    Gui().EndEdit(Threshold);
    EXPECT_FALSE(Device().IsEdited(4)) << "the end is still waiting";
    EXPECT_EQ(Heard().size(), 2u);
    host.answer = [this](AEffect*, std::int32_t opcode, std::int32_t, void*, float) -> std::intptr_t {
        if (opcode == audioMasterBeginEdit) {
            EXPECT_TRUE(Device().IsEdited(0));
        }
        return 0;
    };
    Gui().BeginEdit(32);
    host.answer = nullptr;
    EXPECT_EQ(Heard(), Calls{"begin 0"});
}

TEST_F(HostRoad, KeepsALatencyForTheIdleCallAndSetsTheRecordFirst) {
    std::int32_t delay = -1;
    host.answer = [&](AEffect* record, std::int32_t opcode, std::int32_t, void*, float) -> std::intptr_t {
        if (opcode == audioMasterIOChanged) delay = record->initialDelay;
        return 0;
    };
    Gui().OnFrame(16);
    Gui().SetParameter(Threshold, 0.25f);
    EXPECT_EQ(Heard(), Calls{"value 4 0.250"});
    EXPECT_EQ(effect->Record().initialDelay, 0);
    EXPECT_EQ(HeardInIdle(), Calls{IoChanged});
    EXPECT_EQ(delay, 64);
    EXPECT_EQ(HeardInIdle(), Calls{});
}

TEST_F(HostRoad, SendsALatencyWhenTheEditorCloses) {
    Gui().OnFrame(16);
    EXPECT_EQ(HeardAtClose(), Calls{IoChanged});
    EXPECT_EQ(effect->Record().initialDelay, 64);
}

TEST_F(HostRoad, AsksForTheLastOfSeveralSizesInTheIdleCall) {
    Gui().CreateGUIWindow();
    for (const std::int32_t width : {600, 700, 100}) Gui().ResizeTo(width, 400);
    EXPECT_EQ(Heard(), Calls{});
    EXPECT_EQ(HeardInIdle(), Calls{"size 500 400"}) << "clamped to the smallest width";
    EXPECT_EQ(HeardInIdle(), Calls{});
    Gui().ResizeTo(500, 400);
    EXPECT_EQ(HeardInIdle(), Calls{}) << "the current size";
    Gui().ResizeTo(0, 400);
    EXPECT_EQ(HeardInIdle(), Calls{});
}

TEST_F(HostRoad, AsksForTheSizeOfAChunkAfterTheFrameThatShowsIt) {
    Gui().CreateGUIWindow();
    SetChunk("<patch_format>textual</patch_format>\r\n<gui_width>600</gui_width>\r\n", false);
    EXPECT_EQ(HeardInIdle(), Calls{});
    Gui().OnFrame(16);
    EXPECT_EQ(HeardInIdle(), (Calls{"size 600 440", IoChanged}));
    Device().State().SetPatchName(u"another");
    Gui().OnFrame(16);
    EXPECT_EQ(HeardInIdle(), Calls{});
}

TEST_F(HostRoad, AsksForNoSizeWithoutAWindow) {
    Gui().ResizeTo(600, 440);
    SetChunk("<patch_format>textual</patch_format>\r\n<gui_width>700</gui_width>\r\n", false);
    Gui().CreateGUIWindow();
    Gui().OnFrame(16);
    EXPECT_EQ(HeardInIdle(), Calls{IoChanged});
}

TEST_F(HostRoad, AsksForNoSizeWhenTheEditorCloses) {
    Gui().CreateGUIWindow();
    Gui().ResizeTo(600, 440);
    EXPECT_EQ(HeardAtClose(), Calls{});
    EXPECT_EQ(HeardInIdle(), Calls{});
}

TEST_F(HostRoad, SendsOnlyTheValuesOfAChunk) {
    SetChunk("<patch_format>textual</patch_format>\r\n<param tag=\"33\" >0.25</param>\r\n<param tag=\"30\" "
             ">3</param>",
        true);
    EXPECT_EQ(Heard(), (Calls{"value 4 0.250", "value 100 1.000"}));
    EXPECT_EQ(HeardInIdle(1000), Calls{});
}

TEST_F(HostRoad, SendsWhatHappensInsideAHostCallAfterOlderEntries) {
    host.answer = [this](AEffect*, std::int32_t opcode, std::int32_t index, void*, float) -> std::intptr_t {
        if (opcode == audioMasterAutomate && index == 4) {
            Gesture(32, 0.5f);
            effect->Dispatch(effEditIdle);
        }
        return 0;
    };
    SetChunk("<patch_format>textual</patch_format>\r\n<param tag=\"33\" >0.25</param>\r\n<param tag=\"30\" "
             ">3</param>",
        true);
    host.answer = nullptr;
    EXPECT_EQ(Heard(), (Calls{"value 4 0.250", "value 100 1.000", "begin 0", "value 0 0.500"}));
    EXPECT_EQ(HeardInIdle(100), Calls{"end 0"});
}

TEST_F(HostRoad, ClosesInsideAHostCall) {
    host.answer = [this](AEffect*, std::int32_t opcode, std::int32_t, void*, float) -> std::intptr_t {
        if (opcode == audioMasterAutomate) {
            Gui().EndEdit(Threshold);
            effect->Dispatch(effEditClose);
        }
        return 0;
    };
    Gui().BeginEdit(Threshold);
    Gui().SetParameter(Threshold, 0.25f);
    host.answer = nullptr;
    EXPECT_EQ(Heard(), (Calls{"begin 4", "value 4 0.250", "end 4"}));
}

TEST_F(HostRoad, IsTheSameWithoutAHost) {
    effect = std::make_unique<CHostedEffect>(nullptr);
    Gesture(Threshold, 0.25f);
    Gui().ResizeTo(600, 440);
    Gui().OnFrame(16);
    effect->Dispatch(effEditIdle);
    EXPECT_EQ(effect->Record().initialDelay, 64);
    effect->Dispatch(effEditClose);
}

TEST_F(HostRoad, EndsWithTheInstanceAndSendsNothingAfterwards) {
    Gesture(Threshold, 0.25f);
    Gui().OnFrame(16);
    Heard();
    effect.reset();
    EXPECT_EQ(Heard(), Calls{});
}
