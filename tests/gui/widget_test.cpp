#include "gui/widget.h"

#include "tests/gui/recording_root.h"
#include "tests/support/own_renderers.h"
#include "tests/support/virtual_slots.h"

#include <gtest/gtest.h>
#include <map>
#include <string>
#include <vector>

using namespace KAV;
using namespace KAV::GUI;
using namespace KAV::Tests;

namespace {

using Lines = std::vector<std::string>;

struct SWindowThatExists final : IWindow {
    bool Exists() const noexcept override { return true; }
};

/// Pictures of made-up sizes.
struct SMadePictures final : IPictures {
    struct SSize {
        std::int32_t width, height;
    };

    std::unique_ptr<Pixels::SBitmap> LoadImage(
        const std::u16string& name, std::int32_t width, std::int32_t height, std::int32_t blur) override {
        asked.push_back(Utils::ToUtf8(name) + " " + std::to_string(width) + "x" + std::to_string(height) +
                        " b" + std::to_string(blur));
        const auto found = sizes.find(name);
        if (found == sizes.end()) return nullptr;
        auto bitmap = std::make_unique<Pixels::SBitmap>();
        bitmap->width = found->second.width;
        bitmap->height = found->second.height;
        return bitmap;
    }

    std::map<std::u16string, SSize> sizes{{u"Plain.png", {40, 30}}, {u"Grid((6x3)).png", {60, 40}}};
    Lines asked;
};

class Widget : public testing::Test {
protected:
    COwnRenderers renderers;
    SWindowThatExists window;
    SMadePictures pictures;
    CRecordingRoot root{{&window, &pictures}};

    void SetUp() override {
        root.Resize(600, 400);
        ASSERT_TRUE(root.Screen().Create());
    }
    static SWidgetInfo Picture(
        const char16_t* image, float x = 10, float y = 20, float w = 100, float h = 50) {
        SWidgetInfo info;
        info.sName = u"picture";
        info.sImage = image;
        info.fX = x;
        info.fY = y;
        info.fW = w;
        info.fH = h;
        return info;
    }
    /// The draws of a widget, without the making of textures.
    Lines Draws(CWidget& widget) {
        renderers.Calls().clear();
        widget.Draw(0);
        Lines draws;
        for (const auto& line : renderers.Calls()) {
            if (line.starts_with("Draw")) draws.push_back(line);
        }
        return draws;
    }
};

} // namespace

TEST_F(Widget, KeepsItsOperationsInTheirSlots) {
    ExpectSlotsFrom(
        0, {SlotOf(&CWidget::LoadTexture), SlotOf(&CWidget::CheckTextures), SlotOf(&CWidget::DrawShadow),
               SlotOf(&CWidget::DrawImage), SlotOf(&CWidget::DrawFrame), SlotOf(&CWidget::GetDrawValue)});
    ExpectSlotsFrom(8, // after the destructor
        {SlotOf(&CWidget::ReleaseTextures), SlotOf(&CWidget::GetText), SlotOf(&CWidget::SetWidth),
            SlotOf(&CWidget::SetHeight), SlotOf(&CWidget::SetVisible), SlotOf(&CWidget::SetInteractive),
            SlotOf(&CWidget::SetImage), SlotOf(&CWidget::Restack), SlotOf(&CWidget::SetFromHost),
            SlotOf(&CWidget::Tick), SlotOf(&CWidget::Draw), SlotOf(&CWidget::OnMouseDown),
            SlotOf(&CWidget::OnMouseUp), SlotOf(&CWidget::OnMouseMove), SlotOf(&CWidget::OnMouseWheel),
            SlotOf(&CWidget::OnMouseEnter), SlotOf(&CWidget::OnMouseLeave), SlotOf(&CWidget::OnGuiResize),
            SlotOf(&CWidget::HitTest), SlotOf(&CWidget::IsSpare), SlotOf(&CWidget::SoakTest)});
}

