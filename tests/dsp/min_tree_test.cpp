#include "dsp/min_tree.h"

#include <algorithm>
#include <cstdint>
#include <deque>
#include <gtest/gtest.h>

using KAV::DSP::MinTree;

TEST(MinTree, ForgetsAValueExactlyLengthPushesLater) {
    MinTree minimum;
    minimum.Reset(64);
    EXPECT_EQ(minimum.Push(0.25), 0.25);
    for (int i = 1; i < 64; ++i) EXPECT_EQ(minimum.Push(1.0), 0.25);
    EXPECT_EQ(minimum.Push(1.0), 1.0);
}

TEST(MinTree, EqualsASearchForEveryLength) {
    for (const std::size_t length :
        {1u, 2u, 7u, 8u, 9u, 63u, 64u, 65u, 128u, 512u, 513u, 576u, 1088u, 2176u, 4096u, 4097u}) {
        MinTree minimum;
        minimum.Reset(length);
        std::deque<double> window(length, 1.0);
        std::uint32_t noise = static_cast<std::uint32_t>(length);
        for (std::size_t i = 0; i < 3 * length + 50; ++i) {
            noise = noise * 1664525u + 1013904223u;
            const double value = (noise >> 28) == 0 ? static_cast<double>(noise >> 8) / 16777216.0 : 1.0;
            window.pop_front();
            window.push_back(value);
            ASSERT_EQ(minimum.Push(value), *std::min_element(window.begin(), window.end()))
                << length << " at " << i;
        }
    }
}

TEST(MinTree, ResetFillsTheWindowWithOnes) {
    MinTree minimum;
    minimum.Reset(576);
    minimum.Push(0.0);
    minimum.Reset(64);
    for (int i = 0; i < 200; ++i) ASSERT_EQ(minimum.Push(1.5), i < 63 ? 1.0 : 1.5);
}
