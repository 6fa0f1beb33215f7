#pragma once

#include "gfx/draw.h"
#include "gfx/texture.h"
#include "gui/animation.h"
#include "gui/widget_info.h"
#include "gui/window.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

namespace KAV::GUI {

class CGUI;

/// What of a widget looks different while it fades, moves or is pressed: the nine transforms by state.
using Look = std::array<std::array<float, States>, Looks>;

/// One control or picture of the editor. It enters its root's list when it is made and leaves it when it
/// goes. The order of the virtual operations is fixed.
///
/// Threads: the window's from the editor's opening to its closing, and the caller's otherwise.
class CWidget {
public:
    CWidget(CGUI& a_piGUI, const SWidgetInfo& a_sInfo);
    CWidget(const CWidget&) = delete;
    CWidget& operator=(const CWidget&) = delete;

    // Drawing. What image code throws passes through these, to the frame.
    /// Fetches a picture through the root's cache; a widget without a size takes that of one of its frames.
    /// False when there is no name or no picture.
    virtual bool LoadTexture(GFX::STexture& a_rsTexture, const std::u16string& a_sName);
    /// Gives back what has to be made anew for the present size.
    virtual void CheckTextures();
    virtual void DrawShadow();
    virtual void DrawImage();
    virtual void DrawFrame();           ///< of a layout editor
    virtual float GetDrawValue() const; ///< 0..1, which chooses the frame of the picture
    virtual ~CWidget();
    virtual void ReleaseTextures();

    /// The text of its value, or what the hint says.
    virtual const std::u16string& GetText(bool a_bValueOnly);
    virtual void SetWidth(float a_fWidth);
    virtual void SetHeight(float a_fHeight);
    /// With `a_nGroups` above 0: of all widgets that share a bit with it.
    virtual void SetVisible(bool a_bShow, std::uint32_t a_nGroups);
    virtual void SetInteractive(bool a_bInteractive);
    virtual void SetImage(std::u16string_view a_sName);
    /// One place towards the front or the back, or all the way; with `a_nGroups` as SetVisible().
    virtual void Restack(bool a_bRaise, bool a_bToEnd, std::uint32_t a_nGroups);
    /// Takes a value 0..1 from the device, which isn't told of it again.
    virtual void SetFromHost(float a_fNormal);
    /// The animations go on by `a_nMs`.
    virtual void Tick(std::uint32_t a_nMs);
    virtual void Draw(std::uint32_t a_nMs);

    // The pointer, in pixels of the root; flags as MouseFlag
    virtual void OnMouseDown(std::int32_t x, std::int32_t y, std::uint32_t a_nFlags);
    virtual void OnMouseUp(std::int32_t x, std::int32_t y, std::uint32_t a_nFlags);
    virtual void OnMouseMove(std::int32_t x, std::int32_t y, std::uint32_t a_nFlags);
    virtual void OnMouseWheel(float a_fNotches, std::uint32_t a_nFlags);
    virtual void OnMouseEnter();
    virtual void OnMouseLeave();
    virtual void OnGuiResize(std::int32_t a_nWidth, std::int32_t a_nHeight);
    /// Whether the point is on it. With `a_bAny` also if it doesn't react to the pointer.
    virtual bool HitTest(std::int32_t x, std::int32_t y, bool a_bAny) const;
    virtual bool IsSpare() const noexcept { return false; } ///< nothing asks
    /// Runs through its range as a user might; takes its time. For tests.
    virtual void SoakTest();

    // Geometry, in pixels of the root
    SPixelRect PixelRect() const noexcept;
    /// Where a shadow is, in pixels from its picture: a fraction of the root or pixels, as places are.
    static std::int32_t ShadowOffset(float a_fOffset, std::int32_t a_nWhole) noexcept;
    /// Insets of the area that is hit.
    std::int32_t HotL() const noexcept;
    std::int32_t HotT() const noexcept;
    std::int32_t HotR() const noexcept;
    std::int32_t HotB() const noexcept;
    /// Some of it lies within the root.
    bool IsOnScreen() const noexcept;
    /// From now on it moves and scales with the root; with `a_bSize` its size as well.
    void FreezeToFractions(bool a_bSize) noexcept;

