#include "gfx/cpu/draw_list.h"

#include <algorithm>

namespace KAV::GFX::CPU {

namespace {

using SNoted = CDrawList::SDraw;

bool HaveSameStep(const SNoted& a_sOne, const SNoted& a_sOther) noexcept {
    return a_sOne.sStep.nDX == a_sOther.sStep.nDX && a_sOne.sStep.nDY == a_sOther.sStep.nDY;
}

/// Both have the same pixels wherever both are.
bool AgreeWhereTheyMeet(const SNoted& a_sOne, const SNoted& a_sOther) noexcept {
    if (a_sOne.nKind == SNoted::EKind::Map) return a_sOne.sMapping == a_sOther.sMapping;
    return a_sOne.bRepeat == a_sOther.bRepeat && HaveSameStep(a_sOne, a_sOther);
}

/// Whether one of them can be the other's next frame: the same picture and colour, with another cell in the
/// same place, or with another extent at the same pixels.
bool Became(const SNoted& a_sOwn, const SNoted& a_sNext) noexcept {
    if (a_sOwn.nKind != a_sNext.nKind || a_sOwn.nKind == SNoted::EKind::Lines) return false;
    if (a_sOwn.nSource != a_sNext.nSource || a_sOwn.nColor != a_sNext.nColor) return false;
    if (AgreeWhereTheyMeet(a_sOwn, a_sNext)) return !IsEmpty(Common(a_sOwn.sBox, a_sNext.sBox));
    return a_sOwn.nKind == SNoted::EKind::Copy && !a_sOwn.bRepeat && !a_sNext.bRepeat &&
           a_sOwn.sBox == a_sNext.sBox;
}

/// Adds what lies outside of the hole, which is a part of the area.
void AddAround(const SArea& a_sArea, const SArea& a_sHole, CAreas& a_rsAreas) noexcept {
    const std::int32_t nHoleRight = a_sHole.left + a_sHole.width;
    const std::int32_t nHoleBottom = a_sHole.top + a_sHole.height;
    a_rsAreas.Add({a_sArea.left, a_sArea.top, a_sArea.width, a_sHole.top - a_sArea.top});
    a_rsAreas.Add({a_sArea.left, nHoleBottom, a_sArea.width, a_sArea.top + a_sArea.height - nHoleBottom});
    a_rsAreas.Add({a_sArea.left, a_sHole.top, a_sHole.left - a_sArea.left, a_sHole.height});
    a_rsAreas.Add({nHoleRight, a_sHole.top, a_sArea.left + a_sArea.width - nHoleRight, a_sHole.height});
}

/// Adds what has changed between two frames of a draw. The source of the next one is alive.
void AddChange(
    const SNoted& a_sOwn, const SNoted& a_sNext, CCellDifferences& a_rsCells, CAreas& a_rsAreas) noexcept {
    const SArea sCommon = Common(a_sOwn.sBox, a_sNext.sBox);
    AddAround(a_sOwn.sBox, sCommon, a_rsAreas);
    AddAround(a_sNext.sBox, sCommon, a_rsAreas);
    if (AgreeWhereTheyMeet(a_sOwn, a_sNext)) return;
    const auto [nL, nT, nW, nH] = sCommon;
    SArea sChanged =
        a_rsCells.Between(*a_sNext.piSource, {nL + a_sOwn.sStep.nDX, nT + a_sOwn.sStep.nDY, nW, nH},
            nL + a_sNext.sStep.nDX, nT + a_sNext.sStep.nDY);
    sChanged.left += nL;
    sChanged.top += nT;
    a_rsAreas.Add(sChanged);
}

} // namespace

void CDrawList::Reset() noexcept {
    _vsDraws.clear();
    _vsPoints.clear();
    _bOnBlack = false;
}

void CDrawList::Clear() noexcept {
    Reset();
    _bOnBlack = true;
}

void CDrawList::AddLines(SDraw a_sDraw, std::span<const SPoint> a_asPoints) {
    a_sDraw.nKind = SDraw::EKind::Lines;
    a_sDraw.nFirstPoint = _vsPoints.size();
    a_sDraw.nPoints = a_asPoints.size();
    _vsPoints.insert(_vsPoints.end(), a_asPoints.begin(), a_asPoints.end());
    _vsDraws.push_back(a_sDraw);
}

bool CDrawList::LooksLike(
    const SDraw& a_sOwn, const CDrawList& a_piNext, const SDraw& a_sNext) const noexcept {
    if (a_sOwn.nKind != a_sNext.nKind || a_sOwn.sBox != a_sNext.sBox) return false;
    if (a_sOwn.nKind == SDraw::EKind::Lines) {
        const auto asOwn = PointsOf(a_sOwn);
        const auto asNext = a_piNext.PointsOf(a_sNext);
        return a_sOwn.bStrip == a_sNext.bStrip && a_sOwn.sPen == a_sNext.sPen &&
               std::equal(asOwn.begin(), asOwn.end(), asNext.begin(), asNext.end());
    }
    return a_sOwn.nSource == a_sNext.nSource && a_sOwn.nColor == a_sNext.nColor &&
           AgreeWhereTheyMeet(a_sOwn, a_sNext);
}

void CDrawList::AddDifferences(
    const CDrawList& a_piNext, CCellDifferences& a_rsCells, CAreas& a_rsAreas) const noexcept {
    // Draws that both lists have, in the same order, make the same pixels wherever no other draw of either
    // list gets, and draws that became others do so outside of what they changed. Any such pairs will do;
    // the nearest pair ahead is a good next one.
    constexpr std::size_t nFarthest = 64;
    const auto& vsNext = a_piNext._vsDraws;
    std::size_t nOwn = 0;
    std::size_t nNext = 0;
    while (nOwn < _vsDraws.size() && nNext < vsNext.size()) {
        const auto at = [&](std::size_t a_nOwn, std::size_t a_nNext) {
            return a_nOwn < _vsDraws.size() && a_nNext < vsNext.size() &&
                   LooksLike(_vsDraws[a_nOwn], a_piNext, vsNext[a_nNext]);
        };
        const bool bEqual = at(nOwn, nNext);
        if (bEqual || Became(_vsDraws[nOwn], vsNext[nNext])) {
            if (!bEqual) AddChange(_vsDraws[nOwn], vsNext[nNext], a_rsCells, a_rsAreas);
            ++nOwn;
            ++nNext;
            continue;
        }
        const std::size_t nReach =
            std::min(nFarthest, std::max(_vsDraws.size() - nOwn, vsNext.size() - nNext));
        std::size_t nSkipOwn = 1;
        std::size_t nSkipNext = 1;
        // The usual change is one draw for another one, so both go on alike first.
        const std::size_t nSearched = at(nOwn + 1, nNext + 1) ? 0 : nReach;
        for (std::size_t n = 1; n <= nSearched; ++n) {
            if (at(nOwn + n, nNext)) {
                nSkipOwn = n;
                nSkipNext = 0;
                break;
            }
            if (at(nOwn, nNext + n)) {
                nSkipOwn = 0;
                nSkipNext = n;
                break;
            }
        }
        for (; nSkipOwn > 0 && nOwn < _vsDraws.size(); --nSkipOwn) a_rsAreas.Add(_vsDraws[nOwn++].sBox);
        for (; nSkipNext > 0 && nNext < vsNext.size(); --nSkipNext) a_rsAreas.Add(vsNext[nNext++].sBox);
    }
    for (; nOwn < _vsDraws.size(); ++nOwn) a_rsAreas.Add(_vsDraws[nOwn].sBox);
    for (; nNext < vsNext.size(); ++nNext) a_rsAreas.Add(vsNext[nNext].sBox);
}

} // namespace KAV::GFX::CPU
