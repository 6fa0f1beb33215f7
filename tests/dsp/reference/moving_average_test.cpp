#include "tests/dsp/reference/limiter.h"

#include <gtest/gtest.h>

namespace KAV::Reference {

TEST(ReferenceMovingAverage, TakesAStepInEqualParts) {
    CMovingAverage average;
    average.SetLength(4);
    EXPECT_EQ(average.Push(1.0), 1.0);
    EXPECT_EQ(average.Push(0.0), 0.75);
    EXPECT_EQ(average.Push(0.0), 0.5);
    EXPECT_EQ(average.Push(0.0), 0.25);
    EXPECT_EQ(average.Push(0.0), 0.0);
}

} // namespace KAV::Reference
