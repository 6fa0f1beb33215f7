#include "artwork/scales.h"

#include <gtest/gtest.h>

using namespace KAV::Artwork;

TEST(MeterValue, FollowsTheFivePoints) {
    EXPECT_DOUBLE_EQ(MeterValue(-60), 0);
    EXPECT_DOUBLE_EQ(MeterValue(-48), 0);
    EXPECT_DOUBLE_EQ(MeterValue(-36), 0.125);
    EXPECT_DOUBLE_EQ(MeterValue(-24), 0.25);
    EXPECT_DOUBLE_EQ(MeterValue(-12), 0.5);
    EXPECT_DOUBLE_EQ(MeterValue(-6), 0.75);
    EXPECT_DOUBLE_EQ(MeterValue(-3), 0.875);
    EXPECT_DOUBLE_EQ(MeterValue(0), 1);
    EXPECT_DOUBLE_EQ(MeterValue(6), 1);
}

TEST(ReleaseTicks, StandWhereTheLawPutsTheirNumbers) {
    for (const auto& tick : ReleaseTicks) {
        if (!*tick.text) continue;
        EXPECT_NEAR(tick.value, ReleaseValue(std::stod(tick.text)), 1e-12) << tick.text;
    }
}

TEST(FaderTicks, StandWhereTheirRangePutsThem) {
    for (const auto& tick : InputGainTicks) {
        if (!*tick.text) continue;
        EXPECT_NEAR(tick.value, (std::stod(tick.text) + 20) / 20, 1e-12) << tick.text;
    }
    for (const auto& tick : ThirtyDbTicks) {
        if (!*tick.text) continue;
        EXPECT_NEAR(tick.value, (std::stod(tick.text) + 30) / 30, 1e-12) << tick.text;
    }
    for (const auto& tick : MainGainTicks) {
        if (!*tick.text) continue;
        EXPECT_NEAR(tick.value, (std::stod(tick.text) + 24) / 48, 1e-12) << tick.text;
    }
}

TEST(ReductionHeight, IsLinearInGain) {
    EXPECT_DOUBLE_EQ(ReductionHeight(0), 0);
    EXPECT_NEAR(ReductionHeight(6.0206), 0.5, 1e-6);
    EXPECT_NEAR(ReductionHeight(20), 0.9, 1e-12);
}

TEST(ValueOf, IsAValueThatTheFrameStandsFor) {
    for (int frame = 0; frame < ValueFrames; ++frame) {
        EXPECT_EQ(FrameOf(ValueOf(frame, FaderAnchors)), frame);
        EXPECT_EQ(FrameOf(ValueOf(frame, KnobAnchors)), frame);
    }
}

TEST(ValueOf, IsExactWhereAScaleHasANumber) {
    const auto numbers = [](std::span<const STick> ticks, std::span<const double> anchors) {
        for (const auto& tick : ticks) {
            if (!*tick.text) continue;
            EXPECT_NEAR(ValueOf(FrameOf(tick.value), anchors), tick.value, 1e-12) << tick.text;
        }
    };
    numbers(InputGainTicks, FaderAnchors);
    numbers(ThirtyDbTicks, FaderAnchors);
    numbers(ReleaseTicks, FaderAnchors);
    numbers(MainGainTicks, KnobAnchors);
}

TEST(ValueOf, RisesWithTheFrame) {
    for (int frame = 1; frame < ValueFrames; ++frame) {
        EXPECT_GT(ValueOf(frame, FaderAnchors), ValueOf(frame - 1, FaderAnchors));
        EXPECT_GT(ValueOf(frame, KnobAnchors), ValueOf(frame - 1, KnobAnchors));
    }
}

TEST(FrameOf, ReachesBothEnds) {
    EXPECT_EQ(FrameOf(0), 0);
    EXPECT_EQ(FrameOf(0.5), 31);
    EXPECT_EQ(FrameOf(1), 62);
    EXPECT_EQ(FrameOf(1, 16), 15);
}
