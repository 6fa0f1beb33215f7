#include "dsp/mid_side.h"

#include <array>
#include <gtest/gtest.h>

using namespace KAV::DSP;

TEST(MidSide, ModeFollowsTheTwoTogglesAndSolo) {
    for (const bool solo : {false, true}) {
        EXPECT_EQ(MidSideMode(false, false, solo), EMidSide::Off);
        EXPECT_EQ(MidSideMode(true, true, solo), EMidSide::Both);
        EXPECT_EQ(MidSideMode(true, false, solo), solo ? EMidSide::MidSolo : EMidSide::Mid);
        EXPECT_EQ(MidSideMode(false, true, solo), solo ? EMidSide::SideSolo : EMidSide::Side);
    }
    EXPECT_EQ(static_cast<int>(EMidSide::MidSolo), 4);
    EXPECT_EQ(static_cast<int>(EMidSide::SideSolo), 8);
}

TEST(MidSide, DecodingGivesBackWhatWasEncodedOrMakesBothChannelsOfTheSoloedHalf) {
    constexpr std::array<float, 2> Left{0.75f, -0.5f};
    constexpr std::array<float, 2> Right{0.25f, 1.0f};
    for (const auto mode :
        {EMidSide::Mid, EMidSide::Side, EMidSide::Both, EMidSide::MidSolo, EMidSide::SideSolo}) {
        auto left = Left;
        auto right = Right;
        EncodeMidSide(left, right.data());
        EXPECT_EQ(left, (std::array{0.5f, 0.25f}));
        EXPECT_EQ(right, (std::array{0.25f, -0.75f}));
        DecodeMidSide(mode, left, right.data());
        if (mode == EMidSide::MidSolo) {
            EXPECT_EQ(left, (std::array{0.5f, 0.25f}));
            EXPECT_EQ(right, left);
        } else if (mode == EMidSide::SideSolo) {
            EXPECT_EQ(left, (std::array{0.25f, -0.75f}));
            EXPECT_EQ(right, (std::array{-0.25f, 0.75f}));
        } else {
            EXPECT_EQ(left, Left);
            EXPECT_EQ(right, Right);
        }
    }
}
