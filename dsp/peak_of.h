#pragma once

#include "utils/realtime.h"

#include <cmath>
#include <span>

#if defined(__SSE2__)
#include <immintrin.h>
#endif

namespace KAV::DSP {

/// The highest magnitude of a channel, and of `peak`; not-a-number is no peak. Four samples at a time where
/// every processor of the kind can: a maximum is the same in any order.
KAV_REALTIME inline float PeakOf(std::span<const float> channel, float peak) noexcept {
    std::size_t i = 0;
#if defined(__SSE2__)
    const __m128 sign = _mm_set1_ps(-0.0f);
    __m128 first = _mm_set1_ps(peak);
    __m128 second = first;
    for (; i + 8 <= channel.size(); i += 8) { // the second operand stays if either is not a number
        first = _mm_max_ps(_mm_andnot_ps(sign, _mm_loadu_ps(channel.data() + i)), first);
        second = _mm_max_ps(_mm_andnot_ps(sign, _mm_loadu_ps(channel.data() + i + 4)), second);
    }
    first = _mm_max_ps(first, second);
    first = _mm_max_ps(first, _mm_movehl_ps(first, first));
    peak = _mm_cvtss_f32(_mm_max_ss(first, _mm_shuffle_ps(first, first, 1)));
#endif
    for (; i < channel.size(); ++i) {
        const float magnitude = std::fabs(channel[i]);
        if (magnitude > peak) peak = magnitude;
    }
    return peak;
}

} // namespace KAV::DSP
