// What a person does to a display: press, menu and wheel.

#include "gui/value_display.h"
#include "tests/gui/doubled_editor.h"

#include <set>

using namespace KAV;
using namespace KAV::GUI;
using namespace KAV::Tests;

namespace {

/// Notes its hooks, and which entries it was asked about.
class CNoted final : public CValueDisplay {
public:
    CNoted(CRecordingRoot& root, const SWidgetInfo& info) : CValueDisplay(root, info), _root(root) {}
    bool IsItemEnabled(std::int32_t item, const std::u16string& text) override {
        asked.push_back(std::to_string(item) + " " + Utils::ToUtf8(text));
        return !disabled.contains(item);
    }
    bool IsItemShown(std::int32_t item, const std::u16string&) override { return !hidden.contains(item); }
    void BeforeSelect() override { _root.told.push_back("before"); }
    void AfterSelect() override { _root.told.push_back("after"); }
    void OnValueChanged(float, std::int32_t item) override {
        _root.told.push_back("item " + std::to_string(item));
    }

    std::set<std::int32_t> disabled;
    std::set<std::int32_t> hidden;
    Lines asked;

private:
    CRecordingRoot& _root;
};

class ValueDisplayMenu : public DoubledEditor {
protected:
    CNoted display{root, Info(5, 0.0f, u"a||b||c||d")};
};

} // namespace

TEST_F(ValueDisplayMenu, OpensAtTheReleaseOfTheLeftButton) {
    robot.Press(MidX, MidY);
    EXPECT_EQ(display.sPress.fTarget, 1.0f);
    EXPECT_EQ(window.Count("ShowMenu"), 0u);
    robot.Release(500, 300);
    EXPECT_EQ(display.sPress.fTarget, 0.0f);
    EXPECT_EQ(window.Count("ShowMenu"), 1u);
    robot.Click(MidX, MidY, MouseRight);
    EXPECT_EQ(window.Count("ShowMenu"), 1u);
}

TEST_F(ValueDisplayMenu, DoesNotOpenWhenThePressWasTaken) {
    robot.Press(MidX, MidY);
    robot.Release(MidX, MidY, MouseRight);
    EXPECT_EQ(display.sPress.fTarget, 0.0f);
    robot.Press(MidX, MidY);
    root.Show(false);
    EXPECT_EQ(display.sPress.fTarget, 0.0f);
    root.Show(true);
    robot.Release(MidX, MidY);
    robot.Press(MidX, MidY);
    window.client->OnCancel();
    EXPECT_EQ(display.sPress.fTarget, 0.0f);
    display.OnMouseDown(MidX, MidY, MouseLeft);
    display.OnMouseDown(MidX, MidY, MouseRight);
    display.OnMouseUp(MidX, MidY, MouseLeft);
    EXPECT_EQ(window.Count("ShowMenu"), 0u);
    EXPECT_EQ(display.sPress.fTarget, 0.0f);
}

TEST_F(ValueDisplayMenu, IsMadeOfItsList) {
    CNoted grouped(root, Info(-2, 0.0f, u"G_a||b-sep-||G_c||hidden"));
    grouped.disabled = {2};
    grouped.hidden = {3};
    grouped.SetText(u"b");
    grouped.ShowMenu();
    const SMenuItem sub{u"G", 0, false, true, false,
        {{u"G_a", 400, false, true, false, {}}, {u"G_c", 402, false, false, false, {}}}};
    EXPECT_EQ(
        window.menus.back(), (Menu{sub, {u"b", 401, true, true, false, {}}, {{}, 0, false, true, true, {}}}));
    EXPECT_EQ(grouped.asked, (Lines{"0 G_a", "1 b", "2 G_c"})) << "not about what isn't shown";
}

TEST_F(ValueDisplayMenu, ChecksEveryEntryOfTheTextThatIsShown) {
    CNoted twice(root, Info(6, 0.0f, u"a||b||a"));
    twice.SetText(u"a");
    twice.ShowMenu();
    EXPECT_TRUE(window.menus.back()[0].bChecked);
    EXPECT_FALSE(window.menus.back()[1].bChecked);
    EXPECT_TRUE(window.menus.back()[2].bChecked);
    EXPECT_EQ(window.menus.back()[2].nCommand, 6600u);
}

TEST_F(ValueDisplayMenu, DoesNotOpenWithoutEntries) {
    CValueDisplay empty(root, Info(6));
    empty.ShowMenu();
    EXPECT_TRUE(window.menus.empty());
}

TEST_F(ValueDisplayMenu, AsksOnlyAboutEntriesThatCanBeInIt) {
    std::vector<std::u16string> items;
    for (std::size_t n = 0; n < 250; ++n) items.push_back(std::u16string(n + 1, u'x'));
    CNoted list(root, Info(-2));
    list.SetItems(items);
    list.ShowMenu();
    EXPECT_EQ(list.asked.size(), 200u);
    EXPECT_EQ(window.menus.back().size(), 200u);
}

TEST_F(ValueDisplayMenu, AChoiceIsAnEditAndAStepOfHistory) {
    robot.Click(MidX, MidY);
    Told();
    EXPECT_TRUE(robot.Choose(u"c"));
    EXPECT_EQ(Told(), (Lines{"before", "begin 5", "5 = 0.667", "item 2", "end 5", "after"}));
    EXPECT_EQ(display.Text(), u"c");
    EXPECT_EQ(root.Records(), 1u);
    root.Undo();
    EXPECT_EQ(display.Item(), 0);
}

