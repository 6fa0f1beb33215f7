#include "dsp/delay_line.h"

#include <gtest/gtest.h>

using KAV::DSP::DelayLine;

TEST(DelayLine, GivesBackEachSampleExactlyItsSizeLater) {
    DelayLine delay;
    delay.Reset(5);
    for (int i = 1; i <= 5; ++i) EXPECT_EQ(delay.Exchange(i), 0.0);
    for (int i = 1; i <= 20; ++i) EXPECT_EQ(delay.Exchange(i + 5), static_cast<double>(i));
}

TEST(DelayLine, ResetEmptiesItAlsoWhenItShrinks) {
    DelayLine delay;
    delay.Reset(8);
    for (int i = 0; i < 8; ++i) delay.Exchange(1.0);
    delay.Reset(3);
    for (int i = 0; i < 3; ++i) EXPECT_EQ(delay.Exchange(2.0), 0.0);
    EXPECT_EQ(delay.Exchange(3.0), 2.0);
}

TEST(DelayLine, ReserveKeepsWhatIsHeld) {
    DelayLine delay;
    delay.Reset(3);
    for (int i = 1; i <= 3; ++i) delay.Exchange(i);
    delay.Reserve(1000);
    for (int i = 1; i <= 3; ++i) EXPECT_EQ(delay.Exchange(0.0), static_cast<double>(i));
}
