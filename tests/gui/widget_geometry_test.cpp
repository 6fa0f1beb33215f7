#include "tests/gui/recording_root.h"

#include <algorithm>
#include <cmath>
#include <gtest/gtest.h>
#include <random>

using namespace KAV;
using namespace KAV::GUI;
using namespace KAV::Tests;

namespace {

class WidgetGeometry : public testing::Test {
protected:
    CRecordingRoot root;

    SWidgetInfo Info(float x, float y, float w, float h) {
        SWidgetInfo info;
        info.fX = x;
        info.fY = y;
        info.fW = w;
        info.fH = h;
        info.bInteractive = true;
        return info;
    }
    SPixelRect RectOf(const SWidgetInfo& info) { return CWidget(root, info).PixelRect(); }
    bool IsHit(const SWidgetInfo& info, int x, int y, bool any = false) {
        return CWidget(root, info).HitTest(x, y, any);
    }
    void SetUp() override { root.Resize(600, 400); }
};

} // namespace

namespace KAV::GUI {
void PrintTo(const SPixelRect& rect, std::ostream* out) {
    *out << rect.nL << "," << rect.nT << " " << rect.nW << "x" << rect.nH;
}
} // namespace KAV::GUI

TEST_F(WidgetGeometry, PixelsStayPixels) {
    EXPECT_EQ(RectOf(Info(10, 20, 30, 40)), (SPixelRect{10, 20, 30, 40}));
    EXPECT_EQ(RectOf(Info(-10, -20, 30, 40)), (SPixelRect{-10, -20, 30, 40}));
    EXPECT_EQ(RectOf(Info(10.5f, 20.4f, 30.5f, 40.4f)), (SPixelRect{11, 20, 31, 40}));
    EXPECT_EQ(RectOf(Info(-10.5f, -1.5f, 2, 2)), (SPixelRect{-11, -2, 2, 2})) << "half away from zero";
}

TEST_F(WidgetGeometry, FractionsAreOfTheRoot) {
    EXPECT_EQ(RectOf(Info(0.5f, 0.5f, 0.25f, 0.25f)), (SPixelRect{300, 200, 150, 100}));
    EXPECT_EQ(RectOf(Info(-0.5f, -0.5f, 0.25f, 0.25f)), (SPixelRect{-300, -200, 150, 100}));
}

TEST_F(WidgetGeometry, AWidthOfOneIsTheWholeRootAndABitMoreIsAPixel) {
    EXPECT_EQ(RectOf(Info(0, 0, 1.0f, 1.0f)), (SPixelRect{0, 0, 600, 400}));
    EXPECT_EQ(RectOf(Info(0, 0, 1.01f, 1.01f)), (SPixelRect{0, 0, 1, 1}));
}

TEST_F(WidgetGeometry, APlaceOfOneIsAPixelAndABitLessIsAFraction) {
    EXPECT_EQ(RectOf(Info(1.0f, 1.0f, 2, 2)), (SPixelRect{1, 1, 2, 2}));
    EXPECT_EQ(RectOf(Info(0.9999f, 0.9999f, 2, 2)), (SPixelRect{600, 400, 2, 2}));
}

TEST_F(WidgetGeometry, ASizeBelowZeroIsAFractionOfTheOtherSide) {
    EXPECT_EQ(RectOf(Info(0, 0, 10, -0.06f)).nH, 36) << "of the width of 600";
    EXPECT_EQ(RectOf(Info(0, 0, -0.1f, 10)).nW, 40) << "of the height of 400";
    EXPECT_EQ(RectOf(Info(0, 0, -1.0f, -1.0f)), (SPixelRect{0, 0, 400, 600}));
}

TEST_F(WidgetGeometry, TheTargetDecidesWhatYAndHeightAreAndTheValueWhatXAndWidthAre) {
    CWidget widget(root, Info(0.5f, 0.5f, 0.5f, 0.5f));
    for (auto* const value : {&widget.sX, &widget.sY, &widget.sW, &widget.sH}) {
        value->nRiseMs = 1000;
        value->Retarget(50.0f);
    }
    EXPECT_EQ(widget.PixelRect(), (SPixelRect{300, 1, 300, 1}));
}

TEST_F(WidgetGeometry, AnchorsNameAPointOfTheRectangle) {
    auto info = Info(100, 200, 31, 41);
    const int lefts[] = {100, 84, 69};
    const int tops[] = {200, 179, 159};
    for (std::uint32_t anchor = 0; anchor < 9; ++anchor) {
        info.nAnchor = anchor;
        EXPECT_EQ(RectOf(info), (SPixelRect{lefts[anchor % 3], tops[anchor / 3], 31, 41})) << anchor;
    }
    info.nAnchor = 9;
    EXPECT_EQ(RectOf(info), (SPixelRect{0, 0, 31, 41}));
}

