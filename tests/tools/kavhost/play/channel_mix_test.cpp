#include "tools/kavhost/play/channel_mix.h"

#include <cmath>
#include <gtest/gtest.h>
#include <vector>

using namespace KAV::Host;

namespace {

const float Half = std::sqrt(0.5f); ///< half of the power

/// What a frame of a file becomes on a device of that many channels.
std::vector<float> Mixed(const std::vector<float>& frame, std::size_t to) {
    std::vector<float> mixed(to, -1.0f);
    CChannelMix(static_cast<int>(frame.size()), static_cast<int>(to)).Mix(frame, mixed);
    return mixed;
}

void ExpectFrame(const std::vector<float>& frame, const std::vector<float>& expected) {
    ASSERT_EQ(frame.size(), expected.size());
    for (std::size_t c = 0; c < frame.size(); ++c) EXPECT_FLOAT_EQ(frame[c], expected[c]) << c;
}

} // namespace

TEST(MixToStereo, PutsOddChannelsLeftAndEvenOnesRight) {
    const std::vector<float> frame{0.3f, 0.8f, 0.6f, 0.4f, 0.9f};
    std::vector<float> stereo(2);
    MixToStereo(frame, 5, stereo);
    EXPECT_FLOAT_EQ(stereo[0], (0.3f + 0.6f + 0.9f) / 3);
    EXPECT_FLOAT_EQ(stereo[1], (0.8f + 0.4f) / 2);
}

TEST(MixToStereo, StaysWithinFullScale) {
    const std::vector<float> frames(16 * 3, 1.0f);
    std::vector<float> stereo(2 * 3);
    MixToStereo(frames, 16, stereo);
    for (const float sample : stereo) EXPECT_FLOAT_EQ(sample, 1);
}

TEST(ChannelMix, LeavesEqualChannelsAsTheyAre) {
    for (std::size_t channels = 1; channels <= 16; ++channels) {
        std::vector<float> frame;
        for (std::size_t c = 0; c < channels; ++c) frame.push_back(0.05f * static_cast<float>(c + 1));
        ExpectFrame(Mixed(frame, channels), frame);
    }
}

TEST(ChannelMix, PlaysMonoFromLeftAndRight) {
    ExpectFrame(Mixed({0.5f}, 2), {0.5f, 0.5f});
    ExpectFrame(Mixed({0.5f}, 6), {0.5f, 0.5f, 0, 0, 0, 0});
}

TEST(ChannelMix, PlaysStereoFromTheFirstTwoOfManySpeakers) {
    ExpectFrame(Mixed({0.5f, 0.25f}, 6), {0.5f, 0.25f, 0, 0, 0, 0});
    ExpectFrame(Mixed({0.5f, 0.25f}, 12), {0.5f, 0.25f, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0});
    ExpectFrame(Mixed({0.5f, 0.25f}, 1), {(0.5f + 0.25f) / 2});
}

TEST(ChannelMix, FoldsSurroundIntoTwoWithoutLfe) {
    const float all = 1 + 2 * Half; // left, and its parts of centre and back
    ExpectFrame(Mixed({0.4f, 0.6f, 0.2f, 0.9f, 0.3f, 0.1f}, 2),
        {(0.4f + Half * 0.2f + Half * 0.3f) / all, (0.6f + Half * 0.2f + Half * 0.1f) / all});
}

TEST(ChannelMix, PutsTheSidesIntoTheBackAndTheBackAtTheBack) {
    ExpectFrame(Mixed({0.1f, 0.2f, 0.3f, 0.4f, 0.5f, 0.6f, 0.7f, 0.8f}, 6),
        {0.05f, 0.1f, 0.15f, 0.2f, (0.5f + 0.7f) / 2, (0.6f + 0.8f) / 2});
    ExpectFrame(Mixed({0.1f, 0.2f, 0.3f, 0.4f, 0.5f, 0.6f}, 8), {0.1f, 0.2f, 0.3f, 0.4f, 0.5f, 0.6f, 0, 0});
    ExpectFrame(Mixed({0.1f, 0.2f, 0.3f, 0.4f}, 8), {0.1f, 0.2f, 0, 0, 0.3f, 0.4f, 0, 0});
}

TEST(ChannelMix, MixesUnusualNumbersToTwo) {
    const std::vector<float> frame{0.3f, 0.8f, 0.6f, 0.4f, 0.9f};
    std::vector<float> stereo(2);
    MixToStereo(frame, 5, stereo);
    ExpectFrame(Mixed(frame, 2), stereo);
    ExpectFrame(Mixed(frame, 6), {stereo[0], stereo[1], 0, 0, 0, 0});
    ExpectFrame(Mixed(frame, 1), {(stereo[0] + stereo[1]) / 2});
}

TEST(ChannelMix, StaysWithinFullScale) {
    for (std::size_t from = 1; from <= 16; ++from) {
        for (std::size_t to = 1; to <= 12; ++to)
            for (const float sample : Mixed(std::vector<float>(from, 1.0f), to)) EXPECT_LE(sample, 1.00001f);
    }
}

TEST(ChannelMix, TakesFrameByFrame) {
    std::vector<float> stereo(6);
    CChannelMix(1, 2).Mix(std::vector{0.1f, 0.2f, 0.3f}, stereo);
    ExpectFrame(stereo, {0.1f, 0.1f, 0.2f, 0.2f, 0.3f, 0.3f});
}
