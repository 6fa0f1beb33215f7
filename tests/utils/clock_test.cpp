#include "utils/clock.h"

#include "tests/support/hand_clock.h"

#include <gtest/gtest.h>

using namespace KAV;
using namespace KAV::Tests;

TEST(Clock, AWaitLetsAtLeastThatTimePass) {
    const auto begin = Utils::TickMs();
    Utils::WaitMs(30);
    EXPECT_GE(Utils::TickMs() - begin + 16, 30u) << "as far as the system's ticks tell";
}

TEST(Clock, AWaitMovesAReplacedClockInsteadOfSleeping) {
    const CHandClock clock(5);
    Utils::WaitMs(0xFFFFFFF0);
    EXPECT_EQ(Utils::TickMs(), 0xFFFFFFF5u);
    EXPECT_EQ(clock.Now(), 0xFFFFFFF5u);
}
