#include "tools/kavhost/plot/plot_axis.h"

#include "tools/kavhost/plot/plot.h"

#include <cmath>
#include <gtest/gtest.h>

using namespace KAV::Host;

namespace {

SPlotSeries Series(const std::vector<double>& values) {
    SPlotSeries series{1, {}};
    for (const double value : values) series.bins.push_back({value, value});
    return series;
}

} // namespace

TEST(TimeText, IsThatOfAClock) {
    EXPECT_EQ(TimeText(0, 30), "0:00");
    EXPECT_EQ(TimeText(270, 30), "4:30");
    EXPECT_EQ(TimeText(3599.9999, 60), "1:00:00");
    EXPECT_EQ(TimeText(3725, 60), "1:02:05");
    EXPECT_EQ(TimeText(0.1, 0.02), "0:00.10");
    EXPECT_EQ(TimeText(59.9999, 0.5), "1:00.0");
}

TEST(TimeAxis, HasAFewTicksAtRoundTimesWhateverTheLength) {
    for (const double seconds : {1e-5, 0.2, 1.0, 7.0, 59.0, 290.6, 3600.0, 36000.0, 400000.0}) {
        const auto axis = TimeAxis(seconds);
        EXPECT_EQ(axis.from, 0);
        EXPECT_EQ(axis.to, seconds);
        EXPECT_GE(axis.ticks.size(), 5u) << seconds;
        EXPECT_LE(axis.ticks.size(), 15u) << seconds;
        EXPECT_LE(axis.ticks.back(), seconds * (1 + 1e-6));
    }
    EXPECT_EQ(TimeAxis(290.6).ticks[1], 30);
    EXPECT_GT(TimeAxis(0).to, 0); // otherwise nothing could be placed on it
}

TEST(AmplitudeAxis, IsSymmetricAndHoldsTheSound) {
    for (const double most : {0.0, 1e-6, 0.3, 1.0, 1.19, 1.6, 37.0}) {
        SPlot plot;
        plot.after.amplitude = Series({-most, most / 2});
        const auto axis = AmplitudeAxis(plot);
        EXPECT_EQ(axis.from, -axis.to);
        EXPECT_GT(axis.to, most);
        EXPECT_LE(axis.to, std::max(0.011, 2 * most + (most == 0 ? 2 : 0))) << most;
        EXPECT_GE(axis.ticks.size(), 3u);
        EXPECT_LE(axis.ticks.size(), 7u);
    }
}

TEST(LevelAxis, GoesDownToWhereSoundIsAndNeverBelowSixty) {
    SPlot plot;
    plot.before.peak = Series(std::vector<double>(100, -3));
    EXPECT_EQ(LevelAxis(plot).from, -18);
    EXPECT_EQ(LevelAxis(plot).to, 1);
    plot.after.shortTerm = Series(std::vector<double>(100, -30));
    EXPECT_EQ(LevelAxis(plot).from, -36); // 3 dB of room, then the next multiple of 6
    plot.after.shortTerm = Series(std::vector<double>(100, -HUGE_VAL));
    plot.before.peak = Series({-59, -58});
    EXPECT_EQ(LevelAxis(plot).from, -60);
}

TEST(LevelAxis, HoldsPeaksAboveFullScaleUnlessTheyAreAbsurd) {
    SPlot plot;
    plot.before.peak = Series({4});
    EXPECT_EQ(LevelAxis(plot).to, 7);
    plot.before.peak = Series({770}); // the largest float
    EXPECT_EQ(LevelAxis(plot).to, 61);
    EXPECT_LE(LevelAxis(plot).ticks.size(), 8u);
}

TEST(ReductionAxis, HasZeroAtItsTopAndRoomForTheMost) {
    SPlot plot;
    EXPECT_EQ(ReductionAxis(plot).to, 0);
    EXPECT_EQ(ReductionAxis(plot).from, -6);
    plot.reduction = Series({-12.6, 0.1});
    EXPECT_EQ(ReductionAxis(plot).to, 0);
    EXPECT_EQ(ReductionAxis(plot).from, -15);
    plot.reduction = Series({-HUGE_VAL, 2});
    EXPECT_EQ(ReductionAxis(plot).to, 3);
    EXPECT_EQ(ReductionAxis(plot).from, -48);
}
