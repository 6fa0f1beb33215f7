#include "gui/value_display.h"

#include "tests/gui/recording_root.h"

#include <gtest/gtest.h>
#include <limits>
#include <set>

using namespace KAV;
using namespace KAV::Tests;

namespace {

class CDisplay final : public GUI::CValueDisplay {
public:
    CDisplay(CRecordingRoot& root, const GUI::SWidgetInfo& info) : CValueDisplay(root, info), _root(root) {}
    bool IsItemEnabled(std::int32_t item, const std::u16string&) override { return !disabled.contains(item); }
    void OnValueChanged(float, std::int32_t item) override {
        _root.told.push_back("item " + std::to_string(item));
    }

    std::set<std::int32_t> disabled;

private:
    CRecordingRoot& _root;
};

class ValueDisplay : public testing::Test {
protected:
    using Told = std::vector<std::string>;

    static GUI::SWidgetInfo Info(std::int32_t id, std::u16string_view list, float value = 0.0f) {
        auto info = WidgetInfo(id, value);
        info.sList = list;
        return info;
    }

    CRecordingRoot root;
    CDisplay display{root, Info(5, u"a||b||c||d||e")};
    CDisplay plain{root, Info(6, u"", 0.25f)};
};

} // namespace

TEST_F(ValueDisplay, BeginsWithTheItemNearestToItsValue) {
    EXPECT_EQ(CDisplay(root, Info(1, u"a||b||c", 0.0f)).Item(), 0);
    EXPECT_EQ(CDisplay(root, Info(1, u"a||b||c", 0.24f)).Item(), 0);
    EXPECT_EQ(CDisplay(root, Info(1, u"a||b||c", 0.25f)).Item(), 1);
    EXPECT_EQ(CDisplay(root, Info(1, u"a||b||c", 1.0f)).Item(), 2);
    EXPECT_EQ(CDisplay(root, Info(1, u"", 1.0f)).Item(), 0);
    EXPECT_EQ(CDisplay(root, Info(1, u"a||b||c", 5.0f)).Value(), 1.0f);
}

TEST_F(ValueDisplay, SplitsItsListAtTwoBars) {
    EXPECT_EQ(CDisplay(root, Info(1, u"a|x||b||")).Items(), (std::vector<std::u16string>{u"a|x", u"b", u""}));
    EXPECT_EQ(plain.ItemCount(), 0);
}

TEST_F(ValueDisplay, ReportsItsValueBeforeItsHookRuns) {
    EXPECT_TRUE(display.SetValue(0.5f, false));
    EXPECT_EQ(root.told, (Told{"5 = 0.500", "item 2"}));
    EXPECT_EQ(display.Text(), u"c");
    EXPECT_FALSE(display.SetValue(0.5f, false));
    EXPECT_EQ(root.told.size(), 2u);
}

TEST_F(ValueDisplay, HoldsItsValueTo0And1) {
    plain.SetValue(7.0f, false);
    EXPECT_EQ(plain.Value(), 1.0f);
    plain.SetValue(-7.0f, false);
    EXPECT_EQ(plain.Value(), 0.0f);
    plain.SetValue(std::numeric_limits<float>::infinity(), false);
    EXPECT_EQ(plain.Value(), 1.0f);
    plain.SetValue(std::numeric_limits<float>::quiet_NaN(), false);
    EXPECT_EQ(plain.Value(), 0.0f);
    EXPECT_EQ(root.told,
        (Told{"6 = 1.000", "item 0", "6 = 0.000", "item 0", "6 = 1.000", "item 0", "6 = 0.000", "item 0"}));
}

TEST_F(ValueDisplay, WithoutAListKeepsItsText) {
    plain.SetText(u"any");
    plain.SetValue(0.75f, false);
    EXPECT_EQ(plain.Text(), u"any");
}

TEST_F(ValueDisplay, EachItemStandsForItsPartOfTheRange) {
    for (std::int32_t item = 4; item >= 0; --item) {
        display.SetItem(item, false);
        EXPECT_EQ(display.Item(), item);
        EXPECT_EQ(display.Value(), static_cast<float>(item) / 4.0f);
    }
    display.SetItem(3, false);
    root.told.clear();
    display.SetItem(5, false);
    display.SetItem(-1, false);
    EXPECT_EQ(display.Item(), 3);
    EXPECT_TRUE(root.told.empty());
}

TEST_F(ValueDisplay, TakesTheDevicesValueWithoutReportingIt) {
    display.SetFromHost(0.75f);
    EXPECT_EQ(display.Text(), u"d");
    EXPECT_EQ(root.told, Told{"item 3"});
    display.SetValue(0.25f, false);
    EXPECT_EQ(root.told, (Told{"item 3", "5 = 0.250", "item 1"}));
}

TEST_F(ValueDisplay, TakesNothingFromTheDeviceWithoutAParameter) {
    for (const std::int32_t id : {-1, -2, -57}) {
        CDisplay unbound(root, Info(id, u"a||b", 1.0f));
        unbound.SetFromHost(0.0f);
        EXPECT_EQ(unbound.Item(), 1) << id;
    }
    EXPECT_TRUE(root.told.empty());
    CDisplay ofParameter0(root, Info(0, u"a||b", 1.0f));
    ofParameter0.SetFromHost(0.0f);
    EXPECT_EQ(ofParameter0.Item(), 0);
}

TEST_F(ValueDisplay, AStepIsOneEditAndOneStepOfHistory) {
    root.EnableHistory(true);
    display.Step(1);
    EXPECT_EQ(root.told, (Told{"begin 5", "5 = 0.250", "item 1", "end 5"}));
    EXPECT_EQ(root.Records(), 1u);
    root.Undo();
    EXPECT_EQ(display.Text(), u"a");
}