TEST_F(Widget, IsMadeFromDefaults) {
    const SWidgetInfo info;
    EXPECT_EQ(info.nId, -1);
    EXPECT_EQ(info.nGroups, 0u);
    EXPECT_EQ(info.nTextAlign, 4);
    EXPECT_EQ(info.nTextQuality, 3);
    EXPECT_EQ(info.fFontSize, 10.0f);
    EXPECT_EQ(info.sFont, u"Tahoma");
    EXPECT_TRUE(info.bVisible);
    EXPECT_TRUE(info.bHint);
    EXPECT_FALSE(info.bBold || info.bItalic || info.bUpper || info.bTile || info.bInteractive ||
                 info.bPassive || info.bShadow || info.bTextShadow || info.bFit);
    EXPECT_EQ(info.fMin, 0.0f);
    EXPECT_EQ(info.fMax, 1.0f);
    for (const auto color : {info.nColor, info.nColorHover, info.nColorActive, info.nColorInactive,
             info.nOverlayColor, info.nOverlayColorHover, info.nOverlayColorActive, info.nTextColor}) {
        EXPECT_EQ(color, 0xFFFFFFFFu);
    }
    EXPECT_EQ(info.nShadowColor, 0xFF000000u);
    EXPECT_EQ(info.nTextShadowColor, 0xFF000000u);
    EXPECT_EQ(info.nDecimals, 1);
    EXPECT_EQ(info.nDragPx, 500u);
    EXPECT_EQ(info.nWheelPx, 500u);
    EXPECT_EQ(info.nRadioGroup, -1);
    EXPECT_EQ(info.nAnchor, 0u);
    EXPECT_EQ(info.fExtra, 400.0f);
    for (const auto& state : info.afLook[0]) {
        for (const float scale : state) EXPECT_EQ(scale, 1.0f);
    }
    for (const std::size_t kind : {1u, 2u}) {
        for (const auto& state : info.afLook[kind]) {
            for (const float value : state) EXPECT_EQ(value, 0.0f);
        }
    }
}

TEST_F(Widget, TakesItsRecord) {
    SWidgetInfo info = Picture(u"Plain.png");
    info.nId = 7;
    info.nGroups = 5;
    info.sAux1 = u"one";
    info.sAux2 = u"two";
    info.sImage2 = u"b";
    info.sImage3 = u"c";
    info.fHotL = 1;
    info.fHotT = 2;
    info.fHotR = 3;
    info.fHotB = 4;
    info.nMrgL = 5;
    info.nMrgT = 6;
    info.nMrgR = 7;
    info.nMrgB = 8;
    info.nVisibleRiseMs = 9;
    info.nVisibleFallMs = 10;
    info.nHoverRiseMs = 11;
    info.nHoverFallMs = 12;
    info.afLook[1] = {{{1, 2, 3}, {4, 5, 6}, {7, 8, 9}}};
    const CWidget widget(root, info);
    EXPECT_EQ(widget.nId, 7);
    EXPECT_EQ(widget.nGroups, 5u);
    EXPECT_EQ(widget.sClass, u"picture");
    EXPECT_EQ(widget.sName, u"picture");
    EXPECT_EQ(widget.sHint, u"picture");
    EXPECT_EQ(widget.sAux1 + widget.sAux2, u"onetwo");
    EXPECT_EQ(widget.sImage + widget.sImage2 + widget.sImage3, u"Plain.pngbc");
    EXPECT_EQ(widget.fHotL, 1.0f);
    EXPECT_EQ(widget.fHotT, 2.0f);
    EXPECT_EQ(widget.fHotR, 3.0f);
    EXPECT_EQ(widget.fHotB, 4.0f);
    EXPECT_EQ(widget.nMrgL, 5);
    EXPECT_EQ(widget.nMrgT, 6);
    EXPECT_EQ(widget.nMrgR, 7);
    EXPECT_EQ(widget.nMrgB, 8);
    EXPECT_EQ(widget.sVisible.nRiseMs, 9u);
    EXPECT_EQ(widget.sVisible.nFallMs, 10u);
    EXPECT_EQ(widget.sVisible.pfnEase, &Overshoot);
    EXPECT_EQ(widget.sHover.nRiseMs, 11u);
    EXPECT_EQ(widget.sHover.nFallMs, 12u);
    EXPECT_EQ(widget.sFrameAlpha.nRiseMs, 250u);
    EXPECT_EQ(widget.sFrameAlpha.nFallMs, 250u);
    EXPECT_EQ(widget.fSlideX, 0.0f);
    EXPECT_EQ(widget.fSlideY, 0.25f);
    EXPECT_EQ(widget.fBumpX, 0.0f);
    EXPECT_EQ(widget.fBumpY, 0.0f);
    EXPECT_EQ(widget.asLook[3], (std::array<float, 4>{1, 4, 7, 1}))
        << "normal, hover, active, inactive: as normal";
    EXPECT_EQ(widget.asLook[5], (std::array<float, 4>{3, 6, 9, 3}));
}

