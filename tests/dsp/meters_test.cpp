#include "dsp/meters.h"

#include <cmath>
#include <gtest/gtest.h>

using namespace KAV::DSP;

namespace {

std::uint32_t Bit(std::size_t entry) {
    return std::uint32_t{1} << entry;
}

CMeters::Peaks All(float peak) {
    CMeters::Peaks peaks;
    peaks.fill(peak);
    return peaks;
}

} // namespace

TEST(Meters, RiseAtOnceAndFallByNinetyNinePercentInTheirTime) {
    for (const int blocksPerSecond : {50, 200}) {
        CMeters meters;
        meters.SetBlockRate(static_cast<float>(blocksPerSecond));
        meters.StepSources(Bit(3), All(1.0f));
        meters.StepGroup(2, 1.0f);
        meters.StepEntries(Bit(5), All(1.0f), All(1.0f));
        EXPECT_EQ(meters.Source(3), 1.0f);
        EXPECT_EQ(meters.Group(2), 1.0f);
        EXPECT_EQ(meters.Input(5), 1.0f);
        EXPECT_EQ(meters.Output(5), 1.0f);
        EXPECT_EQ(meters.Source(4), 0.0f);
        // A quarter of the time leaves the fourth root of a hundredth.
        const float expected = std::pow(0.01f, 0.25f);
        for (int block = 0; block < blocksPerSecond / 8; ++block) {
            meters.StepSources(Bit(3), All(0.0f));
            meters.StepGroup(2, 0.0f);
        }
        const float steps = static_cast<float>(blocksPerSecond / 8) / static_cast<float>(blocksPerSecond);
        EXPECT_NEAR(meters.Source(3), std::pow(0.01f, steps / 0.5f), 1e-4f);
        EXPECT_EQ(meters.Group(2), meters.Source(3));
        for (int block = 0; block < blocksPerSecond / 2; ++block) meters.StepEntries(0, All(1.0f), All(1.0f));
        EXPECT_NEAR(meters.Input(5), expected, 1e-4f);
        EXPECT_EQ(meters.Output(5), meters.Input(5));
        for (int block = 0; block < 2 * blocksPerSecond; ++block) meters.StepEntries(0, All(1.0f), All(1.0f));
        EXPECT_EQ(meters.Input(5), 0.0f) << "the last hundredth is covered in one step";
    }
}

TEST(Meters, OfEntriesWithoutAPeakFallWhateverTheArrayHolds) {
    CMeters meters;
    meters.SetBlockRate(100.0f);
    meters.StepSources(Bit(0) | Bit(15), All(1.0f));
    EXPECT_EQ(meters.Source(0), 1.0f);
    EXPECT_EQ(meters.Source(15), 1.0f);
    for (std::size_t entry = 1; entry < 15; ++entry) EXPECT_EQ(meters.Source(entry), 0.0f);
    meters.StepSources(Bit(0), All(1.0f));
    EXPECT_EQ(meters.Source(0), 1.0f);
    EXPECT_LT(meters.Source(15), 1.0f);
    for (int block = 0; block < 1000; ++block) meters.StepSources(0, All(1.0f));
    EXPECT_EQ(meters.Source(0), 0.0f);
    meters.StepSources(Bit(0), All(0.5f));
    EXPECT_GT(meters.Source(0), 0.0f) << "a meter at rest starts again";
}
