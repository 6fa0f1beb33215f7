#include "native/menu_painter.h"

#include "tests/native/block_lettering.h"
#include "tests/native/menus.h"

#include <gtest/gtest.h>
#include <set>
#include <string>

namespace KAV::Tests {

namespace {

using Native::CMenuModel;
using Native::CMenuPainter;

constexpr std::uint32_t Ground = 0xFF25282C;

std::uint32_t PixelAt(const Pixels::SBitmap& bitmap, std::int32_t x, std::int32_t y) {
    const auto* const pixel = bitmap.bytes.data() + y * bitmap.stride + 4 * x;
    return pixel[0] | (std::uint32_t{pixel[1]} << 8u) | (std::uint32_t{pixel[2]} << 16u) |
           (std::uint32_t{pixel[3]} << 24u);
}

/// How many pixels of an area don't have the ground's colour.
int Marks(const Pixels::SBitmap& bitmap, const Platform::SArea& area) {
    int marks = 0;
    for (std::int32_t y = area.top; y < area.top + area.height; ++y)
        for (std::int32_t x = area.left; x < area.left + area.width; ++x)
            marks += PixelAt(bitmap, x, y) != Ground;
    return marks;
}

class MenuPainter : public testing::Test {
protected:
    void Open(GUI::Menu menu) {
        _menu = std::move(menu);
        _model = std::make_unique<CMenuModel>(_menu, _metrics, Platform::SArea{0, 0, 1000, 600},
            [this](const GUI::Menu& items) { return _painter.WidthOf(items); });
        _model->Open(0, 0, false);
    }
    const Native::SMenuLevel& Level() const { return _model->Levels().front(); }
    Pixels::SBitmap Painted() { return _painter.Paint(Level()); }
    /// The row of an entry: its column of check marks, and that of sub-menu arrows.
    Platform::SArea CheckOf(std::size_t item) const {
        return {_metrics.frame, Level().viewTop + Level().tops[item], _metrics.check, _metrics.row};
    }
    Platform::SArea ArrowOf(std::size_t item) const {
        return {Level().place.width - _metrics.frame - _metrics.sub, Level().viewTop + Level().tops[item],
            _metrics.sub, _metrics.row};
    }

