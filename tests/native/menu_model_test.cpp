#include "native/menu_model.h"

#include "tests/native/menus.h"

#include <gtest/gtest.h>
#include <string>

namespace KAV::Tests {

namespace {

using Native::CMenuModel;
using Native::EMenuKey;
using Native::SMenuLevel;
using Platform::SArea;

constexpr std::uint32_t Rest = 200;

struct SPoint {
    std::int32_t x = 0;
    std::int32_t y = 0;
};

/// A menu on a monitor of 1000 by 600 pixels whose windows are 100 pixels wide.
class MenuModel : public testing::Test {
protected:
    void Open(GUI::Menu menu, std::int32_t x = 100, std::int32_t y = 100, bool held = false) {
        _menu = std::move(menu);
        _model = std::make_unique<CMenuModel>(
            _menu, Native::MenuMetrics(96), _monitor, [this](const GUI::Menu&) { return _width; });
        _model->Open(x, y, held);
    }
    CMenuModel& Model() { return *_model; }
    const SMenuLevel& Level(std::size_t n) const { return _model->Levels().at(n); }
    std::size_t Count() const { return _model->Levels().size(); }
    /// The middle of an entry.
    SPoint Of(std::size_t level, std::size_t item) const {
        const auto& at = Level(level);
        return {at.place.left + at.place.width / 2,
            at.place.top + at.viewTop + (at.tops[item] + at.tops[item + 1]) / 2 - at.scroll};
    }
    void MoveTo(std::size_t level, std::size_t item) {
        const auto at = Of(level, item);
        _model->Move(at.x, at.y, _now);
    }
    void Press(std::size_t level, std::size_t item) {
        const auto at = Of(level, item);
        _model->Press(at.x, at.y, _now);
    }
    void Release(std::size_t level, std::size_t item) {
        const auto at = Of(level, item);
        _model->Release(at.x, at.y);
    }
    void Wait(std::uint32_t ms) {
        _now += ms;
        _model->OnTime(_now);
    }
    void Keys(std::initializer_list<EMenuKey> keys) {
        for (const auto key : keys) _model->Key(key);
    }
    bool IsIn(const SArea& inner, const SArea& outer) const {
        return inner.left >= outer.left && inner.top >= outer.top &&
               inner.left + inner.width <= outer.left + outer.width &&
               inner.top + inner.height <= outer.top + outer.height;
    }