    bool HasMargins() const noexcept { return (nMrgL | nMrgT | nMrgR | nMrgB) != 0; }
    bool IsVisible() const noexcept { return sVisible.fTarget != 0.0f; }
    std::int32_t Id() const noexcept { return nId; }
    const std::u16string& Name() const noexcept { return sName; }

    std::int32_t nId;
    std::uint32_t nGroups;
    std::u16string sClass;
    std::u16string sName;
    std::u16string sTitle; ///< what the hint calls it
    std::u16string sAux1;
    std::u16string sImage; ///< a picture's name, see the grammar of pictures
    std::u16string sImage2, sImage3;
    std::u16string sAux2;
    std::u16string sValueText; ///< short, of the value
    std::u16string sHint;
    SAnimValue sVisible;       ///< 0..1, drawn as opacity
    SAnimValue sHover;         ///< 0..1: the pointer is on it
    SAnimValue sFrameAlpha;    ///< of the layout editor's frame
    SAnimValue sX, sY, sW, sH; ///< see PixelRect()
    std::uint32_t nAnchor;     ///< 0..8: which point of the rectangle X and Y name
    float fHotL, fHotT, fHotR, fHotB;
    std::int32_t nMrgL, nMrgT, nMrgR, nMrgB; ///< nine slices, in picture pixels; all 0: none
    Look asLook{};
    float fSlideX = 0.0f, fSlideY = 0.25f; ///< while it fades: fractions of its size
    float fBumpX = 0.0f, fBumpY = 0.0f;    ///< half way between two values: fractions of its size
    std::uint32_t nColor, nColorHover, nColorActive, nColorInactive;
    bool bInteractive;      ///< it reacts to the pointer
    bool bFromHost = false; ///< the value being set comes from the device
    bool bTile;
    bool bHint;
    float fHintAt; ///< fraction of its height; 0: the hint stands at the pointer
    bool bFit;     ///< pictures are made at its size instead of being stretched
    std::uint32_t nShadowColor;
    bool bShadow;
    float fShadowX, fShadowY; ///< pixels, or fractions of the root
    std::uint8_t nShadowBlur;
    GFX::STexture sTexture, sTextureAlt, sTextureAlt2, sTextureFrame, sTextureShadow;
    std::int32_t nReserved;

protected:
    CGUI& Root() const noexcept { return _piGUI; }
    /// The picture's colour at this moment, without the fading.
    std::uint32_t ImageColor() const noexcept;
    GFX::STransform PresentTransform() const noexcept;
    /// Where a picture of the widget's size is drawn at this moment, moved by `a_nX`, `a_nY` pixels.
    SPixelRect Quad(std::int32_t a_nX, std::int32_t a_nY) const noexcept;
    /// Draws one frame of a texture, 0..1 from the first to the last, in a colour; in nine slices if it has
    /// margins.
    void DrawFrameOf(
        GFX::STexture& a_rsTexture, float a_fFrame, std::uint32_t a_nColor, const SPixelRect& a_sQuad);
    /// Draws one frame of the shadow of a picture of that alpha, 0..255.
    void DrawShadowOf(float a_fFrame, std::uint32_t a_nImageAlpha);

private:
    bool LooksDifferentUnderPointer() const noexcept;

    CGUI& _piGUI;
};

/// Half a pixel goes away from zero; 0 for what no pixel can be.
std::int32_t RoundedPixels(float a_fPixels) noexcept;
/// A colour with its alpha multiplied by 0..1.
std::uint32_t Faded(std::uint32_t a_nColor, float a_fAlpha) noexcept;
/// Between two colours, channel by channel.
std::uint32_t Blend(std::uint32_t a_nFrom, std::uint32_t a_nTo, float a_fShare) noexcept;

} // namespace KAV::GUI
