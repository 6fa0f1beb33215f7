#include "gfx/cpu/cell_differences.h"

#include <algorithm>
#include <cstddef>
#include <cstring>
#include <utility>

namespace KAV::GFX::CPU {

namespace {

// Of a meter of 63 frames all pairs between which its level gets in practice.
constexpr std::size_t Kept = 4096;

/// Multiplies by primes, so that neighbouring cells get places that are far apart.
std::size_t PlaceOf(std::uint64_t a_nSource, const SArea& a_sPart, std::int32_t a_nOtherLeft,
    std::int32_t a_nOtherTop) noexcept {
    constexpr std::uint64_t nPrime = 0x100000001B3U;
    std::uint64_t nHash = a_nSource;
    for (const std::int32_t n :
        {a_sPart.left, a_sPart.top, a_sPart.width, a_sPart.height, a_nOtherLeft, a_nOtherTop})
        nHash = nHash * nPrime + static_cast<std::uint32_t>(n);
    constexpr unsigned nUpperHalf = 32;
    return static_cast<std::size_t>(nHash ^ nHash >> nUpperHalf) % Kept;
}

SArea Compare(const CSource& a_piSource, const SArea& a_sPart, std::int32_t a_nOtherLeft,
    std::int32_t a_nOtherTop) noexcept {
    const auto row = [&](std::int32_t y) { return a_piSource.Row(a_sPart.top + y) + a_sPart.left; };
    const auto other = [&](std::int32_t y) { return a_piSource.Row(a_nOtherTop + y) + a_nOtherLeft; };
    const auto isEqual = [&](std::int32_t y) {
        return std::memcmp(row(y), other(y), 4 * static_cast<std::size_t>(a_sPart.width)) == 0;
    };
    std::int32_t nTop = 0;
    std::int32_t nBottom = a_sPart.height;
    while (nTop < nBottom && isEqual(nTop)) ++nTop;
    while (nTop < nBottom && isEqual(nBottom - 1)) --nBottom;
    if (nTop == nBottom) return {};
    std::int32_t nLeft = a_sPart.width;
    std::int32_t nRight = 0;
    for (std::int32_t y = nTop; y < nBottom; ++y) {
        const auto* const pRow = row(y);
        const auto* const pOther = other(y);
        nLeft = static_cast<std::int32_t>(std::mismatch(pRow, pRow + nLeft, pOther).first - pRow);
        std::int32_t nEnd = a_sPart.width;
        while (nEnd > nRight && pRow[nEnd - 1] == pOther[nEnd - 1]) --nEnd;
        nRight = nEnd;
    }
    return {nLeft, nTop, nRight - nLeft, nBottom - nTop};
}

} // namespace

CCellDifferences::CCellDifferences() : _vsKept(Kept) {}

SArea CCellDifferences::Between(const CSource& a_piSource, const SArea& a_sPart, std::int32_t a_nOtherLeft,
    std::int32_t a_nOtherTop) noexcept {
    const std::uint64_t nSource = a_piSource.Serial();
    auto& sKept = _vsKept[PlaceOf(nSource, a_sPart, a_nOtherLeft, a_nOtherTop)];
    const bool bKnown = sKept.nSource == nSource && sKept.sPart == a_sPart &&
                        sKept.nOtherLeft == a_nOtherLeft && sKept.nOtherTop == a_nOtherTop;
    if (!bKnown)
        sKept = {nSource, a_sPart, a_nOtherLeft, a_nOtherTop,
            Compare(a_piSource, a_sPart, a_nOtherLeft, a_nOtherTop)};
    return sKept.sDifference;
}

} // namespace KAV::GFX::CPU
