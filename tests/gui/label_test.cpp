#include "gui/label.h"

#include "tests/gui/doubled_editor.h"
#include "utils/exceptions.h"

#include <new>

using namespace KAV;
using namespace KAV::GUI;
using namespace KAV::Tests;

namespace {

class Label : public DoubledEditor {
protected:
    static SWidgetInfo WithText(std::u16string_view text) {
        auto info = Info(-1);
        info.sText = text;
        return info;
    }
};

} // namespace

TEST_F(Label, RendersItsTextOnceForEachTextAndSize) {
    CLabel label(root, WithText(u"abc"));
    EXPECT_EQ(Draws(label), Lines{"DrawTexture 1 to 100,50 40x20"});
    Draws(label);
    EXPECT_EQ(pictures.lines, Lines{"Letter abc 40x20"});
    label.SetWidth(50.0f);
    Draws(label);
    label.SetHeight(30.0f);
    Draws(label);
    EXPECT_EQ(pictures.lines, (Lines{"Letter abc 40x20", "Letter abc 50x20", "Letter abc 50x30"}));
    EXPECT_EQ(LiveTextures(), 1u);
}

TEST_F(Label, StretchesItsTextWhileTheWindowIsResized) {
    CLabel label(root, WithText(u"abc"));
    Draws(label);
    root.SetResizing(true);
    label.SetWidth(50.0f);
    EXPECT_EQ(Draws(label), Lines{"DrawTexture 1 to 100,50 50x20"});
    EXPECT_EQ(pictures.Count("Letter"), 1u);
    root.SetResizing(false);
    Draws(label);
    EXPECT_EQ(pictures.Count("Letter"), 2u);
}

TEST_F(Label, DrawsNothingWithoutATextASizeOrAPlaceInTheRoot) {
    CLabel empty(root, WithText(u""));
    EXPECT_TRUE(Draws(empty).empty());
    auto info = WithText(u"abc");
    info.fW = 0.0f;
    CLabel flat(root, info);
    EXPECT_TRUE(Draws(flat).empty());
    info = WithText(u"abc");
    info.fX = 700.0f;
    CLabel outside(root, info);
    EXPECT_TRUE(Draws(outside).empty());
    EXPECT_TRUE(pictures.lines.empty());
}

TEST_F(Label, GivesItsTexturesBack) {
    {
        CLabel label(root, WithText(u"abc"));
        Draws(label);
        label.SetText(u"d");
        Draws(label);
        EXPECT_EQ(LiveTextures(), 2u);
        label.ReleaseTextures();
        EXPECT_EQ(LiveTextures(), 0u);
        Draws(label);
        EXPECT_EQ(LiveTextures(), 1u);
    }
    EXPECT_EQ(LiveTextures(), 0u);
}

TEST_F(Label, PadsItsTextureWhereTheRendererAsksForPowersOfTwo) {
    renderers.Live().anySize = false;
    CLabel label(root, WithText(u"abc"));
    EXPECT_EQ(Draws(label), Lines{"DrawTexture 1 to 100,50 40x20 from 0..0.625,0..0.625"});
    EXPECT_EQ(renderers.Calls()[0], "CreateTexture 1 40x20 in 64x32");
}

TEST_F(Label, TakesPointsOrAFractionOfItsSize) {
    auto info = WithText(u"abc");
    const auto pixelsOf = [&](float size) {
        info.fFontSize = size;
        return CLabel(root, info).FontPixels();
    };
    EXPECT_EQ(pixelsOf(12.0f), 12.0f * 1.3333334f);
    EXPECT_EQ(pixelsOf(-12.0f), 12.0f * 1.3333334f);
    EXPECT_EQ(pixelsOf(0.25f), 10.0f * 1.3333334f) << "of the width";
    EXPECT_EQ(pixelsOf(-0.25f), 5.0f * 1.3333334f) << "of the height";
    EXPECT_EQ(pixelsOf(1.5f), 60.0f * 1.3333334f);
    EXPECT_EQ(pixelsOf(12.0009f), 12.0f * 1.3333334f) << "whole to three places";
}

TEST_F(Label, PassesItsStyleOn) {
    auto info = WithText(u"stra\u00DFe \u0451");
    info.sFont = u"Family";
    info.fFontSize = 9.0f;
    info.nTextAlign = 5;
    info.nTextQuality = 2;
    info.nTextColor = 0xFF102030;
    info.bBold = info.bUpper = true;
    info.fHotL = 1.0f;
    info.fHotT = 2.0f;
    info.fHotR = 4.0f;
    info.fHotB = 0.25f;
    CLabel label(root, info);
    Draws(label);
    SLettering expected;
    expected.sText = u"STRA\u00DFE \u0401";
    expected.sFont = u"Family";
    expected.fPixels = 9.0f * 1.3333334f;
    expected.nAlign = 5;
    expected.nQuality = 2;
    expected.nColor = 0xFF102030;
    expected.bBold = true;
    expected.nL = 1;
    expected.nT = 2;
    expected.nW = 35;
    expected.nH = 13;
    ASSERT_EQ(pictures.lettered.size(), 1u);
    EXPECT_EQ(pictures.lettered[0], expected);
    EXPECT_EQ(label.Text(), u"stra\u00DFe \u0451");
}

