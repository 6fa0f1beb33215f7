#include "tools/kavhost/play/time_text.h"

#include <gtest/gtest.h>
#include <limits>

using namespace KAV::Host;

TEST(TimeText, HasMinutesAndTwoDigitsOfSeconds) {
    EXPECT_EQ(TimeText(0), "0:00");
    EXPECT_EQ(TimeText(12), "0:12");
    EXPECT_EQ(TimeText(225), "3:45");
    EXPECT_EQ(TimeText(59 * 60 + 59), "59:59");
}

TEST(TimeText, HasHoursIfThereAreAny) {
    EXPECT_EQ(TimeText(3600), "1:00:00");
    EXPECT_EQ(TimeText(3723), "1:02:03");
    EXPECT_EQ(TimeText(36000), "10:00:00");
}

TEST(TimeText, CutsPartsOfSeconds) {
    EXPECT_EQ(TimeText(59.999), "0:59");
}

TEST(TimeText, TakesWhatIsNoTime) {
    EXPECT_EQ(TimeText(-3), "0:00");
    EXPECT_NE(TimeText(std::numeric_limits<double>::infinity()), "");
}
