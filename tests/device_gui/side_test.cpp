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
    Gui().SwitchAB(0);
    EXPECT_EQ(Chunk(false), before);
    Threshold(0.75f);
    Gui().SwitchAB(1);
    EXPECT_EQ(Threshold(), 0.25f);
    Gui().SwitchAB(0);
    EXPECT_EQ(Threshold(), 0.75f);
}

TEST_F(Sides, TheLiveSideIsNotSwitchedTo) {
    Threshold(0.25f);
    Gui().SwitchAB(1);
    Threshold(0.5f);
    Gui().SwitchAB(1);
    EXPECT_EQ(Threshold(), 0.5f);
}

TEST_F(Sides, BringTheirRoutings) {
    Gui().SwitchAB(0);
    Gui().SetRouting("<kav_input_routing>\r\n\t<map>1,-1</map></kav_input_routing>", 2);
    Gui().SwitchAB(1);
    EXPECT_NE(Gui().GetRouting(2).find("0,-1|*|1,-1"), std::string::npos);
    Gui().SwitchAB(0);
    EXPECT_NE(Gui().GetRouting(2).find("<map>1,-1</map>"), std::string::npos);
}

TEST_F(Sides, ACopyLeavesTheRoutingOut) {
    Threshold(0.25f);
    Gui().CopyAB();
    Threshold(0.5f);
    Gui().SetRouting("<map>1,-1</map>", 0);
    Gui().SwitchAB(0);
    EXPECT_EQ(Threshold(), 0.25f);
    EXPECT_EQ(Gui().GetRouting(0), "<map>1,-1</map>");
    Gui().SwitchAB(1);
    EXPECT_EQ(Threshold(), 0.5f);
}

TEST_F(Sides, EachSwitchIsAStepOfHistory) {
    Gui().EnableHistory(true);
    Gui().SwitchAB(0);
    EXPECT_EQ(Gui().Records(), 0u); // nothing was loaded
    Threshold(0.5f);
    Gui().SwitchAB(1);
    EXPECT_EQ(Gui().Records(), 1u);
    Gui().SwitchAB(0);
    EXPECT_EQ(Gui().Records(), 2u);
}

TEST_F(Sides, AreNotPartOfAChunk) {
    Threshold(0.25f);
    Gui().CopyAB();
    const auto chunk = Chunk(false);
    Renew();
    ASSERT_TRUE(SetChunk(chunk, false));
    Threshold(0.5f);
    Gui().SwitchAB(0);
    EXPECT_EQ(Threshold(), 0.5f);
}
