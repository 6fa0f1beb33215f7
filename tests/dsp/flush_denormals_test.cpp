#include "dsp/flush_denormals.h"

#include <gtest/gtest.h>
#include <limits>

using KAV::DSP::CFlushDenormals;

namespace {

float Half(float x) {
    volatile float kept = x; // so that the product is computed at run time
    return kept * 0.5f;
}

} // namespace

TEST(FlushDenormals, FlushesResultsAndOperandsAndRestoresTheHostsChoice) {
    const float tiny = std::numeric_limits<float>::min(); // half of it is a denormal
    ASSERT_NE(Half(tiny), 0.0f);
    {
        const CFlushDenormals flushing;
        EXPECT_EQ(Half(tiny), 0.0f);
        volatile float denormal = std::numeric_limits<float>::denorm_min();
        EXPECT_EQ(denormal * 1e30f, 0.0f);
    }
    EXPECT_NE(Half(tiny), 0.0f);
}

TEST(FlushDenormals, LeavesTheSettingOfAHostThatFlushesItself) {
    const CFlushDenormals host;
    { const CFlushDenormals engine; }
    EXPECT_EQ(Half(std::numeric_limits<float>::min()), 0.0f);
}

#if defined(__SSE2__)
TEST(FlushDenormals, LeavesTheOtherBitsOfTheControlWordAlone) {
    const unsigned before = _mm_getcsr();
    _mm_setcsr(before | 0x2000); // round down
    {
        const CFlushDenormals flushing;
        _mm_setcsr(_mm_getcsr() | 0x1); // a sticky flag raised meanwhile
    }
    EXPECT_EQ(_mm_getcsr(), before | 0x2000 | 0x1);
    _mm_setcsr(before);
}
#endif
