#pragma once

// The vector registers that the including source is compiled for, under one set of names. Sources with their
// own compiler flags include this. Everything is in an unnamed namespace, so that the linker can't use code
// for wide registers in place of code for any processor.

#if defined(__x86_64__)

#include <cstddef>
#include <immintrin.h>

namespace KAV::DSP {
namespace {

#if defined(__AVX__) && defined(__FMA__)

struct SLanes {
    using Floats = __m256;
    using Doubles = __m256d;
    static constexpr std::size_t FloatCount = 8;
    static constexpr std::size_t DoubleCount = 4;

    static Floats Load(const float* from) noexcept { return _mm256_loadu_ps(from); }
    static Doubles Load(const double* from) noexcept { return _mm256_loadu_pd(from); }
    static void Store(float* to, Floats x) noexcept { _mm256_storeu_ps(to, x); }
    static void Store(double* to, Doubles x) noexcept { _mm256_storeu_pd(to, x); }
    static Floats Same(float x) noexcept { return _mm256_set1_ps(x); }
    static Doubles Same(double x) noexcept { return _mm256_set1_pd(x); }
    static Doubles Add(Doubles a, Doubles b) noexcept { return _mm256_add_pd(a, b); }
    static Doubles Subtract(Doubles a, Doubles b) noexcept { return _mm256_sub_pd(a, b); }
    static Doubles Xor(Doubles a, Doubles b) noexcept { return _mm256_xor_pd(a, b); }
    /// Lanes of `a` where `which` is negative, otherwise of `b`.
    static Doubles Choose(Doubles which, Doubles a, Doubles b) noexcept {
        return _mm256_blendv_pd(b, a, which);
    }
    /// All lanes of `x` moved down by one, with the first of `in` in the uppermost.
    static Doubles Turn(Doubles x, Doubles in) noexcept {
        return _mm256_shuffle_pd(x, _mm256_permute2f128_pd(x, in, 0x21), 5);
    }
    /// A sample in the first lane.
    static Doubles WidenFirst(const float* from) noexcept {
        return _mm256_castpd128_pd256(_mm_cvtps_pd(_mm_load_ss(from)));
    }
    /// The first lanes of two registers as samples, zero always positive.
    static __m128 NarrowFirst(const Doubles* two) noexcept {
        const __m128d first = _mm_unpacklo_pd(_mm256_castpd256_pd128(two[0]), _mm256_castpd256_pd128(two[1]));
        return _mm_cvtpd_ps(_mm_add_pd(first, _mm_setzero_pd()));
    }
    static Doubles Multiply(Doubles a, Doubles b) noexcept { return _mm256_mul_pd(a, b); }
    static Doubles Divide(Doubles a, Doubles b) noexcept { return _mm256_div_pd(a, b); }
    /// Returns the second argument if either is not a number.
    static Floats Max(Floats a, Floats b) noexcept { return _mm256_max_ps(a, b); }
    static Doubles Min(Doubles a, Doubles b) noexcept { return _mm256_min_pd(a, b); }
    static double Lowest(Doubles x) noexcept {
        const __m128d two = _mm_min_pd(_mm256_castpd256_pd128(x), _mm256_extractf128_pd(x, 1));
        return _mm_cvtsd_f64(_mm_min_sd(two, _mm_unpackhi_pd(two, two)));
    }
    /// The low lanes of DoubleCount values, one after another.
    static Doubles Join(const __m128d* x) noexcept {
        return _mm256_set_m128d(_mm_unpacklo_pd(x[2], x[3]), _mm_unpacklo_pd(x[0], x[1]));
    }
    static Doubles Join(const double* x) noexcept { return _mm256_set_pd(x[3], x[2], x[1], x[0]); }
    static Floats Magnitude(Floats x) noexcept { return _mm256_andnot_ps(_mm256_set1_ps(-0.0f), x); }
    static bool AnyAbove(Floats x, Floats limit) noexcept {
        return _mm256_movemask_ps(_mm256_cmp_ps(x, limit, _CMP_GT_OQ)) != 0;
    }
    static Doubles Widen(const float* from) noexcept { return _mm256_cvtps_pd(_mm_loadu_ps(from)); }
    static Doubles WidenLow(Floats x) noexcept { return _mm256_cvtps_pd(_mm256_castps256_ps128(x)); }
    static Doubles WidenHigh(Floats x) noexcept { return _mm256_cvtps_pd(_mm256_extractf128_ps(x, 1)); }
    static Floats Narrow(Doubles low, Doubles high) noexcept {
        return _mm256_set_m128(_mm256_cvtpd_ps(high), _mm256_cvtpd_ps(low));
    }
    /// `x` moved up by BY lanes (fewer than there are); the uppermost ones of `before` move in.
    template<std::size_t BY>
    static Floats MoveUp(Floats before, Floats x) noexcept {
        const Floats seam = _mm256_permute2f128_ps(before, x, 0x21); // moved up by 4
        if constexpr (BY == 4) return seam;
        if constexpr (BY == 2) return _mm256_shuffle_ps(seam, x, _MM_SHUFFLE(1, 0, 3, 2));
        const Floats ends = _mm256_shuffle_ps(seam, x, _MM_SHUFFLE(0, 0, 3, 3));
        return _mm256_shuffle_ps(ends, x, _MM_SHUFFLE(2, 1, 2, 0));
    }
};

#else

struct SLanes {
    using Floats = __m128;
    using Doubles = __m128d;
    static constexpr std::size_t FloatCount = 4;
    static constexpr std::size_t DoubleCount = 2;

