#include "tools/kavhost/play/block_queue.h"

#include <gtest/gtest.h>
#include <thread>

using namespace KAV::Host;

TEST(BlockQueue, GivesWhatWasFilledInOrderAndAgain) {
    CBlockQueue queue(3, 2, 1);
    for (std::uint64_t first = 0; first < 10; ++first) {
        auto* const block = queue.Back();
        ASSERT_NE(block, nullptr);
        block->first = first;
        queue.Push();
        ASSERT_NE(queue.Front(), nullptr);
        EXPECT_EQ(queue.Front()->first, first);
        queue.Pop();
    }
}

TEST(BlockQueue, IsFullWithAllItsBlocksAndEmptyWithNone) {
    CBlockQueue queue(3, 2, 1);
    EXPECT_EQ(queue.Front(), nullptr);
    for (int i = 0; i < 3; ++i) {
        ASSERT_NE(queue.Back(), nullptr);
        queue.Push();
    }
    EXPECT_EQ(queue.Back(), nullptr);
    queue.Pop();
    EXPECT_NE(queue.Back(), nullptr);
}

TEST(BlockQueue, GivesEachBlockSamplesOfItsOwn) {
    constexpr std::size_t blocks = 4, frames = 5, channels = 3;
    CBlockQueue queue(blocks, frames, channels);
    for (std::size_t i = 0; i < blocks; ++i) {
        std::fill_n(queue.Back()->samples, frames * channels, static_cast<float>(i));
        queue.Push();
    }
    for (std::size_t i = 0; i < blocks; ++i) {
        for (std::size_t j = 0; j < frames * channels; ++j)
            ASSERT_EQ(queue.Front()->samples[j], static_cast<float>(i));
        queue.Pop();
    }
}

TEST(BlockQueue, LosesNothingBetweenTwoThreads) {
    constexpr std::uint64_t blocks = 20'000;
    CBlockQueue queue(4, 1, 1);
    std::thread writer([&] {
        for (std::uint64_t i = 0; i < blocks;) {
            auto* const block = queue.Back();
            if (block == nullptr) continue;
            block->first = i++;
            block->samples[0] = static_cast<float>(block->first);
            queue.Push();
        }
    });
    std::uint64_t wrong = 0;
    for (std::uint64_t i = 0; i < blocks;) {
        const auto* const block = queue.Front();
        if (block == nullptr) continue;
        if (block->first != i || block->samples[0] != static_cast<float>(i)) ++wrong;
        ++i;
        queue.Pop();
    }
    writer.join();
    EXPECT_EQ(wrong, 0u);
}