TEST_F(Label, HasTheDefaultsOfItsRecord) {
    const CLabel label(root, SWidgetInfo{});
    EXPECT_EQ(label.sFont, u"Tahoma");
    EXPECT_EQ(label.nTextQuality, 3);
    EXPECT_EQ(label.nTextAlign, 4);
    EXPECT_EQ(label.fFontSize, 10.0f);
    EXPECT_FALSE(label.bEllipsis);
    EXPECT_TRUE(label.bTextSlide);
    EXPECT_EQ(label.nTextColor, 0xFFFFFFFFu);
    EXPECT_EQ(label.nTextShadowColor, 0xFF000000u);
    auto info = SWidgetInfo{};
    info.fTextShadowX = 1.9f;
    info.fTextShadowY = -1.9f;
    EXPECT_EQ(CLabel(root, info).nTextShadowX, 1);
    EXPECT_EQ(CLabel(root, info).nTextShadowY, -1);
}

TEST_F(Label, IsNeverRenderedLargerThanTheRoot) {
    auto info = WithText(u"abc");
    info.fX = info.fY = 0.0f;
    info.fW = 5000.0f;
    info.fH = 3000.0f;
    CLabel label(root, info);
    EXPECT_EQ(Draws(label), Lines{"DrawTexture 1 to 0,0 600x400"});
    EXPECT_EQ(pictures.lines, Lines{"Letter abc 600x400"});
    EXPECT_TRUE(pictures.lettered[0].bEllipsis) << "cut at the root's edge";
    EXPECT_EQ(pictures.lettered[0].nW, 600);
    Draws(label);
    EXPECT_EQ(pictures.Count("Letter"), 1u);
}

TEST_F(Label, LeavesAShareOfItsWidthWithoutTextOnRequest) {
    CLabel label(root, WithText(u"abc"));
    label.fTextInsetL = 0.25f;
    label.fTextInsetR = 0.1f;
    Draws(label);
    EXPECT_EQ(pictures.lettered[0].nL, 10);
    EXPECT_EQ(pictures.lettered[0].nW, 26);
    label.SetWidth(80.0f);
    Draws(label);
    EXPECT_EQ(pictures.lettered[1].nL, 20);
    EXPECT_EQ(pictures.lettered[1].nW, 52);
}

TEST_F(Label, EndsInAnEllipsisOnRequest) {
    CLabel label(root, WithText(u"abc"));
    label.bEllipsis = true;
    Draws(label);
    EXPECT_TRUE(pictures.lettered[0].bEllipsis);
}

// The new text comes from the right while the old one goes, by the height of the font: 13 pixels.
TEST_F(Label, PushesTheOldTextOutSideways) {
    CLabel label(root, WithText(u"old"));
    Draws(label);
    label.SetText(u"new");
    EXPECT_EQ(label.nTextSlideDir, -2);
    EXPECT_TRUE(IsRedrawDue());
    EXPECT_EQ(Draws(label), Lines{"DrawTexture 1 to 100,50 40x20"}) << "the old one, at the beginning";
    EXPECT_EQ(label.nTextSlideDir, -1);
    label.sTextSlide.fValue = 0.25f;
    EXPECT_EQ(Draws(label), (Lines{"DrawTexture 2 to 110,50 40x20 colour 3FFFFFFF",
                                "DrawTexture 1 to 97,50 40x20 colour BFFFFFFF"}));
    label.sTextSlide.fValue = 1.2f;
    EXPECT_EQ(Draws(label), Lines{"DrawTexture 2 to 100,50 40x20"});
    label.nTextSlideDir = 1;
    label.sTextSlide.fValue = 0.25f;
    EXPECT_EQ(Draws(label), (Lines{"DrawTexture 2 to 90,50 40x20 colour 3FFFFFFF",
                                "DrawTexture 1 to 103,50 40x20 colour BFFFFFFF"}));
    EXPECT_EQ(pictures.Count("Letter"), 2u);
}

