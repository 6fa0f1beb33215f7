#include "device/value_flags.h"
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
    EXPECT_EQ(Gui().PatchName(), u"No KVP patches found!");
    EXPECT_FALSE(Gui().CanUndo());
    Gui().Undo();
    Gui().Redo();
    EXPECT_EQ(Threshold(), 0.25f);
    EXPECT_EQ(Gui().PatchName(), u"0.25");
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
