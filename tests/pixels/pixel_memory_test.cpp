#include "pixels/pixel_memory.h"

#include "pixels/bitmap.h"
#include "tests/support/process_memory.h"

#include <algorithm>
#include <cstdint>
#include <gtest/gtest.h>
#include <limits>
#include <new>
#include <utility>
#include <vector>

using namespace KAV;
using Pixels::PixelBytes;

#ifndef KAV_SANITIZED // there the heap keeps what is freed, and ends the program when it has no more
TEST(PixelMemory, ThrowsWhenThereIsNone) {
    EXPECT_THROW(
        PixelBytes(static_cast<std::size_t>(std::numeric_limits<std::ptrdiff_t>::max() / 2)), std::bad_alloc);
}

TEST(PixelMemory, GoesBackToTheSystemWhateverLiesAroundIt) {
    // The pattern that keeps a heap large: large blocks, freed with smaller ones after them.
    const auto before = Tests::ResidentBytes();
    std::vector<std::vector<std::uint8_t>> later;
    for (int round = 0; round < 3; ++round) {
        std::vector<PixelBytes> pictures;
        for (int i = 0; i < 4; ++i) {
            pictures.emplace_back(std::size_t{10'000'000}, std::uint8_t{1});
            pictures.emplace_back(std::size_t{100'000}, std::uint8_t{1});
            later.emplace_back(std::size_t{1000}, std::uint8_t{1});
        }
        EXPECT_GT(Tests::ResidentBytes(), before + 40'000'000);
        pictures.clear();
        EXPECT_LT(Tests::ResidentBytes(), before + 2'000'000);
    }
}
#endif

TEST(PixelMemory, IsZeroAndKeepsItsContentWhenItGrows) {
    for (const std::size_t size : {1'000U, 65'535U, 65'536U, 300'000U}) {
        PixelBytes bytes(size);
        EXPECT_EQ(std::count(bytes.begin(), bytes.end(), 0), static_cast<std::ptrdiff_t>(size));
        bytes[size - 1] = 7;
        bytes.resize(2 * size);
        EXPECT_EQ(bytes[size - 1], 7);
        EXPECT_EQ(std::count(bytes.begin(), bytes.end(), 0), static_cast<std::ptrdiff_t>(2 * size - 1));
        const PixelBytes copy = bytes;
        EXPECT_EQ(copy, bytes);
        const PixelBytes moved = std::move(bytes);
        EXPECT_EQ(moved, copy);
    }
}
