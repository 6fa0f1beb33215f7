#include "gfx/cpu/draw_list.h"

#include <array>
#include <cstdint>
#include <cstring>
#include <functional>
#include <gtest/gtest.h>
#include <memory>
#include <vector>

using namespace KAV::GFX;
using namespace KAV::GFX::CPU;

namespace {

using Entry = CDrawList::SDraw;
using Kind = Entry::EKind;

constexpr std::int32_t PictureSide = 100;

/// A picture in which no two pixels are equal, but for a grid of cells of 10 x 10 that are: those in the rows
/// 60 to 79.
const CSource& Picture() {
    static const CSource picture([] {
        auto bitmap =
            std::make_shared<KAV::Pixels::SBitmap>(KAV::Pixels::TransparentBitmap(PictureSide, PictureSide));
        for (std::int32_t y = 0; y < PictureSide; ++y) {
            for (std::int32_t x = 0; x < PictureSide; ++x) {
                const bool inCells = y >= 60 && y < 80;
                const auto pixel = static_cast<std::uint32_t>(
                    inCells ? x % 10 + PictureSide * (y % 10) : x + PictureSide * y);
                std::memcpy(&bitmap->bytes[static_cast<std::size_t>(y * bitmap->stride + 4 * x)], &pixel, 4);
            }
        }
        return bitmap;
    }());
    return picture;
}

/// What the second of two lists of one draw each changes.
CAreas DifferencesOf(const Entry& before, const Entry& after) {
    CDrawList one;
    CDrawList other;
    one.Clear();
    other.Clear();
    one.Add(before);
    other.Add(after);
    CCellDifferences cells;
    CAreas areas;
    one.AddDifferences(other, cells, areas);
    return areas;
}

/// Whether a second list whose entry was changed counts as different there.
bool IsDifferent(Kind kind, const std::function<void(Entry&)>& change, float pointX = 1.0f) {
    Entry entry;
    entry.nKind = kind;
    entry.sBox = {10, 20, 30, 40};
    entry.piSource = &Picture();
    entry.nSource = 7;
    std::array points{SPoint{1, 2, 0, White}, SPoint{3, 4, 0, White}};
    CDrawList one;
    CDrawList other;
    one.Clear();
    other.Clear();
    const auto add = [&](CDrawList& list) {
        if (kind == Kind::Lines) {
            list.AddLines(entry, points);
        } else {
            list.Add(entry);
        }
    };
    add(one);
    change(entry);
    points[0].fX = pointX;
    add(other);
    CCellDifferences cells;
    CAreas areas;
    one.AddDifferences(other, cells, areas);
    return !areas.IsEmpty();
}

} // namespace

TEST(DrawList, FindsNothingInEqualDraws) {
    for (const auto kind : {Kind::Copy, Kind::Map, Kind::Lines})
        EXPECT_FALSE(IsDifferent(kind, [](Entry&) {}));
}

TEST(DrawList, TellsSourcesByTheirSerialNumbers) {
    // A new source may well lie where the old one lay.
    EXPECT_TRUE(IsDifferent(Kind::Copy, [](Entry& entry) { entry.nSource = 8; }));
    EXPECT_TRUE(IsDifferent(Kind::Map, [](Entry& entry) { entry.nSource = 8; }));
}

