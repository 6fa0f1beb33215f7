// What is drawn: quads with pictures, and lines.

#include "gfx/ogl/constants.h"
#include "gfx/ogl/data.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>
#include <new>
#include <span>

namespace KAV::GFX::OGL {

/// While it lives, points are moved by the transform of a draw (gfx/transform.h). Its calls stand in the
/// order in which OpenGL takes them: the last one is applied to a point first. The depth is taken away at the
/// end, so that nothing of a turned quad lies outside the depths that are drawn.
class DATA::CTransformed final {
public:
    CTransformed(const Platform::SOpenGL& a_sGl, const SRect& a_sRect, const STransform& a_sTransform)
        : _psGl(a_sTransform.IsNeutral() ? nullptr : &a_sGl) {
        if (_psGl == nullptr) return;
        const auto& s = a_sTransform;
        const float fX = a_sRect.fL + std::round(a_sRect.fW / 2.0f);
        const float fY = a_sRect.fT + std::round(a_sRect.fH / 2.0f);
        _psGl->glPushMatrix();
        _psGl->glScalef(1.0f, 1.0f, 0.0f);
        _psGl->glTranslatef(fX, fY, 0.0f);
        if (s.fSX != 1.0f || s.fSY != 1.0f || s.fSZ != 1.0f) _psGl->glScalef(s.fSX, s.fSY, s.fSZ);
        if (s.fRX != 0.0f) _psGl->glRotatef(s.fRX, 1.0f, 0.0f, 0.0f);
        if (s.fRY != 0.0f) _psGl->glRotatef(s.fRY, 0.0f, 1.0f, 0.0f);
        if (s.fRZ != 0.0f) _psGl->glRotatef(s.fRZ, 0.0f, 0.0f, 1.0f);
        if (s.fMX != 0.0f || s.fMY != 0.0f || s.fMZ != 0.0f)
            _psGl->glTranslatef(std::round(s.fMX), std::round(s.fMY), std::round(s.fMZ));
        _psGl->glTranslatef(-fX, -fY, 0.0f);
    }
    ~CTransformed() {
        if (_psGl != nullptr) _psGl->glPopMatrix();
    }
    CTransformed(const CTransformed&) = delete;
    CTransformed& operator=(const CTransformed&) = delete;

private:
    const Platform::SOpenGL* _psGl; // null: they stay where they are
};

void DATA::AddQuad(
    const SRect& a_sTo, const SPart& a_sFrom, const SObject& a_sObject, std::uint32_t a_nColor) {
    const auto channel = [a_nColor](unsigned a_nShift) {
        return static_cast<std::uint8_t>(a_nColor >> a_nShift & 0xFFU);
    };
    const std::array<std::uint8_t, 4> sColour{channel(16), channel(8), channel(0), channel(24)};
    const auto share = [](double a_fPlace, std::int32_t a_nSide) {
        return static_cast<float>(a_fPlace / static_cast<double>(a_nSide));
    };
    const float fU1 = share(a_sFrom.fL, a_sObject.nTexW);
    const float fU2 = share(a_sFrom.fL + a_sFrom.fW, a_sObject.nTexW);
    const float fV1 = share(a_sFrom.fT, a_sObject.nTexH);
    const float fV2 = share(a_sFrom.fT + a_sFrom.fH, a_sObject.nTexH);
    const float fR = a_sTo.fL + a_sTo.fW;
    const float fB = a_sTo.fT + a_sTo.fH;
    _vsVertices.push_back({fU1, fV1, sColour, a_sTo.fL, a_sTo.fT, 0.0f});
    _vsVertices.push_back({fU2, fV1, sColour, fR, a_sTo.fT, 0.0f});
    _vsVertices.push_back({fU2, fV2, sColour, fR, fB, 0.0f});
    _vsVertices.push_back({fU1, fV2, sColour, a_sTo.fL, fB, 0.0f});
}

/// Draws the quads that have been added.
void DATA::DrawQuads(
    SObject& a_rsObject, bool a_bRepeat, const SRect& a_sWhole, const STransform& a_sTransform) {
    static_assert(sizeof(SVertex) == 24);
    if (_vsVertices.empty()) return;
    _piTextures->Bind(a_rsObject, a_bRepeat);
    const CTransformed iTransformed(*_psGl, a_sWhole, a_sTransform);
    _psGl->glInterleavedArrays(GL_T2F_C4UB_V3F, 0, _vsVertices.data());
    _psGl->glDrawArrays(GL_QUADS, 0, static_cast<std::int32_t>(_vsVertices.size()));
    _vsVertices.clear();
}

void DATA::DrawTexture(const STexture& a_rsTexture, const SDraw& a_sDraw) try {
    auto* const piPicture = PictureOf(a_rsTexture);
    if (IsTransparent(a_sDraw.nColor) || piPicture == nullptr || !Enter()) return;
    const auto& f = a_sDraw.sFrom;
    if (IsUsable(a_sDraw.sTo) && IsUsable(a_sDraw.sTransform) && AreUsable({f.fU1, f.fU2, f.fV1, f.fV2}))
        DrawPart(*piPicture, a_rsTexture, a_sDraw);
} catch (const std::bad_alloc&) {
    _vsVertices.clear();
    _iLog.Failed(u"DrawTexture(a_rsTexture, a_sDraw)", OutOfMemory);
}

/// A cell of the picture's grid is drawn from a texture with the cells at this size, any other part of it
/// from the picture as stored.
void DATA::DrawPart(CPicture& a_piPicture, const STexture& a_rsTexture, const SDraw& a_sDraw) {
    const auto& f = a_sDraw.sFrom;
    const double fTexW = a_piPicture.TextureW();
    const double fTexH = a_piPicture.TextureH();
    const SPart sPart = PartOf(static_cast<double>(f.fU1) * fTexW, static_cast<double>(f.fV1) * fTexH,
        static_cast<double>(f.fU2) * fTexW, static_cast<double>(f.fV2) * fTexH);
    if (!(sPart.fW > 0.0) || !(sPart.fH > 0.0)) return;
    const bool bRepeat = sPart.fL < 0.0 || sPart.fT < 0.0 || sPart.fL + sPart.fW > a_piPicture.Width() ||
                         sPart.fT + sPart.fH > a_piPicture.Height();
    const auto sGrid = a_piPicture.Grid({a_rsTexture.nFrames, a_rsTexture.nColumns, a_rsTexture.nRows});
    const double fCellW = static_cast<double>(a_piPicture.Width()) / sGrid.columns;
    const double fCellH = static_cast<double>(a_piPicture.Height()) / sGrid.rows;
    const std::int32_t nCellW = WholePixels(a_sDraw.sTo.fW);
    const std::int32_t nCellH = WholePixels(a_sDraw.sTo.fH);
    const auto nColumn = CellAt(sPart.fL, sPart.fW, fCellW, sGrid.columns);
    const auto nRow = CellAt(sPart.fT, sPart.fH, fCellH, sGrid.rows);
    const bool bCell = nColumn && nRow && !bRepeat && CanScaleTo(sGrid, nCellW, nCellH);
    const bool bStored = nCellW == a_piPicture.TextureW() && nCellH == a_piPicture.TextureH();
    if (bCell && !bStored) {
        const auto sCells = a_piPicture.Cells(*_piTextures, sGrid, nCellW, nCellH, _bStretching);
        if (sCells.psObject != nullptr) {
            AddQuad(a_sDraw.sTo, sCells.Cell(*nColumn, *nRow), *sCells.psObject, a_sDraw.nColor);
            DrawQuads(*sCells.psObject, false, a_sDraw.sTo, a_sDraw.sTransform);
            return;
        }
    }
    const bool bPadded =
        a_piPicture.TextureW() != a_piPicture.Width() || a_piPicture.TextureH() != a_piPicture.Height();
    if (bRepeat && bPadded) {
        DrawTiles(a_piPicture, a_sDraw, sPart);
        return;
    }
    auto* const psStored = a_piPicture.Stored(*_piTextures);
    if (psStored == nullptr) return;
    AddQuad(a_sDraw.sTo, sPart, *psStored, a_sDraw.nColor);
    DrawQuads(*psStored, bRepeat, a_sDraw.sTo, a_sDraw.sTransform);
}

/// A texture that is larger than its picture can't repeat that by itself: each repetition is a quad.
void DATA::DrawTiles(CPicture& a_piPicture, const SDraw& a_sDraw, const SPart& a_sPart) {
    constexpr double fMost = 256.0;
    constexpr double fMargin = 1.0;
    const double fW = a_piPicture.Width();
    const double fH = a_piPicture.Height();
    auto* const psTile = a_piPicture.Tile(*_piTextures);
    if (psTile == nullptr || a_sPart.fW > fMost * fW || a_sPart.fH > fMost * fH) return;
    const double fScaleX = static_cast<double>(a_sDraw.sTo.fW) / a_sPart.fW;
    const double fScaleY = static_cast<double>(a_sDraw.sTo.fH) / a_sPart.fH;
    const double fR = a_sPart.fL + a_sPart.fW;
    const double fB = a_sPart.fT + a_sPart.fH;
    for (double fTop = std::floor(a_sPart.fT / fH) * fH; fTop < fB; fTop += fH) {
        const double fFromT = std::max(fTop, a_sPart.fT);
        const double fFromB = std::min(fTop + fH, fB);
        for (double fLeft = std::floor(a_sPart.fL / fW) * fW; fLeft < fR; fLeft += fW) {
            const double fFromL = std::max(fLeft, a_sPart.fL);
            const double fFromR = std::min(fLeft + fW, fR);
            const SRect sTo{a_sDraw.sTo.fL + static_cast<float>((fFromL - a_sPart.fL) * fScaleX),
                a_sDraw.sTo.fT + static_cast<float>((fFromT - a_sPart.fT) * fScaleY),
                static_cast<float>((fFromR - fFromL) * fScaleX),
                static_cast<float>((fFromB - fFromT) * fScaleY)};
            AddQuad(sTo,
                {fFromL - fLeft + fMargin, fFromT - fTop + fMargin, fFromR - fFromL, fFromB - fFromT},
                *psTile, a_sDraw.nColor);
        }
    }
    DrawQuads(*psTile, false, a_sDraw.sTo, a_sDraw.sTransform);
}

void DATA::DrawTexture9(const STexture& a_rsTexture, const SDraw9& a_sDraw) try {
    auto* const piPicture = PictureOf(a_rsTexture);
    if (IsTransparent(a_sDraw.nColor) || piPicture == nullptr || !Enter()) return;
    const auto fMrgL = static_cast<float>(a_sDraw.nMrgL);
    const auto fMrgT = static_cast<float>(a_sDraw.nMrgT);
    const auto fMrgR = static_cast<float>(a_sDraw.nMrgR);
    const auto fMrgB = static_cast<float>(a_sDraw.nMrgB);
    if (!IsUsable(a_sDraw.sTo) || !IsUsable(a_sDraw.sTransform) ||
        !AreUsable({fMrgL, fMrgT, fMrgR, fMrgB, a_sDraw.fValue}))
        return;
    auto* const psStored = piPicture->Stored(*_piTextures);
    if (psStored == nullptr) return;
    const std::int32_t nColumns = std::max(a_rsTexture.nColumns, 1);
    const std::int32_t nLast = std::max(a_rsTexture.nFrames, 1) - 1;
    const float fFrame = std::floor(static_cast<float>(nLast) * a_sDraw.fValue + 0.5f);
    const std::int32_t nFrame = std::clamp(static_cast<std::int32_t>(fFrame), 0, nLast);
    const std::int32_t nW = a_rsTexture.nW / nColumns;
    const std::int32_t nH = a_rsTexture.nH / std::max(a_rsTexture.nRows, 1);
    const auto fL = static_cast<float>(nFrame % nColumns * nW);
    const std::int32_t nTop = nFrame / nColumns * nH;
    const auto fT = static_cast<float>(nTop);
    const auto fR = fL + static_cast<float>(nW);
    const auto fB = fT + static_cast<float>(nH);
    // The places at which the quad and the cell are cut, across and down.
    const SRect& sTo = a_sDraw.sTo;
    const std::array afToX{sTo.fL, sTo.fL + fMrgL, sTo.fL + sTo.fW - fMrgR, sTo.fL + sTo.fW};
    const std::array afToY{sTo.fT, sTo.fT + fMrgT, sTo.fT + sTo.fH - fMrgB, sTo.fT + sTo.fH};
    const std::array afFromX{fL, fL + fMrgL, fR - fMrgR, fR};
    const std::array afFromY{fT, fT + fMrgT, fB - fMrgB, fB};
    for (std::size_t nRow = 0; nRow < 3; ++nRow) {
        for (std::size_t nColumn = 0; nColumn < 3; ++nColumn) {
            const SRect sSlice{afToX[nColumn], afToY[nRow], afToX[nColumn + 1] - afToX[nColumn],
                afToY[nRow + 1] - afToY[nRow]};
            const SPart sFrom =
                PartOf(static_cast<double>(afFromX[nColumn]), static_cast<double>(afFromY[nRow]),
                    static_cast<double>(afFromX[nColumn + 1]), static_cast<double>(afFromY[nRow + 1]));
            if (sSlice.fW > 0.0f && sSlice.fH > 0.0f && sFrom.fW > 0.0 && sFrom.fH > 0.0)
                AddQuad(sSlice, sFrom, *psStored, a_sDraw.nColor);
        }
    }
    DrawQuads(*psStored, false, sTo, a_sDraw.sTransform);
} catch (const std::bad_alloc&) {
    _vsVertices.clear();
    _iLog.Failed(u"DrawTexture9(a_rsTexture, a_sDraw)", OutOfMemory);
}

// Lines

void DATA::SetLineWidth(float a_fWidth) {
    _fLineWidth = a_fWidth;
    if (AreUsable({a_fWidth}) && a_fWidth > 0.0f && Enter()) _psGl->glLineWidth(a_fWidth);
}

void DATA::SetLineColor(float a_fR, float a_fG, float a_fB, float a_fA) {
    _sLineColour = {a_fR, a_fG, a_fB, a_fA};
}

void DATA::SetLineSmooth(bool a_bSmooth) {
    if (!Enter()) return;
    a_bSmooth ? _psGl->glEnable(GL_LINE_SMOOTH) : _psGl->glDisable(GL_LINE_SMOOTH);
}

void DATA::DrawLines(std::int32_t a_nPoints, const SPoint* a_psPoints, bool a_bPerVertex, bool a_bStrip) {
    if (a_nPoints <= 1 || a_psPoints == nullptr || !AreUsable({_fLineWidth}) || !(_fLineWidth > 0.0f)) return;
    const std::span asPoints(a_psPoints, static_cast<std::size_t>(a_nPoints));
    const bool bUsable = std::all_of(asPoints.begin(), asPoints.end(), [](const SPoint& a_sPoint) {
        return AreUsable({a_sPoint.fX, a_sPoint.fY});
    });
    if (!bUsable || !Enter()) return;
    _psGl->glBindTexture(GL_TEXTURE_2D, 0);
    // Quads leave their own colour behind.
    _psGl->glColor4f(_sLineColour[0], _sLineColour[1], _sLineColour[2], _sLineColour[3]);
    _psGl->glBegin(a_bStrip ? GL_LINE_STRIP : GL_LINES);
    for (const auto& [fX, fY, fZ, nColor] : asPoints) {
        if (a_bPerVertex) {
            _psGl->glColor4ub(static_cast<std::uint8_t>(nColor >> 16U & 0xFFU),
                static_cast<std::uint8_t>(nColor >> 8U & 0xFFU), static_cast<std::uint8_t>(nColor & 0xFFU),
                static_cast<std::uint8_t>(nColor >> 24U));
        }
        _psGl->glVertex2f(fX, fY);
    }
    _psGl->glEnd();
}

} // namespace KAV::GFX::OGL
