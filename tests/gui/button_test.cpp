#include "gui/button.h"

#include "tests/gui/recording_root.h"

#include <array>
#include <gtest/gtest.h>
#include <limits>

using namespace KAV;
using namespace KAV::Tests;

namespace {

/// A button that also reports when its hook runs, as "5 is 1.000, item 0".
class CHookedButton final : public GUI::CButton {
public:
    CHookedButton(CRecordingRoot& root, const GUI::SWidgetInfo& info) : CButton(root, info), _root(root) {}
    void OnValueChanged(float normal, std::int32_t item) override {
        _root.told.push_back(std::to_string(Id()) + " is " +
                             Utils::FormatFixed(static_cast<double>(normal), 3) + ", item " +
                             std::to_string(item));
    }

private:
    CRecordingRoot& _root;
};

class Button : public testing::Test {
protected:
    using Told = std::vector<std::string>;

    CRecordingRoot root;
    CHookedButton first{root, WidgetInfo(1, 1.0f, 7)};
    CHookedButton second{root, WidgetInfo(2, 0.0f, 7)};
    CHookedButton third{root, WidgetInfo(3, 0.0f, 7)};
    CHookedButton ofOtherGroup{root, WidgetInfo(4, 1.0f, 8)};
    CHookedButton single{root, WidgetInfo(5, 1.0f)};
    CHookedButton single2{root, WidgetInfo(6, 1.0f)};
    CHookedButton unbound{root, WidgetInfo(-1)};

    std::array<float, 6> Values() const {
        return {first.Value(), second.Value(), third.Value(), ofOtherGroup.Value(), single.Value(),
            single2.Value()};
    }
    using All = std::array<float, 6>;
};

} // namespace

TEST_F(Button, TurnsTheOthersOfItsGroupOffBeforeItReportsItself) {
    EXPECT_TRUE(second.SetValue(1.0f, false));
    EXPECT_EQ(Values(), (All{0.0f, 1.0f, 0.0f, 1.0f, 1.0f, 1.0f}));
    EXPECT_EQ(root.told, (Told{"1 = 0.000", "1 is 0.000, item 0", "2 = 1.000", "2 is 1.000, item 0"}));
}

TEST_F(Button, ThatIsNotWhollyOnLeavesTheOthersOn) {
    EXPECT_TRUE(second.SetValue(0.5f, false));
    EXPECT_EQ(Values(), (All{1.0f, 0.5f, 0.0f, 1.0f, 1.0f, 1.0f}));
}

TEST_F(Button, ThatIsTurnedOffTurnsNoneOn) {
    EXPECT_TRUE(first.SetValue(0.0f, false));
    EXPECT_EQ(Values(), (All{0.0f, 0.0f, 0.0f, 1.0f, 1.0f, 1.0f}));
    EXPECT_EQ(root.told, (Told{"1 = 0.000", "1 is 0.000, item 0"}));
}

TEST_F(Button, WithoutAGroupStandsForItself) {
    single.SetValue(0.0f, false);
    root.told.clear();
    EXPECT_TRUE(single.SetValue(1.0f, false));
    EXPECT_EQ(Values(), (All{1.0f, 0.0f, 0.0f, 1.0f, 1.0f, 1.0f}));
    EXPECT_EQ(root.told, (Told{"5 = 1.000", "5 is 1.000, item 0"}));
}

TEST_F(Button, ReportsNoValueThatItHas) {
    EXPECT_FALSE(first.SetValue(1.0f, false));
    EXPECT_FALSE(first.SetValue(2.0f, false)) << "1 at most";
    EXPECT_FALSE(second.SetValue(-1.0f, false));
    EXPECT_FALSE(second.SetValue(std::numeric_limits<float>::quiet_NaN(), false));
    EXPECT_TRUE(root.told.empty());
}

TEST_F(Button, TakesTheDevicesValueWithoutReportingIt) {
    single.SetFromHost(0.0f);
    EXPECT_EQ(single.Value(), 0.0f);
    EXPECT_EQ(root.told, Told{"5 is 0.000, item 0"});
    single.SetValue(1.0f, false);
    EXPECT_EQ(root.told, (Told{"5 is 0.000, item 0", "5 = 1.000", "5 is 1.000, item 0"}));
}