TEST_F(WidgetGeometry, FrozenPlacesAndSizesReadBackAsTheSamePixels) {
    std::mt19937 random(1);
    for (int width = 500; width <= 3000; ++width) {
        const int height = width * 553 / 754;
        root.Resize(width, height);
        std::uniform_int_distribution<int> x(0, width - 1);
        std::uniform_int_distribution<int> y(0, height - 1);
        for (int n = 0; n < 20; ++n) {
            auto info = Info(static_cast<float>(n == 0 ? width - 1 : x(random)),
                static_cast<float>(n == 0 ? height - 1 : y(random)),
                static_cast<float>(std::max(x(random) + 1, 2)),
                static_cast<float>(std::max(y(random) + 1, 2)));
            info.nAnchor = static_cast<std::uint32_t>(n % 9);
            CWidget widget(root, info);
            const auto before = widget.PixelRect();
            // A place of one pixel is kept, and is a fraction from now on.
            widget.FreezeToFractions(true);
            ASSERT_EQ(widget.PixelRect(), before) << width;
        }
    }
}

TEST_F(WidgetGeometry, EveryPlaceAndSizeInsideTheRootIsTheSameWhenFrozenAtEveryWidth) {
    CWidget widget(root, Info(0, 0, 2, 2));
    for (int width = 500; width <= 3000; ++width) {
        const int height = width * 553 / 754;
        root.Resize(width, height);
        for (int x = 0; x < width; ++x) {
            const SPixelRect rect{x, x % height, std::max(x, 2), std::max(x % height, 2)};
            widget.sX.Jump(static_cast<float>(rect.nL));
            widget.sY.Jump(static_cast<float>(rect.nT));
            widget.sW.Jump(static_cast<float>(rect.nW));
            widget.sH.Jump(static_cast<float>(rect.nH));
            widget.FreezeToFractions(true);
            if (!(widget.PixelRect() == rect)) { // an expectation for each of four million would take long
                ASSERT_EQ(widget.PixelRect(), rect) << width;
            }
        }
    }
}

TEST_F(WidgetGeometry, FrozenWidgetsGrowWithTheRoot) {
    CWidget whole(root, Info(60, 40, 120, 80));
    CWidget place(root, Info(60, 40, 120, 80));
    whole.FreezeToFractions(true);
    place.FreezeToFractions(false);
    root.Resize(1200, 800);
    EXPECT_EQ(whole.PixelRect(), (SPixelRect{120, 80, 240, 160}));
    EXPECT_EQ(place.PixelRect(), (SPixelRect{120, 80, 120, 80}));
    EXPECT_EQ(whole.sX.fFrom, whole.sX.fTarget) << "it doesn't move there";
}

TEST_F(WidgetGeometry, EdgesAreHitAndWhatLiesOutsideIsNot) {
    const auto info = Info(10, 20, 30, 40);
    for (const auto& [x, y] : {std::pair{10, 20}, {40, 20}, {10, 60}, {40, 60}, {25, 40}})
        EXPECT_TRUE(IsHit(info, x, y)) << x << " " << y;
    for (const auto& [x, y] : {std::pair{9, 40}, {41, 40}, {25, 19}, {25, 61}})
        EXPECT_FALSE(IsHit(info, x, y)) << x << " " << y;
}

TEST_F(WidgetGeometry, InsetsArePixelsOrFractionsOfTheWidget) {
    auto info = Info(100, 100, 100, 50);
    info.fHotL = 10;
    info.fHotR = 0.2f;
    info.fHotT = 0.2f;
    info.fHotB = 5;
    EXPECT_FALSE(IsHit(info, 109, 120));
    EXPECT_TRUE(IsHit(info, 110, 120));
    EXPECT_TRUE(IsHit(info, 180, 120));
    EXPECT_FALSE(IsHit(info, 181, 120));
    EXPECT_FALSE(IsHit(info, 150, 109));
    EXPECT_TRUE(IsHit(info, 150, 110));
    EXPECT_TRUE(IsHit(info, 150, 145));
    EXPECT_FALSE(IsHit(info, 150, 146));
    info.fHotL = 1.0f; // one pixel: only what lies between 0 and 1 is a fraction
    EXPECT_TRUE(IsHit(info, 101, 120));
}

TEST_F(WidgetGeometry, OnlyWhatReactsToThePointerIsHitUnlessAnythingIs) {
    auto info = Info(10, 20, 30, 40);
    info.bInteractive = false;
    EXPECT_FALSE(IsHit(info, 20, 30));
    EXPECT_TRUE(IsHit(info, 20, 30, true));
}

TEST_F(WidgetGeometry, AHiddenWidgetIsNotHitAndOneThatFadesOutIs) {
    auto info = Info(10, 20, 30, 40);
    info.nVisibleFallMs = 100;
    CWidget widget(root, info);
    widget.SetVisible(false, 0);
    widget.Tick(99);
    EXPECT_TRUE(widget.HitTest(20, 30, false));
    widget.Tick(1);
    EXPECT_FALSE(widget.HitTest(20, 30, false));
    EXPECT_FALSE(widget.HitTest(20, 30, true));
}

TEST_F(WidgetGeometry, NumbersThatAreNoPlaceGiveNoPixels) {
    EXPECT_EQ(RectOf(Info(std::nanf(""), INFINITY, 1e20f, -INFINITY)), (SPixelRect{0, 0, 0, 0}));
}