TEST_F(Widget, FadesInWhenItTakesTimeAndIsThereAtOnceWhenItDoesNot) {
    SWidgetInfo info = Picture(u"Plain.png");
    EXPECT_EQ(CWidget(root, info).sVisible.fValue, 1.0f);
    info.nVisibleRiseMs = 100;
    const CWidget slow(root, info);
    EXPECT_EQ(slow.sVisible.fValue, 0.0f);
    EXPECT_EQ(slow.sVisible.fTarget, 1.0f);
    info.bVisible = false;
    EXPECT_EQ(CWidget(root, info).sVisible.fTarget, 0.0f);
}

TEST_F(Widget, EntersTheListInTheOrderOfMakingAndLeavesItWhenItGoes) {
    const auto before = root.AllWidgets().size();
    {
        CWidget first(root, {});
        CWidget second(root, {});
        ASSERT_EQ(root.AllWidgets().size(), before + 2);
        EXPECT_EQ(root.AllWidgets()[before], &first);
        EXPECT_EQ(root.AllWidgets()[before + 1], &second);
    }
    EXPECT_EQ(root.AllWidgets().size(), before);
}

TEST_F(Widget, TheHintTheEditAndTheLightComeFirst) {
    const auto& widgets = root.AllWidgets();
    ASSERT_GE(widgets.size(), 3u);
    EXPECT_EQ(widgets[0], &root.Hint());
    EXPECT_EQ(widgets[1], &root.Edit());
    EXPECT_EQ(widgets[2]->sName, u"Light");
    EXPECT_EQ(widgets[2]->PixelRect(), (SPixelRect{0, 0, 32, 32}));
}

TEST_F(Widget, IsStackedOnePlaceOrAllTheWay) {
    CWidget a(root, {}), b(root, {}), c(root, {});
    const auto order = [&] {
        std::string text;
        for (const auto* const widget : root.AllWidgets())
            text += widget == &a ? "a" : widget == &b ? "b" : widget == &c ? "c" : "-";
        return text;
    };
    EXPECT_EQ(order(), "---abc");
    a.Restack(true, false, 0);
    EXPECT_EQ(order(), "---bac");
    a.Restack(true, true, 0);
    EXPECT_EQ(order(), "---bca");
    a.Restack(true, false, 0);
    EXPECT_EQ(order(), "---bca") << "it is at the front";
    a.Restack(false, false, 0);
    EXPECT_EQ(order(), "---bac");
    c.Restack(false, true, 0);
    EXPECT_EQ(order(), "c---ba");
    c.Restack(false, false, 0);
    EXPECT_EQ(order(), "c---ba");
}

TEST_F(Widget, AGroupIsStackedInItsOrder) {
    SWidgetInfo in, out;
    in.nGroups = 6;
    out.nGroups = 1;
    CWidget a(root, in), b(root, out), c(root, in), d(root, out);
    const auto order = [&] {
        std::string text;
        for (const auto* const widget : root.AllWidgets())
            text += widget == &a ? "a" : widget == &b ? "b" : widget == &c ? "c" : widget == &d ? "d" : "-";
        return text;
    };
    b.Restack(true, true, 2);
    EXPECT_EQ(order(), "---bdac");
    b.Restack(false, true, 4);
    EXPECT_EQ(order(), "ac---bd");
    b.Restack(true, true, 8);
    EXPECT_EQ(order(), "ac---bd") << "no such group";
}

