#include "pixels/resample.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdlib>
#include <gtest/gtest.h>
#include <new>
#include <random>
#include <string>
#include <vector>

using namespace KAV;
using Pixels::EAlpha;
using Pixels::SBitmap;
using Pixels::SImageGrid;

namespace {

/// With gaps between the rows, whose bytes mean nothing.
SBitmap Blank(std::int32_t width, std::int32_t height, EAlpha alpha = EAlpha::Straight) {
    SBitmap bitmap;
    bitmap.width = width;
    bitmap.height = height;
    bitmap.stride = 4 * width + 12;
    bitmap.alpha = alpha;
    bitmap.bytes.assign(static_cast<std::size_t>(bitmap.stride * height), 77);
    return bitmap;
}

std::uint8_t& Byte(SBitmap& bitmap, std::int32_t x, std::int32_t y, std::int32_t channel) {
    return bitmap.bytes[static_cast<std::size_t>(y * bitmap.stride + 4 * x + channel)];
}

int Value(const SBitmap& bitmap, std::int32_t x, std::int32_t y, std::int32_t channel) {
    return bitmap.bytes[static_cast<std::size_t>(y * bitmap.stride + 4 * x + channel)];
}

/// Any bytes, with transparent and opaque areas as pictures have them.
SBitmap Noise(std::int32_t width, std::int32_t height, unsigned seed) {
    SBitmap bitmap = Blank(width, height);
    std::mt19937 random(seed);
    for (std::int32_t y = 0; y < height; ++y) {
        for (std::int32_t x = 0; x < width; ++x) {
            for (std::int32_t c = 0; c < 4; ++c)
                Byte(bitmap, x, y, c) = static_cast<std::uint8_t>(random() & 255U);
            const auto area = (x / 5 + y / 7) % 4;
            if (area == 0) Byte(bitmap, x, y, 3) = 0;
            if (area == 1) Byte(bitmap, x, y, 3) = 255;
        }
    }
    return bitmap;
}

// The plain method, in double precision and without any of the product's code.

double Kernel(double x) {
    const double a = -0.5;
    const double d = std::fabs(x);
    if (d <= 1) return (a + 2) * d * d * d - (a + 3) * d * d + 1;
    if (d < 2) return a * d * d * d - 5 * a * d * d + 8 * a * d - 4 * a;
    return 0;
}

int PlainPremultiplied(const SBitmap& from, std::int32_t x, std::int32_t y, std::int32_t c) {
    const int alpha = Value(from, x, y, 3);
    return c == 3 ? alpha : (Value(from, x, y, c) * alpha + 127) / 255;
}

/// The exact value of one channel at one place of the result.
double Plain(const SBitmap& from, const SImageGrid& grid, std::int32_t cellWidth, std::int32_t cellHeight,
    std::int32_t x, std::int32_t y, std::int32_t c) {
    const int fromWidth = from.width / grid.columns;
    const int fromHeight = from.height / grid.rows;
    const double stepX = static_cast<double>(fromWidth) / cellWidth;
    const double stepY = static_cast<double>(fromHeight) / cellHeight;
    const double wideX = std::max(1.0, stepX);
    const double wideY = std::max(1.0, stepY);
    const double centreX = (x % cellWidth + 0.5) * stepX - 0.5;
    const double centreY = (y % cellHeight + 0.5) * stepY - 0.5;
    const int left = x / cellWidth * fromWidth;
    const int top = y / cellHeight * fromHeight;
    double sum = 0;
    double weights = 0;
    for (int v = static_cast<int>(std::floor(centreY - 2 * wideY)); v <= centreY + 2 * wideY + 1; ++v) {
        for (int u = static_cast<int>(std::floor(centreX - 2 * wideX)); u <= centreX + 2 * wideX + 1; ++u) {
            const double weight = Kernel((u - centreX) / wideX) * Kernel((v - centreY) / wideY);
            weights += weight;
            sum += weight * PlainPremultiplied(from, left + std::clamp(u, 0, fromWidth - 1),
                                top + std::clamp(v, 0, fromHeight - 1), c);
        }
    }
    return sum / weights;
}

void ExpectPlain(
    const SBitmap& from, const SImageGrid& grid, std::int32_t cellWidth, std::int32_t cellHeight) {
    SCOPED_TRACE(std::to_string(from.width) + "x" + std::to_string(from.height) + " to cells of " +
                 std::to_string(cellWidth) + "x" + std::to_string(cellHeight));
    const SBitmap to = Pixels::Resampled(from, grid, cellWidth, cellHeight);
    ASSERT_EQ(to.width, grid.columns * cellWidth);
    ASSERT_EQ(to.height, grid.rows * cellHeight);
    ASSERT_EQ(to.alpha, EAlpha::Premultiplied);
    double worst = 0;
    double total = 0;
    for (std::int32_t y = 0; y < to.height; ++y) {
        for (std::int32_t x = 0; x < to.width; ++x) {
            const double alpha = std::clamp(Plain(from, grid, cellWidth, cellHeight, x, y, 3), 0.0, 255.0);
            for (std::int32_t c = 0; c < 4; ++c) {
                const double exact =
                    std::clamp(Plain(from, grid, cellWidth, cellHeight, x, y, c), 0.0, alpha);
                const double difference = std::fabs(exact - Value(to, x, y, c));
                worst = std::max(worst, difference);
                total += difference;
            }
        }
    }
    EXPECT_LT(worst, 0.7); // half a step of rounding, and a little for the whole numbers inside
    const double count = 4.0 * to.width * to.height;
    if (count < 500) return;
    EXPECT_LT(total / count, 0.27); // a quarter, if nothing but the rounding is left
}

} // namespace