    SArea _monitor{0, 0, 1000, 600};
    std::int32_t _width = 100;
    std::uint32_t _now = 0xFFFFFF00; // soon around the end of the clock's numbers
    GUI::Menu _menu;
    std::unique_ptr<CMenuModel> _model;
};

GUI::Menu Mixed() {
    return {Entry(u"One", 1), Separator(), Disabled(Entry(u"Two", 2)), SubMenu(u"More", Entries(3, 10)),
        Entry(u"Three", 3), SubMenu(u"Others", Entries(2, 20)), Disabled(SubMenu(u"None", Entries(2, 30)))};
}

} // namespace

TEST_F(MenuModel, OpensWithItsTopLeftCornerAtThePointer) {
    Open(Mixed(), 120, 130);
    EXPECT_EQ(Level(0).place.left, 120);
    EXPECT_EQ(Level(0).place.top, 130);
    EXPECT_EQ(Level(0).hot, -1);
    EXPECT_FALSE(Model().IsOver());
}

TEST_F(MenuModel, HasRoomForEveryEntry) {
    Open(Mixed());
    const auto metrics = Native::MenuMetrics(96);
    EXPECT_EQ(
        Level(0).place.height, 6 * metrics.row + metrics.separator + 2 * (metrics.padding + metrics.frame));
    EXPECT_EQ(Level(0).viewHeight, 6 * metrics.row + metrics.separator);
}

TEST_F(MenuModel, GrowsWithTheDensityOfTheDisplay) {
    EXPECT_EQ(Native::MenuMetrics(192).row, 2 * Native::MenuMetrics(96).row);
    EXPECT_EQ(Native::MenuMetrics(192).text, 2 * Native::MenuMetrics(96).text);
}

TEST_F(MenuModel, StaysOnItsMonitorAtEveryEdge) {
    _monitor = {200, 50, 500, 400};
    for (const auto& at : {SPoint{690, 60}, {690, 440}, {210, 445}, {0, 0}, {2000, 2000}}) {
        Open(Mixed(), at.x, at.y);
        EXPECT_TRUE(IsIn(Level(0).place, _monitor)) << at.x << ", " << at.y;
    }
}

TEST_F(MenuModel, OpensUpwardsWhereOnlyThereIsRoom) {
    Open(Mixed(), 100, 580);
    EXPECT_EQ(Level(0).place.top + Level(0).place.height, 580);
}

TEST_F(MenuModel, ChoosesWhatIsPressedAndReleased) {
    Open(Mixed());
    Press(0, 4);
    EXPECT_FALSE(Model().IsOver());
    Release(0, 4);
    EXPECT_TRUE(Model().IsOver());
    EXPECT_EQ(Model().Command(), 3u);
}

TEST_F(MenuModel, ChoosesWhereTheButtonIsReleased) {
    Open(Mixed());
    Press(0, 4);
    MoveTo(0, 0);
    Release(0, 0);
    EXPECT_EQ(Model().Command(), 1u);
}

TEST_F(MenuModel, ReleaseWithoutAPressChoosesNothing) {
    Open(Mixed());
    MoveTo(0, 0);
    Release(0, 0);
    EXPECT_FALSE(Model().IsOver());
}

TEST_F(MenuModel, ReleaseOfThePressThatOpenedItChoosesNothing) {
    Open(Entries(100, 1), 100, 300, true); // scrolled, with entries at the pointer
    Model().Move(104, 296, _now);          // a hand isn't quite still
    ASSERT_GE(Level(0).hot, 0);
    Model().Release(104, 296);
    EXPECT_FALSE(Model().IsOver());
}

TEST_F(MenuModel, PressDragReleaseChooses) {
    Open(Mixed(), 100, 100, true);
    MoveTo(0, 0);
    MoveTo(0, 4);
    Release(0, 4);
    EXPECT_EQ(Model().Command(), 3u);
}

TEST_F(MenuModel, DragReleasedOutsideLeavesItOpen) {
    Open(Mixed(), 100, 100, true);
    MoveTo(0, 4);
    Model().Release(900, 500);
    EXPECT_FALSE(Model().IsOver());
    MoveTo(0, 4);
    Release(0, 4); // belongs to no press
    EXPECT_FALSE(Model().IsOver());
}

TEST_F(MenuModel, PressOutsideEndsItWithoutACommand) {
    Open(Mixed());
    Model().Press(500, 500, _now);
    EXPECT_TRUE(Model().IsOver());
    EXPECT_EQ(Model().Command(), 0u);
}

TEST_F(MenuModel, PressBesideASubMenuInNoWindowEndsIt) {
    Open(Mixed());
    Press(0, 3);
    ASSERT_EQ(Count(), 2u);
    const auto& sub = Level(1).place;
    Model().Press(sub.left + sub.width, sub.top, _now);
    EXPECT_TRUE(Model().IsOver());
}

TEST_F(MenuModel, DisabledEntriesAndSeparatorsAreNeitherHighlightedNorChosen) {
    Open(Mixed());
    for (const std::size_t item : {1u, 2u, 6u}) {
        MoveTo(0, item);
        EXPECT_EQ(Level(0).hot, -1) << item;
        Press(0, item);
        Release(0, item);
        EXPECT_FALSE(Model().IsOver()) << item;
        Wait(Rest);
        EXPECT_EQ(Count(), 1u) << item;
    }
}

TEST_F(MenuModel, HighlightsTheEntryUnderThePointer) {
    Open(Mixed());
    const auto before = Level(0).revision;
    MoveTo(0, 0);
    EXPECT_EQ(Level(0).hot, 0);
    EXPECT_NE(Level(0).revision, before);
    const auto drawn = Level(0).revision;
    MoveTo(0, 0);
    EXPECT_EQ(Level(0).revision, drawn) << "nothing has changed";
    Model().Move(900, 500, _now);
    EXPECT_EQ(Level(0).hot, -1);
}

TEST_F(MenuModel, SubMenuOpensWhenThePointerHasRested) {
    Open(Mixed());
    MoveTo(0, 3);
    std::uint32_t due = 0;
    ASSERT_TRUE(Model().NextTime(due));
    EXPECT_EQ(due, _now + Rest);
    Wait(Rest - 1);
    EXPECT_EQ(Count(), 1u);
    MoveTo(0, 3); // moving within the entry doesn't begin anew
    Wait(1);
    ASSERT_EQ(Count(), 2u);
    EXPECT_EQ(Level(1).items, &_menu[3].vsSub);
    EXPECT_FALSE(Model().NextTime(due));
}

TEST_F(MenuModel, SubMenuStandsRightOfItsEntry) {
    Open(Mixed());
    Press(0, 3);
    ASSERT_EQ(Count(), 2u);
    const auto metrics = Native::MenuMetrics(96);
    EXPECT_EQ(Level(1).place.left, 200 - metrics.overlap);
    EXPECT_EQ(Of(1, 0).y, Of(0, 3).y) << "its first entry is as high as its own";
}

TEST_F(MenuModel, SubMenuStandsLeftWhereOnlyThereIsRoom) {
    Open({SubMenu(u"a", {SubMenu(u"b", {SubMenu(u"c", Entries(2, 1))})})}, 850, 100);
    Press(0, 0);
    Press(1, 0);
    const auto metrics = Native::MenuMetrics(96);
    ASSERT_EQ(Count(), 3u);
    EXPECT_EQ(Level(1).place.left, 850 - 100 + metrics.overlap);
    EXPECT_EQ(Level(2).place.left, 850 - 200 + 2 * metrics.overlap) << "not back over the first one";
}

TEST_F(MenuModel, SubMenusStayOnTheMonitor) {
    Open({Entry(u"x", 1), SubMenu(u"a", Entries(20, 2))}, 100, 500);
    Press(0, 1);
    ASSERT_EQ(Count(), 2u);
    EXPECT_TRUE(IsIn(Level(1).place, _monitor));
    _width = 700;
    Open({Entry(u"x", 1), SubMenu(u"a", Entries(60, 2))}, 200, 500);
    Press(0, 1);
    EXPECT_TRUE(IsIn(Level(1).place, _monitor));
    _width = 5000;
    Open(Mixed(), 200, 500);
    EXPECT_TRUE(IsIn(Level(0).place, _monitor));
}

TEST_F(MenuModel, PointerMayCrossOtherEntriesOnItsWayToTheSubMenu) {
    Open(Mixed());
    Press(0, 3);
    Release(0, 3);
    ASSERT_EQ(Count(), 2u) << "a click opens it and chooses nothing";
    MoveTo(0, 4);
    EXPECT_EQ(Level(0).hot, 4);
    Wait(Rest - 1);
    MoveTo(1, 1);
    EXPECT_EQ(Level(0).hot, 3);
    EXPECT_EQ(Level(1).hot, 1);
    Wait(Rest);
    ASSERT_EQ(Count(), 2u);
    Press(1, 1);
    Release(1, 1);
    EXPECT_EQ(Model().Command(), 11u);
}

TEST_F(MenuModel, RestingOnAnotherEntryClosesTheSubMenu) {
    Open(Mixed());
    Press(0, 3);
    MoveTo(0, 4);
    Wait(Rest);
    EXPECT_EQ(Count(), 1u);
    EXPECT_EQ(Level(0).hot, 4);
    Press(0, 3);
    MoveTo(0, 5);
    Wait(Rest);
    ASSERT_EQ(Count(), 2u);
    EXPECT_EQ(Level(1).items, &_menu[5].vsSub);
}

TEST_F(MenuModel, LeavingTheMenuKeepsTheSubMenuAndItsEntryHighlighted) {
    Open(Mixed());
    Press(0, 3);
    MoveTo(1, 1);
    Model().Move(900, 550, _now);
    Wait(Rest);
    ASSERT_EQ(Count(), 2u);
    EXPECT_EQ(Level(0).hot, 3);
    EXPECT_EQ(Level(1).hot, -1);
}

TEST_F(MenuModel, ArrowsPassOverWhatCannotBeChosenAndGoAroundTheEnds) {
    Open(Mixed());
    Keys({EMenuKey::Down});
    EXPECT_EQ(Level(0).hot, 0);
    Keys({EMenuKey::Down});
    EXPECT_EQ(Level(0).hot, 3);
    Keys({EMenuKey::Down, EMenuKey::Down});
    EXPECT_EQ(Level(0).hot, 5);
    Keys({EMenuKey::Down});
    EXPECT_EQ(Level(0).hot, 0);
    Keys({EMenuKey::Up});
    EXPECT_EQ(Level(0).hot, 5);
    Open(Mixed());
    Keys({EMenuKey::Up});
    EXPECT_EQ(Level(0).hot, 5);
}

TEST_F(MenuModel, HomeAndEndGoToTheFirstAndLastThatCanBeChosen) {
    Open(Mixed());
    Keys({EMenuKey::End});
    EXPECT_EQ(Level(0).hot, 5);
    Keys({EMenuKey::Home});
    EXPECT_EQ(Level(0).hot, 0);
}

TEST_F(MenuModel, ReturnChoosesAndEscapeEnds) {
    Open(Mixed());
    Keys({EMenuKey::Enter});
    EXPECT_FALSE(Model().IsOver()) << "nothing is highlighted";
    Keys({EMenuKey::Down, EMenuKey::Enter});
    EXPECT_EQ(Model().Command(), 1u);
    Open(Mixed());
    Keys({EMenuKey::Down, EMenuKey::Escape});
    EXPECT_TRUE(Model().IsOver());
    EXPECT_EQ(Model().Command(), 0u);
}

TEST_F(MenuModel, RightAndReturnGoIntoASubMenuAndLeftComesBack) {
    for (const auto key : {EMenuKey::Right, EMenuKey::Enter}) {
        Open(Mixed());
        Keys({EMenuKey::Down, EMenuKey::Down, key});
        ASSERT_EQ(Count(), 2u);
        EXPECT_EQ(Level(1).hot, 0);
        EXPECT_EQ(Level(0).hot, 3);
        Keys({EMenuKey::Down, EMenuKey::Left});
        EXPECT_EQ(Count(), 1u);
        EXPECT_EQ(Level(0).hot, 3);
        Keys({EMenuKey::Left});
        EXPECT_EQ(Count(), 1u);
        EXPECT_FALSE(Model().IsOver());
        Keys({key, EMenuKey::Down, EMenuKey::Down, EMenuKey::Enter});
        EXPECT_EQ(Model().Command(), 12u);
    }
}

TEST_F(MenuModel, RightOnAnOrdinaryEntryDoesNothing) {
    Open(Mixed());
    Keys({EMenuKey::Down, EMenuKey::Right});
    EXPECT_EQ(Count(), 1u);
    EXPECT_FALSE(Model().IsOver());
}

TEST_F(MenuModel, KeysGoToTheWindowThatThePointerIsIn) {
    Open(Mixed());
    MoveTo(0, 3);
    Wait(Rest);
    Keys({EMenuKey::Down}); // the pointer isn't in the sub-menu
    EXPECT_EQ(Count(), 1u);
    EXPECT_EQ(Level(0).hot, 4);
    Press(0, 3);
    MoveTo(1, 0);
    Keys({EMenuKey::Down});
    EXPECT_EQ(Count(), 2u);
    EXPECT_EQ(Level(1).hot, 1);
}

TEST_F(MenuModel, KeyIsNotUndoneByAPointerThatRests) {
    Open(Mixed());
    MoveTo(0, 3);
    Keys({EMenuKey::Home});
    Wait(Rest);
    EXPECT_EQ(Count(), 1u);
    EXPECT_EQ(Level(0).hot, 0);
}

TEST_F(MenuModel, NothingToChooseIsNothingToMoveTo) {
    Open({Separator(), Disabled(Entry(u"a", 1))});
    Keys({EMenuKey::Down, EMenuKey::Up, EMenuKey::Home, EMenuKey::End, EMenuKey::PageDown, EMenuKey::PageUp,
        EMenuKey::Enter, EMenuKey::Right});
    EXPECT_EQ(Level(0).hot, -1);
    EXPECT_FALSE(Model().IsOver());
}

TEST_F(MenuModel, MenuLongerThanTheMonitorFillsItAndScrolls) {
    Open(Entries(5000, 1), 100, 100);
    EXPECT_EQ(Level(0).place.top, 0);
    EXPECT_EQ(Level(0).place.height, 600);
    EXPECT_TRUE(Level(0).isScrolled);
    EXPECT_EQ(Level(0).FirstVisible(), 0u);
    EXPECT_LE(Level(0).LastVisible(), 600u / 22u + 1);
    Model().Wheel(150, 300, -1, _now);
    EXPECT_EQ(Level(0).FirstVisible(), 3u);
    Model().Wheel(150, 300, 1, _now);
    EXPECT_EQ(Level(0).scroll, 0);
    Model().Wheel(150, 300, 5, _now);
    EXPECT_EQ(Level(0).scroll, 0);
    Model().Wheel(150, 300, -5000, _now);
    EXPECT_EQ(Level(0).LastVisible(), 5000u);
    EXPECT_EQ(Level(0).scroll, Level(0).LastScroll());
}

TEST_F(MenuModel, WheelLeavesAMenuThatFitsAndOtherPlacesAlone) {
    Open(Mixed());
    Model().Wheel(Of(0, 0).x, Of(0, 0).y, -1, _now);
    EXPECT_EQ(Level(0).scroll, 0);
    Open(Entries(5000, 1), 100, 100);
    Model().Wheel(500, 300, -1, _now);
    EXPECT_EQ(Level(0).scroll, 0);
    EXPECT_FALSE(Model().IsOver());
}

TEST_F(MenuModel, WheelHighlightsWhatComesUnderThePointer) {
    Open(Entries(5000, 1), 100, 100);
    Model().Move(150, 300, _now);
    const auto hot = Level(0).hot;
    Model().Wheel(150, 300, -1, _now);
    EXPECT_EQ(Level(0).hot, hot + 3);
}

TEST_F(MenuModel, WheelClosesTheSubMenuOfWhatMovesAway) {
    auto menu = Entries(100, 1);
    menu[2].vsSub = Entries(2, 500);
    Open(std::move(menu), 100, 100);
    Press(0, 2);
    ASSERT_EQ(Count(), 2u);
    Model().Wheel(Of(0, 5).x, Of(0, 5).y, -1, _now);
    EXPECT_EQ(Count(), 1u);
}

TEST_F(MenuModel, ChoosesTheRightEntryOfAScrolledMenu) {
    Open(Entries(5000, 1), 100, 100);
    Model().Wheel(150, 300, -100, _now);
    Press(0, 310);
    Release(0, 310);
    EXPECT_EQ(Model().Command(), 311u);
}

TEST_F(MenuModel, KeysKeepTheHighlightedEntryVisible) {
    Open(Entries(5000, 1), 100, 100);
    const auto isVisible = [this] {
        const auto& level = Level(0);
        const auto hot = static_cast<std::size_t>(level.hot);
        return level.hot >= 0 && level.tops[hot] >= level.scroll &&
               level.tops[hot + 1] <= level.scroll + level.viewHeight;
    };
    for (int n = 0; n < 60; ++n) {
        Keys({EMenuKey::Down});
        ASSERT_TRUE(isVisible()) << n;
    }
    EXPECT_EQ(Level(0).hot, 59);
    for (int n = 0; n < 59; ++n) {
        Keys({EMenuKey::Up});
        ASSERT_TRUE(isVisible()) << n;
    }
    Keys({EMenuKey::Up});
    EXPECT_EQ(Level(0).hot, 4999);
    EXPECT_TRUE(isVisible());
    Keys({EMenuKey::Home});
    EXPECT_TRUE(isVisible());
    Keys({EMenuKey::PageDown});
    EXPECT_GT(Level(0).hot, 15);
    EXPECT_TRUE(isVisible());
    Keys({EMenuKey::End, EMenuKey::PageDown});
    EXPECT_EQ(Level(0).hot, 4999);
    EXPECT_TRUE(isVisible());
}

TEST_F(MenuModel, ArrowsAtTheEndsScroll) {
    Open(Entries(100, 1), 100, 100);
    const auto bottom = Level(0).place.height - 3;
    Model().Move(150, bottom, _now);
    EXPECT_EQ(Level(0).hot, -1);
    std::uint32_t due = 0;
    ASSERT_TRUE(Model().NextTime(due));
    Wait(due - _now);
    EXPECT_EQ(Level(0).scroll, 22);
    for (int n = 0; n < 200 && Model().NextTime(due); ++n) Wait(due - _now);
    EXPECT_EQ(Level(0).scroll, Level(0).LastScroll());
    EXPECT_FALSE(Model().NextTime(due)) << "at the end";
    Model().Move(150, 3, _now);
    ASSERT_TRUE(Model().NextTime(due));
    Wait(due - _now);
    EXPECT_EQ(Level(0).scroll, Level(0).LastScroll() - 22);
    MoveTo(0, 90);
    EXPECT_FALSE(Model().NextTime(due));
}

TEST_F(MenuModel, PressOnAnArrowScrollsAPageAndChoosesNothing) {
    Open(Entries(100, 1), 100, 100);
    Model().Press(150, Level(0).place.height - 3, _now);
    Model().Release(150, Level(0).place.height - 3);
    EXPECT_FALSE(Model().IsOver());
    EXPECT_GT(Level(0).scroll, 400);
    EXPECT_LE(Level(0).scroll, Level(0).viewHeight);
}

TEST_F(MenuModel, MeasuresAgainWhereItStands) {
    Open(Mixed());
    Press(0, 3);
    _width = 160;
    const auto revision = Level(1).revision;
    Model().Measure();
    EXPECT_EQ(Level(0).place.left, 100);
    EXPECT_EQ(Level(0).place.width, 160);
    EXPECT_EQ(Level(1).place.left, 260 - Native::MenuMetrics(96).overlap);
    EXPECT_NE(Level(1).revision, revision);
}

TEST_F(MenuModel, WindowsAreNeverMistakenForEarlierOnes) {
    Open(Mixed());
    Press(0, 3);
    const auto id = Level(1).id;
    Press(0, 5);
    EXPECT_NE(Level(1).id, id);
}

} // namespace KAV::Tests