TEST_F(Widget, IsShownAloneOrWithItsGroup) {
    SWidgetInfo in, out;
    in.nGroups = 6;
    out.nGroups = 1;
    CWidget a(root, in), b(root, out), c(root, in);
    b.SetVisible(false, 4);
    EXPECT_FALSE(a.IsVisible());
    EXPECT_TRUE(b.IsVisible());
    EXPECT_FALSE(c.IsVisible());
    a.SetVisible(true, 0);
    EXPECT_TRUE(a.IsVisible());
    EXPECT_FALSE(c.IsVisible());
}

TEST_F(Widget, AsksForARedrawWhenSomethingChangesAndOnlyThen) {
    CWidget widget(root, Picture(u"Plain.png"));
    const auto asks = [&](auto change) {
        root.Render(0);
        change();
        return root.Frame().IsRedrawDue();
    };
    EXPECT_FALSE(asks([&] { widget.SetVisible(true, 0); }));
    EXPECT_TRUE(asks([&] { widget.SetVisible(false, 0); }));
    EXPECT_TRUE(asks([&] { widget.SetWidth(50); }));
    EXPECT_FALSE(asks([&] { widget.SetWidth(50); }));
    EXPECT_TRUE(asks([&] { widget.SetHeight(60); }));
    EXPECT_FALSE(asks([&] { widget.SetHeight(60); }));
    EXPECT_TRUE(asks([&] { widget.SetInteractive(true); }));
    EXPECT_FALSE(asks([&] { widget.SetInteractive(true); }));
    EXPECT_TRUE(asks([&] { widget.SetImage(u"Other.png"); }));
    EXPECT_FALSE(asks([&] { widget.SetImage(u"Other.png"); }));
    EXPECT_FALSE(asks([&] { widget.OnMouseEnter(); })) << "it looks the same under the pointer";
    EXPECT_EQ(widget.sHover.fTarget, 1.0f);
    widget.nColorHover = 0xFF000000;
    EXPECT_TRUE(asks([&] { widget.OnMouseLeave(); }));
    widget.nColorHover = widget.nColor;
    widget.asLook[0][1] = 1.5f;
    EXPECT_TRUE(asks([&] { widget.OnMouseEnter(); }));
    EXPECT_EQ(widget.PixelRect().nW, 50);
    EXPECT_EQ(widget.PixelRect().nH, 60);
}

TEST_F(Widget, DrawsItsPictureInItsRectangle) {
    CWidget widget(root, Picture(u"Plain.png"));
    EXPECT_EQ(Draws(widget), Lines{"DrawTexture 1 to 10,20 100x50"});
    EXPECT_EQ(pictures.asked, Lines{"Plain.png -1x-1 b0"});
}

TEST_F(Widget, TakesItsSizeFromOneFrameIfItHasNone) {
    CWidget plain(root, Picture(u"Plain.png", 10, 20, 0, 0));
    CWidget grid(root, Picture(u"Grid((6x3)).png", 10, 20, 0, 0));
    Draws(plain);
    Draws(grid);
    EXPECT_EQ(plain.PixelRect(), (SPixelRect{10, 20, 40, 30}));
    EXPECT_EQ(grid.PixelRect(), (SPixelRect{10, 20, 20, 20}));
    auto sliced = Picture(u"Plain.png", 10, 20, 0, 0);
    sliced.nMrgL = 3;
    CWidget margins(root, sliced);
    EXPECT_EQ(Draws(margins), Lines{});
    EXPECT_EQ(margins.PixelRect().nW, 0);
}