TEST_F(ValueDisplayMenu, AChoiceIsAnEditFromId2On) {
    for (const std::int32_t id : {-2, 0, 1}) {
        CNoted list(root, Info(id, 0.0f, u"a||b"));
        list.SelectItem(1);
        EXPECT_EQ(Told(), (Lines{"before", std::to_string(id) + " = 1.000", "item 1", "after"})) << id;
    }
    CNoted list(root, Info(2, 0.0f, u"a||b"));
    list.SelectItem(1);
    EXPECT_EQ(Told(), (Lines{"before", "begin 2", "2 = 1.000", "item 1", "end 2", "after"}));
}

TEST_F(ValueDisplayMenu, ThePresentItemOrOneThatIsGoneDoesNothing) {
    for (const std::int32_t item : {0, 4, -1, 1000}) display.SelectItem(item);
    EXPECT_TRUE(Told().empty());
    EXPECT_EQ(root.Records(), 0u);
}

TEST_F(ValueDisplayMenu, TheWheelGoesUpToTheFirstEntry) {
    display.SetItem(2, false);
    Told();
    robot.Move(MidX, MidY);
    robot.Wheel(3.0f);
    EXPECT_EQ(Told(), (Lines{"before", "begin 5", "5 = 0.333", "item 1", "end 5", "after"}))
        << "by one entry";
    robot.Wheel(-1.0f);
    robot.Wheel(-1.0f);
    EXPECT_EQ(display.Item(), 3);
    Told();
    robot.Wheel(-1.0f);
    EXPECT_TRUE(Told().empty()) << "the last one";
    EXPECT_EQ(root.Records(), 0u);
}

TEST_F(ValueDisplayMenu, TheWheelPassesOverWhatCannotBeChosen) {
    display.disabled = {1};
    display.hidden = {2};
    robot.Move(MidX, MidY);
    robot.Wheel(-1.0f);
    EXPECT_EQ(display.Item(), 3);
    robot.Wheel(1.0f);
    EXPECT_EQ(display.Item(), 0);
    display.disabled = {1, 3};
    Told();
    robot.Wheel(-1.0f);
    EXPECT_TRUE(Told().empty());
}

TEST_F(ValueDisplayMenu, TheWheelIsAnEditFromId0On) {
    CNoted unbound(root, Info(-2, 0.0f, u"a||b"));
    unbound.OnMouseWheel(-1.0f, 0);
    EXPECT_EQ(Told(), (Lines{"before", "-2 = 1.000", "item 1", "after"}));
    CNoted ofParameter0(root, Info(0, 0.0f, u"a||b"));
    ofParameter0.OnMouseWheel(-1.0f, 0);
    EXPECT_EQ(Told(), (Lines{"before", "begin 0", "0 = 1.000", "item 1", "end 0", "after"}));
}

TEST_F(ValueDisplayMenu, ShowsEntriesWithoutTheirMarks) {
    CValueDisplay marked(root, Info(6, 0.0f, u"a-sep-||b-sep-"));
    marked.SetItem(1, false);
    EXPECT_EQ(marked.Text(), u"b");
    marked.SetText(u"a");
    EXPECT_EQ(marked.Item(), 0);
    marked.SetItems({u"c-sep-"});
    EXPECT_EQ(marked.Text(), u"c");
}

TEST_F(ValueDisplayMenu, ALaterEntryComesFromTheOtherSideThanAnEarlierOne) {
    display.SetItem(2, false);
    EXPECT_EQ(display.nTextSlideDir, -2);
    display.SetItem(1, false);
    EXPECT_EQ(display.nTextSlideDir, 2);
    display.SetText(u"d");
    EXPECT_EQ(display.nTextSlideDir, -2);
    display.SetText(u"a");
    EXPECT_EQ(display.nTextSlideDir, 2);
    display.ShowItem(1);
    EXPECT_EQ(display.nTextSlideDir, -2);
    display.SetText(u"not in the list");
    EXPECT_EQ(display.nTextSlideDir, 2);
    display.Copy(display.Items(), 3, u"d");
    EXPECT_EQ(display.nTextSlideDir, -2);
}

TEST_F(ValueDisplayMenu, OfOneEntryHasTheValue0) {
    CNoted one(root, Info(6, 0.75f, u"only"));
    one.SetItem(0, false);
    EXPECT_EQ(one.Value(), 0.0f);
    EXPECT_EQ(one.Item(), 0);
}

TEST_F(ValueDisplayMenu, ItsPressMovesAsFastAsItsValue) {
    display.sValue.nRiseMs = 100;
    display.sValue.nFallMs = 50;
    display.Tick(1);
    robot.Press(MidX, MidY);
    Redraw();
    display.Tick(50);
    EXPECT_TRUE(IsRedrawDue());
    EXPECT_EQ(display.GetDrawValue(), 0.5f);
    robot.Release(MidX, MidY);
    display.Tick(25);
    EXPECT_EQ(display.GetDrawValue(), 0.25f);
}

TEST_F(ValueDisplayMenu, ReactsToThePointerUnlessItIsPassive) {
    EXPECT_TRUE(display.bInteractive);
    auto info = Info(6);
    info.bPassive = true;
    EXPECT_FALSE(CValueDisplay(root, info).bInteractive);
}

TEST_F(ValueDisplayMenu, SoaksOverBothEndsOfItsList) {
    const auto begin = Utils::TickMs();
    display.SoakTest();
    EXPECT_EQ(Utils::TickMs() - begin, 2u * 14 * 100);
    EXPECT_EQ(display.Item(), 3);
    Lines ends;
    for (const auto& line : Told()) {
        if (line.starts_with("item")) ends.push_back(line);
    }
    EXPECT_EQ(ends, (Lines{"item 1", "item 2", "item 3"})) << "up from the first one first, then down";
}
