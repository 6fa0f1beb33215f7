#include "dsp/smoother.h"

#include <cmath>
#include <gtest/gtest.h>
#include <limits>

using KAV::DSP::Smoother;

TEST(Smoother, CoversNinetyNinePercentWithinItsTime) {
    const Smoother smoother(100.0f, 250.0f, 1000.0f);
    float up = 0.0f;
    float down = 100.0f;
    for (int step = 0; step < 100; ++step) up = smoother.Step(up, 100.0f);
    EXPECT_NEAR(up, 99.0f, 0.01f);
    for (int step = 0; step < 250; ++step) down = smoother.Step(down, 0.0f);
    EXPECT_NEAR(down, 1.0f, 0.01f);
}

TEST(Smoother, ArrivesOnceTheDistanceIsAHundredth) {
    const Smoother smoother(100.0f, 100.0f, 1000.0f);
    EXPECT_EQ(smoother.Step(0.5f, 0.5099f), 0.5099f);
    EXPECT_EQ(smoother.Step(0.5f, 0.4901f), 0.4901f);
    EXPECT_LT(smoother.Step(0.5f, 0.52f), 0.52f);
}

TEST(Smoother, TimeOfZeroJumps) {
    const Smoother smoother(0.0f, 500.0f, 100.0f);
    EXPECT_EQ(smoother.Step(0.0f, 1.0f), 1.0f);
    EXPECT_GT(smoother.Step(1.0f, 0.0f), 0.9f);
}

TEST(Smoother, TakesAnotherRateForBothHalves) {
    Smoother smoother(100.0f, 100.0f, 1000.0f);
    const float fine = smoother.Step(0.0f, 1.0f);
    smoother.SetRate(10.0f);
    EXPECT_GT(smoother.Step(0.0f, 1.0f), fine);
    EXPECT_LT(smoother.Step(1.0f, 0.0f), 1.0f - fine);
    smoother.SetRate(1000.0f);
    EXPECT_EQ(smoother.Step(0.0f, 1.0f), fine);
}

TEST(Smoother, StateAtTheTargetStays) {
    const Smoother smoother(100.0f, 100.0f, 1000.0f);
    EXPECT_EQ(smoother.Step(0.25f, 0.25f), 0.25f);
}