TEST_F(Label, SlidesForAQuarterOfASecond) {
    CLabel label(root, WithText(u"old"));
    EXPECT_EQ(label.sTextSlide.fValue, 1.0f);
    label.SetText(u"new");
    EXPECT_EQ(label.sTextSlide.fValue, 0.0f);
    Redraw();
    label.Tick(125);
    EXPECT_TRUE(IsRedrawDue());
    EXPECT_EQ(label.sTextSlide.fValue, Overshoot(0.0f, 1.0f, 0.5f));
    label.Tick(124);
    EXPECT_NE(label.sTextSlide.fValue, 1.0f);
    label.Tick(1);
    EXPECT_EQ(label.sTextSlide.fValue, 1.0f);
    Redraw();
    label.Tick(100);
    EXPECT_FALSE(IsRedrawDue());
}

TEST_F(Label, TheSameTextDoesNothing) {
    CLabel label(root, WithText(u"abc"));
    Redraw();
    label.SetText(u"abc");
    EXPECT_FALSE(IsRedrawDue());
    EXPECT_EQ(label.nTextSlideDir, 1);
    EXPECT_EQ(label.sTextSlide.fValue, 1.0f);
}

TEST_F(Label, WithoutASlideShowsTheNewTextAtOnce) {
    CLabel label(root, WithText(u"old"));
    label.bTextSlide = false;
    Draws(label);
    label.SetText(u"new");
    EXPECT_EQ(Draws(label), Lines{"DrawTexture 2 to 100,50 40x20"});
    EXPECT_EQ(LiveTextures(), 1u);
}

TEST_F(Label, IsRenderedAnewInAnotherColourAndDoesNotSlide) {
    CLabel label(root, WithText(u"abc"));
    Draws(label);
    ASSERT_FALSE(root.Frame().IsRedrawDue());
    label.SetTextColor(label.nTextColor);
    EXPECT_FALSE(root.Frame().IsRedrawDue()) << "the colour that it has";
    label.SetTextColor(0x64C0C0C0);
    EXPECT_TRUE(root.Frame().IsRedrawDue());
    EXPECT_EQ(Draws(label), Lines{"DrawTexture 2 to 100,50 40x20"});
    Draws(label);
    ASSERT_EQ(pictures.lettered.size(), 2u);
    EXPECT_EQ(pictures.lettered[1].nColor, 0x64C0C0C0u);
    EXPECT_EQ(LiveTextures(), 1u);
}

TEST_F(Label, StaysInItsOldColourWhileTheWindowIsResized) {
    CLabel label(root, WithText(u"abc"));
    Draws(label);
    root.SetResizing(true);
    label.SetTextColor(0xFF000000);
    EXPECT_EQ(Draws(label), Lines{"DrawTexture 1 to 100,50 40x20"}) << "there, if outdated";
    root.SetResizing(false);
    Draws(label);
    EXPECT_EQ(pictures.Count("Letter"), 2u);
}

TEST_F(Label, ThirdTextTakesThePlaceOfTheSecondAndEndsTheFirst) {
    CLabel label(root, WithText(u"first"));
    Draws(label);
    label.SetText(u"second");
    Draws(label);
    label.SetText(u"third");
    Draws(label);
    EXPECT_EQ(LiveTextures(), 2u);
    EXPECT_EQ(label.sOldTextTexture.piGDIP, 2u);
    EXPECT_EQ(label.sTextTexture.piGDIP, 3u);
}

TEST_F(Label, DrawsItsTextOverItsPictureAndFadesWithIt) {
    auto info = WithText(u"abc");
    info.sImage = u"Plain.png";
    pictures.stored[u"Plain.png"] = {40, 20};
    CLabel label(root, info);
    EXPECT_EQ(Draws(label), (Lines{"DrawTexture 1 to 100,50 40x20", "DrawTexture 2 to 100,50 40x20"}));
    label.sVisible.fValue = 0.5f; // and it is on its way up from a quarter of its height
    EXPECT_EQ(Draws(label), (Lines{"DrawTexture 1 to 100,53 40x20 colour 7FFFFFFF",
                                "DrawTexture 2 to 100,53 40x20 colour 7FFFFFFF"}));
    label.sVisible.fValue = 0.0f;
    EXPECT_TRUE(Draws(label).empty());
}

TEST_F(Label, TriesAgainWhenTheRendererFails) {
    CLabel label(root, WithText(u"abc"));
    renderers.Live().makesTextures = false;
    EXPECT_TRUE(Draws(label).empty());
    renderers.Live().makesTextures = true;
    EXPECT_EQ(Draws(label).size(), 1u);
}

TEST_F(Label, AllocatesNoTextureWithoutARasterizer) {
    CRecordingRoot bare;
    CLabel label(bare, WithText(u"abc"));
    label.Draw(0);
    EXPECT_FALSE(label.MakeTextTexture());
    EXPECT_EQ(label.sTextTexture, GFX::FreedTexture());
}