TEST(DrawList, FindsEachThingThatChangesWhatADrawLooksLike) {
    for (const auto kind : {Kind::Copy, Kind::Map}) {
        EXPECT_TRUE(IsDifferent(kind, [](Entry& entry) { entry.nColor = 0x80FFFFFF; }));
        EXPECT_TRUE(IsDifferent(kind, [](Entry& entry) { entry.sBox.left = 11; }));
        EXPECT_TRUE(IsDifferent(kind, [](Entry& entry) { entry.nKind = Kind::Lines; }));
    }
    EXPECT_TRUE(IsDifferent(Kind::Copy, [](Entry& entry) { entry.sStep.nDX = 1; }));
    EXPECT_TRUE(IsDifferent(Kind::Copy, [](Entry& entry) { entry.sStep.nDY = 1; }));
    EXPECT_TRUE(IsDifferent(Kind::Copy, [](Entry& entry) { entry.bRepeat = true; }));
    for (const auto number : {&SMapping::fXX, &SMapping::fXY, &SMapping::fX, &SMapping::fYX, &SMapping::fYY,
             &SMapping::fY, &SMapping::fW, &SMapping::fH})
        EXPECT_TRUE(IsDifferent(Kind::Map, [&](Entry& entry) { entry.sMapping.*number += 0.25; }));
    for (const auto number : {&SPart::fL, &SPart::fT, &SPart::fW, &SPart::fH})
        EXPECT_TRUE(IsDifferent(Kind::Map, [&](Entry& entry) { entry.sMapping.sPart.*number += 0.25; }));
    EXPECT_TRUE(IsDifferent(Kind::Map, [](Entry& entry) { entry.sMapping.bRepeat = true; }));
    EXPECT_TRUE(IsDifferent(Kind::Map, [](Entry& entry) { entry.sMapping.sMeeting.bT = true; }));
    EXPECT_TRUE(IsDifferent(Kind::Lines, [](Entry& entry) { entry.sPen.fWidth = 2.0f; }));
    EXPECT_TRUE(IsDifferent(Kind::Lines, [](Entry& entry) { entry.sPen.nColor = 1; }));
    EXPECT_TRUE(IsDifferent(Kind::Lines, [](Entry& entry) { entry.sPen.bSmooth = true; }));
    EXPECT_TRUE(IsDifferent(Kind::Lines, [](Entry& entry) { entry.sPen.bPerVertex = true; }));
    EXPECT_TRUE(IsDifferent(Kind::Lines, [](Entry& entry) { entry.bStrip = true; }));
    EXPECT_TRUE(IsDifferent(
        Kind::Lines, [](Entry&) {}, 1.5f));
}

TEST(DrawList, FindsWhatDiffersBetweenTwoCellsOfAPicture) {
    const auto at = [](std::int32_t column, std::int32_t row) {
        Entry entry;
        entry.sBox = {200, 300, 10, 12};
        entry.piSource = &Picture();
        entry.nSource = Picture().Serial();
        entry.sStep = {10 * column - 200, row - 300};
        return entry;
    };
    const auto all = [](const CAreas& areas) {
        return std::vector<SArea>(areas.All().begin(), areas.All().end());
    };
    EXPECT_TRUE(DifferencesOf(at(2, 62), at(5, 62)).IsEmpty());
    EXPECT_EQ(all(DifferencesOf(at(2, 0), at(5, 0))), (std::vector<SArea>{{200, 300, 10, 12}}));
    EXPECT_EQ(all(DifferencesOf(at(2, 57), at(5, 57))), (std::vector<SArea>{{200, 300, 10, 3}}));
    EXPECT_EQ(all(DifferencesOf(at(2, 70), at(5, 70))), (std::vector<SArea>{{200, 310, 10, 2}}));
    auto wide = at(2, 62);
    auto beyond = at(3, 62);
    wide.sBox.width = beyond.sBox.width = 15;
    EXPECT_TRUE(DifferencesOf(wide, beyond).IsEmpty());
    beyond.sStep.nDX += 1;
    EXPECT_EQ(all(DifferencesOf(wide, beyond)), (std::vector<SArea>{{200, 300, 15, 12}}));
}

TEST(DrawList, FindsTheStripThatADrawGainsOrLoses) {
    Entry shorter;
    shorter.sBox = {20, 40, 10, 30};
    shorter.piSource = &Picture();
    shorter.nSource = Picture().Serial();
    for (const auto kind : {Kind::Copy, Kind::Map}) {
        shorter.nKind = kind;
        auto longer = shorter;
        longer.sBox = {20, 30, 10, 40};
        for (const auto& areas : {DifferencesOf(shorter, longer), DifferencesOf(longer, shorter)}) {
            ASSERT_EQ(areas.All().size(), 1u);
            EXPECT_EQ(areas.All()[0], (SArea{20, 30, 10, 10}));
        }
        auto other = longer;
        other.nColor = 0x80FFFFFF;
        ASSERT_EQ(DifferencesOf(shorter, other).All().size(), 1u);
        EXPECT_EQ(DifferencesOf(shorter, other).All()[0], longer.sBox);
    }
}
