#include "tools/kavhost/measure/timeline.h"

#include <cmath>
#include <gtest/gtest.h>
#include <limits>

using namespace KAV::Host;

namespace {

constexpr double NotANumber = std::numeric_limits<double>::quiet_NaN();

} // namespace

TEST(Timeline, HasTheExtremesOfAllChannelsWithoutWhatIsNoNumber) {
    CSignalTimeline timeline(2);
    timeline.AddSamples(std::vector<float>{0.5f, -0.25f, std::nanf(""), 0.125f, std::nanf(""), -INFINITY});
    ASSERT_EQ(timeline.Amplitude().Bins().size(), 3u);
    EXPECT_EQ(timeline.Amplitude().Bins()[0], (SSpan{-0.25, 0.5}));
    EXPECT_EQ(timeline.Amplitude().Bins()[1], (SSpan{0.125, 0.125}));
    EXPECT_TRUE(timeline.Amplitude().Bins()[2].IsEmpty());
}

TEST(Timeline, HasShortTermLoudnessFromTheFirstWholeThreeSecondsOn) {
    CSignalTimeline timeline(1);
    for (int i = 0; i < 29; ++i) timeline.AddTenth(-20);
    for (const auto& bin : timeline.ShortTerm().Bins()) EXPECT_TRUE(bin.IsEmpty());
    timeline.AddTenth(-20);
    EXPECT_NEAR(timeline.ShortTerm().Bins()[29].highest, -20, 1e-9);
    // The mean of 29 tenths with a power of 10^-2 and one of 10^-1.
    timeline.AddTenth(-10);
    EXPECT_NEAR(timeline.ShortTerm().Bins()[30].highest, 10 * std::log10((29 * 0.01 + 0.1) / 30), 1e-9);
}

TEST(Timeline, ForgetsSoundThreeSecondsLater) {
    CSignalTimeline timeline(1);
    for (int i = 0; i < 30; ++i) timeline.AddTenth(-5);
    for (int i = 0; i < 29; ++i) timeline.AddTenth(-HUGE_VAL);
    EXPECT_NEAR(timeline.ShortTerm().Bins()[58].highest, -5 - 10 * std::log10(30), 1e-9);
    timeline.AddTenth(-HUGE_VAL);
    EXPECT_EQ(timeline.ShortTerm().Bins()[59], (SSpan{-HUGE_VAL, -HUGE_VAL}));
}

TEST(Timeline, MeasuresReductionAgainstEachChannelsIdleGain) {
    STimeline timeline(2, std::vector<double>{12, 6});
    timeline.AddGains(std::vector<double>{9, 6});
    timeline.AddGains(std::vector<double>{NotANumber, 2});
    timeline.AddGains(std::vector<double>{NotANumber, NotANumber});
    EXPECT_EQ(timeline.gain.Bins()[0], (SSpan{6, 9}));
    EXPECT_EQ(timeline.reduction.Bins()[0], (SSpan{-3, 0}));
    EXPECT_EQ(timeline.reduction.Bins()[1], (SSpan{-4, -4}));
    EXPECT_TRUE(timeline.reduction.Bins()[2].IsEmpty());
}
