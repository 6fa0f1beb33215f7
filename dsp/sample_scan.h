#pragma once

#include "utils/realtime.h"

#include <cmath>
#include <cstddef>
#include <span>

#if defined(__SSE2__)
#include <immintrin.h>
#endif

namespace KAV::DSP {

/// The highest magnitude of a channel, and of `peak`; not-a-number is ignored. Takes four samples at a time
/// on processors where that is always available: a maximum is the same in any order.
KAV_REALTIME inline float PeakOf(std::span<const float> channel, float peak) noexcept {
    std::size_t i = 0;
#if defined(__SSE2__)
    const __m128 sign = _mm_set1_ps(-0.0f);
    __m128 first = _mm_set1_ps(peak);
    __m128 second = first;
    const auto higher = [&](std::size_t place,
                            __m128 highest) { // keeps `highest` if a sample is not a number
        return _mm_max_ps(_mm_andnot_ps(sign, _mm_loadu_ps(channel.data() + place)), highest);
    };
    for (; i + 16 <= channel.size(); i += 16) {
        first = higher(i + 8, higher(i, first));
        second = higher(i + 12, higher(i + 4, second));
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

/// How many samples at the end of a channel are smaller than `limit`; not-a-number isn't. Returns at once if
/// the last sample isn't smaller.
KAV_REALTIME inline std::size_t QuietEnd(std::span<const float> channel, float limit) noexcept {
    std::size_t end = channel.size();
#if defined(__SSE2__)
    const __m128 sign = _mm_set1_ps(-0.0f);
    const __m128 limits = _mm_set1_ps(limit);
    const auto areQuiet = [&](const float* four) {
        return _mm_cmplt_ps(_mm_andnot_ps(sign, _mm_loadu_ps(four)), limits);
    };
    while (end >= 8) {
        const float* eight = channel.data() + end - 8;
        if (_mm_movemask_ps(_mm_and_ps(areQuiet(eight), areQuiet(eight + 4))) != 15) break;
        end -= 8;
    }
#endif
    while (end > 0 && std::fabs(channel[end - 1]) < limit) --end;
    return channel.size() - end;
}

} // namespace KAV::DSP
