// What is drawn: from the arguments of a draw to its entry in the list.

#include "gfx/cpu/data.h"
#include "gfx/transform.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <initializer_list>
#include <new>
#include <optional>

namespace KAV::GFX::CPU {

/// One quad of a draw.
struct DATA::SQuad {
    SRect sTo;
    SPart sFrom; ///< in pixels of the picture
    std::uint32_t nColor = White;
    const SFlatMatrix* psMatrix = nullptr; ///< null: it stays where it is
    bool bRepeat = false;
    SMeeting sMeeting;
};

void DATA::AddQuad(CPicture& a_piPicture, const STexture& a_rsTexture, const SQuad& a_sQuad) {
    if (!IsUsable(a_sQuad.sTo) || !(a_sQuad.sFrom.fW > 0.0) || !(a_sQuad.sFrom.fH > 0.0)) return;
    const auto sGrid = a_piPicture.Grid({a_rsTexture.nFrames, a_rsTexture.nColumns, a_rsTexture.nRows});
    const double fCellW = static_cast<double>(a_piPicture.Width()) / sGrid.columns;
    const double fCellH = static_cast<double>(a_piPicture.Height()) / sGrid.rows;
    const std::int32_t nCellW = WholePixels(a_sQuad.sTo.fW);
    const std::int32_t nCellH = WholePixels(a_sQuad.sTo.fH);

    CDrawList::SDraw sDraw;
    SPart sFrom = a_sQuad.sFrom;
    const auto nColumn = CellAt(sFrom.fL, sFrom.fW, fCellW, sGrid.columns);
    const auto nRow = CellAt(sFrom.fT, sFrom.fH, fCellH, sGrid.rows);
    if (nColumn && nRow && !a_sQuad.bRepeat && CanScaleTo(sGrid, nCellW, nCellH)) {
        sDraw.piSource = &a_piPicture.Cells(sGrid, nCellW, nCellH, _bStretching);
        const std::int32_t nW = sDraw.piSource->Width() / sGrid.columns;
        const std::int32_t nH = sDraw.piSource->Height() / sGrid.rows;
        sFrom = {static_cast<double>(*nColumn) * nW, static_cast<double>(*nRow) * nH, static_cast<double>(nW),
            static_cast<double>(nH)};
    } else {
        sDraw.piSource = &a_piPicture.Stored(sGrid);
    }
    auto sMapping = MappingOf(a_sQuad.sTo, a_sQuad.psMatrix, sFrom, a_sQuad.bRepeat);
    if (!sMapping) return;
    sMapping->sMeeting = a_sQuad.sMeeting;
    sDraw.sBox = BoundsOf(*sMapping, _sClip);
    if (IsEmpty(sDraw.sBox)) return;
    sDraw.nSource = sDraw.piSource->Serial();
    sDraw.nColor = a_sQuad.nColor;
    const bool bInside = sFrom.fL >= 0.0 && sFrom.fT >= 0.0 &&
                         sFrom.fL + sFrom.fW <= sDraw.piSource->Width() &&
                         sFrom.fT + sFrom.fH <= sDraw.piSource->Height();
    const auto sStep = StepOf(*sMapping);
    if (sStep && (bInside || a_sQuad.bRepeat)) {
        sDraw.nKind = CDrawList::SDraw::EKind::Copy;
        sDraw.sStep = *sStep;
        sDraw.bRepeat = a_sQuad.bRepeat;
    } else {
        sDraw.nKind = CDrawList::SDraw::EKind::Map;
        sDraw.sMapping = *sMapping;
    }
    _iNoted.Add(sDraw);
}

void DATA::DrawTexture(const STexture& a_rsTexture, const SDraw& a_sDraw) try {
    if (IsTransparent(a_sDraw.nColor) || !IsReady()) return;
    auto* const piPicture = PictureOf(a_rsTexture);
    const auto& f = a_sDraw.sFrom;
    const bool bUsable =
        IsUsable(a_sDraw.sTo) && IsUsable(a_sDraw.sTransform) && AreUsable({f.fU1, f.fU2, f.fV1, f.fV2});
    if (piPicture == nullptr || !bUsable) return;
    const double fW = a_rsTexture.nW;
    const double fH = a_rsTexture.nH;
    SQuad sQuad{a_sDraw.sTo,
        PartOf(static_cast<double>(f.fU1) * fW, static_cast<double>(f.fV1) * fH,
            static_cast<double>(f.fU2) * fW, static_cast<double>(f.fV2) * fH),
        a_sDraw.nColor, nullptr, false, {}};
    sQuad.bRepeat = sQuad.sFrom.fL < 0.0 || sQuad.sFrom.fT < 0.0 ||
                    sQuad.sFrom.fL + sQuad.sFrom.fW > piPicture->Width() ||
                    sQuad.sFrom.fT + sQuad.sFrom.fH > piPicture->Height();
    SFlatMatrix sMatrix;
    if (!a_sDraw.IsNeutral()) {
        sMatrix = FlatPart(MatrixOf(a_sDraw.sTo, a_sDraw.sTransform));
        sQuad.psMatrix = &sMatrix;
    }
    AddQuad(*piPicture, a_rsTexture, sQuad);
} catch (const std::bad_alloc&) {
    _iLog.Failed(u"_piGdipBB->DrawImage(a_rsTexture.piGDIP, Gdiplus::RectF(a_fL, a_fT, a_fW, a_fH), a_fU1 * "
                 u"a_rsTexture.nW, a_fV1 * a_rsTexture.nH, (a_fU2 - a_fU1) * a_rsTexture.nW, (a_fV2 - a_fV1) "
                 u"* a_rsTexture.nH, Gdiplus::Unit::UnitPixel, piAttr)",
        OutOfMemory);
}

void DATA::DrawTexture9(const STexture& a_rsTexture, const SDraw9& a_sDraw) try {
    if (IsTransparent(a_sDraw.nColor) || !IsReady()) return;
    auto* const piPicture = PictureOf(a_rsTexture);
    const auto fMrgL = static_cast<float>(a_sDraw.nMrgL);
    const auto fMrgT = static_cast<float>(a_sDraw.nMrgT);
    const auto fMrgR = static_cast<float>(a_sDraw.nMrgR);
    const auto fMrgB = static_cast<float>(a_sDraw.nMrgB);
    const bool bUsable =
        IsUsable(a_sDraw.sTo) && IsUsable(a_sDraw.sTransform) && AreUsable({fMrgL, fMrgT, fMrgR, fMrgB});
    if (piPicture == nullptr || !bUsable) return;
    SFlatMatrix sMatrix;
    if (!a_sDraw.IsNeutral()) sMatrix = FlatPart(MatrixOf(a_sDraw.sTo, a_sDraw.sTransform));
    const SRect& sTo = a_sDraw.sTo;
    const auto fW = static_cast<float>(a_rsTexture.nW);
    const auto fH = static_cast<float>(a_rsTexture.nH);
    // The places at which the quad and the picture are cut, across and down.
    const std::array afToX{sTo.fL, sTo.fL + fMrgL, sTo.fL + sTo.fW - fMrgR, sTo.fL + sTo.fW};
    const std::array afToY{sTo.fT, sTo.fT + fMrgT, sTo.fT + sTo.fH - fMrgB, sTo.fT + sTo.fH};
    const std::array afFromX{0.0f, fMrgL, fW - fMrgR, fW};
    const std::array afFromY{0.0f, fMrgT, fH - fMrgB, fH};
    const auto isThere = [](const std::array<float, 4>& a_afTo, const std::array<float, 4>& a_afFrom,
                             std::size_t a_nAt) {
        return a_nAt < 3 && a_afTo[a_nAt + 1] > a_afTo[a_nAt] && a_afFrom[a_nAt + 1] > a_afFrom[a_nAt];
    };
    for (std::size_t nRow = 0; nRow < 3; ++nRow) {
        for (std::size_t nColumn = 0; nColumn < 3; ++nColumn) {
            const SRect sSlice{afToX[nColumn], afToY[nRow], afToX[nColumn + 1] - afToX[nColumn],
                afToY[nRow + 1] - afToY[nRow]};
            const SPart sFrom =
                PartOf(static_cast<double>(afFromX[nColumn]), static_cast<double>(afFromY[nRow]),
                    static_cast<double>(afFromX[nColumn + 1]), static_cast<double>(afFromY[nRow + 1]));
            const SMeeting sMeeting{isThere(afToX, afFromX, nColumn - 1), isThere(afToY, afFromY, nRow - 1),
                isThere(afToX, afFromX, nColumn + 1), isThere(afToY, afFromY, nRow + 1)};
            AddQuad(*piPicture, a_rsTexture,
                {sSlice, sFrom, a_sDraw.nColor, a_sDraw.IsNeutral() ? nullptr : &sMatrix, false, sMeeting});
        }
    }
} catch (const std::bad_alloc&) {
    _iLog.Failed(u"_piGdipBB->DrawImage(a_rsTexture.piGDIP, Gdiplus::RectF(a_fL, fDstT, a_nMrgL, fDstH), 0, "
                 u"fSrcT, fMrgL_01 * a_rsTexture.nW, fSrcH, Gdiplus::Unit::UnitPixel, piAttr)",
        OutOfMemory);
}

void DATA::DrawLines(std::int32_t a_nPoints, const SPoint* a_psPoints, bool a_bPerVertex, bool a_bStrip) try {
    if (a_nPoints <= 1 || a_psPoints == nullptr || !IsReady()) return;
    const std::span asPoints(a_psPoints, static_cast<std::size_t>(a_nPoints));
    const bool bUsable = std::all_of(asPoints.begin(), asPoints.end(), [](const SPoint& a_sPoint) {
        return AreUsable({a_sPoint.fX, a_sPoint.fY});
    });
    if (!bUsable || !AreUsable({_sPen.fWidth})) return;
    CDrawList::SDraw sDraw;
    sDraw.sPen = _sPen;
    sDraw.sPen.bPerVertex = a_bPerVertex;
    sDraw.bStrip = a_bStrip;
    sDraw.sBox = BoundsOf(asPoints, sDraw.sPen, _sClip);
    if (!IsEmpty(sDraw.sBox)) _iNoted.AddLines(sDraw, asPoints);
} catch (const std::bad_alloc&) {
    _iLog.Failed(u"_piGdipBB->DrawLines(&iPen, _pviGdipLinePoints, a_nPoints)", OutOfMemory);
}

} // namespace KAV::GFX::CPU
