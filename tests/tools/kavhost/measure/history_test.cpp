#include "tools/kavhost/measure/history.h"

#include <cmath>
#include <gtest/gtest.h>
#include <limits>

using namespace KAV::Host;

namespace {

constexpr double NotANumber = std::numeric_limits<double>::quiet_NaN();

} // namespace

TEST(History, HasTheExtremesOfAllChannelsWithoutWhatIsNoNumber) {
    CSignalHistory history(2);
    history.AddSamples(std::vector<float>{0.5f, -0.25f, std::nanf(""), 0.125f, std::nanf(""), -INFINITY});
    ASSERT_EQ(history.Amplitude().Bins().size(), 3u);
    EXPECT_EQ(history.Amplitude().Bins()[0], (SSpan{-0.25, 0.5}));
    EXPECT_EQ(history.Amplitude().Bins()[1], (SSpan{0.125, 0.125}));
    EXPECT_TRUE(history.Amplitude().Bins()[2].IsEmpty());
}

TEST(History, HasShortTermLoudnessFromTheFirstWholeThreeSecondsOn) {
    CSignalHistory history(1);
    for (int i = 0; i < 29; ++i) history.AddTenth(-20);
    for (const auto& bin : history.ShortTerm().Bins()) EXPECT_TRUE(bin.IsEmpty());
    history.AddTenth(-20);
    EXPECT_NEAR(history.ShortTerm().Bins()[29].highest, -20, 1e-9);
    // The mean of 29 tenths with a power of 10^-2 and one of 10^-1.
    history.AddTenth(-10);
    EXPECT_NEAR(history.ShortTerm().Bins()[30].highest, 10 * std::log10((29 * 0.01 + 0.1) / 30), 1e-9);
}

TEST(History, ForgetsSoundThreeSecondsLater) {
    CSignalHistory history(1);
    for (int i = 0; i < 30; ++i) history.AddTenth(-5);
    for (int i = 0; i < 29; ++i) history.AddTenth(-HUGE_VAL);
    EXPECT_NEAR(history.ShortTerm().Bins()[58].highest, -5 - 10 * std::log10(30), 1e-9);
    history.AddTenth(-HUGE_VAL);
    EXPECT_EQ(history.ShortTerm().Bins()[59], (SSpan{-HUGE_VAL, -HUGE_VAL}));
}

TEST(History, TellsReductionAgainstEachChannelsGainAtRest) {
    SHistory history(2, std::vector<double>{12, 6});
    history.AddGains(std::vector<double>{9, 6});
    history.AddGains(std::vector<double>{NotANumber, 2});
    history.AddGains(std::vector<double>{NotANumber, NotANumber});
    EXPECT_EQ(history.gain.Bins()[0], (SSpan{6, 9}));
    EXPECT_EQ(history.reduction.Bins()[0], (SSpan{-3, 0}));
    EXPECT_EQ(history.reduction.Bins()[1], (SSpan{-4, -4}));
    EXPECT_TRUE(history.reduction.Bins()[2].IsEmpty());
}