TEST_F(ValueDisplay, StepsPassOverItemsThatAreDisabled) {
    display.disabled = {1, 2};
    display.Step(1);
    EXPECT_EQ(display.Item(), 3);
    display.Step(-1);
    EXPECT_EQ(display.Item(), 0);
}

TEST_F(ValueDisplay, StepsEndWhereNoItemIsLeft) {
    root.EnableHistory(true);
    display.disabled = {3, 4};
    display.Step(-1);
    EXPECT_TRUE(root.told.empty()) << "the first item";
    display.SetItem(2, false);
    root.told.clear();
    display.Step(1);
    EXPECT_TRUE(root.told.empty()) << "the last one that is enabled";
    EXPECT_EQ(display.Item(), 2);
    plain.Step(1);
    plain.Step(-1);
    EXPECT_TRUE(root.told.empty()) << "no items";
    EXPECT_EQ(root.Records(), 0u);
}

TEST_F(ValueDisplay, ANewListKeepsTheValueAndShowsItsItem) {
    display.SetItem(4, false);
    root.told.clear();
    display.SetItems({u"x", u"y"});
    EXPECT_EQ(display.Value(), 1.0f);
    EXPECT_EQ(display.Text(), u"y");
    EXPECT_EQ(display.Item(), 1);
    display.SetItems({});
    EXPECT_EQ(display.Text(), u"y");
    EXPECT_EQ(display.Item(), 0);
    EXPECT_TRUE(root.told.empty());
}

TEST_F(ValueDisplay, ATextOfTheListSelectsItsItemAndReportsNothing) {
    root.EnableHistory(true);
    display.SetText(u"d");
    EXPECT_EQ(display.Item(), 3);
    EXPECT_EQ(display.Value(), 0.75f);
    display.ShowItem(1);
    EXPECT_EQ(display.Text(), u"b");
    EXPECT_EQ(display.Value(), 0.25f);
    display.ShowItem(5);
    display.ShowItem(-1);
    EXPECT_EQ(display.Text(), u"b");
    EXPECT_TRUE(root.told.empty());
    EXPECT_EQ(root.Records(), 0u);
}

TEST_F(ValueDisplay, ItsPlainValueIsItsPosition) {
    plain.SetPlain(0.75f, false);
    EXPECT_EQ(plain.Value(), 0.75f);
    EXPECT_EQ(plain.GetPlain(), 0.75f);
    EXPECT_EQ(plain.ToNormal(0.5f), 0.5f);
}

// Two drags of one fader, with the value back at the same number in between.
TEST_F(ValueDisplay, ASecondChangeFromTheSameValueIsTheSameStep) {
    root.EnableHistory(true);
    plain.SetValue(0.5f, true);
    plain.SetValue(0.625f, false);
    plain.SetFromHost(0.25f);
    plain.SetValue(0.75f, true);
    EXPECT_EQ(root.Records(), 1u);
    root.Undo();
    EXPECT_EQ(plain.Value(), 0.25f);
    EXPECT_FALSE(root.CanUndo());
    root.Redo();
    EXPECT_EQ(plain.Value(), 0.75f);
}

TEST_F(ValueDisplay, ASecondChangeFromAnotherValueIsAnotherStep) {
    root.EnableHistory(true);
    plain.SetValue(0.5f, true);
    plain.SetValue(0.75f, true);
    EXPECT_EQ(root.Records(), 2u);
    root.Undo();
    EXPECT_EQ(plain.Value(), 0.5f);
    root.Undo();
    EXPECT_EQ(plain.Value(), 0.25f);
}

TEST_F(ValueDisplay, ChangesOfTwoWidgetsFromTheSameValueAreTwoSteps) {
    CDisplay other(root, Info(7, u"", 0.25f));
    root.EnableHistory(true);
    plain.SetValue(0.5f, true);
    plain.SetFromHost(0.25f);
    other.SetValue(0.5f, true);
    EXPECT_EQ(root.Records(), 2u);
    root.Undo();
    EXPECT_EQ(other.Value(), 0.25f);
    EXPECT_EQ(plain.Value(), 0.25f);
}

TEST_F(ValueDisplay, AStepThatCanBeRedoneMayBeTheSameAsANewOne) {
    root.EnableHistory(true);
    display.SetItem(1, true);
    plain.SetValue(0.5f, true);
    root.Undo(); // the step holds 0.5 from now on
    plain.SetFromHost(0.5f);
    plain.SetValue(0.75f, true);
    EXPECT_EQ(root.Records(), 2u);
    EXPECT_TRUE(root.CanRedo());
}

TEST_F(ValueDisplay, AnEqualValueIsRecordedAndReportedToNoOne) {
    root.EnableHistory(true);
    EXPECT_FALSE(plain.SetValue(0.25f, true));
    EXPECT_EQ(root.Records(), 1u);
    EXPECT_FALSE(plain.SetValue(0.25f, true));
    EXPECT_EQ(root.Records(), 1u) << "the same step again";
    root.Undo();
    root.Redo();
    EXPECT_TRUE(root.told.empty());
}

TEST_F(ValueDisplay, IsRecordedWithAParameterAlone) {
    root.EnableHistory(true);
    CDisplay unbound(root, Info(-1, u"a||b"));
    unbound.SetItem(1, true);
    EXPECT_EQ(root.Records(), 0u);
    CDisplay ofParameter0(root, Info(0, u"a||b"));
    ofParameter0.SetItem(1, true);
    EXPECT_EQ(root.Records(), 1u);
}