TEST_F(Widget, WithoutANameOrAPictureNothingIsDrawnAndThePictureIsLookedForAgain) {
    CWidget nameless(root, Picture(u""));
    CWidget missing(root, Picture(u"Missing.png"));
    EXPECT_EQ(Draws(nameless), Lines{});
    EXPECT_EQ(Draws(missing), Lines{});
    EXPECT_EQ(Draws(missing), Lines{});
    EXPECT_EQ(pictures.asked.size(), 2u);
}

TEST_F(Widget, OutsideTheRootNothingIsDrawn) {
    for (const auto& [x, y] : {std::pair{601, 0}, {-101, 0}, {0, 401}, {0, -51}}) {
        CWidget outside(root, Picture(u"Plain.png", static_cast<float>(x), static_cast<float>(y)));
        EXPECT_EQ(Draws(outside), Lines{}) << x << " " << y;
    }
    CWidget edge(root, Picture(u"Plain.png", 600, 400));
    EXPECT_EQ(Draws(edge).size(), 1u);
}

TEST_F(Widget, FadingMovesUpFromBelowAndMultipliesTheAlpha) {
    CWidget widget(root, Picture(u"Plain.png"));
    widget.sVisible.Jump(0.5f);
    EXPECT_EQ(Draws(widget), Lines{"DrawTexture 1 to 10,26 100x50 colour 7FFFFFFF"})
        << "half of a quarter of its height";
    widget.fSlideX = -0.5f;
    EXPECT_EQ(Draws(widget), Lines{"DrawTexture 1 to -15,26 100x50 colour 7FFFFFFF"});
    widget.sVisible.Jump(1.2f);
    EXPECT_EQ(Draws(widget), Lines{"DrawTexture 1 to 20,18 100x50"})
        << "beyond its place, and no more than opaque";
    widget.sVisible.Jump(0.003f);
    EXPECT_EQ(Draws(widget), Lines{}) << "less than one step of alpha";
}

TEST_F(Widget, ColoursFollowThePointerAndTheState) {
    auto info = Picture(u"Plain.png");
    info.nColor = 0xFF204060;
    info.nColorHover = 0x80806040;
    info.nColorInactive = 0xFF112233;
    CWidget widget(root, info);
    EXPECT_EQ(Draws(widget), Lines{"DrawTexture 1 to 10,20 100x50 colour FF112233"});
    widget.SetInteractive(true);
    EXPECT_EQ(Draws(widget), Lines{"DrawTexture 1 to 10,20 100x50 colour FF204060"});
    widget.sHover.Jump(0.5f);
    EXPECT_EQ(Draws(widget), Lines{"DrawTexture 1 to 10,20 100x50 colour BF505050"})
        << "each channel cut to a whole number";
    widget.sHover.Jump(1.0f);
    EXPECT_EQ(Draws(widget), Lines{"DrawTexture 1 to 10,20 100x50 colour 80806040"});
}

TEST_F(Widget, TransformsFollowThePointer) {
    auto info = Picture(u"Plain.png");
    info.bInteractive = true;
    info.afLook[0] = {{{1, 1, 1}, {2, 3, 1}, {9, 9, 9}}};
    info.afLook[1] = {{{0, 0, 10}, {0, 0, 30}, {9, 9, 9}}};
    info.afLook[2] = {{{0, 0, 0}, {4, 0, 0}, {9, 9, 9}}};
    CWidget widget(root, info);
    EXPECT_EQ(Draws(widget), Lines{"DrawTexture 1 to 10,20 100x50 turn 0,0,10"});
    widget.sHover.Jump(0.5f);
    EXPECT_EQ(Draws(widget), Lines{"DrawTexture 1 to 10,20 100x50 scale 1.5,2,1 turn 0,0,20 move 2,0,0"});
}

TEST_F(Widget, TilesRunPastTheEndOfThePicture) {
    auto info = Picture(u"Plain.png");
    info.bTile = true;
    CWidget widget(root, info);
    EXPECT_EQ(Draws(widget), Lines{"DrawTexture 1 to 10,20 100x50 from 0..2.5,0..1.66667"});
}

