#include "gfx/cpu/draw_list.h"

#include <array>
#include <functional>
#include <gtest/gtest.h>

using namespace KAV::GFX;
using namespace KAV::GFX::CPU;

namespace {

using Entry = CDrawList::SDraw;
using Kind = Entry::EKind;

/// Whether a second list whose entry was changed counts as different there.
bool IsDifferent(Kind kind, const std::function<void(Entry&)>& change, float pointX = 1.0f) {
    Entry entry;
    entry.nKind = kind;
    entry.sBox = {10, 20, 30, 40};
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
    CAreas areas;
    one.AddDifferences(other, areas);
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
