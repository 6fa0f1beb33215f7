#pragma once

#include "gfx/texture.h"
#include "gui/animation.h"
#include "gui/pictures.h"
#include "gui/widget.h"
#include "pixels/bitmap.h"

#include <cstdint>
#include <string>
#include <string_view>

namespace KAV::GUI {

/// A widget with a line of text. A new text pushes the old one out sideways. The text is rendered when it or
/// the widget's size has changed, and never larger than the root.
class CLabel : public CWidget {
public:
    CLabel(CGUI& a_piGUI, const SWidgetInfo& a_sInfo);
    ~CLabel() override;

    // Operations of its own; their order is fixed
    /// Renders the text anew. False when there is nothing to show.
    virtual bool MakeTextTexture();
    /// The picture of the text with its shadow, as large as the widget; without pixels if there is none.
    virtual void RenderText(Pixels::SBitmap& a_rsBitmap);
    virtual void DrawText();
    /// Pixels that a fractional font size is a fraction of.
    virtual float FontBasis() const;
    virtual void SetText(std::u16string_view a_sText); ///< the text that it has: nothing happens

    // CWidget
    void ReleaseTextures() override;
    void Tick(std::uint32_t a_nMs) override;
    void Draw(std::uint32_t a_nMs) override;

    /// The text is rendered anew for the next picture.
    void ReleaseTexts();
    /// The text in another colour. No slide: it is the same text.
    void SetTextColor(std::uint32_t a_nColor);
    const std::u16string& Text() const noexcept { return sText; }
    float FontPixels() const;

    std::u16string sText;
    std::u16string sFont;     ///< family
    std::uint32_t nTextColor; ///< see SetTextColor()
    float fFontSize;          ///< see SWidgetInfo
    std::int32_t nTextAlign;
    std::int32_t nTextQuality;
    bool bBold, bItalic, bUpper;
    bool bEllipsis = false;                       ///< a text that is too long ends in one
    float fTextInsetL = 0.0f, fTextInsetR = 0.0f; ///< fractions of the width without text
    GFX::STexture sTextTexture;
    std::uint32_t nTextShadowColor;
    bool bTextShadow;
    std::int32_t nTextShadowX, nTextShadowY; ///< pixels
    std::uint8_t nTextShadowBlur;
    bool bTextSlide = true;         ///< a new text slides in
    std::int32_t nTextSlideDir = 1; ///< the direction, 1 or -1; 2 or -2: a new text has not been drawn yet
    GFX::STexture sOldTextTexture;  ///< the text that slides out
    SAnimValue sTextSlide;          ///< 0..1, from the old text to the new one

protected:
    /// Changes the text; the new one comes from the side that `a_nSlide`, 2 or -2, says. False when it is the
    /// present one.
    bool ChangeText(std::u16string_view a_sText, std::int32_t a_nSlide);
    /// How a text is rendered at the widget's present size. `a_nWidth`, `a_nHeight`: pixels of the picture.
    SLettering LetteringOf(std::int32_t a_nWidth, std::int32_t a_nHeight) const;

private:
    bool IsTextOutdated() const;
    SPixelRect TextRect() const;
    void DrawTextTexture(const GFX::STexture& a_rsTexture, float a_fShift, float a_fAlpha);

    bool _bOtherColor = false; // than the present texture has
};

} // namespace KAV::GUI