TEST_F(Button, ThatTheDeviceTurnsOnReportsTheOthersOfItsGroup) {
    third.SetFromHost(1.0f);
    EXPECT_EQ(Values(), (All{0.0f, 0.0f, 1.0f, 1.0f, 1.0f, 1.0f}));
    EXPECT_EQ(root.told, (Told{"1 = 0.000", "1 is 0.000, item 0", "3 is 1.000, item 0"}));
}

TEST_F(Button, TakesNothingFromTheDeviceWithoutAParameter) {
    unbound.SetFromHost(1.0f);
    EXPECT_EQ(unbound.Value(), 0.0f);
    EXPECT_TRUE(root.told.empty());
}

TEST_F(Button, WithAListHasTheNearestItem) {
    auto info = WidgetInfo(9);
    info.sList = u"a||b||c";
    CHookedButton button(root, info);
    button.SetValue(0.74f, false);
    EXPECT_EQ(button.Item(), 1);
    button.SetValue(0.75f, false);
    EXPECT_EQ(button.Item(), 2);
    EXPECT_EQ(root.told.back(), "9 is 0.750, item 2");
}

TEST_F(Button, IsRecordedOnRequestIfItHasAParameter) {
    root.EnableHistory(true);
    unbound.SetValue(1.0f, true);
    EXPECT_EQ(root.Records(), 0u);
    single.SetValue(0.0f, false);
    single.SetFromHost(1.0f);
    EXPECT_EQ(root.Records(), 0u);
    single.SetValue(0.0f, true);
    EXPECT_EQ(root.Records(), 1u);
    CHookedButton ofParameter0(root, WidgetInfo(0));
    ofParameter0.SetValue(1.0f, true);
    EXPECT_EQ(root.Records(), 2u);
}

TEST_F(Button, IsRecordedEvenIfItsValueStays) {
    root.EnableHistory(true);
    EXPECT_FALSE(single.SetValue(1.0f, true));
    EXPECT_EQ(root.Records(), 1u);
    root.Undo();
    EXPECT_TRUE(root.told.empty());
    EXPECT_FALSE(root.CanUndo());
}

TEST_F(Button, UndoTurnsOnTheOneOfTheGroupThatWasOn) {
    root.EnableHistory(true);
    second.SetValue(1.0f, true);
    third.SetValue(1.0f, true);
    EXPECT_EQ(root.Records(), 2u);
    for (int turn = 0; turn < 2; ++turn) {
        root.Undo();
        EXPECT_EQ(Values(), (All{0.0f, 1.0f, 0.0f, 1.0f, 1.0f, 1.0f}));
        root.Undo();
        EXPECT_EQ(Values(), (All{1.0f, 0.0f, 0.0f, 1.0f, 1.0f, 1.0f}));
        root.Redo();
        EXPECT_EQ(Values(), (All{0.0f, 1.0f, 0.0f, 1.0f, 1.0f, 1.0f}));
        root.Redo();
        EXPECT_EQ(Values(), (All{0.0f, 0.0f, 1.0f, 1.0f, 1.0f, 1.0f}));
    }
}

TEST_F(Button, UndoReportsWhatItChanges) {
    root.EnableHistory(true);
    second.SetValue(1.0f, true);
    root.told.clear();
    root.Undo();
    EXPECT_EQ(root.told, (Told{"2 = 0.000", "2 is 0.000, item 0", "1 = 1.000", "1 is 1.000, item 0"}));
}

TEST_F(Button, OfAGroupWithNoneOnIsRecordedItself) {
    first.SetValue(0.0f, false);
    root.EnableHistory(true);
    second.SetValue(1.0f, true);
    root.Undo();
    EXPECT_EQ(Values(), (All{0.0f, 0.0f, 0.0f, 1.0f, 1.0f, 1.0f}));
    root.Redo();
    EXPECT_EQ(Values(), (All{0.0f, 1.0f, 0.0f, 1.0f, 1.0f, 1.0f}));
}
