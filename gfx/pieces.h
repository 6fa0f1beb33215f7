#pragma once

#include "gfx/draw.h"
#include "gfx/texture.h"
#include "pixels/image_name.h"

#include <array>
#include <cmath>
#include <cstdint>

/// What a draw shows, cut into quads: for the back ends that leave the pixels to graphics hardware.
namespace KAV::GFX {

/// A part of a picture, in its own pixels, and where in the window it is shown.
struct SPiece {
    SRect sTo;
    SRect sFrom;

    bool operator==(const SPiece&) const = default;
};

SPiece PieceOf(const STexture& a_rsTexture, const SDraw& a_sDraw) noexcept;

/// The nine slices of one frame of a sprite, row by row. The frame is the one that the value chooses, and the
/// margins are those of the frame. A slice without any width or height shows nothing.
std::array<SPiece, 9> SlicesOf(const STexture& a_rsTexture, const SDraw9& a_sDraw) noexcept;

/// One whole cell of a sheet, and the size in pixels in which it is wanted.
struct SCellWish {
    std::int32_t nColumn = 0;
    std::int32_t nRow = 0;
    std::int32_t nW = 0; ///< 0: it is no cell
    std::int32_t nH = 0;

    bool IsCell() const noexcept { return nW > 0; }
};

/// `a_nW` by `a_nH` is the size of the whole sheet.
SCellWish CellOf(
    const SPiece& a_sPiece, const Pixels::SImageGrid& a_sGrid, std::int32_t a_nW, std::int32_t a_nH) noexcept;

/// Whether the piece shows nothing but the picture, of that size.
bool IsWithin(const SPiece& a_sPiece, std::int32_t a_nW, std::int32_t a_nH) noexcept;

/// A picture is repeated where a piece shows more than the whole of it: this hands over the pieces, each of
/// which lies within the picture. One that would be repeated beyond reason isn't repeated.
template<typename TDraw>
void ForEachTile(const SPiece& a_sPiece, std::int32_t a_nW, std::int32_t a_nH, TDraw a_piDraw) {
    constexpr float tolerance = 0.001f; // of a pixel
    constexpr float most = 4096.0f;     // tiles
    const auto& [sTo, sFrom] = a_sPiece;
    const auto fW = static_cast<float>(a_nW);
    const auto fH = static_cast<float>(a_nH);
    const bool bRepeats = sFrom.fW > 0.0f && sFrom.fH > 0.0f && a_nW > 0 && a_nH > 0 &&
                          (sFrom.fW / fW + 1.0f) * (sFrom.fH / fH + 1.0f) <= most;
    if (!bRepeats || IsWithin(a_sPiece, a_nW, a_nH)) {
        a_piDraw(a_sPiece);
        return;
    }
    const float fScaleX = sTo.fW / sFrom.fW;
    const float fScaleY = sTo.fH / sFrom.fH;
    const float fRight = sFrom.fL + sFrom.fW;
    const float fBottom = sFrom.fT + sFrom.fH;
    for (float fTileT = std::floor(sFrom.fT / fH) * fH; fTileT < fBottom - tolerance; fTileT += fH) {
        const float fT = std::fmax(fTileT, sFrom.fT);
        const float fB = std::fmin(fTileT + fH, fBottom);
        for (float fTileL = std::floor(sFrom.fL / fW) * fW; fTileL < fRight - tolerance; fTileL += fW) {
            const float fL = std::fmax(fTileL, sFrom.fL);
            const float fR = std::fmin(fTileL + fW, fRight);
            if (fR <= fL || fB <= fT) continue;
            a_piDraw(SPiece{{sTo.fL + (fL - sFrom.fL) * fScaleX, sTo.fT + (fT - sFrom.fT) * fScaleY,
                                (fR - fL) * fScaleX, (fB - fT) * fScaleY},
                {fL - fTileL, fT - fTileT, fR - fL, fB - fT}});
        }
    }
}

} // namespace KAV::GFX
