#include "gfx/cpu/areas.h"

#include <gtest/gtest.h>
#include <random>
#include <vector>

using namespace KAV::GFX::CPU;

TEST(Areas, CommonIsWhatBothCover) {
    EXPECT_EQ(Common({0, 0, 10, 10}, {5, 7, 10, 10}), (SArea{5, 7, 5, 3}));
    EXPECT_EQ(Common({0, 0, 10, 10}, {2, 3, 4, 5}), (SArea{2, 3, 4, 5}));
    EXPECT_TRUE(IsEmpty(Common({0, 0, 10, 10}, {10, 0, 5, 5})));
    EXPECT_TRUE(IsEmpty(Common({0, 0, 10, 10}, {0, 10, 5, 5})));
    EXPECT_TRUE(IsEmpty(Common({0, 0, 0, 10}, {0, 0, 5, 5})));
}

TEST(Areas, AroundCoversBoth) {
    EXPECT_EQ(Around({0, 0, 10, 10}, {25, 7, 5, 10}), (SArea{0, 0, 30, 17}));
}

TEST(Areas, KeepFarOnesApartAndJoinNearOnes) {
    CAreas areas;
    EXPECT_TRUE(areas.IsEmpty());
    areas.Add({0, 0, 10, 10});
    areas.Add({500, 500, 10, 10});
    areas.Add({3, 3, 0, 5});
    EXPECT_EQ(areas.All().size(), 2u);
    areas.Add({11, 0, 10, 10});
    EXPECT_EQ(areas.All().size(), 2u);
    areas.Clear();
    EXPECT_TRUE(areas.IsEmpty());
}

TEST(Areas, CoverAllThatWasAddedAndNothingTwice) {
    std::mt19937 random(7);
    const auto below = [&](std::uint32_t limit) { return static_cast<std::int32_t>(random() % limit); };
    for (int round = 0; round < 50; ++round) {
        CAreas areas;
        std::vector<int> added(300 * 300);
        for (int n = 0; n < 4 * round; ++n) {
            const SArea area{below(290), below(290), below(10), below(10)};
            areas.Add(area);
            for (int y = area.top; y < area.top + area.height; ++y) {
                for (int x = area.left; x < area.left + area.width; ++x)
                    added[static_cast<std::size_t>(y * 300 + x)] = 1;
            }
        }
        std::vector<int> covered(added.size());
        for (const auto& area : areas.All()) {
            for (int y = area.top; y < area.top + area.height; ++y) {
                for (int x = area.left; x < area.left + area.width; ++x)
                    ++covered[static_cast<std::size_t>(y * 300 + x)];
            }
        }
        for (std::size_t n = 0; n < added.size(); ++n) {
            ASSERT_GE(covered[n], added[n]);
            ASSERT_LE(covered[n], 1);
        }
    }
}
