// Areas are filled with a strip of upright lines, one for each column of pixels. Between their ends each of
// them is all that covers its pixels, and these are painted at once instead of being summed up.

#include "gfx/cpu/channels.h"
#include "gfx/cpu/strokes.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <emmintrin.h>

namespace KAV::GFX::CPU {

namespace {

/// The larger part of a range that the other one leaves of it.
void LeaveOut(double& a_rnFrom, double& a_rnTo, double a_fOutFrom, double a_fOutTo) noexcept {
    if (a_fOutTo <= a_rnFrom || a_fOutFrom >= a_rnTo) return;
    if (a_fOutFrom - a_rnFrom > a_rnTo - a_fOutTo) {
        a_rnTo = a_fOutFrom;
    } else {
        a_rnFrom = a_fOutTo;
    }
}

/// Lays a column over four pixels at once, one channel after the other, by the same steps as LayOver().
class CFourPixels final {
public:
    CFourPixels(Channels a_sStart, Channels a_sChange) noexcept
        : _afStart(a_sStart.Each()), _afChange(a_sChange.Each()) {}
    /// Where the four lie between start and end, 0..1; the pixels are a_nApart apart.
    void Lay(__m128 a_sShares, std::uint32_t* a_pPixels, std::ptrdiff_t a_nApart) const noexcept {
        std::array<std::uint32_t, 4> anPixels{};
        for (std::size_t n = 0; n < anPixels.size(); ++n)
            anPixels[n] = a_pPixels[static_cast<std::ptrdiff_t>(n) * a_nApart];
        __m128i sPixels = _mm_loadu_si128(reinterpret_cast<const __m128i*>(anPixels.data()));
        const auto color = [&](std::size_t a_nChannel) {
            return _mm_add_ps(
                _mm_set1_ps(_afStart[a_nChannel]), _mm_mul_ps(_mm_set1_ps(_afChange[a_nChannel]), a_sShares));
        };
        const __m128 sFull = _mm_set1_ps(FullChannel);
        const __m128 sAlpha = color(Alpha);
        const __m128 sScale = _mm_mul_ps(sAlpha, _mm_set1_ps(1.0f / FullChannel));
        const __m128 sRest = _mm_sub_ps(_mm_set1_ps(1.0f), _mm_div_ps(sAlpha, sFull));
        __m128i sResult = _mm_set1_epi32(static_cast<int>(0xFF000000U));
        for (const std::size_t n : Channel) {
            const auto nShift = _mm_cvtsi32_si128(static_cast<int>(8 * n));
            const __m128i sByte = _mm_and_si128(_mm_srl_epi32(sPixels, nShift), _mm_set1_epi32(0xFF));
            const __m128 sBelow = _mm_mul_ps(_mm_cvtepi32_ps(sByte), sRest);
            const __m128 sSum = _mm_add_ps(_mm_mul_ps(color(n), sScale), sBelow);
            const __m128 sRounded = _mm_min_ps(_mm_add_ps(sSum, _mm_set1_ps(0.5f)), sFull);
            sResult = _mm_or_si128(sResult, _mm_sll_epi32(_mm_cvttps_epi32(sRounded), nShift));
        }
        _mm_storeu_si128(reinterpret_cast<__m128i*>(anPixels.data()), sResult);
        for (std::size_t n = 0; n < anPixels.size(); ++n)
            a_pPixels[static_cast<std::ptrdiff_t>(n) * a_nApart] = anPixels[n];
    }

private:
    static constexpr std::array<std::size_t, 3> Channel{0, 1, 2}; // blue, green, red
    static constexpr std::size_t Alpha = 3;

