#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <emmintrin.h>

namespace KAV::GFX::CPU {

/// A rectangle of premultiplied pixels: where it begins, and how many pixels its rows lie apart.
template<typename TPixel>
struct TRows {
    TPixel* pFirst = nullptr;
    std::ptrdiff_t nApart = 0;
};

/// Four pixels over four others. Both terms are rounded to 8 bits, as in the system's library.
inline __m128i Over(__m128i a_sUpper, __m128i a_sLower) noexcept {
    const __m128i sZero = _mm_setzero_si128();
    const auto rest = [](__m128i a_sColor, __m128i a_sBelow) { // both with 16 bits per channel
        constexpr int nAlphas = _MM_SHUFFLE(3, 3, 3, 3);
        const __m128i sAlpha = _mm_shufflehi_epi16(_mm_shufflelo_epi16(a_sColor, nAlphas), nAlphas);
        const __m128i sLeft = _mm_xor_si128(sAlpha, _mm_set1_epi16(0xFF));
        const __m128i sProduct = _mm_add_epi16(_mm_mullo_epi16(a_sBelow, sLeft), _mm_set1_epi16(0x80));
        return _mm_mulhi_epu16(sProduct, _mm_set1_epi16(0x101)); // divides by 255, and rounds
    };
    const __m128i sLow = rest(_mm_unpacklo_epi8(a_sUpper, sZero), _mm_unpacklo_epi8(a_sLower, sZero));
    const __m128i sHigh = rest(_mm_unpackhi_epi8(a_sUpper, sZero), _mm_unpackhi_epi8(a_sLower, sZero));
    return _mm_adds_epu8(a_sUpper, _mm_packus_epi16(sLow, sHigh));
}

inline void LayRow(const std::uint32_t* a_pFrom, std::uint32_t* a_pTo, std::int32_t a_nPixels) noexcept {
    const __m128i sZero = _mm_setzero_si128();
    std::int32_t n = 0;
    for (; n + 4 <= a_nPixels; n += 4) {
        const __m128i sFrom = _mm_loadu_si128(reinterpret_cast<const __m128i*>(a_pFrom + n));
        constexpr int nAll = 0xFFFF;
        if (_mm_movemask_epi8(_mm_cmpeq_epi8(sFrom, sZero)) == nAll) continue;
        auto* const pTo = reinterpret_cast<__m128i*>(a_pTo + n);
        _mm_storeu_si128(pTo, Over(sFrom, _mm_loadu_si128(pTo)));
    }
    for (; n < a_nPixels; ++n) {
        const __m128i sFrom = _mm_cvtsi32_si128(static_cast<int>(a_pFrom[n]));
        const __m128i sTo = _mm_cvtsi32_si128(static_cast<int>(a_pTo[n]));
        a_pTo[n] = static_cast<std::uint32_t>(_mm_cvtsi128_si32(Over(sFrom, sTo)));
    }
}

/// The rows don't overlap.
inline void CopyRow(const std::uint32_t* a_pFrom, std::uint32_t* a_pTo, std::int32_t a_nPixels) noexcept {
    constexpr std::int32_t nMost = 64; // more is faster by the C library
    if (a_nPixels < 4 || a_nPixels > nMost) {
        std::copy_n(a_pFrom, a_nPixels, a_pTo);
        return;
    }
    const auto copy = [&](std::int32_t a_nAt) {
        const __m128i sFour = _mm_loadu_si128(reinterpret_cast<const __m128i*>(a_pFrom + a_nAt));
        _mm_storeu_si128(reinterpret_cast<__m128i*>(a_pTo + a_nAt), sFour);
    };
    for (std::int32_t n = 0; n < a_nPixels - 4; n += 4) copy(n);
    copy(a_nPixels - 4); // some of them a second time
}

/// Does something to each pair of rows. Strips of a few pixels are common, and in each row they lie in other
/// lines of the cache, which the processor doesn't foresee.
template<typename TRow>
void ForRows(const TRows<const std::uint32_t>& a_sFrom, const TRows<std::uint32_t>& a_sTo,
    std::int32_t a_nWidth, std::int32_t a_nHeight, const TRow& a_sRow) noexcept {
    constexpr std::ptrdiff_t nAhead = 6;
    constexpr std::int32_t nLine = 16; // pixels
    constexpr std::int32_t nNarrow = 8 * nLine;
    const auto fetch = [a_nWidth](const std::uint32_t* a_pRow) {
        for (std::int32_t x = 0; x < a_nWidth; x += nLine)
            _mm_prefetch(reinterpret_cast<const char*>(a_pRow + x), _MM_HINT_T0);
        _mm_prefetch(reinterpret_cast<const char*>(a_pRow + a_nWidth - 1), _MM_HINT_T0);
    };
    const bool bFetch = a_nWidth <= nNarrow;
    if (bFetch) {
        for (std::ptrdiff_t y = 1; y < std::min<std::ptrdiff_t>(nAhead, a_nHeight); ++y) {
            fetch(a_sFrom.pFirst + y * a_sFrom.nApart);
            fetch(a_sTo.pFirst + y * a_sTo.nApart);
        }
    }
    for (std::ptrdiff_t y = 0; y < a_nHeight; ++y) {
        if (bFetch && y + nAhead < a_nHeight) {
            fetch(a_sFrom.pFirst + (y + nAhead) * a_sFrom.nApart);
            fetch(a_sTo.pFirst + (y + nAhead) * a_sTo.nApart);
        }
        a_sRow(a_sFrom.pFirst + y * a_sFrom.nApart, a_sTo.pFirst + y * a_sTo.nApart, a_nWidth);
    }
}

} // namespace KAV::GFX::CPU