TEST(Resample, ShrinksAsThePlainMethodDoes) {
    ExpectPlain(Noise(40, 28, 1), {}, 20, 14);
    ExpectPlain(Noise(40, 28, 2), {}, 17, 9);
    ExpectPlain(Noise(61, 33, 3), {}, 60, 31);
    ExpectPlain(Noise(64, 50, 4), {}, 7, 3);
}

TEST(Resample, EnlargesAsThePlainMethodDoes) {
    ExpectPlain(Noise(20, 14, 5), {}, 40, 28);
    ExpectPlain(Noise(21, 13, 6), {}, 27, 55);
    ExpectPlain(Noise(9, 9, 7), {}, 31, 9);
    ExpectPlain(Noise(12, 30, 8), {}, 31, 9);
}

TEST(Resample, ScalesEachCellByItself) {
    ExpectPlain(Noise(4 * 11, 3 * 9, 9), {10, 4, 3}, 5, 4);
    ExpectPlain(Noise(4 * 11, 3 * 9, 10), {12, 4, 3}, 16, 13);
    ExpectPlain(Noise(3 * 5, 2 * 7, 11), {6, 3, 2}, 5, 3);
}

TEST(Resample, KeepsTheSmallestCells) {
    ExpectPlain(Noise(1, 1, 12), {}, 5, 4);
    ExpectPlain(Noise(3, 2, 13), {6, 3, 2}, 4, 3);
    ExpectPlain(Noise(33, 21, 14), {}, 1, 1);
    ExpectPlain(Noise(2, 3, 15), {}, 1, 2);
    ExpectPlain(Noise(9, 15, 16), {15, 3, 5}, 1, 1);
}

TEST(Resample, StaysPreciseWhenItShrinksALot) {
    ExpectPlain(Noise(700, 600, 17), {}, 3, 2);
    ExpectPlain(Noise(3, 1500, 18), {}, 3, 1);
    ExpectPlain(Noise(1500, 3, 19), {}, 9, 3);
}

TEST(Resample, TakesNothingFromNeighbourCells) {
    // The middle one of three cells is black, the others are white.
    SBitmap bitmap = Blank(36, 12);
    for (std::int32_t y = 0; y < 12; ++y) {
        for (std::int32_t x = 0; x < 36; ++x) {
            for (std::int32_t c = 0; c < 4; ++c) Byte(bitmap, x, y, c) = c == 3 || x / 12 != 1 ? 255 : 0;
        }
    }
    for (const std::int32_t side : {5, 6, 12, 13, 24}) {
        const auto to = Pixels::Resampled(bitmap, {3, 3, 1}, side, side);
        for (std::int32_t y = 0; y < side; ++y) {
            for (std::int32_t x = 0; x < 3 * side; ++x) {
                ASSERT_EQ(Value(to, x, y, 0), x / side == 1 ? 0 : 255) << side << " " << x << " " << y;
                ASSERT_EQ(Value(to, x, y, 3), 255);
            }
        }
    }
}

TEST(Resample, KeepsEvenAreasAsTheyAre) {
    for (const int value : {1, 2, 100, 128, 254, 255}) {
        SBitmap bitmap = Blank(23, 17);
        for (auto& byte : bitmap.bytes) byte = static_cast<std::uint8_t>(value);
        for (const std::int32_t side : {1, 5, 16, 17, 23, 40}) {
            const auto to = Pixels::Resampled(bitmap, {}, side, side);
            for (std::size_t i = 0; i < to.bytes.size(); ++i)
                ASSERT_EQ(to.bytes[i], i % 4 == 3 ? value : (value * value + 127) / 255)
                    << value << " " << side;
        }
    }
}