    std::array<float, 4> _afStart;
    std::array<float, 4> _afChange;
};

} // namespace

/// Only for a path that goes to the right, by a pixel or more at each step, with upright segments in between.
void CStrokes::TakeColumns(double a_fHalf) {
    // To the left of that, rounding of a joint could get a neighbour into the column.
    constexpr double fExact = 8.0;
    _vsColumns.clear();
    for (std::size_t n = 0; n < _vsNodes.size(); ++n) {
        const auto& sAt = _vsNodes[n].sAt;
        const double fStep = n > 0 ? sAt.fX - _vsNodes[n - 1].sAt.fX : 1.0;
        if (fStep != 0.0 && !(fStep >= 1.0)) return;
        if (fStep != 0.0) _vsColumns.push_back({n, n, sAt.fY, sAt.fY});
        auto& sColumn = _vsColumns.back();
        sColumn.nEnd = n + 1;
        sColumn.fTop = std::min(sColumn.fTop, sAt.fY);
        sColumn.fBottom = std::max(sColumn.fBottom, sAt.fY);
    }
    for (std::size_t nColumn = 0; nColumn < _vsColumns.size(); ++nColumn) {
        const auto& sColumn = _vsColumns[nColumn];
        if (sColumn.nEnd - sColumn.nFirst != 2) continue;
        const auto& asCorners = SegmentAt(sColumn.nFirst, a_fHalf).asCorners;
        const double fLeft = std::min(asCorners[0].fX, asCorners[3].fX);
        const double fRight = std::max(asCorners[0].fX, asCorners[3].fX);
        const bool bUpright = asCorners[0].fX == asCorners[1].fX && asCorners[2].fX == asCorners[3].fX;
        if (!bUpright || fLeft < fExact || fRight > _sFrame.width) continue;
        const std::int32_t nPixel = FirstBehind(fLeft);
        if (FirstBehind(fRight) != nPixel + 1) continue;
        auto& sNode = _vsNodes[sColumn.nFirst];
        sNode.nColumn = nPixel;
        sNode.sAlone = RowsAlone(nColumn);
    }
}

/// The rows in which an upright segment is all that gets to its pixels, whatever its neighbours do.
CStrokes::SRows CStrokes::RowsAlone(std::size_t a_nColumn) const noexcept {
    // A joint reaches five pixels beyond its point, unless it is mitred. Next to an upright segment it
    // reaches no further to the side than that segment.
    constexpr double fJoint = 5.0;
    constexpr double fMore = 1.0; // half a pixel, and what may be rounded
    constexpr std::size_t nAcross = 7;
    const auto& sColumn = _vsColumns[a_nColumn];
    double fFrom = sColumn.fTop;
    double fTo = sColumn.fBottom;
    const auto leaveOut = [&](double a_fOne, double a_fOther, double a_fReach) {
        LeaveOut(fFrom, fTo, std::min(a_fOne, a_fOther) - a_fReach - fMore,
            std::max(a_fOne, a_fOther) + a_fReach + fMore);
    };
    leaveOut(sColumn.fTop, sColumn.fTop, 0.0);
    leaveOut(sColumn.fBottom, sColumn.fBottom, 0.0);
    const std::size_t nEnd = std::min(a_nColumn + nAcross, _vsColumns.size());
    for (std::size_t n = a_nColumn > nAcross ? a_nColumn - nAcross : 0; n < nEnd; ++n) {
        const auto& sNear = _vsColumns[n];
        if (sNear.nEnd - sNear.nFirst != 2) leaveOut(sNear.fTop, sNear.fBottom, fJoint);
        // The way from here to the next one.
        if (n + 1 < a_nColumn || n > a_nColumn || n + 1 == _vsColumns.size()) continue;
        const auto& sOne = _vsNodes[sNear.nEnd - 1];
        const auto& sOther = _vsNodes[sNear.nEnd];
        const auto reach = [](const SNode& a_sNode) {
            return a_sNode.bMitred ? std::abs(a_sNode.sMitre.fY) : fJoint;
        };
        leaveOut(sOne.sAt.fY, sOther.sAt.fY, std::max(reach(sOne), reach(sOther)));
    }
    const auto row = [this](double a_fPlace) {
        return static_cast<std::int32_t>(std::clamp(a_fPlace, 0.0, static_cast<double>(_sFrame.height)));
    };
    return {row(std::ceil(fFrom)), row(std::floor(fTo))};
}

void CStrokes::LayColumn(CCanvas& a_rsCanvas, std::size_t a_nAt) const noexcept {
    const auto& sNode = _vsNodes[a_nAt];
    const std::int32_t x = sNode.nColumn;
    const std::int32_t nEnd = std::min(sNode.sAlone.nEnd, _sArea.top + _sArea.height);
    std::int32_t y = std::max(sNode.sAlone.nFirst, _sArea.top);
    if (y >= nEnd || x < _sArea.left || x >= _sArea.left + _sArea.width) return;
    const auto sBlend = BlendOf(sNode, _vsNodes[a_nAt + 1].nColor);
    const std::ptrdiff_t nApart = a_rsCanvas.Bounds().width;
    const CFourPixels iFour(sBlend.sStart, sBlend.sChange);
    for (; y + 4 <= nEnd; y += 4) {
        const auto share = [&](std::int32_t a_nFrom) { return sBlend.ShareAt(x, y + a_nFrom); };
        iFour.Lay(_mm_setr_ps(share(0), share(1), share(2), share(3)), a_rsCanvas.Row(y) + x, nApart);
    }
    for (; y < nEnd; ++y) LayOver(sBlend.At(x, y), 1.0f, a_rsCanvas.Row(y)[x]);
}

} // namespace KAV::GFX::CPU
