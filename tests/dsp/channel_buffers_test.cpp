#include "dsp/channel_buffers.h"

#include <algorithm>
#include <cstdint>
#include <gtest/gtest.h>
#include <limits>
#include <new>

using KAV::DSP::CChannelBuffers;

TEST(ChannelBuffers, AreZeroedAlignedAndApart) {
    CChannelBuffers buffers;
    buffers.Resize(1000);
    EXPECT_EQ(buffers.Length(), 1000u);
    EXPECT_EQ(reinterpret_cast<std::uintptr_t>(buffers[0]) % 64, 0u);
    for (std::size_t channel = 0; channel < CChannelBuffers::Count; ++channel) {
        EXPECT_TRUE(
            std::all_of(buffers[channel], buffers[channel] + 1000, [](float x) { return x == 0.0f; }));
        std::fill_n(buffers[channel], 1000, static_cast<float>(channel + 1));
    }
    for (std::size_t channel = 0; channel < CChannelBuffers::Count; ++channel) {
        EXPECT_EQ(buffers[channel][0], static_cast<float>(channel + 1));
        EXPECT_EQ(buffers[channel][999], static_cast<float>(channel + 1));
    }
}

TEST(ChannelBuffers, ResizeToTheSameLengthZeroesThem) {
    CChannelBuffers buffers;
    buffers.Resize(10);
    buffers[15][9] = 1.0f;
    buffers.Resize(10);
    EXPECT_EQ(buffers[15][9], 0.0f);
}
