#include "gfx/d3d/strokes.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>

namespace KAV::GFX::D3D {

namespace {

// A line along the middles of pixels would otherwise have its edges exactly at their centres; of these GDI+
// takes the ones to the right and below.
constexpr float Nudge = 1.0f / 128.0f;
constexpr float LongestTip = 10.0f; // in halves of the width
constexpr float Shortest = 1e-4f;   // pixels between two points that aren't the same

std::uint32_t Faded(std::uint32_t a_nColor, float a_fShare) noexcept {
    constexpr std::uint32_t color = 0xFFFFFFU;
    const float fAlpha = static_cast<float>(a_nColor >> 24U) * a_fShare;
    return static_cast<std::uint32_t>(fAlpha + 0.5f) << 24U | // NOLINT(bugprone-incorrect-roundings): not < 0
           (a_nColor & color);
}

/// The colour at a place between two others, 0..1; at either end beyond them.
std::uint32_t Blended(std::uint32_t a_nFrom, std::uint32_t a_nTo, float a_fPlace) noexcept {
    if (a_nFrom == a_nTo) return a_nFrom;
    const float fPlace = std::clamp(a_fPlace, 0.0f, 1.0f);
    std::uint32_t nColor = 0;
    for (unsigned nShift = 0; nShift < 32; nShift += 8) {
        const auto fFrom = static_cast<float>(a_nFrom >> nShift & 0xFFU);
        const auto fTo = static_cast<float>(a_nTo >> nShift & 0xFFU);
        nColor |= static_cast<std::uint32_t>(std::lround(fFrom + (fTo - fFrom) * fPlace)) << nShift;
    }
    return nColor;
}

} // namespace

void CStrokes::Begin(float a_fWidth, bool a_bSmooth) {
    _vsTriangles.clear();
    _bSmooth = a_bSmooth;
    const float fWidth = std::max(a_fWidth, a_bSmooth ? 0.0f : 1.0f);
    const float fHalf = fWidth / 2.0f;
    constexpr float fHalfPixel = 0.5f;
    _fOuter = a_bSmooth ? fHalf + fHalfPixel : fHalf;
    _fInner = a_bSmooth ? std::abs(fHalf - fHalfPixel) : fHalf;
    _fShare = std::min(fWidth, 1.0f);
}

void CStrokes::AddNodes(std::span<const SPoint> a_sPath) {
    _vsNodes.clear();
    const float fNudge = _bSmooth ? 0.0f : Nudge;
    for (const auto& sPoint : a_sPath) {
        if (!std::isfinite(sPoint.fX) || !std::isfinite(sPoint.fY)) continue;
        const SVector sAt{sPoint.fX + fNudge, sPoint.fY + fNudge};
        if (!_vsNodes.empty()) {
            auto& sLast = _vsNodes.back();
            const SVector sTo{sAt.fX - sLast.sAt.fX, sAt.fY - sLast.sAt.fY};
            const float fLength = std::hypot(sTo.fX, sTo.fY);
            if (fLength < Shortest) continue;
            sLast.fLength = fLength;
            sLast.sAlong = {sTo.fX / fLength, sTo.fY / fLength};
        }
        _vsNodes.push_back({sAt, {}, 0.0f, sPoint.nColor});
    }
}

/// Whether the edges of two segments meet in points that both segments reach. Those lie in the direction of
/// `a_rsAcross`, on both sides.
bool CStrokes::JoinsSmoothly(const SNode& a_sBefore, const SNode& a_sAfter, SVector& a_rsAcross) const {
    const auto& a = a_sBefore.sAlong;
    const auto& b = a_sAfter.sAlong;
    const float fCosine = a.fX * b.fX + a.fY * b.fY;
    constexpr float fTurnedBack = -0.98f; // the tip would be longer than it may be
    if (fCosine < fTurnedBack) return false;
    const float fScale = 1.0f / (1.0f + fCosine);
    a_rsAcross = {-(a.fY + b.fY) * fScale, (a.fX + b.fX) * fScale};
    const float fTangent = std::abs(a.fX * b.fY - a.fY * b.fX) * fScale; // of half the turn
    // Each segment has another corner at its other end, which takes as much of it.
    constexpr float fHalf = 0.501f;
    return fTangent * _fOuter <= fHalf * std::min(a_sBefore.fLength, a_sAfter.fLength);
}

SVertex CStrokes::At(
    const SCut& a_sFrom, const SCut& a_sTo, const SCut& a_sCut, float a_fOffset, float a_fShare) noexcept {
    const SVector sAt{
        a_sCut.sAt.fX + a_sCut.sAcross.fX * a_fOffset, a_sCut.sAt.fY + a_sCut.sAcross.fY * a_fOffset};
    const SVector sAlong{a_sTo.sAt.fX - a_sFrom.sAt.fX, a_sTo.sAt.fY - a_sFrom.sAt.fY};
    const float fSquare = sAlong.fX * sAlong.fX + sAlong.fY * sAlong.fY;
    const SVector sCovered{sAt.fX - a_sFrom.sAt.fX, sAt.fY - a_sFrom.sAt.fY};
    const float fPlace =
        fSquare > 0.0f ? (sCovered.fX * sAlong.fX + sCovered.fY * sAlong.fY) / fSquare : 0.0f;
    const std::uint32_t nColor = Blended(a_sFrom.nColor, a_sTo.nColor, fPlace);
    return {sAt.fX, sAt.fY, 0.0f, Faded(nColor, a_fShare), 0.0f, 0.0f};
}

void CStrokes::AddBand(const SCut& a_sFrom, const SCut& a_sTo, float a_fFrom, float a_fTo, float a_fShareFrom,
    float a_fShareTo) {
    const SVertex sOne = At(a_sFrom, a_sTo, a_sFrom, a_fFrom, a_fShareFrom);
    const SVertex sOther = At(a_sFrom, a_sTo, a_sFrom, a_fTo, a_fShareTo);
    const SVertex sNext = At(a_sFrom, a_sTo, a_sTo, a_fFrom, a_fShareFrom);
    const SVertex sLast = At(a_sFrom, a_sTo, a_sTo, a_fTo, a_fShareTo);
    for (const auto& sVertex : {sOne, sOther, sNext, sOther, sNext, sLast}) _vsTriangles.push_back(sVertex);
}

void CStrokes::AddSegment(const SCut& a_sFrom, const SCut& a_sTo) {
    AddBand(a_sFrom, a_sTo, -_fInner, _fInner, _fShare, _fShare);
    if (!_bSmooth) return;
    AddBand(a_sFrom, a_sTo, -_fOuter, -_fInner, 0.0f, _fShare);
    AddBand(a_sFrom, a_sTo, _fInner, _fOuter, _fShare, 0.0f);
}

/// What lies between the ends of two segments on the outer side of their turn.
void CStrokes::AddCorner(const SNode& a_sBefore, const SNode& a_sNode) {
    const auto& a = a_sBefore.sAlong;
    const auto& b = a_sNode.sAlong;
    const float fSide = a.fX * b.fY - a.fY * b.fX > 0.0f ? -1.0f : 1.0f;
    const SCut sFirst{a_sNode.sAt, {-a.fY * fSide, a.fX * fSide}, a_sNode.nColor};
    const SCut sLast{a_sNode.sAt, {-b.fY * fSide, b.fX * fSide}, a_sNode.nColor};
    const float fCosine = a.fX * b.fX + a.fY * b.fY;
    const float fTip = std::sqrt(2.0f / std::max(1.0f + fCosine, 1e-6f)); // in halves of the width
    SCut sMiddle{a_sNode.sAt, sFirst.sAcross, a_sNode.nColor};
    if (fTip <= LongestTip) {
        const float fScale = 1.0f / (1.0f + fCosine);
        sMiddle.sAcross = {
            (sFirst.sAcross.fX + sLast.sAcross.fX) * fScale, (sFirst.sAcross.fY + sLast.sAcross.fY) * fScale};
    }
    const std::array<const SCut*, 3> vpCuts{&sFirst, &sMiddle, &sLast};
    for (std::size_t n = 0; n + 1 < vpCuts.size(); ++n) {
        AddBand(*vpCuts[n], *vpCuts[n + 1], 0.0f, _fInner, _fShare, _fShare);
        if (_bSmooth) AddBand(*vpCuts[n], *vpCuts[n + 1], _fInner, _fOuter, _fShare, 0.0f);
    }
}

void CStrokes::AddPath(std::span<const SPoint> a_sPath) {
    AddNodes(a_sPath);
    if (_vsNodes.size() < 2) return;
    const auto across = [](const SNode& a_sNode) -> SVector {
        return {-a_sNode.sAlong.fY, a_sNode.sAlong.fX};
    };
    SCut sFrom{_vsNodes[0].sAt, across(_vsNodes[0]), _vsNodes[0].nColor};
    for (std::size_t n = 1; n < _vsNodes.size(); ++n) {
        const auto& sBefore = _vsNodes[n - 1];
        const auto& sNode = _vsNodes[n];
        const bool bLast = n + 1 == _vsNodes.size();
        SCut sTo{sNode.sAt, across(sBefore), sNode.nColor};
        SVector sShared;
        if (!bLast && JoinsSmoothly(sBefore, sNode, sShared)) {
            sTo.sAcross = sShared;
            AddSegment(sFrom, sTo);
            sFrom = sTo;
            continue;
        }
        AddSegment(sFrom, sTo);
        if (bLast) break;
        AddCorner(sBefore, sNode);
        sFrom = {sNode.sAt, across(sNode), sNode.nColor};
    }
}

} // namespace KAV::GFX::D3D
