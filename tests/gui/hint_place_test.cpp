#include "gui/hint.h"

#include "tests/gui/hint_fixture.h"

#include <gtest/gtest.h>
#include <string>

using namespace KAV;
using namespace KAV::GUI;
using namespace KAV::Tests;

namespace {

class HintPlace : public CHintTest {};

} // namespace

// How large it is

TEST_F(HintPlace, IsAsLargeAsItsTextAndItsInsets) {
    hint.fHotL = 3;
    hint.fHotT = 4;
    hint.fHotR = 5;
    hint.fHotB = 6;
    Show(widget);
    EXPECT_EQ(hint.sW.fTarget, 6 * Character + 8);
    EXPECT_EQ(hint.sH.fTarget, Line + 10);
    EXPECT_EQ(hint.PixelRect().nW, 44);
    EXPECT_EQ(hint.PixelRect().nH, 20);
}

TEST_F(HintPlace, MeasuresTheTextAsItIsDrawn) {
    hint.bUpper = true;
    hint.bBold = true;
    hint.nTextQuality = 5;
    hint.fFontSize = 12;
    Show(widget);
    ASSERT_EQ(pictures.measured.size(), 1u);
    const auto& measured = pictures.measured.front();
    EXPECT_EQ(measured.sText, u"WIDGET");
    EXPECT_EQ(measured.nQuality, 3);
    EXPECT_TRUE(measured.bBold);
    EXPECT_NEAR(measured.fPixels, 16.0f, 0.001f);
    hint.PrepareDraw();
    EXPECT_EQ(pictures.measured.size(), 1u) << "and again only when it changes";
}

TEST_F(HintPlace, AWidgetWithoutATextHasAHintWithoutASize) {
    Show(other);
    other.sHint.clear();
    hint.PrepareDraw();
    EXPECT_EQ(hint.PixelRect().nW, 0);
    EXPECT_EQ(hint.PixelRect().nH, 0);
    EXPECT_EQ(pictures.measured.size(), 1u);
}

TEST_F(HintPlace, IsNeverLargerThanTheEditor) {
    hint.fHotL = hint.fHotR = 5;
    widget.sHint = std::u16string(1000, u'W');
    Show(widget);
    EXPECT_EQ(hint.PixelRect(), (SPixelRect{0, hint.PixelRect().nT, Width, 10}));
    EXPECT_TRUE(pictures.measured.back().bEllipsis);
    EXPECT_LE(pictures.measured.back().nW, Width);
    EXPECT_TRUE(hint.bEllipsis);
}

TEST_F(HintPlace, KeepsPixelsInPartsForTheLastLetter) {
    class CNarrow final : public CRecordingPictures {
        SPixelSize Measure(const SLettering&) override { return {40.2f, 11.1f}; }
    };
    CNarrow narrow;
    CRecordingRoot fine({&window, &narrow});
    CWidget fineWidget(fine, Info(u"Widget", 100, 100));
    fine.Hint().HoverChanged(&fineWidget);
    fine.Hint().Advance(CHint::DelayMs);
    fine.Hint().PrepareDraw();
    EXPECT_EQ(fine.Hint().PixelRect().nW, 41);
    EXPECT_EQ(fine.Hint().PixelRect().nH, 12);
}

// Where it stands

TEST_F(HintPlace, StandsAtThePointersHotSpot) {
    window.hotX = 3;
    window.hotY = 7;
    robot.Move(110, 120);
    hint.Advance(CHint::DelayMs);
    hint.PrepareDraw();
    EXPECT_EQ(hint.PixelRect(), (SPixelRect{113, 127, 36, 10}));
}

TEST_F(HintPlace, FollowsNoMoveOnTheWidget) {
    Show(widget);
    robot.Move(130, 130);
    hint.PrepareDraw();
    EXPECT_EQ(hint.PixelRect().nL, 101);
    EXPECT_EQ(hint.PixelRect().nT, 101);
}

TEST_F(HintPlace, DropsInFromFiftyPixelsAbove) {
    CRecordingRoot slow({&window, &pictures}, SlowInfo());
    CWidget slowWidget(slow, Info(u"Widget", 100, 100));
    auto& dropping = slow.Hint();
    dropping.nAnchorX = 120;
    dropping.nAnchorY = 130;
    dropping.HoverChanged(&slowWidget);
    dropping.Advance(CHint::DelayMs);
    EXPECT_EQ(dropping.sX.fValue, 120.0f);
    EXPECT_EQ(dropping.sX.fTarget, 120.0f);
    EXPECT_EQ(dropping.sY.fValue, 80.0f);
    EXPECT_EQ(dropping.sY.fTarget, 130.0f);
    dropping.Tick(100);
    EXPECT_EQ(dropping.sY.fValue, 105.0f);
    dropping.Tick(100);
    EXPECT_EQ(dropping.sY.fValue, 130.0f);
}