    static Floats Load(const float* from) noexcept { return _mm_loadu_ps(from); }
    static Doubles Load(const double* from) noexcept { return _mm_loadu_pd(from); }
    static void Store(float* to, Floats x) noexcept { _mm_storeu_ps(to, x); }
    static void Store(double* to, Doubles x) noexcept { _mm_storeu_pd(to, x); }
    static Floats Same(float x) noexcept { return _mm_set1_ps(x); }
    static Doubles Same(double x) noexcept { return _mm_set1_pd(x); }
    static Doubles Add(Doubles a, Doubles b) noexcept { return _mm_add_pd(a, b); }
    static Doubles Subtract(Doubles a, Doubles b) noexcept { return _mm_sub_pd(a, b); }
    static Doubles Xor(Doubles a, Doubles b) noexcept { return _mm_xor_pd(a, b); }
    /// Lanes of `a` where `which` is negative, otherwise of `b`.
    static Doubles Choose(Doubles which, Doubles a, Doubles b) noexcept {
        const __m128d negative = _mm_cmplt_pd(which, _mm_setzero_pd());
        return _mm_or_pd(_mm_and_pd(negative, a), _mm_andnot_pd(negative, b));
    }
    /// All lanes of `x` moved down by one, with the first of `in` in the uppermost.
    static Doubles Turn(Doubles x, Doubles in) noexcept { return _mm_shuffle_pd(x, in, 1); }
    /// A sample in the first lane.
    static Doubles WidenFirst(const float* from) noexcept { return _mm_cvtps_pd(_mm_load_ss(from)); }
    /// The first lanes of two registers as samples, zero always positive.
    static __m128 NarrowFirst(const Doubles* two) noexcept {
        return _mm_cvtpd_ps(_mm_add_pd(_mm_unpacklo_pd(two[0], two[1]), _mm_setzero_pd()));
    }
    static Doubles Multiply(Doubles a, Doubles b) noexcept { return _mm_mul_pd(a, b); }
    static Doubles Divide(Doubles a, Doubles b) noexcept { return _mm_div_pd(a, b); }
    /// Returns the second argument if either is not a number.
    static Floats Max(Floats a, Floats b) noexcept { return _mm_max_ps(a, b); }
    static Doubles Min(Doubles a, Doubles b) noexcept { return _mm_min_pd(a, b); }
    static double Lowest(Doubles x) noexcept { return _mm_cvtsd_f64(_mm_min_sd(x, _mm_unpackhi_pd(x, x))); }
    /// The low lanes of DoubleCount values, one after another.
    static Doubles Join(const __m128d* x) noexcept { return _mm_unpacklo_pd(x[0], x[1]); }
    static Doubles Join(const double* x) noexcept { return _mm_set_pd(x[1], x[0]); }
    static Floats Magnitude(Floats x) noexcept { return _mm_andnot_ps(_mm_set1_ps(-0.0f), x); }
    static bool AnyAbove(Floats x, Floats limit) noexcept {
        return _mm_movemask_ps(_mm_cmpgt_ps(x, limit)) != 0;
    }
    static Doubles Widen(const float* from) noexcept {
        return _mm_set_pd(static_cast<double>(from[1]), static_cast<double>(from[0]));
    }
    static Doubles WidenLow(Floats x) noexcept { return _mm_cvtps_pd(x); }
    static Doubles WidenHigh(Floats x) noexcept { return _mm_cvtps_pd(_mm_movehl_ps(x, x)); }
    static Floats Narrow(Doubles low, Doubles high) noexcept {
        return _mm_movelh_ps(_mm_cvtpd_ps(low), _mm_cvtpd_ps(high));
    }
    /// `x` moved up by BY lanes (fewer than there are); the uppermost ones of `before` move in.
    template<std::size_t BY>
    static Floats MoveUp(Floats before, Floats x) noexcept {
        if constexpr (BY == 2) return _mm_shuffle_ps(before, x, _MM_SHUFFLE(1, 0, 3, 2));
        const Floats ends = _mm_shuffle_ps(before, x, _MM_SHUFFLE(0, 0, 3, 3));
        return _mm_shuffle_ps(ends, x, _MM_SHUFFLE(2, 1, 2, 0));
    }
};

#endif

} // namespace
} // namespace KAV::DSP

#endif
