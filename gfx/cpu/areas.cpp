#include "gfx/cpu/areas.h"

#include <algorithm>
#include <cstdint>

namespace KAV::GFX::CPU {

namespace {

// About as many pixels as can be painted in the time that an area takes by itself.
constexpr std::int64_t WorthAnArea = 800;

std::int64_t Pixels(const SArea& a_sArea) noexcept {
    return static_cast<std::int64_t>(a_sArea.width) * a_sArea.height;
}

} // namespace

SArea Around(const SArea& a_sOne, const SArea& a_sOther) noexcept {
    const std::int32_t nLeft = std::min(a_sOne.left, a_sOther.left);
    const std::int32_t nTop = std::min(a_sOne.top, a_sOther.top);
    const std::int32_t nRight = std::max(a_sOne.left + a_sOne.width, a_sOther.left + a_sOther.width);
    const std::int32_t nBottom = std::max(a_sOne.top + a_sOne.height, a_sOther.top + a_sOther.height);
    return {nLeft, nTop, nRight - nLeft, nBottom - nTop};
}

std::size_t CAreas::Partner(const SArea& a_sArea) const noexcept {
    std::size_t nBest = _nAreas;
    std::int64_t nLeastWaste = WorthAnArea;
    const bool bFull = _nAreas == Most;
    for (std::size_t n = 0; n < _nAreas; ++n) {
        const SArea& sOther = _asAreas[n];
        if (!CPU::IsEmpty(Common(a_sArea, sOther))) return n;
        const std::int64_t nWaste = Pixels(Around(a_sArea, sOther)) - Pixels(a_sArea) - Pixels(sOther);
        if (nWaste >= nLeastWaste && !(bFull && nBest == _nAreas)) continue;
        nBest = n;
        nLeastWaste = nWaste;
    }
    return nBest;
}

void CAreas::Add(const SArea& a_sArea) noexcept {
    if (CPU::IsEmpty(a_sArea)) return;
    SArea sNew = a_sArea;
    // Each turn takes an area out, so that this ends.
    for (std::size_t n = Partner(sNew); n < _nAreas; n = Partner(sNew)) {
        sNew = Around(sNew, _asAreas[n]);
        _asAreas[n] = _asAreas[--_nAreas];
    }
    _asAreas[_nAreas++] = sNew;
}

} // namespace KAV::GFX::CPU
