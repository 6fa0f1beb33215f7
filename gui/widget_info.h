#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <string>

namespace KAV::GUI {

/// The nine transforms of a picture, in the order of the renderer: scale X, Y, Z; rotation X, Y, Z in
/// degrees; move X, Y, Z in pixels.
inline constexpr std::size_t Looks = 9;
/// The states that a look may differ by.
enum class EState : std::uint8_t { Normal, Hover, Active, Inactive };
inline constexpr std::size_t States = 4;

/// What a widget is made from. Texts are UTF-16, colours 0xAARRGGBB, sizes pixels or fractions as
/// CWidget::PixelRect() reads them.
struct SWidgetInfo {
    std::int32_t nId =
        -1; ///< the parameter it is bound to, or what it is to a command; below 0: no parameter
    std::uint32_t nGroups = 0; ///< bits: widgets that are shown and stacked together
    float fX = 0.0f, fY = 0.0f, fW = 0.0f, fH = 0.0f;
    float fHotL = 0.0f, fHotR = 0.0f, fHotT = 0.0f, fHotB = 0.0f; ///< insets of the area that is hit
    std::int32_t nMrgL = 0, nMrgT = 0, nMrgR = 0, nMrgB = 0;      ///< of the nine slices, in picture pixels
    std::int32_t nReserved = 0;
    std::int32_t nTextAlign = 4; ///< 3 x row + column: 0 is top left, 4 the middle, 8 bottom right
    std::int32_t nTextQuality = 3;
    float fFontSize = 10.0f; ///< a whole number: points; else a fraction of the width, below 0 of the height
    float fShadowX = 0.0f, fShadowY = 0.0f;
    float fTextShadowX = 0.0f, fTextShadowY = 0.0f;
    float fOverlayX = 0.0f, fOverlayY = 0.0f;
    std::u16string sImage, sImage2, sImage3;
    std::u16string sOverlay; ///< a picture over a button
    std::u16string sName;    ///< may repeat
    std::u16string sTitle;   ///< what the hint calls it; empty: its name
    std::u16string sUnit;
    std::u16string sFont = u"Tahoma";
    std::u16string sText;
    std::u16string sAux2, sAux1;
    bool bBold = false, bItalic = false, bUpper = false;
    bool bTile = false;
    bool bVisible = true;
    bool bInteractive = false;
    bool bPassive = false; ///< buttons, knobs and displays are interactive by themselves, unless this is set
    bool bHint = true;
    bool bShadow = false;
    bool bTextShadow = false;
    bool bFit = false;
    float fHintAt = 0.0f;
    float fValue = 0.0f;   ///< values, 0..1
    float fDefault = 0.0f; ///< 0..1
    float fMin = 0.0f, fMax = 1.0f;
    float fValueRiseMs = 0.0f, fValueFallMs = 0.0f;
    float fTravelFrom = 0.0f, fTravelTo = 0.0f;
    std::uint8_t nShadowBlur = 0, nTextShadowBlur = 0;
    std::uint32_t nColor = 0xFFFFFFFF, nColorHover = 0xFFFFFFFF, nColorActive = 0xFFFFFFFF,
                  nColorInactive = 0xFFFFFFFF;
    std::uint32_t nOverlayColor = 0xFFFFFFFF, nOverlayColorHover = 0xFFFFFFFF,
                  nOverlayColorActive = 0xFFFFFFFF;
    std::uint32_t nTextColor = 0xFFFFFFFF;
    std::uint32_t nShadowColor = 0xFF000000, nTextShadowColor = 0xFF000000;
    std::uint32_t nVisibleRiseMs = 0, nVisibleFallMs = 0, nHoverRiseMs = 0, nHoverFallMs = 0;
    std::int32_t nDecimals = 1;                  ///< of a value's text, after the point
    std::u16string sList;                        ///< the named positions of a value, "||" between them
    std::uint32_t nDragPx = 500, nWheelPx = 500; ///< of a knob: pixels for the whole way
    std::int32_t nRadioGroup = -1;               ///< buttons of one such group: one of them is on; -1: none
    /// Scales, rotations and moves; of each the normal values, those under the pointer and the active ones;
    /// X, Y, Z.
    std::array<std::array<std::array<float, 3>, 3>, 3> afLook{{{{{1, 1, 1}, {1, 1, 1}, {1, 1, 1}}}, {}, {}}};
    std::uint32_t nAnchor = 0; ///< which point of the rectangle X and Y name, as nTextAlign counts
    float fExtra = 400.0f;     ///< of the display of gain reduction
};

} // namespace KAV::GUI