TEST(Resample, IsThePictureItselfAtItsOwnSize) {
    const SBitmap bitmap = Noise(36, 22, 20);
    const auto premultiplied = Pixels::Premultiplied(bitmap);
    EXPECT_EQ(Pixels::Resampled(bitmap, {6, 3, 2}, 12, 11).bytes, premultiplied.bytes);
    EXPECT_EQ(Pixels::Resampled(bitmap, {}, 36, 22).bytes, premultiplied.bytes);
}

TEST(Resample, NeverMakesAColourBrighterThanItsAlpha) {
    // Sharp edges of opaque white on transparency: the cubic overshoots on both sides of them.
    SBitmap bitmap = Blank(32, 32);
    for (std::int32_t y = 0; y < 32; ++y) {
        for (std::int32_t x = 0; x < 32; ++x) {
            for (std::int32_t c = 0; c < 4; ++c) Byte(bitmap, x, y, c) = 255;
            Byte(bitmap, x, y, 3) = (x / 3 + y / 4) % 2 == 0 ? 255 : 90;
            Byte(bitmap, x, y, 1) = (x / 2 + y / 3) % 2 == 0 ? 255 : 0;
        }
    }
    for (const std::int32_t side : {11, 13, 27, 49, 64}) {
        const auto to = Pixels::Resampled(bitmap, {}, side, side);
        for (std::size_t i = 0; i < to.bytes.size(); i += 4) {
            for (std::size_t c = 0; c < 3; ++c) ASSERT_LE(to.bytes[i + c], to.bytes[i + 3]) << side;
        }
    }
}

TEST(Resample, GivesUpOnSidesBeyondReason) {
    const SBitmap bitmap = Noise(8, 8, 21);
    EXPECT_THROW(Pixels::Resampled(bitmap, {}, 65536, 1), std::bad_alloc);
    EXPECT_THROW(Pixels::Resampled(bitmap, {8, 2, 4}, 4, 1 << 30), std::bad_alloc);
    EXPECT_EQ(Pixels::Resampled(bitmap, {}, 65535, 1).width, 65535);
}

TEST(Premultiplied, RoundsEachProductAsStated) {
    // 256 x 256: every colour with every alpha, and a width that isn't a whole number of registers.
    SBitmap bitmap = Blank(255, 257);
    for (std::int32_t y = 0; y < 257; ++y) {
        for (std::int32_t x = 0; x < 255; ++x) {
            const int pixel = y * 255 + x;
            for (std::int32_t c = 0; c < 3; ++c)
                Byte(bitmap, x, y, c) = static_cast<std::uint8_t>(pixel % 256 ^ (c * 85));
            Byte(bitmap, x, y, 3) = static_cast<std::uint8_t>(pixel / 256 % 256);
        }
    }
    const auto to = Pixels::Premultiplied(bitmap);
    ASSERT_EQ(to.width, 255);
    ASSERT_EQ(to.height, 257);
    EXPECT_EQ(to.alpha, EAlpha::Premultiplied);
    for (std::int32_t y = 0; y < 257; ++y) {
        for (std::int32_t x = 0; x < 255; ++x) {
            for (std::int32_t c = 0; c < 4; ++c)
                ASSERT_EQ(Value(to, x, y, c), PlainPremultiplied(bitmap, x, y, c))
                    << x << " " << y << " " << c;
        }
    }
}

TEST(Premultiplied, TakesBitmapsWithoutAlphaAsOpaque) {
    SBitmap bitmap = Noise(7, 3, 22);
    bitmap.alpha = EAlpha::None;
    const auto to = Pixels::Premultiplied(bitmap);
    const auto scaled = Pixels::Resampled(bitmap, {}, 7, 3);
    for (std::int32_t y = 0; y < 3; ++y) {
        for (std::int32_t x = 0; x < 7; ++x) {
            EXPECT_EQ(Value(to, x, y, 1), Value(bitmap, x, y, 1));
            EXPECT_EQ(Value(to, x, y, 3), 255);
        }
    }
    EXPECT_EQ(scaled.bytes, to.bytes);
}

TEST(Premultiplied, LeavesPremultipliedBitmapsAsTheyAre) {
    SBitmap bitmap = Noise(9, 4, 23);
    bitmap.alpha = EAlpha::Premultiplied;
    const auto to = Pixels::Premultiplied(bitmap);
    for (std::int32_t y = 0; y < 4; ++y) {
        for (std::int32_t x = 0; x < 9; ++x) {
            for (std::int32_t c = 0; c < 4; ++c) EXPECT_EQ(Value(to, x, y, c), Value(bitmap, x, y, c));
        }
    }
}
