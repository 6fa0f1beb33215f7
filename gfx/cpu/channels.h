#pragma once

#include <array>
#include <cstdint>
#include <emmintrin.h>

namespace KAV::GFX::CPU {

inline constexpr float FullChannel = 255.0f;

/// Blue, green, red and alpha of a pixel or a colour, computed with all at once; 0..255 unless said
/// otherwise.
class Channels final {
public:
    Channels() noexcept : _sAll(_mm_setzero_ps()) {}
    explicit Channels(float a_fEach) noexcept : _sAll(_mm_set1_ps(a_fEach)) {}
    static Channels Of(std::uint32_t a_nPixel) noexcept {
        const __m128i sZero = _mm_setzero_si128();
        const __m128i sBytes = _mm_cvtsi32_si128(static_cast<int>(a_nPixel));
        return Channels(_mm_cvtepi32_ps(_mm_unpacklo_epi16(_mm_unpacklo_epi8(sBytes, sZero), sZero)));
    }

    float Alpha() const noexcept {
        return _mm_cvtss_f32(_mm_shuffle_ps(_sAll, _sAll, _MM_SHUFFLE(3, 3, 3, 3)));
    }
    /// Blue, green, red, alpha.
    std::array<float, 4> Each() const noexcept {
        std::array<float, 4> afEach{};
        _mm_storeu_ps(afEach.data(), _sAll);
        return afEach;
    }
    /// Straight colours times alpha; alpha stays.
    Channels Premultiplied() const noexcept {
        const __m128 sAlpha = _mm_shuffle_ps(_sAll, _sAll, _MM_SHUFFLE(3, 3, 3, 3));
        const __m128 sScale = _mm_mul_ps(sAlpha, _mm_set1_ps(1.0f / FullChannel));
        const __m128 sOne = _mm_set1_ps(1.0f);
        const __m128 sRedAndOne = _mm_unpackhi_ps(sScale, sOne); // scale, 1, scale, 1
        return Channels(_mm_mul_ps(_sAll, _mm_shuffle_ps(sScale, sRedAndOne, _MM_SHUFFLE(1, 0, 1, 0))));
    }

    friend Channels operator+(Channels a_sOne, Channels a_sOther) noexcept {
        return Channels(_mm_add_ps(a_sOne._sAll, a_sOther._sAll));
    }
    friend Channels operator-(Channels a_sOne, Channels a_sOther) noexcept {
        return Channels(_mm_sub_ps(a_sOne._sAll, a_sOther._sAll));
    }
    friend Channels operator*(Channels a_sOne, Channels a_sOther) noexcept {
        return Channels(_mm_mul_ps(a_sOne._sAll, a_sOther._sAll));
    }
    friend Channels operator*(Channels a_sOne, float a_fScale) noexcept {
        return a_sOne * Channels(a_fScale);
    }

    /// Rounded, as an opaque pixel.
    std::uint32_t Opaque() const noexcept {
        const __m128 sRounded = _mm_min_ps(_mm_add_ps(_sAll, _mm_set1_ps(0.5f)), _mm_set1_ps(FullChannel));
        const __m128i sWhole = _mm_cvttps_epi32(sRounded);
        const __m128i sPacked = _mm_packs_epi32(sWhole, sWhole);
        return static_cast<std::uint32_t>(_mm_cvtsi128_si32(_mm_packus_epi16(sPacked, sPacked))) |
               0xFF000000U;
    }

private:
    explicit Channels(__m128 a_sAll) noexcept : _sAll(a_sAll) {}

    __m128 _sAll;
};

/// The first of some numbers that isn't 0, or the end.
inline const float* FirstNonZero(const float* a_pFrom, const float* a_pEnd) noexcept {
    for (; a_pEnd - a_pFrom >= 4; a_pFrom += 4) {
        if (_mm_movemask_ps(_mm_cmpneq_ps(_mm_loadu_ps(a_pFrom), _mm_setzero_ps())) != 0) break;
    }
    while (a_pFrom != a_pEnd && *a_pFrom == 0.0f) ++a_pFrom;
    return a_pFrom;
}

/// Lays that share of a premultiplied colour over an opaque pixel.
inline void LayOver(Channels a_sColor, float a_fShare, std::uint32_t& a_rnPixel) noexcept {
    const Channels sLaid = a_sColor * a_fShare;
    const float fRest = 1.0f - sLaid.Alpha() / FullChannel;
    a_rnPixel = (sLaid + Channels::Of(a_rnPixel) * fRest).Opaque();
}

} // namespace KAV::GFX::CPU