TEST_F(Widget, MarginsMakeNineSlices) {
    auto info = Picture(u"Plain.png");
    info.nMrgL = 1;
    info.nMrgT = 2;
    info.nMrgR = 3;
    info.nMrgB = 4;
    CWidget widget(root, info);
    EXPECT_EQ(Draws(widget), Lines{"DrawTexture9 1 to 10,20 100x50 margins 1,2,3,4"});
}

TEST_F(Widget, ShadowsLieUnderThePictureAndReachBeyondIt) {
    auto info = Picture(u"Plain.png");
    info.bShadow = true;
    info.nShadowBlur = 3;
    info.nShadowColor = 0x80102030;
    info.fShadowX = 2;
    info.fShadowY = 0.01f; // of the root's height: 4 pixels
    info.nColorInactive = 0x80FFFFFF;
    CWidget widget(root, info);
    EXPECT_EQ(Draws(widget), (Lines{"DrawTexture 1 to 0,12 124x74 colour 40102030",
                                 "DrawTexture 2 to 10,20 100x50 colour 80FFFFFF"}));
    EXPECT_EQ(pictures.asked, (Lines{"Plain.png -1x-1 b3", "Plain.png -1x-1 b0"}));
    widget.bShadow = false;
    EXPECT_EQ(Draws(widget).size(), 1u);
}

TEST_F(Widget, AFittedPictureIsMadeAtItsSizeAndAnewForAnother) {
    auto info = Picture(u"Plain.png");
    info.bFit = true;
    CWidget widget(root, info);
    pictures.sizes[u"Plain.png"] = {100, 50};
    Draws(widget);
    Draws(widget);
    EXPECT_EQ(pictures.asked, Lines{"Plain.png 100x50 b0"});
    widget.SetWidth(80);
    root.SetResizing(true);
    EXPECT_EQ(Draws(widget), Lines{"DrawTexture 1 to 10,20 80x50"})
        << "it stretches while the size is dragged";
    root.SetResizing(false);
    pictures.sizes[u"Plain.png"] = {80, 50};
    EXPECT_EQ(Draws(widget), Lines{"DrawTexture 2 to 10,20 80x50"});
    EXPECT_EQ(pictures.asked, (Lines{"Plain.png 100x50 b0", "Plain.png 80x50 b0"}));
    EXPECT_EQ(renderers.Live().LiveTextures().size(), 1u);
}

TEST_F(Widget, GivesItsPicturesBackWhenItGoes) {
    {
        auto info = Picture(u"Plain.png");
        info.bShadow = true;
        info.nShadowBlur = 1;
        CWidget widget(root, info);
        Draws(widget);
        EXPECT_EQ(renderers.Live().LiveTextures().size(), 2u);
    }
    EXPECT_EQ(renderers.Live().LiveTextures().size(), 0u);
}

TEST_F(Widget, AnotherImageGivesTheFirstBack) {
    auto info = Picture(u"Plain.png");
    info.bShadow = true;
    info.nShadowBlur = 1;
    CWidget widget(root, info);
    Draws(widget);
    widget.SetImage(u"Grid((6x3)).png");
    EXPECT_EQ(renderers.Live().LiveTextures().size(), 0u);
    Draws(widget);
    EXPECT_EQ(renderers.Live().LiveTextures().size(), 2u);
}

TEST_F(Widget, HasNoTextOfAValueAndItsNameAsHint) {
    CWidget widget(root, Picture(u"Plain.png"));
    EXPECT_EQ(widget.GetText(true), u"");
    EXPECT_EQ(widget.GetText(false), u"picture");
}

TEST_F(Widget, HasItsTitleInTheHintIfThereIsOne) {
    auto info = Picture(u"Plain.png");
    info.sTitle = u"A picture";
    CWidget widget(root, info);
    EXPECT_EQ(widget.GetText(false), u"A picture");
    EXPECT_EQ(widget.sTitle, u"A picture");
    EXPECT_EQ(widget.sName, u"picture");
    EXPECT_EQ(widget.sClass, u"picture");
}
