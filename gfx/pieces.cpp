#include "gfx/pieces.h"

#include "gfx/picture_part.h"

#include <algorithm>
#include <cstddef>

namespace KAV::GFX {

namespace {

struct SSpan {
    float fTo, fToLength, fFrom, fFromLength;
};

std::array<SSpan, 3> Spans(float a_fTo, float a_fToLength, float a_fFrom, float a_fFromLength,
    std::int32_t a_nBefore, std::int32_t a_nAfter) noexcept {
    const auto fBefore = static_cast<float>(a_nBefore);
    const auto fAfter = static_cast<float>(a_nAfter);
    return {{{a_fTo, fBefore, a_fFrom, fBefore},
        {a_fTo + fBefore, a_fToLength - fBefore - fAfter, a_fFrom + fBefore,
            a_fFromLength - fBefore - fAfter},
        {a_fTo + a_fToLength - fAfter, fAfter, a_fFrom + a_fFromLength - fAfter, fAfter}}};
}

} // namespace

bool IsWithin(const SPiece& a_sPiece, std::int32_t a_nW, std::int32_t a_nH) noexcept {
    constexpr float tolerance = 0.001f; // of a pixel
    const auto& sFrom = a_sPiece.sFrom;
    return sFrom.fL >= -tolerance && sFrom.fT >= -tolerance &&
           sFrom.fL + sFrom.fW <= static_cast<float>(a_nW) + tolerance &&
           sFrom.fT + sFrom.fH <= static_cast<float>(a_nH) + tolerance;
}

SPiece PieceOf(const STexture& a_rsTexture, const SDraw& a_sDraw) noexcept {
    const auto& s = a_sDraw.sFrom;
    // The part counts from the whole texture, which is larger than a picture that has been padded.
    const float fW = static_cast<float>(a_rsTexture.nW) / (a_rsTexture.fU > 0.0f ? a_rsTexture.fU : 1.0f);
    const float fH = static_cast<float>(a_rsTexture.nH) / (a_rsTexture.fV > 0.0f ? a_rsTexture.fV : 1.0f);
    return {a_sDraw.sTo, {s.fU1 * fW, s.fV1 * fH, (s.fU2 - s.fU1) * fW, (s.fV2 - s.fV1) * fH}};
}

std::array<SPiece, 9> SlicesOf(const STexture& a_rsTexture, const SDraw9& a_sDraw) noexcept {
    const std::int32_t nColumns = std::max(a_rsTexture.nColumns, 1);
    const std::int32_t nRows = std::max(a_rsTexture.nRows, 1);
    const std::int32_t nFrames = std::max(a_rsTexture.nFrames, 1);
    const float fPlace = static_cast<float>(nFrames - 1) * std::clamp(a_sDraw.fValue, 0.0f, 1.0f);
    const auto nFrame = static_cast<std::int32_t>(std::trunc(fPlace + 0.5f));
    const std::int32_t nCellW = a_rsTexture.nW / nColumns;
    const std::int32_t nCellH = a_rsTexture.nH / nRows;
    const auto fL = static_cast<float>(nFrame % nColumns * nCellW);
    const std::int32_t nRow = nFrame / nColumns;
    const auto fT = static_cast<float>(nRow * nCellH);
    const auto& sTo = a_sDraw.sTo;
    const auto sAcross = Spans(sTo.fL, sTo.fW, fL, static_cast<float>(nCellW), a_sDraw.nMrgL, a_sDraw.nMrgR);
    const auto sDown = Spans(sTo.fT, sTo.fH, fT, static_cast<float>(nCellH), a_sDraw.nMrgT, a_sDraw.nMrgB);
    std::array<SPiece, 9> sSlices;
    for (std::size_t n = 0; n < sSlices.size(); ++n) {
        const auto& x = sAcross[n % 3];
        const auto& y = sDown[n / 3];
        sSlices[n] = {
            {x.fTo, y.fTo, x.fToLength, y.fToLength}, {x.fFrom, y.fFrom, x.fFromLength, y.fFromLength}};
    }
    return sSlices;
}

SCellWish CellOf(const SPiece& a_sPiece, const Pixels::SImageGrid& a_sGrid, std::int32_t a_nW,
    std::int32_t a_nH) noexcept {
    const auto& [sTo, sFrom] = a_sPiece;
    if (!IsUsable(sTo) || !IsUsable(sFrom) || a_nW <= 0 || a_nH <= 0) return {};
    const auto cell = [](float a_fStart, float a_fLength, std::int32_t a_nWhole, std::int32_t a_nCells) {
        return CellAt(static_cast<double>(a_fStart), static_cast<double>(a_fLength),
            static_cast<double>(a_nWhole) / std::max(a_nCells, 1), a_nCells);
    };
    const auto nColumn = cell(sFrom.fL, sFrom.fW, a_nW, a_sGrid.columns);
    const auto nRow = cell(sFrom.fT, sFrom.fH, a_nH, a_sGrid.rows);
    const SCellWish sWish{nColumn.value_or(0), nRow.value_or(0), WholePixels(sTo.fW), WholePixels(sTo.fH)};
    return nColumn && nRow && CanScaleTo(a_sGrid, sWish.nW, sWish.nH) ? sWish : SCellWish{};
}

} // namespace KAV::GFX
