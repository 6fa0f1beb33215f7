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
        auto& sNew = _vsNodes.emplace_back();
        sNew.sAt = sAt;
        sNew.nColor = nColor;
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

CStrokes::SShape CStrokes::SegmentAt(std::size_t a_nAt, double a_fHalf) const noexcept {
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
    sShape.MoveToPixels();
    return sShape;
}

/// Fills the gap on the outer side of a joint at which both segments end flat.
CStrokes::SShape CStrokes::JointAt(std::size_t a_nAt, double a_fHalf) const noexcept {
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
    sShape.MoveToPixels();
    return sShape;
}

bool CStrokes::Cut(SShape& a_rsShape) const noexcept {
    // One side of the frame after the other; what lies far outside costs no time then. Not to the area: a
    // picture painted in parts is that painted at once.
    const auto cut = [&](bool a_bAcross, double a_fAt, double a_fInside) {
        SShape sCut;
        for (std::size_t n = 0; n < a_rsShape.nCorners; ++n) {
            const SVector& sOne = a_rsShape.asCorners[n];
            const SVector& sNext = a_rsShape.asCorners[(n + 1) % a_rsShape.nCorners];
            const double fOne = ((a_bAcross ? sOne.fX : sOne.fY) - a_fAt) * a_fInside;
            const double fNext = ((a_bAcross ? sNext.fX : sNext.fY) - a_fAt) * a_fInside;
            if (fOne >= 0.0) sCut.Add(sOne);
            if ((fOne < 0.0) == (fNext < 0.0)) continue;
            const double fShare = fOne / (fOne - fNext);
            SVector sAt{sOne.fX + (sNext.fX - sOne.fX) * fShare, sOne.fY + (sNext.fY - sOne.fY) * fShare};
            (a_bAcross ? sAt.fX : sAt.fY) = a_fAt;
            sCut.Add(sAt);
        }
        a_rsShape = sCut;
    };
    const auto iEnd = a_rsShape.asCorners.begin() + static_cast<std::ptrdiff_t>(a_rsShape.nCorners);
    if (std::all_of(a_rsShape.asCorners.begin(), iEnd,
            [this](const SVector& a_sCorner) { return IsInFrame(a_sCorner); }))
        return false;
    cut(true, 0.0, 1.0);
    cut(true, _sFrame.width, -1.0);
    cut(false, 0.0, 1.0);
    cut(false, _sFrame.height, -1.0);
    return true;
}

void CStrokes::Add(SShape a_sShape, const SBlend& a_sBlend, const SRows& a_sWithout) {
    Cut(a_sShape);
    constexpr std::size_t nFewest = 3;
    if (a_sShape.nCorners < nFewest) return;
    if (_sPen.bSmooth) {
        AddSmooth(a_sShape, a_sBlend);
        return;
    }
    const std::int32_t nTop = _sArea.top;
    const std::int32_t nBottom = nTop + _sArea.height;
    if (a_sWithout.nFirst >= a_sWithout.nEnd) {
        AddHard(a_sShape, a_sBlend, {nTop, nBottom});
        return;
    }
    AddHard(a_sShape, a_sBlend, {nTop, std::min(a_sWithout.nFirst, nBottom)});
    AddHard(a_sShape, a_sBlend, {std::max(a_sWithout.nEnd, nTop), nBottom});
}

/// The joint's edge is in both segments, whole, so that each takes away what the other adds.
bool CStrokes::TurnsInFrame(std::size_t a_nAt) const noexcept {
    const auto& sNode = _vsNodes[a_nAt];
    SShape sEdge;
    sEdge.Add({sNode.sAt.fX + sNode.sMitre.fX, sNode.sAt.fY + sNode.sMitre.fY});
    sEdge.Add({sNode.sAt.fX - sNode.sMitre.fX, sNode.sAt.fY - sNode.sMitre.fY});
    sEdge.MoveToPixels();
    return sNode.bMitred && IsInFrame(sEdge.asCorners[0]) && IsInFrame(sEdge.asCorners[1]);
}