TEST_F(HintPlace, DropsFromFartherOnADenserDisplay) {
    window.dotsPerInch = 192;
    CRecordingRoot slow({&window, &pictures}, SlowInfo());
    CWidget slowWidget(slow, Info(u"Widget", 100, 100));
    slow.Hint().nAnchorY = 130;
    slow.Hint().HoverChanged(&slowWidget);
    slow.Hint().Advance(CHint::DelayMs);
    EXPECT_EQ(slow.Hint().sY.fValue, 30.0f);
}

TEST_F(HintPlace, StandsWhereItsWidgetWantsIt) {
    widget.fHintAt = -0.1f; // 4 pixels above
    hint.sX.Jump(500.0f);
    hint.sY.Jump(500.0f);
    Show(widget);
    EXPECT_EQ(hint.PixelRect(), (SPixelRect{112, 86, 36, 10})) << "in the middle of it";
    EXPECT_FALSE(hint.bFirst);
}

TEST_F(HintPlace, ComesUpFromAQuarterOfItsHeightBelow) {
    CRecordingRoot slow({&window, &pictures}, SlowInfo());
    CWidget slowWidget(slow, Info(u"Widget", 100, 100));
    slowWidget.fHintAt = 0.5f;
    auto& rising = slow.Hint();
    rising.fHotT = 10; // 20 high
    rising.HoverChanged(&slowWidget);
    rising.Advance(CHint::DelayMs);
    rising.PrepareDraw();
    EXPECT_EQ(rising.sX.fValue, 112.0f);
    EXPECT_EQ(rising.sY.fValue, 105.0f);
    EXPECT_EQ(rising.sY.fTarget, 100.0f);
    rising.Tick(50);
    EXPECT_EQ(rising.sY.fValue, 102.5f);
}

TEST_F(HintPlace, GoesFromTextToTextAtItsWidget) {
    CRecordingRoot slow({&window, &pictures}, SlowInfo());
    CWidget slowWidget(slow, Info(u"123456", 100, 100));
    slowWidget.fHintAt = 0.5f;
    auto& moving = slow.Hint();
    moving.HoverChanged(&slowWidget);
    moving.Advance(CHint::DelayMs);
    moving.PrepareDraw();
    moving.Tick(1000);
    EXPECT_EQ(moving.PixelRect(), (SPixelRect{112, 110, 36, 10}));
    slowWidget.sHint = u"1234567890";
    moving.PrepareDraw();
    EXPECT_EQ(moving.PixelRect(), (SPixelRect{112, 110, 36, 10}));
    EXPECT_EQ(moving.sX.fTarget, 100.0f);
    moving.Tick(50); // of 100 to the left, and of 200 to grow
    EXPECT_EQ(moving.PixelRect(), (SPixelRect{106, 110, 42, 10}));
    moving.Tick(150);
    EXPECT_EQ(moving.PixelRect(), (SPixelRect{100, 110, 60, 10}));
}

TEST_F(HintPlace, TwoWidgetsOfTheSameTextHaveItEachAtItsPlace) {
    other.sHint = widget.sHint;
    widget.fHintAt = other.fHintAt = 1.0f;
    Show(widget);
    EXPECT_EQ(hint.PixelRect().nL, 112);
    EXPECT_EQ(hint.PixelRect().nT, 130);
    Show(other);
    EXPECT_EQ(hint.PixelRect().nL, 312);
    EXPECT_EQ(hint.PixelRect().nT, 230);
}

TEST_F(HintPlace, StaysWithinTheEditorAtEveryEdge) {
    struct SCase {
        float x, y;
    };
    for (const auto at : {SCase{750, 100}, {2, 100}, {400, 550}, {400, 1}, {750, 550}, {0, 0}}) {
        for (const float hintAt : {0.0f, -0.5f, 1.0f}) {
            CWidget edge(root, Info(u"A text of some length", at.x, at.y, 3, 3));
            edge.fHintAt = hintAt;
            Show(edge);
            const auto rect = hint.PixelRect();
            EXPECT_GE(rect.nL, 0);
            EXPECT_GE(rect.nT, 0);
            EXPECT_LE(rect.nL + rect.nW, Width);
            EXPECT_LE(rect.nT + rect.nH, Height);
        }
    }
}

TEST_F(HintPlace, StaysWithinTheEditorWhenItsTextGrows) {
    CWidget edge(root, Info(u"12", 740, 100, 10, 10));
    Show(edge);
    edge.sHint = u"A text of some length";
    hint.PrepareDraw();
    EXPECT_EQ(hint.PixelRect(), (SPixelRect{Width - 126, 101, 126, 10}));
}

TEST_F(HintPlace, APlaceAtTheTopIsNotTakenForAFraction) {
    CRecordingRoot slow({&window, &pictures}, SlowInfo());
    CWidget slowWidget(slow, Info(u"Widget", 0, 3));
    slowWidget.fHintAt = -0.1f;
    slow.Hint().HoverChanged(&slowWidget);
    slow.Hint().Advance(CHint::DelayMs);
    slow.Hint().PrepareDraw();
    EXPECT_EQ(slow.Hint().PixelRect().nT, 0) << "at once, not over the bottom edge";
}
