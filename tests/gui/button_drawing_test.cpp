// What is drawn of buttons.

#include "gui/button.h"
#include "tests/gui/doubled_editor.h"

using namespace KAV;
using namespace KAV::GUI;
using namespace KAV::Tests;

namespace {

class ButtonDrawing : public DoubledEditor {
protected:
    void SetUp() override {
        DoubledEditor::SetUp();
        pictures.stored[u"Two((2)).png"] = {40, 40};
        pictures.stored[u"Three((3)).png"] = {40, 60};
        pictures.stored[u"Wide.png"] = {80, 20};
        pictures.stored[u"Tall((2)).png"] = {10, 80};
    }
    static SWidgetInfo Picture(const char16_t* image, float value = 0.0f) {
        auto info = Info(5, value);
        info.sImage = image;
        return info;
    }
};

} // namespace

TEST_F(ButtonDrawing, FadesBetweenOffAndOnWithABump) {
    CButton button(root, Picture(u"Two((2)).png", 0.0f));
    EXPECT_EQ(Draws(button), Lines{"DrawTexture 1 to 100,50 40x20 from 0..1,0..0.5"});
    button.sValue.Jump(0.5f); // an eighth of its height, half of it: 1.25 pixels
    EXPECT_EQ(Draws(button), (Lines{"DrawTexture 1 to 100,51 40x20 from 0..1,0..0.5 colour 7FFFFFFF",
                                 "DrawTexture 1 to 100,51 40x20 from 0..1,0.5..1 colour 7FFFFFFF"}));
}

TEST_F(ButtonDrawing, ASubclassChoosesTheFramesOfItsStates) {
    struct SSide final : CButton {
        using CButton::CButton;
        float StateValue(std::int32_t state) const override { return state == 2 ? 0.0f : 1.0f; }
    } button(root, Picture(u"Two((2)).png", 0.0f));
    EXPECT_EQ(Draws(button), Lines{"DrawTexture 1 to 100,50 40x20 from 0..1,0.5..1"});
    const CButton plain(root, Info(5));
    EXPECT_EQ(plain.StateValue(2), 1.0f);
    for (const std::int32_t state : {0, 1, 3}) EXPECT_EQ(plain.StateValue(state), 0.0f) << state;
}

TEST_F(ButtonDrawing, ShowsTheMiddleOfThreeFramesWhenItCanDoNothing) {
    auto info = Picture(u"Three((3)).png", 1.0f);
    info.bShadow = true;
    info.nColorInactive = 0xFF808080;
    CButton button(root, info);
    button.bInteractive = false;
    const auto draws = Draws(button);
    ASSERT_EQ(draws.size(), 2u);
    EXPECT_EQ(draws[0], "DrawTexture 1 to 100,50 40x20 from 0..1,0.333333..0.666667 colour FF000000");
    EXPECT_EQ(draws[1], "DrawTexture 1 to 100,50 40x20 from 0..1,0.333333..0.666667 colour FF808080");
    button.bInteractive = true;
    EXPECT_EQ(Draws(button)[1], "DrawTexture 1 to 100,50 40x20 from 0..1,0.666667..1");
    button.bInteractive = false;
    button.SetImage(u"Two((2)).png");
    EXPECT_EQ(Draws(button).back(), "DrawTexture 2 to 100,50 40x20 from 0..1,0.5..1")
        << "two frames have no middle one";
}

TEST_F(ButtonDrawing, PutsItsOverlayInTheMiddleInItsOwnAspect) {
    auto info = Picture(u"Two((2)).png");
    info.sOverlay = u"Wide.png";
    info.sText = u"abc";
    info.fOverlayX = 3.9f;
    info.fOverlayY = -2.0f;
    CButton button(root, info);
    EXPECT_EQ(Draws(button), (Lines{"DrawTexture 1 to 100,50 40x20 from 0..1,0..0.5",
                                 "DrawTexture 2 to 103,53 40x10", "DrawTexture 3 to 100,50 40x20"}));
    info.sOverlay = u"Tall((2)).png"; // frames of 10 by 40
    info.sText.clear();
    info.fValue = 0.25f;
    info.fOverlayX = info.fOverlayY = 0.0f;
    CButton tall(root, info);
    tall.fBumpY = 0.0f;
    const auto draws = Draws(tall);
    ASSERT_EQ(draws.size(), 4u);
    EXPECT_EQ(draws[2], "DrawTexture 4 to 117,50 5x20 from 0..1,0..0.5 colour BFFFFFFF");
    EXPECT_EQ(draws[3], "DrawTexture 4 to 117,50 5x20 from 0..1,0.5..1 colour 3FFFFFFF");
}

TEST_F(ButtonDrawing, ItsOverlayHasColorsOfItsOwn) {
    auto info = Picture(u"Two((2)).png");
    info.sOverlay = u"Wide.png";
    info.nOverlayColor = 0xFF000010;
    info.nOverlayColorHover = 0xFF000050;
    CButton button(root, info);
    EXPECT_EQ(button.nOverlayColorInactive, 0xFF000010u);
    button.sHover.Jump(0.5f);
    EXPECT_EQ(Draws(button)[1], "DrawTexture 2 to 100,55 40x10 colour FF000030");
    button.bInteractive = false;
    button.nOverlayColorInactive = 0xFF123456;
    EXPECT_EQ(Draws(button)[1], "DrawTexture 2 to 100,55 40x10 colour FF123456");
    info.sOverlay = u"Tall((2)).png";
    info.nOverlayColorActive = 0xFF001000;
    info.fValue = 1.0f;
    CButton lit(root, info);
    EXPECT_EQ(Draws(lit)[1], "DrawTexture 3 to 117,50 5x20 from 0..1,0.5..1 colour FF001000");
}

TEST_F(ButtonDrawing, AnOverlayThatFitsIsMadeAtTheButtonsSize) {
    auto info = Picture(u"");
    info.sOverlay = u"Wide.png";
    info.bFit = true;
    CButton button(root, info);
    Draws(button);
    Draws(button);
    EXPECT_EQ(pictures.lines, Lines{"LoadImage Wide.png 40x20 blur 0"});
    button.SetWidth(60.0f);
    root.SetResizing(true);
    Draws(button);
    EXPECT_EQ(pictures.lines.size(), 1u);
    root.SetResizing(false);
    Draws(button);
    EXPECT_EQ(pictures.lines.back(), "LoadImage Wide.png 60x20 blur 0");
    EXPECT_EQ(LiveTextures(), 1u);
    button.ReleaseTextures();
    EXPECT_EQ(LiveTextures(), 0u);
}

TEST_F(ButtonDrawing, GivesItsOverlayBackAtItsEnd) {
    {
        auto info = Picture(u"");
        info.sOverlay = u"Wide.png";
        CButton button(root, info);
        Draws(button);
        EXPECT_EQ(LiveTextures(), 1u);
    }
    EXPECT_EQ(LiveTextures(), 0u);
}
