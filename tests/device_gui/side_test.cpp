#include "device_gui/fx_button.h"
#include "tests/support/state_fixture.h"

using namespace KAV;
using namespace KAV::Tests;

namespace {

/// The two sides between which a user compares.
class Sides : public State {
protected:
    void Threshold(float value) { Device().SetParam(33, value, 0); }
    float Threshold() { return Device().GetParam(33, 0); }
};

} // namespace

TEST_F(Sides, TheFirstSwitchChangesNothingAndTheSecondBringsItsStateBack) {
    Threshold(0.25f);
    const auto before = Chunk(false);
    Device().State().SwitchAB(0);
    EXPECT_EQ(Chunk(false), before);
    Threshold(0.75f);
    Device().State().SwitchAB(1);
    EXPECT_EQ(Threshold(), 0.25f);
    Device().State().SwitchAB(0);
    EXPECT_EQ(Threshold(), 0.75f);
}

TEST_F(Sides, TheLiveSideIsNotSwitchedTo) {
    Threshold(0.25f);
    Device().State().SwitchAB(1);
    Threshold(0.5f);
    Device().State().SwitchAB(1);
    EXPECT_EQ(Threshold(), 0.5f);
}

TEST_F(Sides, BringTheirRoutings) {
    Device().State().SwitchAB(0);
    Gui().SetRouting("<kav_input_routing>\r\n\t<map>1,-1</map></kav_input_routing>", 2);
    Device().State().SwitchAB(1);
    EXPECT_NE(Gui().GetRouting(2).find("0,-1|*|1,-1"), std::string::npos);
    Device().State().SwitchAB(0);
    EXPECT_NE(Gui().GetRouting(2).find("<map>1,-1</map>"), std::string::npos);
}

TEST_F(Sides, ACopyLeavesTheRoutingOut) {
    Threshold(0.25f);
    Device().State().CopyAB();
    Threshold(0.5f);
    Gui().SetRouting("<map>1,-1</map>", 0);
    Device().State().SwitchAB(0);
    EXPECT_EQ(Threshold(), 0.25f);
    EXPECT_EQ(Gui().GetRouting(0), "<map>1,-1</map>");
    Device().State().SwitchAB(1);
    EXPECT_EQ(Threshold(), 0.5f);
}

TEST_F(Sides, EachSwitchIsAStepOfHistory) {
    Gui().EnableHistory(true);
    Device().State().SwitchAB(0);
    EXPECT_EQ(Gui().Records(), 0u); // nothing was loaded
    Threshold(0.5f);
    Device().State().SwitchAB(1);
    EXPECT_EQ(Gui().Records(), 1u);
    Device().State().SwitchAB(0);
    EXPECT_EQ(Gui().Records(), 2u);
}

TEST_F(Sides, AreNotPartOfAChunk) {
    Threshold(0.25f);
    Device().State().CopyAB();
    const auto chunk = Chunk(false);
    Renew();
    ASSERT_TRUE(SetChunk(chunk, false));
    Threshold(0.5f);
    Device().State().SwitchAB(0);
    EXPECT_EQ(Threshold(), 0.5f);
}

TEST_F(Sides, LeaveTheGroupsNamesAndTheSettingsAlone) {
    Device().State().SwitchAB(0);
    Widget<CFxBtn>(1).SetText(u"Drums");
    Gui().ResizeTo(900, 660);
    Device().Simd() = true;
    Device().GroupsParallel() = true;
    Device().AutoGain().rmsTime = 600.0;
    Device().State().SwitchAB(1);
    EXPECT_EQ(Widget<CFxBtn>(1).Text(), u"Drums");
    EXPECT_EQ(Gui().Width(), 900);
    EXPECT_TRUE(Device().Simd());
    EXPECT_TRUE(Device().GroupsParallel());
    EXPECT_EQ(Device().AutoGain().rmsTime, 600.0);
}

TEST_F(Sides, AreWholeStatesOfAllGroups) {
    Device().SetParam(333, 0.25f, 0);
    Device().AssignMacro(4, 133, 0.75f);
    Device().State().SetPatchName(u"One");
    Device().State().SwitchAB(0);
    Device().SetParam(333, 0.5f, 0);
    Device().ClearMacros();
    Device().State().SetPatchName(u"Two");
    Device().State().SwitchAB(1);
    EXPECT_EQ(Device().GetParam(333, 0), 0.25f);
    EXPECT_EQ(Device().tags[4][0], 133);
    EXPECT_EQ(Device().State().PatchName(), u"One");
    Device().State().SwitchAB(0);
    EXPECT_EQ(Device().GetParam(333, 0), 0.5f);
    EXPECT_EQ(Device().tags[4][0], CMacro::NoTag);
    EXPECT_EQ(Device().State().PatchName(), u"Two");
}

TEST_F(Sides, TheLastCopyIsTheOtherSide) {
    Threshold(0.25f);
    Device().State().CopyAB();
    Threshold(0.5f);
    Device().State().CopyAB();
    EXPECT_EQ(Threshold(), 0.5f);
    Threshold(0.75f);
    Device().State().SwitchAB(0);
    EXPECT_EQ(Threshold(), 0.5f);
    Device().State().SwitchAB(1);
    EXPECT_EQ(Threshold(), 0.75f);
}
