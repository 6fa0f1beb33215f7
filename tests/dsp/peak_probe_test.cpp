#include "dsp/peak_probe.h"

#include <array>
#include <cmath>
#include <gtest/gtest.h>

using KAV::DSP::PeakProbe;

TEST(PeakProbe, HoldsTheLargestMagnitudeOverAllBlocks) {
    PeakProbe probe;
    probe.Read(std::array{0.25f, -0.75f, 0.5f});
    EXPECT_EQ(probe.peak, 0.75f);
    probe.Read(std::array{0.125f, 0.5f});
    EXPECT_EQ(probe.peak, 0.75f);
    probe.Read(std::array{-1.5f});
    EXPECT_EQ(probe.peak, 1.5f);
}

TEST(PeakProbe, TakingItResetsIt) {
    PeakProbe probe;
    probe.Read(std::array{-0.5f});
    EXPECT_EQ(probe.Take(), 0.5f);
    EXPECT_EQ(probe.Take(), 0.0f);
    probe.Read(std::array{0.25f});
    EXPECT_EQ(probe.Take(), 0.25f);
}

TEST(PeakProbe, NotANumberIsNoPeak) {
    PeakProbe probe;
    probe.Read(std::array{0.25f, std::nanf(""), 0.125f});
    EXPECT_EQ(probe.peak, 0.25f);
}

TEST(PeakProbe, ReadsNothingWhenOff) {
    PeakProbe probe{.off = true};
    probe.Read(std::array{0.5f});
    EXPECT_EQ(probe.peak, 0.0f);
}
