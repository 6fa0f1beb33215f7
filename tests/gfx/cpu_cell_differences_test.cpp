#include "gfx/cpu/cell_differences.h"

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <gtest/gtest.h>
#include <memory>
#include <random>

using namespace KAV;
using namespace KAV::GFX::CPU;

namespace {

constexpr std::int32_t Side = 40;

/// A picture of few colours, in which much is equal by chance.
std::shared_ptr<const Pixels::SBitmap> Speckled(
    std::mt19937& random, std::int32_t width = Side, std::int32_t height = Side) {
    Pixels::SBitmap bitmap = Pixels::TransparentBitmap(width, height);
    for (std::size_t n = 0; n < bitmap.bytes.size(); n += 4) {
        const std::uint32_t pixel = random() % 8 == 0 ? 0xFF00FF00 : 0;
        std::memcpy(&bitmap.bytes[n], &pixel, 4);
    }
    return std::make_shared<const Pixels::SBitmap>(std::move(bitmap));
}

/// The same without haste.
SArea PlainDifference(
    const CSource& source, const SArea& part, std::int32_t otherLeft, std::int32_t otherTop) {
    SArea around;
    for (std::int32_t y = 0; y < part.height; ++y) {
        for (std::int32_t x = 0; x < part.width; ++x) {
            const bool isEqual =
                source.Row(part.top + y)[part.left + x] == source.Row(otherTop + y)[otherLeft + x];
            if (isEqual) continue;
            const SArea pixel{x, y, 1, 1};
            around = IsEmpty(around) ? pixel : Around(around, pixel);
        }
    }
    return around;
}

} // namespace

TEST(CellDifferences, AreTheSmallestRectanglesForAnyTwoPartsOfAnyPicture) {
    std::mt19937 random(3);
    const auto below = [&](std::int32_t limit) {
        return static_cast<std::int32_t>(random() % static_cast<std::uint32_t>(limit));
    };
    const CSource one(Speckled(random));
    const CSource other(Speckled(random));
    CCellDifferences differences;
    int empty = 0;
    // Often enough that most of what is kept gets replaced, and with few enough pairs that much is found
    // again.
    for (int n = 0; n < 40000; ++n) {
        const CSource& source = below(2) == 0 ? one : other;
        const SArea part{below(8) * 4, below(8) * 4, below(3) + 1, below(3) + 1};
        const std::int32_t left = below(8) * 4;
        const std::int32_t top = below(8) * 4;
        const auto expected = PlainDifference(source, part, left, top);
        const auto found = differences.Between(source, part, left, top);
        if (IsEmpty(expected)) {
            ++empty;
            ASSERT_TRUE(IsEmpty(found));
        } else {
            ASSERT_EQ(found, expected);
        }
    }
    EXPECT_GT(empty, 1000);
}

TEST(CellDifferences, AreThoseOfTheVeryPartsHoweverManyThereAre) {
    std::mt19937 random(4);
    constexpr std::int32_t width = 30000;
    const CSource source(Speckled(random, width, 1));
    CCellDifferences differences;
    for (int n = 0; n < 30000; ++n) {
        const SArea part{static_cast<std::int32_t>(random() % 2), 0, 1, 1};
        const auto left = static_cast<std::int32_t>(random() % width);
        const bool isEqual = source.Row(0)[part.left] == source.Row(0)[left];
        ASSERT_EQ(IsEmpty(differences.Between(source, part, left, 0)), isEqual);
        ASSERT_EQ(IsEmpty(differences.Between(source, {left, 0, 1, 1}, part.left, 0)), isEqual);
    }
}

TEST(CellDifferences, AreThoseOfTheVeryPictureHoweverManyThereAre) {
    std::mt19937 random(5);
    CCellDifferences differences;
    for (int n = 0; n < 20000; ++n) {
        const CSource source(Speckled(random, 2, 1));
        const bool isEqual = source.Row(0)[0] == source.Row(0)[1];
        ASSERT_EQ(IsEmpty(differences.Between(source, {0, 0, 1, 1}, 1, 0)), isEqual);
    }
}