/// The edges of all shapes together. All of them run round in the same direction, so that the shares add up.
void CStrokes::AddOutline(double a_fHalf) {
    const auto nRowLength = static_cast<std::size_t>(_sOutline.width) + 2;
    _vfEdges.assign(nRowLength * static_cast<std::size_t>(_sOutline.height), 0.0f);
    for (std::size_t n = 0; n + 1 < _vsNodes.size(); ++n) {
        const bool bFromJoint = TurnsInFrame(n);
        const bool bToJoint = TurnsInFrame(n + 1);
        const SShape sWhole = SegmentAt(n, a_fHalf);
        const auto& asCorners = sWhole.asCorners;
        SShape sShape = sWhole;
        if (Cut(sShape)) {
            AddClosed(sShape);
            if (bToJoint) AddEdge(asCorners[2], asCorners[1], _sOutline);
            if (bFromJoint) AddEdge(asCorners[0], asCorners[3], _sOutline);
        } else {
            AddEdge(asCorners[0], asCorners[1], _sOutline);
            if (!bToJoint) AddEdge(asCorners[1], asCorners[2], _sOutline);
            AddEdge(asCorners[2], asCorners[3], _sOutline);
            if (!bFromJoint) AddEdge(asCorners[3], asCorners[0], _sOutline);
        }
        if (n == 0 || _vsNodes[n].bMitred) continue;
        SShape sJoint = JointAt(n, a_fHalf);
        Cut(sJoint);
        AddClosed(sJoint);
    }
}

/// All edges of a shape, in the direction in which segments have them.
void CStrokes::AddClosed(const SShape& a_sShape) noexcept {
    double fArea = 0.0;
    const auto edges = [&](const auto& a_sDo) {
        for (std::size_t n = 0; n < a_sShape.nCorners; ++n)
            a_sDo(a_sShape.asCorners[n], a_sShape.asCorners[(n + 1) % a_sShape.nCorners]);
    };
    edges([&](const SVector& a_sOne, const SVector& a_sNext) {
        fArea += a_sOne.fX * a_sNext.fY - a_sNext.fX * a_sOne.fY;
    });
    edges([&](const SVector& a_sOne, const SVector& a_sNext) {
        AddEdge(fArea > 0.0 ? a_sNext : a_sOne, fArea > 0.0 ? a_sOne : a_sNext, _sOutline);
    });
}