    Native::SMenuMetrics _metrics = Native::MenuMetrics(96);
    CBlockLettering _lettering;
    CMenuPainter _painter{_lettering, _metrics};
    GUI::Menu _menu;
    std::unique_ptr<CMenuModel> _model;
};

} // namespace

TEST_F(MenuPainter, HasRoomForTheWidestText) {
    Open({Entry(u"abc", 1), Entry(u"a longer text", 2)});
    EXPECT_EQ(Level().place.width,
        13 * CBlockLettering::Advance + _metrics.check + _metrics.sub + 2 * _metrics.frame);
    Painted();
    ASSERT_EQ(_lettering.drawn.size(), 2u);
    EXPECT_EQ(_lettering.drawn[1].width, 13 * CBlockLettering::Advance);
    EXPECT_TRUE(_lettering.drawn[1].ellipsis) << "where the monitor is too narrow";
}

TEST_F(MenuPainter, CharactersThatNoFontHadAreMeasuredAgain) {
    const GUI::Menu menu{Entry(u"abcd", 1)};
    const auto before = _painter.WidthOf(menu);
    _lettering.factor = 2;
    _painter.Forget();
    EXPECT_EQ(_painter.WidthOf(menu), before + 4 * CBlockLettering::Advance);
}

TEST_F(MenuPainter, EveryPixelIsOpaque) {
    Open({Entry(u"abc", 1), Separator(), Checked(Entry(u"d", 2)), SubMenu(u"e", Entries(2, 3))});
    const auto picture = Painted();
    for (std::int32_t y = 0; y < picture.height; ++y)
        for (std::int32_t x = 0; x < picture.width; ++x) ASSERT_EQ(PixelAt(picture, x, y) >> 24u, 0xFFu);
}

TEST_F(MenuPainter, MarksWhatIsChecked) {
    Open({Entry(u"abc", 1), Checked(Entry(u"abc", 2))});
    const auto picture = Painted();
    EXPECT_EQ(Marks(picture, CheckOf(0)), 0);
    EXPECT_GT(Marks(picture, CheckOf(1)), 10);
}

TEST_F(MenuPainter, AnArrowShowsASubMenu) {
    Open({Entry(u"abc", 1), SubMenu(u"abc", Entries(2, 3))});
    const auto picture = Painted();
    EXPECT_EQ(Marks(picture, ArrowOf(0)), 0);
    EXPECT_GT(Marks(picture, ArrowOf(1)), 8);
}

TEST_F(MenuPainter, DisabledTextsAreDimmerAndBoldOnesBold) {
    Open({Entry(u"abc", 1), Disabled(Entry(u"abc", 2)), Bold(Entry(u"abc", 3))});
    Painted();
    ASSERT_EQ(_lettering.drawn.size(), 3u);
    const auto green = [this](std::size_t n) { return (_lettering.drawn[n].colour >> 8u) & 0xFFu; };
    EXPECT_LT(green(1), green(0) * 2 / 3);
    EXPECT_FALSE(_lettering.drawn[0].bold);
    EXPECT_TRUE(_lettering.drawn[2].bold);
    EXPECT_EQ(_lettering.drawn[2].colour, _lettering.drawn[0].colour);
}

TEST_F(MenuPainter, CheckMarkOfADisabledEntryIsDimmer) {
    Open({Checked(Entry(u"abc", 1)), Disabled(Checked(Entry(u"abc", 2)))});
    const auto picture = Painted();
    const auto brightest = [&](const Platform::SArea& area) {
        std::uint32_t most = 0;
        for (std::int32_t y = area.top; y < area.top + area.height; ++y)
            for (std::int32_t x = area.left; x < area.left + area.width; ++x)
                most = std::max(most, PixelAt(picture, x, y) & 0xFFu);
        return most;
    };
    EXPECT_LT(brightest(CheckOf(1)), brightest(CheckOf(0)) * 2 / 3);
}

TEST_F(MenuPainter, SeparatorIsALineWithoutAText) {
    Open({Entry(u"abc", 1), Separator()});
    const auto picture = Painted();
    EXPECT_EQ(_lettering.drawn.size(), 1u);
    const Platform::SArea row{_metrics.frame, Level().viewTop + Level().tops[1],
        picture.width - 2 * _metrics.frame, _metrics.separator};
    const int marks = Marks(picture, row);
    EXPECT_GT(marks, row.width / 2);
    EXPECT_LE(marks, row.width * _metrics.frame);
}

TEST_F(MenuPainter, BarLiesUnderTheHighlightedEntryOnly) {
    Open({Entry(u"abc", 1), Entry(u"abc", 2)});
    _model->Key(Native::EMenuKey::Down);
    _model->Key(Native::EMenuKey::Down);
    const auto picture = Painted();
    EXPECT_EQ(Marks(picture, CheckOf(0)), 0);
    EXPECT_EQ(Marks(picture, CheckOf(1)), _metrics.check * _metrics.row);
}

TEST_F(MenuPainter, OfThousandsOfEntriesOnlyTheVisibleOnesAreDrawn) {
    Open(Entries(5000, 1));
    EXPECT_LE(_lettering.measured, 60) << "the distinct characters and a few whole texts";
    Painted();
    EXPECT_EQ(_lettering.drawn.size(), Level().LastVisible());
    EXPECT_LE(_lettering.drawn.size(), 600u / 22u + 1);
}

TEST_F(MenuPainter, ScrolledMenuShowsArrowsAndItsEntriesBetweenThem) {
    Open(Entries(100, 1));
    const Platform::SArea upper{
        _metrics.frame, _metrics.frame, Level().place.width - 2 * _metrics.frame, _metrics.arrow};
    auto lower = upper;
    lower.top = 600 - _metrics.frame - _metrics.arrow;
    const auto atTop = Painted();
    EXPECT_GT(Marks(atTop, lower), 8);
    EXPECT_LT(Marks(atTop, lower), 100) << "no text of an entry";
    const auto brightest = [](const Pixels::SBitmap& picture, const Platform::SArea& area) {
        std::uint32_t most = 0;
        for (std::int32_t y = area.top; y < area.top + area.height; ++y)
            for (std::int32_t x = area.left; x < area.left + area.width; ++x)
                most = std::max(most, PixelAt(picture, x, y) & 0xFFu);
        return most;
    };
    EXPECT_LT(brightest(atTop, upper), brightest(atTop, lower)) << "nothing above";
    _model->Key(Native::EMenuKey::End);
    const auto atEnd = Painted();
    EXPECT_LT(brightest(atEnd, lower), brightest(atEnd, upper)) << "nothing below";
}

} // namespace KAV::Tests
