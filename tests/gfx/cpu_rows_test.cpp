#include "gfx/cpu/rows.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <gtest/gtest.h>
#include <random>
#include <vector>

using namespace KAV::GFX::CPU;

namespace {

/// A premultiplied pixel over another one, channel by channel.
std::uint32_t PlainOver(std::uint32_t upper, std::uint32_t lower) {
    const std::uint32_t rest = 255 - (upper >> 24);
    std::uint32_t result = 0;
    for (unsigned shift = 0; shift < 32; shift += 8) {
        const std::uint32_t below = (lower >> shift & 0xFF) * rest;
        result |= std::min((upper >> shift & 0xFF) + (2 * below + 255) / 510, 255U) << shift;
    }
    return result;
}

} // namespace

TEST(Rows, AreLaidOverEachOtherExactlyWithAnyAlpha) {
    for (std::uint32_t alpha = 0; alpha < 256; ++alpha) {
        for (std::uint32_t below = 0; below < 256; ++below) {
            const std::uint32_t upper = alpha << 24 | (alpha / 2) << 16 | (alpha / 3) << 8 | alpha;
            const std::uint32_t lower = 0xFF000000 | below << 16 | (255 - below) << 8 | below;
            std::uint32_t pixel = lower;
            LayRow(&upper, &pixel, 1);
            ASSERT_EQ(pixel, PlainOver(upper, lower)) << alpha << " over " << below;
        }
    }
}

TEST(Rows, OfAnyLengthAreLaidUpToTheirEnd) {
    std::mt19937 random(11);
    for (std::int32_t length = 0; length < 20; ++length) {
        for (int round = 0; round < 50; ++round) {
            std::array<std::uint32_t, 24> upper{};
            std::array<std::uint32_t, 24> lower{};
            for (std::size_t n = 0; n < upper.size(); ++n) {
                const std::uint32_t alpha = round % 3 == 0 ? random() % 2 * 255 : random() % 256;
                upper[n] = round % 5 == 0 ? 0 : alpha << 24 | alpha << 8 | alpha / 2;
                lower[n] = 0xFF000000 | static_cast<std::uint32_t>(random()) >> 8;
            }
            auto expected = lower;
            for (std::size_t n = 0; n < static_cast<std::size_t>(length); ++n)
                expected[n + 2] = PlainOver(upper[n + 1], lower[n + 2]);
            LayRow(upper.data() + 1, lower.data() + 2, length);
            ASSERT_EQ(lower, expected) << length;
        }
    }
}

TEST(Rows, OfAnyLengthAreCopiedUpToTheirEnd) {
    std::vector<std::uint32_t> from(100);
    for (std::size_t n = 0; n < from.size(); ++n) from[n] = static_cast<std::uint32_t>(n + 1);
    for (std::int32_t length = 0; length < 90; ++length) {
        std::vector<std::uint32_t> to(100);
        CopyRow(from.data() + 3, to.data() + 2, length);
        for (std::size_t n = 0; n < to.size(); ++n) {
            const bool inside = n >= 2 && n < 2 + static_cast<std::size_t>(length);
            ASSERT_EQ(to[n], inside ? from[n + 1] : 0) << length << ", " << n;
        }
    }
}

TEST(Rows, AreVisitedOnceEachInPairs) {
    std::vector<std::uint32_t> from(40 * 300);
    std::vector<std::uint32_t> to(50 * 300);
    for (std::size_t n = 0; n < from.size(); ++n) from[n] = static_cast<std::uint32_t>(n);
    for (const std::int32_t height : {1, 2, 5, 6, 7, 40}) {
        for (const std::int32_t width : {1, 15, 16, 17, 40}) {
            to.assign(to.size(), 0);
            ForRows({from.data(), 40}, {to.data(), 50}, width, height,
                [](const std::uint32_t* one, std::uint32_t* other, std::int32_t pixels) {
                    for (std::int32_t x = 0; x < pixels; ++x) other[x] += one[x] + 1;
                });
            for (std::size_t y = 0; y < 300; ++y) {
                for (std::size_t x = 0; x < 40; ++x) {
                    const bool inside =
                        x < static_cast<std::size_t>(width) && y < static_cast<std::size_t>(height);
                    ASSERT_EQ(to[50 * y + x], inside ? 40 * y + x + 1 : 0);
                }
            }
        }
    }
}