void CStrokes::LayOutline(CCanvas& a_rsCanvas) noexcept {
    const auto sColor = Channels::Of(_sPen.nColor).Premultiplied();
    // Less changes no pixel. Rounding leaves still less of sums that are 0.
    constexpr float fNothing = 1.0f / 1024.0f;
    const auto nRowLength = static_cast<std::size_t>(_sOutline.width) + 2;
    const std::int32_t nBefore = _sArea.left - _sOutline.left;
    const std::int32_t nEnd = nBefore + _sArea.width;
    for (std::int32_t y = _sArea.top; y < _sArea.top + _sArea.height; ++y) {
        const float* const pEdges =
            _vfEdges.data() + static_cast<std::size_t>(y - _sOutline.top) * nRowLength;
        std::uint32_t* const pRow = a_rsCanvas.Row(y) + _sArea.left;
        float fSum = 0.0f;
        for (std::int32_t x = 0; x < nEnd; ++x) {
            if (std::abs(fSum) <= fNothing) {
                x = static_cast<std::int32_t>(FirstNonZero(pEdges + x, pEdges + nEnd) - pEdges);
                if (x == nEnd) break;
            }
            fSum += pEdges[x];
            const float fCovered = std::min(std::abs(fSum), 1.0f);
            if (x >= nBefore && fCovered > fNothing) LayOver(sColor, fCovered, pRow[x - nBefore]);
        }
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

/// Of the rows of the box. Across, the edge lies in the box.
void CStrokes::AddEdge(const SVector& a_sFrom, const SVector& a_sTo, const SArea& a_sBox) noexcept {
    if (a_sFrom.fY == a_sTo.fY) return;
    const bool bDown = a_sFrom.fY < a_sTo.fY;
    const SVector& sTop = bDown ? a_sFrom : a_sTo;
    const SVector& sBottom = bDown ? a_sTo : a_sFrom;
    const double fSlope = (sBottom.fX - sTop.fX) / (sBottom.fY - sTop.fY);
    const auto nRowLength = static_cast<std::size_t>(a_sBox.width) + 2;
    const double fMost = a_sBox.width;
    // No place is below 0, so that Whole() is floor(), which is a call in the C library.
    const auto wholeAbove = [](double a_fPlace) {
        const std::int32_t nWhole = Whole(a_fPlace);
        return nWhole < a_fPlace ? nWhole + 1 : nWhole;
    };
    const auto at = [&](double a_fY) {
        return std::clamp(sTop.fX + (a_fY - sTop.fY) * fSlope - a_sBox.left, 0.0, fMost);
    };
    const std::int32_t nEnd = std::min(wholeAbove(sBottom.fY), a_sBox.top + a_sBox.height);
    std::int32_t y = std::max(Whole(sTop.fY), a_sBox.top);
    if (y >= nEnd) return;
    double fFrom = std::max(sTop.fY, static_cast<double>(y));
    double fOne = at(fFrom);
    for (; y < nEnd; ++y) {
        const double fTo = std::min(sBottom.fY, y + 1.0);
        const double fOther = at(fTo);
        const double fHeight = bDown ? fTo - fFrom : fFrom - fTo;
        const double fL = std::min(fOne, fOther);
        const double fR = std::max(fOne, fOther);
        fFrom = fTo;
        fOne = fOther;
        float* const pRow = _vfEdges.data() + static_cast<std::size_t>(y - a_sBox.top) * nRowLength;
        // The covered share up to x grows by the part of the edge that lies left of x; its mean over a pixel
        // is the difference of this integral.
        const std::int32_t nFirst = Whole(fL);
        const std::int32_t nLast = wholeAbove(fR);
        const double fMiddle = (fL + fR) / 2.0;
        double fBefore = 0.0;
        double fShare = 0.0;
        std::int32_t x = nFirst;
        for (; x + 1 < nLast; ++x) {
            const double fAfter = (x + 1.0 - fL) * (x + 1.0 - fL) / (2.0 * (fR - fL));
            const double fNow = fAfter - fBefore;
            pRow[x] += static_cast<float>((fNow - fShare) * fHeight);
            fShare = fNow;
            fBefore = fAfter;
        }
        for (; x <= nLast; ++x) {
            const double fAfter = x + 1.0 - fMiddle;
            const double fNow = fAfter - fBefore;
            pRow[x] += static_cast<float>((fNow - fShare) * fHeight);
            fShare = fNow;
            fBefore = fAfter;
        }
    }
}

/// The pixels whose centres lie in the shape. A centre on an edge belongs to the shape on the left of it or
/// above, so that of two shapes side by side just one has it.
void CStrokes::AddHard(const SShape& a_sShape, const SBlend& a_sBlend, const SRows& a_sWithin) {
    double fT = a_sShape.asCorners[0].fY;
    double fB = fT;
    for (std::size_t n = 1; n < a_sShape.nCorners; ++n) {
        fT = std::min(fT, a_sShape.asCorners[n].fY);
        fB = std::max(fB, a_sShape.asCorners[n].fY);
    }
    const std::int32_t nFirst = std::max(FirstBehind(fT), a_sWithin.nFirst);
    const std::int32_t nEnd = std::min(FirstBehind(fB), a_sWithin.nEnd);
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
        const std::int32_t nLast = std::min(FirstBehind(sBottom.fY), nEnd);
        for (std::int32_t y = std::max(FirstBehind(sTop.fY), nFirst); y < nLast; ++y) {
            const double fX = sTop.fX + (y + 0.5 - sTop.fY) * fSlope;
            auto& sRun = _vfRuns[static_cast<std::size_t>(y - nFirst)];
            sRun = {std::min(sRun[0], fX), std::max(sRun[1], fX)};
        }
    }
    for (std::int32_t y = nFirst; y < nEnd; ++y) {
        const auto& sRun = _vfRuns[static_cast<std::size_t>(y - nFirst)];
        std::int32_t x = std::max(FirstBehind(sRun[0]), _sArea.left);
        const std::int32_t nEndX = std::min(FirstBehind(sRun[1]), _sArea.left + _sArea.width);
        for (; x < nEndX; ++x) AddPixel(x, y, 1.0f, a_sBlend);
    }
}

void CStrokes::AddPixel(std::int32_t x, std::int32_t y, float a_fCovered, const SBlend& a_sBlend) noexcept {
    const auto nPixel = static_cast<std::size_t>(y - _sArea.top) * static_cast<std::size_t>(_sArea.width) +
                        static_cast<std::size_t>(x - _sArea.left);
    const bool bFirst = _vfCovered[nPixel] == 0.0f;
    _vfCovered[nPixel] += a_fCovered;
    if (!_sPen.bPerVertex) return;
    const auto sColor = a_sBlend.At(x, y) * a_fCovered;
    _vsColors[nPixel] = bFirst ? sColor : _vsColors[nPixel] + sColor;
}

void CStrokes::Lay(CCanvas& a_rsCanvas) noexcept {
    const auto sPlain = Channels::Of(_sPen.nColor).Premultiplied();
    for (std::int32_t y = _sArea.top; y < _sArea.top + _sArea.height; ++y) {
        const auto nFirst = static_cast<std::size_t>(y - _sArea.top) * static_cast<std::size_t>(_sArea.width);
        const float* const pCovered = _vfCovered.data() + nFirst;
        const float* const pEnd = pCovered + _sArea.width;
        const Channels* const pColors = _sPen.bPerVertex ? _vsColors.data() + nFirst : nullptr;
        std::uint32_t* const pRow = a_rsCanvas.Row(y) + _sArea.left;
        for (const float* p = FirstNonZero(pCovered, pEnd); p != pEnd; p = FirstNonZero(p + 1, pEnd)) {
            const auto nAt = p - pCovered;
            // Where the line comes by again its colours are mixed; it never covers more than all.
            if (_sPen.bPerVertex) {
                LayOver(pColors[nAt], 1.0f / std::max(*p, 1.0f), pRow[nAt]);
            } else {
                LayOver(sPlain, std::min(*p, 1.0f), pRow[nAt]);
            }
        }
    }
}

void CStrokes::Draw(
    CCanvas& a_rsCanvas, std::span<const SPoint> a_asPoints, const SPen& a_sPen, const SArea& a_sArea) {
    _sPen = a_sPen;
    _sFrame = a_rsCanvas.Bounds();
    _sOutline = BoundsOf(a_asPoints, a_sPen, _sFrame);
    _sArea = Common(a_sArea, _sOutline);
    const double fHalf = HalfWidth(a_sPen);
    if (!(fHalf > 0.0) || IsEmpty(_sArea)) return;
    TakePath(a_asPoints);
    if (_vsNodes.size() < 2) return;
    TakeJoints(fHalf);
    if (a_sPen.bSmooth && !a_sPen.bPerVertex) {
        _sOutline.top = _sArea.top;
        _sOutline.height = _sArea.height;
        AddOutline(fHalf);
        LayOutline(a_rsCanvas);
        return;
    }
    const auto nPixels = static_cast<std::size_t>(_sArea.width) * static_cast<std::size_t>(_sArea.height);
    _vfCovered.assign(nPixels, 0.0f);
    if (a_sPen.bPerVertex) _vsColors.resize(nPixels);
    if (a_sPen.bPerVertex && !a_sPen.bSmooth) TakeColumns(fHalf);
    for (std::size_t n = 0; n + 1 < _vsNodes.size(); ++n) {
        const auto& sNode = _vsNodes[n];
        Add(SegmentAt(n, fHalf), BlendOf(sNode, _vsNodes[n + 1].nColor), sNode.sAlone);
        if (n > 0 && !sNode.bMitred) Add(JointAt(n, fHalf), BlendOf(sNode, sNode.nColor), {});
    }
    Lay(a_rsCanvas);
    for (const auto& sNode : _vsNodes)
        LayColumn(a_rsCanvas, static_cast<std::size_t>(&sNode - _vsNodes.data()));
}

} // namespace KAV::GFX::CPU
