#include "gfx/cpu/draw_list.h"

#include <algorithm>

namespace KAV::GFX::CPU {

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
    const SDraw& a_sOwn, const CDrawList& a_piOther, const SDraw& a_sOther) const noexcept {
    if (a_sOwn.nKind != a_sOther.nKind || a_sOwn.sBox != a_sOther.sBox) return false;
    if (a_sOwn.nKind == SDraw::EKind::Lines) {
        const auto asOwn = PointsOf(a_sOwn);
        const auto asOther = a_piOther.PointsOf(a_sOther);
        return a_sOwn.bStrip == a_sOther.bStrip && a_sOwn.sPen == a_sOther.sPen &&
               std::equal(asOwn.begin(), asOwn.end(), asOther.begin(), asOther.end());
    }
    if (a_sOwn.nSource != a_sOther.nSource || a_sOwn.nColor != a_sOther.nColor) return false;
    if (a_sOwn.nKind == SDraw::EKind::Map) return a_sOwn.sMapping == a_sOther.sMapping;
    return a_sOwn.bRepeat == a_sOther.bRepeat && a_sOwn.sStep.nDX == a_sOther.sStep.nDX &&
           a_sOwn.sStep.nDY == a_sOther.sStep.nDY;
}

void CDrawList::AddDifferences(const CDrawList& a_piOther, CAreas& a_rsAreas) const noexcept {
    // Draws that both lists have, in the same order, make the same pixels wherever no other draw of either
    // list gets. Any such pairs will do; the nearest pair ahead is a good next one.
    constexpr std::size_t nFarthest = 64;
    const auto& vsOther = a_piOther._vsDraws;
    std::size_t nOwn = 0;
    std::size_t nOther = 0;
    while (nOwn < _vsDraws.size() && nOther < vsOther.size()) {
        const std::size_t nReach =
            std::min(nFarthest, std::max(_vsDraws.size() - nOwn, vsOther.size() - nOther));
        std::size_t nSkipOwn = 1;
        std::size_t nSkipOther = 1;
        for (std::size_t n = 0; n <= nReach; ++n) {
            const auto at = [&](std::size_t a_nOwn, std::size_t a_nOther) {
                return a_nOwn < _vsDraws.size() && a_nOther < vsOther.size() &&
                       LooksLike(_vsDraws[a_nOwn], a_piOther, vsOther[a_nOther]);
            };
            // The usual change is one draw for another one, so both go on alike first.
            if (n <= 1 && at(nOwn + n, nOther + n)) {
                nSkipOwn = nSkipOther = n;
                break;
            }
            if (at(nOwn + n, nOther)) {
                nSkipOwn = n;
                nSkipOther = 0;
                break;
            }
            if (at(nOwn, nOther + n)) {
                nSkipOwn = 0;
                nSkipOther = n;
                break;
            }
        }
        for (; nSkipOwn > 0 && nOwn < _vsDraws.size(); --nSkipOwn) a_rsAreas.Add(_vsDraws[nOwn++].sBox);
        for (; nSkipOther > 0 && nOther < vsOther.size(); --nSkipOther) a_rsAreas.Add(vsOther[nOther++].sBox);
        if (nOwn < _vsDraws.size() && nOther < vsOther.size() &&
            LooksLike(_vsDraws[nOwn], a_piOther, vsOther[nOther])) {
            ++nOwn;
            ++nOther;
        }
    }
    for (; nOwn < _vsDraws.size(); ++nOwn) a_rsAreas.Add(_vsDraws[nOwn].sBox);
    for (; nOther < vsOther.size(); ++nOther) a_rsAreas.Add(vsOther[nOther].sBox);
}

} // namespace KAV::GFX::CPU
