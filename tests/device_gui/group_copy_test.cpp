#include "device/value_flags.h"
#include "device_gui/fx_button.h"
#include "tests/support/state_fixture.h"

using namespace KAV;
using namespace KAV::Tests;

namespace {

class GroupCopy : public State {
protected:
    float Value(std::int32_t tag) { return Device().GetParam(tag, BaseValue); }
    void SetGroup(int group, float value) {
        for (const int tag : {32, 33, 36, 37}) Device().SetParam(tag + 100 * group, value, RawBase);
        for (const int tag : {34, 35, 21, 22})
            Device().SetParam(tag + 100 * group, value > 0.5f ? 1.0f : 0.0f, 0);
    }
};

} // namespace

TEST_F(GroupCopy, GivesTheOtherGroupItsValuesAndLeavesTheRest) {
    SetGroup(1, 0.75f);
    SetGroup(2, 0.25f);
    Device().SetParam(103, 1.0f, 0);
    Device().SetParam(201, 1.0f, 0);
    Device().SetParam(202, 1.0f, 0);
    Device().SetParam(29, 0.125f, RawBase);
    const auto routing = Gui().GetRouting(2);
    Device().SetCurrentGroup(2);
    Device().State().CopyGroup(1, 2);
    for (const int tag : {32, 33, 36, 37}) EXPECT_EQ(Value(200 + tag), 0.75f) << tag;
    for (const int tag : {34, 35, 21, 22}) EXPECT_EQ(Value(200 + tag), 1.0f) << tag;
    EXPECT_EQ(Value(201), 1.0f);
    EXPECT_EQ(Value(202), 1.0f);
    EXPECT_EQ(Value(203), 0.0f);
    EXPECT_EQ(Value(133), 0.75f);
    EXPECT_EQ(Value(33), 1.0f);
    EXPECT_EQ(Value(29), 0.125f);
    EXPECT_EQ(Gui().GetRouting(2), routing);
}

TEST_F(GroupCopy, TakesOffsetsOfMacrosIntoTheBaseAndKeepsTheMacros) {
    Device().AssignMacro(0, 33, 1.0f);
    Device().SetParam(33, 0.5f, RawBase);
    Device().SetParam(24, 0.625f, RawBase); // moves the threshold by 0.25
    Device().SetCurrentGroup(3);
    Device().State().CopyGroup(0, 3);
    EXPECT_EQ(Value(333), 0.75f);
    EXPECT_EQ(Value(33), 0.5f);
    EXPECT_EQ(Device().GetParam(33, 0), 0.75f);
    EXPECT_EQ(Device().tags[0][0], 33);
    EXPECT_EQ(Value(24), 0.625f);
}

TEST_F(GroupCopy, KeepsThePatchsName) {
    Device().State().SetPatchName(u"Mine");
    Device().SetCurrentGroup(1);
    Device().State().CopyGroup(0, 1);
    EXPECT_EQ(Device().State().PatchName(), u"Mine");
}

TEST_F(GroupCopy, OntoItselfDoesNothing) {
    host.calls.clear();
    Device().State().CopyGroup(0, 0);
    EXPECT_TRUE(host.calls.empty());
}

TEST_F(GroupCopy, IsOneStepOfHistory) {
    Gui().EnableHistory(true);
    SetGroup(0, 0.25f);
    Device().SetCurrentGroup(1);
    Device().State().CopyGroup(0, 1);
    EXPECT_EQ(Gui().Records(), 1u);
    Gui().Undo();
    EXPECT_EQ(Value(133), 1.0f);
    Gui().Redo();
    EXPECT_EQ(Value(133), 0.25f);
}

TEST_F(GroupCopy, HappensWhenAGroupIsSelectedInCopyMode) {
    SetGroup(0, 0.25f);
    Widget<CFxBtnCopy>().SetValue(1.0f, false);
    Widget<CFxBtn>(2).SetValue(1.0f, false);
    EXPECT_EQ(Device().GetCurrentGroup(), 2);
    EXPECT_EQ(Value(233), 0.25f);
    EXPECT_EQ(Widget<CFxBtnCopy>().Value(), 0.0f);
    Widget<CFxBtn>(3).SetValue(1.0f, false);
    EXPECT_EQ(Value(333), 1.0f);
}

TEST_F(GroupCopy, LeavingCopyModeCopiesNothing) {
    SetGroup(0, 0.25f);
    Widget<CFxBtnCopy>().SetValue(1.0f, false);
    Widget<CFxBtnCopy>().SetValue(0.0f, false);
    Widget<CFxBtn>(2).SetValue(1.0f, false);
    EXPECT_EQ(Value(233), 1.0f);
}

TEST_F(GroupCopy, TheButtonOfTheShownGroupKeepsCopyMode) {
    Widget<CFxBtnCopy>().SetValue(1.0f, false);
    Widget<CFxBtn>(0).SetValue(1.0f, false); // it is on already
    EXPECT_EQ(Widget<CFxBtnCopy>().Value(), 1.0f);
}

TEST_F(GroupCopy, LeavesTheGroupsNamesAlone) {
    Widget<CFxBtn>(0).SetText(u""); // a list of names would lose this one
    Widget<CFxBtn>(1).SetText(u"a</b");
    Device().SetCurrentGroup(1);
    Device().State().CopyGroup(0, 1);
    EXPECT_EQ(Widget<CFxBtn>(0).Text(), u"");
    EXPECT_EQ(Widget<CFxBtn>(1).Text(), u"a</b");
    EXPECT_EQ(Widget<CFxBtn>(2).Text(), u"3");
}
