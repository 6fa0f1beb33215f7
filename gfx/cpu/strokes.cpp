#include "gfx/cpu/strokes.h"

#include "gfx/cpu/channels.h"

#include <algorithm>
#include <cmath>

namespace KAV::GFX::CPU {

namespace {

constexpr double MitreLimit = 10.0; // a longer mitre, in widths of the line, is cut off

/// A hard line is at least one pixel wide, else it would have gaps where it passes between the pixels'
/// centres.
double HalfWidth(const SPen& a_sPen) noexcept {
    const auto fWidth = static_cast<double>(a_sPen.fWidth);
    return (a_sPen.bSmooth ? std::max(fWidth, 0.0) : std::max(fWidth, 1.0)) / 2.0;
}

std::int32_t Whole(double a_fValue) noexcept {
    return static_cast<std::int32_t>(a_fValue);
}

} // namespace

SArea BoundsOf(std::span<const SPoint> a_asPoints, const SPen& a_sPen, const SArea& a_sWithin) noexcept {
    if (a_asPoints.empty()) return {};
    const auto [piLeft, piRight] = std::minmax_element(a_asPoints.begin(), a_asPoints.end(),
        [](const SPoint& a_sOne, const SPoint& a_sOther) { return a_sOne.fX < a_sOther.fX; });
    const auto [piTop, piBottom] = std::minmax_element(a_asPoints.begin(), a_asPoints.end(),
        [](const SPoint& a_sOne, const SPoint& a_sOther) { return a_sOne.fY < a_sOther.fY; });
    const double fReach = HalfWidth(a_sPen) * MitreLimit + 1.0;
    const auto clamp = [](double a_fValue, std::int32_t a_nFrom, std::int32_t a_nLength) {
        return Whole(
            std::clamp(a_fValue, static_cast<double>(a_nFrom), static_cast<double>(a_nFrom) + a_nLength));
    };
    const auto& w = a_sWithin;
    const auto nL = clamp(std::floor(static_cast<double>(piLeft->fX) - fReach), w.left, w.width);
    const auto nT = clamp(std::floor(static_cast<double>(piTop->fY) - fReach), w.top, w.height);
    const auto nR = clamp(std::ceil(static_cast<double>(piRight->fX) + fReach), w.left, w.width);
    const auto nB = clamp(std::ceil(static_cast<double>(piBottom->fY) + fReach), w.top, w.height);
    return {nL, nT, nR - nL, nB - nT};
}

void CStrokes::TakePath(std::span<const SPoint> a_asPoints) {
    constexpr double fSame = 1e-6;
    _vsNodes.clear();
    for (const auto& sPoint : a_asPoints) {
        // The pixel in column n has its centre at n here, and at n + 0.5 in the window.
        const SVector sAt{static_cast<double>(sPoint.fX) - 0.5, static_cast<double>(sPoint.fY) - 0.5};
        const std::uint32_t nColor = _sPen.bPerVertex ? sPoint.nColor : _sPen.nColor;
        if (!_vsNodes.empty()) {
            auto& sLast = _vsNodes.back();
            const SVector sTo{sAt.fX - sLast.sAt.fX, sAt.fY - sLast.sAt.fY};
            const double fLength = std::sqrt(sTo.fX * sTo.fX + sTo.fY * sTo.fY);
            if (fLength < fSame) {
                sLast.nColor = nColor;
                continue;
            }
            sLast.fLength = fLength;
            sLast.sUnit = {sTo.fX / fLength, sTo.fY / fLength};
        }
        _vsNodes.push_back({sAt, nColor, {}, 0.0, false, {}});
    }
}

/// Where the two edges of a joint may simply meet: not if the mitre gets too long, nor if it would reach
/// past the middle of one of the segments on the inner side.
void CStrokes::TakeJoints(double a_fHalf) noexcept {
    for (std::size_t n = 1; n + 1 < _vsNodes.size(); ++n) {
        const auto& sBefore = _vsNodes[n - 1];
        auto& sNode = _vsNodes[n];
        const double fCos = sBefore.sUnit.fX * sNode.sUnit.fX + sBefore.sUnit.fY * sNode.sUnit.fY;
        if (1.0 + fCos < 2.0 / (MitreLimit * MitreLimit)) continue;
        const double fInner = a_fHalf * std::sqrt(std::max(1.0 - fCos, 0.0) / (1.0 + fCos));
        if (fInner > std::min(sBefore.fLength, sNode.fLength) / 2.0) continue;
        const double fScale = a_fHalf / (1.0 + fCos);
        sNode.bMitred = true;
        sNode.sMitre = {
            -(sBefore.sUnit.fY + sNode.sUnit.fY) * fScale, (sBefore.sUnit.fX + sNode.sUnit.fX) * fScale};
    }
}

CStrokes::SBlend CStrokes::BlendOf(const SNode& a_sNode, std::uint32_t a_nTo) noexcept {
    const auto sStart = Channels::Of(a_sNode.nColor);
    return {a_sNode.sAt, {a_sNode.sUnit.fX / a_sNode.fLength, a_sNode.sUnit.fY / a_sNode.fLength}, sStart,
        Channels::Of(a_nTo) - sStart};
}

void CStrokes::AddSegment(std::size_t a_nAt, double a_fHalf) {
    const auto& sFrom = _vsNodes[a_nAt];
    const auto& sTo = _vsNodes[a_nAt + 1];
    const SVector sFlat{-sFrom.sUnit.fY * a_fHalf, sFrom.sUnit.fX * a_fHalf};
    const SVector sStart = sFrom.bMitred ? sFrom.sMitre : sFlat;
    const SVector sEnd = sTo.bMitred ? sTo.sMitre : sFlat;
    SShape sShape;
    sShape.Add({sFrom.sAt.fX + sStart.fX, sFrom.sAt.fY + sStart.fY});
    sShape.Add({sTo.sAt.fX + sEnd.fX, sTo.sAt.fY + sEnd.fY});
    sShape.Add({sTo.sAt.fX - sEnd.fX, sTo.sAt.fY - sEnd.fY});
    sShape.Add({sFrom.sAt.fX - sStart.fX, sFrom.sAt.fY - sStart.fY});
    Add(sShape, BlendOf(sFrom, sTo.nColor));
}

/// Fills the gap on the outer side of a joint at which both segments end flat.
void CStrokes::AddJoint(std::size_t a_nAt, double a_fHalf) {
    const auto& sBefore = _vsNodes[a_nAt - 1];
    const auto& sNode = _vsNodes[a_nAt];
    const double fTurn = sBefore.sUnit.fX * sNode.sUnit.fY - sBefore.sUnit.fY * sNode.sUnit.fX;
    const double fOuter = fTurn > 0.0 ? -a_fHalf : a_fHalf;
    const SVector sOne{-sBefore.sUnit.fY * fOuter, sBefore.sUnit.fX * fOuter};
    const SVector sOther{-sNode.sUnit.fY * fOuter, sNode.sUnit.fX * fOuter};
    const double fCos = sBefore.sUnit.fX * sNode.sUnit.fX + sBefore.sUnit.fY * sNode.sUnit.fY;
    const auto& p = sNode.sAt;
    SShape sShape;
    sShape.Add(p);
    sShape.Add({p.fX + sOne.fX, p.fY + sOne.fY});
    if (1.0 + fCos >= 2.0 / (MitreLimit * MitreLimit)) {
        const double fScale = 1.0 / (1.0 + fCos);
        sShape.Add({p.fX + (sOne.fX + sOther.fX) * fScale, p.fY + (sOne.fY + sOther.fY) * fScale});
    }
    sShape.Add({p.fX + sOther.fX, p.fY + sOther.fY});
    Add(sShape, BlendOf(sNode, sNode.nColor));
}

void CStrokes::Add(SShape a_sShape, const SBlend& a_sBlend) {
    // Cut to the frame, one side after the other; what lies far outside costs no time then. Not to the area:
    // a picture painted in parts is that painted at once.
    const auto cut = [&](bool a_bAcross, double a_fAt, double a_fInside) {
        SShape sCut;
        for (std::size_t n = 0; n < a_sShape.nCorners; ++n) {
            const SVector& sOne = a_sShape.asCorners[n];
            const SVector& sNext = a_sShape.asCorners[(n + 1) % a_sShape.nCorners];
            const double fOne = ((a_bAcross ? sOne.fX : sOne.fY) - a_fAt) * a_fInside;
            const double fNext = ((a_bAcross ? sNext.fX : sNext.fY) - a_fAt) * a_fInside;
            if (fOne >= 0.0) sCut.Add(sOne);
            if ((fOne < 0.0) == (fNext < 0.0)) continue;
            const double fShare = fOne / (fOne - fNext);
            SVector sAt{sOne.fX + (sNext.fX - sOne.fX) * fShare, sOne.fY + (sNext.fY - sOne.fY) * fShare};
            (a_bAcross ? sAt.fX : sAt.fY) = a_fAt;
            sCut.Add(sAt);
        }
        a_sShape = sCut;
    };
    const double fW = _sFrame.width;
    const double fH = _sFrame.height;
    bool bInside = true;
    for (std::size_t n = 0; n < a_sShape.nCorners; ++n) {
        // From here on a pixel begins at its number.
        auto& sCorner = a_sShape.asCorners[n];
        sCorner.fX += 0.5;
        sCorner.fY += 0.5;
        bInside = bInside && sCorner.fX >= 0.0 && sCorner.fX <= fW && sCorner.fY >= 0.0 && sCorner.fY <= fH;
    }
    if (!bInside) {
        cut(true, 0.0, 1.0);
        cut(true, fW, -1.0);
        cut(false, 0.0, 1.0);
        cut(false, fH, -1.0);
    }
    constexpr std::size_t nFewest = 3;
    if (a_sShape.nCorners < nFewest) return;
    if (_sPen.bSmooth) {
        AddSmooth(a_sShape, a_sBlend);
    } else {
        AddHard(a_sShape, a_sBlend);
    }
}

/// The exact area of the shape in each pixel. Each edge adds to each row what lies to the right of it, as
/// changes from one pixel to the next; summed up along the row they are the covered share.
void CStrokes::AddSmooth(const SShape& a_sShape, const SBlend& a_sBlend) {
    double fL = a_sShape.asCorners[0].fX;
    double fR = fL;
    double fT = a_sShape.asCorners[0].fY;
    double fB = fT;
    for (std::size_t n = 1; n < a_sShape.nCorners; ++n) {
        const auto& sCorner = a_sShape.asCorners[n];
        fL = std::min(fL, sCorner.fX);
        fR = std::max(fR, sCorner.fX);
        fT = std::min(fT, sCorner.fY);
        fB = std::max(fB, sCorner.fY);
    }
    const std::int32_t nL = Whole(std::floor(fL));
    const std::int32_t nT = Whole(std::floor(fT));
    const SArea sBox{nL, nT, Whole(std::ceil(fR)) - nL, Whole(std::ceil(fB)) - nT};
    const SArea sSeen = Common(sBox, _sArea);
    if (IsEmpty(sSeen)) return;
    const auto nRowLength = static_cast<std::size_t>(sBox.width) + 2;
    _vfEdges.assign(nRowLength * static_cast<std::size_t>(sBox.height), 0.0f);
    for (std::size_t n = 0; n < a_sShape.nCorners; ++n)
        AddEdge(a_sShape.asCorners[n], a_sShape.asCorners[(n + 1) % a_sShape.nCorners], sBox);
    for (std::int32_t y = sSeen.top; y < sSeen.top + sSeen.height; ++y) {
        const float* const pEdges = _vfEdges.data() + static_cast<std::size_t>(y - sBox.top) * nRowLength;
        float fSum = 0.0f;
        for (std::int32_t x = sBox.left; x < sSeen.left + sSeen.width; ++x) {
            fSum += pEdges[x - sBox.left];
            constexpr float fNothing = 1e-5f; // what rounding leaves of sums that are 0
            const float fCovered = std::min(std::abs(fSum), 1.0f);
            if (x >= sSeen.left && fCovered > fNothing) AddPixel(x, y, fCovered, a_sBlend);
        }
    }
}

void CStrokes::AddEdge(const SVector& a_sFrom, const SVector& a_sTo, const SArea& a_sBox) noexcept {
    if (a_sFrom.fY == a_sTo.fY) return;
    const bool bDown = a_sFrom.fY < a_sTo.fY;
    const SVector& sTop = bDown ? a_sFrom : a_sTo;
    const SVector& sBottom = bDown ? a_sTo : a_sFrom;
    const double fSlope = (sBottom.fX - sTop.fX) / (sBottom.fY - sTop.fY);
    const auto nRowLength = static_cast<std::size_t>(a_sBox.width) + 2;
    const double fMost = a_sBox.width;
    const std::int32_t nEnd = Whole(std::ceil(sBottom.fY));
    for (std::int32_t y = Whole(std::floor(sTop.fY)); y < nEnd; ++y) {
        const double fFrom = std::max(sTop.fY, static_cast<double>(y));
        const double fTo = std::min(sBottom.fY, y + 1.0);
        const double fHeight = bDown ? fTo - fFrom : fFrom - fTo;
        const auto at = [&](double a_fY) {
            return std::clamp(sTop.fX + (a_fY - sTop.fY) * fSlope - a_sBox.left, 0.0, fMost);
        };
        const double fOne = at(fFrom);
        const double fOther = at(fTo);
        const double fL = std::min(fOne, fOther);
        const double fR = std::max(fOne, fOther);
        float* const pRow = _vfEdges.data() + static_cast<std::size_t>(y - a_sBox.top) * nRowLength;
        // The covered share up to x grows by the part of the edge that lies left of x; its mean over a pixel
        // is the difference of this integral.
        const auto integral = [&](double a_fX) {
            if (a_fX <= fL) return 0.0;
            if (a_fX >= fR) return a_fX - (fL + fR) / 2.0;
            return (a_fX - fL) * (a_fX - fL) / (2.0 * (fR - fL));
        };
        const std::int32_t nFirst = Whole(fL);
        const std::int32_t nLast = Whole(std::ceil(fR));
        double fBefore = 0.0;
        double fShare = 0.0;
        for (std::int32_t x = nFirst; x <= nLast; ++x) {
            const double fAfter = integral(x + 1.0);
            const double fNow = fAfter - fBefore;
            pRow[x] += static_cast<float>((fNow - fShare) * fHeight);
            fShare = fNow;
            fBefore = fAfter;
        }
    }
}

/// The pixels whose centres lie in the shape. A centre on an edge belongs to the shape on the left of it or
/// above, so that of two shapes side by side just one has it.
void CStrokes::AddHard(const SShape& a_sShape, const SBlend& a_sBlend) {
    // The first row or column whose centre lies past a place. None is below 0, and that cuts as floor()
    // does, which is a call in the C library and takes longer than all the rest.
    const auto firstBehind = [](double a_fPlace) { return Whole(a_fPlace + 0.5); };
    double fT = a_sShape.asCorners[0].fY;
    double fB = fT;
    for (std::size_t n = 1; n < a_sShape.nCorners; ++n) {
        fT = std::min(fT, a_sShape.asCorners[n].fY);
        fB = std::max(fB, a_sShape.asCorners[n].fY);
    }
    const std::int32_t nFirst = std::max(firstBehind(fT), _sArea.top);
    const std::int32_t nEnd = std::min(firstBehind(fB), _sArea.top + _sArea.height);
    if (nFirst >= nEnd) return;
    constexpr double fFar = 1e9;
    _vfRuns.assign(static_cast<std::size_t>(nEnd - nFirst), {fFar, -fFar});
    for (std::size_t n = 0; n < a_sShape.nCorners; ++n) {
        const auto& sOne = a_sShape.asCorners[n];
        const auto& sNext = a_sShape.asCorners[(n + 1) % a_sShape.nCorners];
        // From the upper end in both shapes that share the edge, so that both get the same place.
        const auto& sTop = sOne.fY < sNext.fY ? sOne : sNext;
        const auto& sBottom = sOne.fY < sNext.fY ? sNext : sOne;
        const double fSlope = (sBottom.fX - sTop.fX) / (sBottom.fY - sTop.fY);
        const std::int32_t nLast = std::min(firstBehind(sBottom.fY), nEnd);
        for (std::int32_t y = std::max(firstBehind(sTop.fY), nFirst); y < nLast; ++y) {
            const double fX = sTop.fX + (y + 0.5 - sTop.fY) * fSlope;
            auto& sRun = _vfRuns[static_cast<std::size_t>(y - nFirst)];
            sRun = {std::min(sRun[0], fX), std::max(sRun[1], fX)};
        }
    }
    for (std::int32_t y = nFirst; y < nEnd; ++y) {
        const auto& sRun = _vfRuns[static_cast<std::size_t>(y - nFirst)];
        std::int32_t x = std::max(firstBehind(sRun[0]), _sArea.left);
        const std::int32_t nEndX = std::min(firstBehind(sRun[1]), _sArea.left + _sArea.width);
        for (; x < nEndX; ++x) AddPixel(x, y, 1.0f, a_sBlend);
    }
}

void CStrokes::AddPixel(std::int32_t x, std::int32_t y, float a_fCovered, const SBlend& a_sBlend) noexcept {
    const auto nPixel = static_cast<std::size_t>(y - _sArea.top) * static_cast<std::size_t>(_sArea.width) +
                        static_cast<std::size_t>(x - _sArea.left);
    _vfCovered[nPixel] += a_fCovered;
    if (!_sPen.bPerVertex) return;
    const double fAlong =
        (x - a_sBlend.sFrom.fX) * a_sBlend.sPerLength.fX + (y - a_sBlend.sFrom.fY) * a_sBlend.sPerLength.fY;
    const auto fShare = static_cast<float>(std::clamp(fAlong, 0.0, 1.0));
    const auto sColor = (a_sBlend.sStart + a_sBlend.sChange * fShare).Premultiplied();
    _vsColors[nPixel] = _vsColors[nPixel] + sColor * a_fCovered;
}

void CStrokes::Lay(CCanvas& a_rsCanvas) noexcept {
    const auto sPlain = Channels::Of(_sPen.nColor).Premultiplied();
    std::size_t nPixel = 0;
    for (std::int32_t y = _sArea.top; y < _sArea.top + _sArea.height; ++y) {
        std::uint32_t* const pRow = a_rsCanvas.Row(y);
        for (std::int32_t x = _sArea.left; x < _sArea.left + _sArea.width; ++x, ++nPixel) {
            const float fCovered = _vfCovered[nPixel];
            if (fCovered <= 0.0f) continue;
            // Where the line comes by again its colours are mixed; it never covers more than all.
            if (_sPen.bPerVertex) {
                LayOver(_vsColors[nPixel], 1.0f / std::max(fCovered, 1.0f), pRow[x]);
            } else {
                LayOver(sPlain, std::min(fCovered, 1.0f), pRow[x]);
            }
        }
    }
}

void CStrokes::Draw(
    CCanvas& a_rsCanvas, std::span<const SPoint> a_asPoints, const SPen& a_sPen, const SArea& a_sArea) {
    _sPen = a_sPen;
    _sArea = a_sArea;
    _sFrame = a_rsCanvas.Bounds();
    const double fHalf = HalfWidth(a_sPen);
    if (!(fHalf > 0.0) || IsEmpty(a_sArea)) return;
    TakePath(a_asPoints);
    if (_vsNodes.size() < 2) return;
    TakeJoints(fHalf);
    const auto nPixels = static_cast<std::size_t>(a_sArea.width) * static_cast<std::size_t>(a_sArea.height);
    _vfCovered.assign(nPixels, 0.0f);
    if (a_sPen.bPerVertex) _vsColors.assign(nPixels, {});
    for (std::size_t n = 0; n + 1 < _vsNodes.size(); ++n) {
        AddSegment(n, fHalf);
        if (n > 0 && !_vsNodes[n].bMitred) AddJoint(n, fHalf);
    }
    Lay(a_rsCanvas);
}

} // namespace KAV::GFX::CPU
