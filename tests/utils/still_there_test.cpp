#include "utils/still_there.h"

#include <gtest/gtest.h>
#include <optional>

using namespace KAV::Utils;

TEST(StillThere, SaysSoUntilTheEndOfTheObject) {
    std::optional<CLife> life(std::in_place);
    const auto watch = life->Watch();
    const auto copy = watch; // NOLINT(performance-unnecessary-copy-initialization): it counts as well
    EXPECT_TRUE(watch.IsThere());
    EXPECT_TRUE(copy.IsThere());
    life.reset();
    EXPECT_FALSE(watch.IsThere());
    EXPECT_FALSE(copy.IsThere());
}

TEST(StillThere, DistinguishesAnObjectFromTheNextInItsPlace) {
    std::optional<CLife> life(std::in_place);
    const auto first = life->Watch();
    life.emplace();
    EXPECT_FALSE(first.IsThere());
    EXPECT_TRUE(life->Watch().IsThere());
}
