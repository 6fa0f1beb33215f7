#include "dsp/meters.h"

#include <cmath>
#include <gtest/gtest.h>
#include <limits>

using namespace KAV::DSP;

namespace {

float PeakOfDb(double db) {
    return static_cast<float>(std::pow(10.0, db / 20.0));
}

} // namespace

TEST(SevenPointScale, GivesEachSegmentASeventhAndJumpsAtItsLowestPoint) {
    EXPECT_EQ(SevenPointScale(0.0f), 0.0f);
    EXPECT_EQ(SevenPointScale(PeakOfDb(-192.5)), 0.0f);
    EXPECT_NEAR(SevenPointScale(PeakOfDb(-191.9)), 1.0 / 7.0, 1e-3);
    const std::array points{-192.0, -96.0, -48.0, -24.0, -12.0, -6.0, 0.0};
    for (std::size_t i = 0; i + 1 < points.size(); ++i) {
        const double above = static_cast<double>(i + 1) / 7.0;
        EXPECT_NEAR(SevenPointScale(PeakOfDb(points[i + 1])), above + 1.0 / 7.0, 1e-5) << points[i + 1];
        EXPECT_NEAR(SevenPointScale(PeakOfDb((points[i] + points[i + 1]) / 2)), above + 0.5 / 7.0, 1e-5);
    }
    EXPECT_EQ(SevenPointScale(1.0f), 1.0f);
    EXPECT_EQ(SevenPointScale(std::numeric_limits<float>::infinity()), 1.0f);
}

TEST(FivePointScale, GivesEachSegmentAQuarterFromItsLowestPointOn) {
    EXPECT_EQ(FivePointScale(0.0f), 0.0f);
    EXPECT_NEAR(FivePointScale(PeakOfDb(-47.9)), 0.0, 2e-3);
    const std::array points{-48.0, -24.0, -12.0, -6.0, 0.0};
    for (std::size_t i = 0; i + 1 < points.size(); ++i) {
        const double below = static_cast<double>(i) / 4.0;
        EXPECT_NEAR(FivePointScale(PeakOfDb(points[i + 1])), below + 0.25, 1e-5) << points[i + 1];
        EXPECT_NEAR(FivePointScale(PeakOfDb((points[i] + points[i + 1]) / 2)), below + 0.125, 1e-5);
    }
    EXPECT_EQ(FivePointScale(2.0f), 1.0f);
}

TEST(Meters, RiseAtOnceAndFallByNinetyNinePercentInTheirTime) {
    for (const int blocksPerSecond : {50, 200}) {
        CMeters meters;
        meters.SetBlockRate(static_cast<float>(blocksPerSecond));
        meters.StepSource(3, 1.0f);
        meters.StepGroup(2, 1.0f);
        meters.StepEntry(5, 1.0f, 1.0f);
        EXPECT_EQ(meters.Source(3), 1.0f);
        EXPECT_EQ(meters.Group(2), 1.0f);
        EXPECT_EQ(meters.Input(5), 1.0f);
        EXPECT_EQ(meters.Output(5), 1.0f);
        EXPECT_EQ(meters.Source(4), 0.0f);
        // A quarter of the time leaves the fourth root of a hundredth.
        const float expected = std::pow(0.01f, 0.25f);
        for (int block = 0; block < blocksPerSecond / 8; ++block) {
            meters.StepSource(3, 0.0f);
            meters.StepGroup(2, 0.0f);
        }
        const float steps = static_cast<float>(blocksPerSecond / 8) / static_cast<float>(blocksPerSecond);
        EXPECT_NEAR(meters.Source(3), std::pow(0.01f, steps / 0.5f), 1e-4f);
        EXPECT_EQ(meters.Group(2), meters.Source(3));
        for (int block = 0; block < blocksPerSecond / 2; ++block) meters.StepEntry(5, 0.0f, 0.0f);
        EXPECT_NEAR(meters.Input(5), expected, 1e-4f);
        EXPECT_EQ(meters.Output(5), meters.Input(5));
        for (int block = 0; block < 2 * blocksPerSecond; ++block) meters.StepEntry(5, 0.0f, 0.0f);
        EXPECT_EQ(meters.Input(5), 0.0f) << "the last hundredth goes in one step";
    }
}
