#include "native/paint.h"

#include <array>
#include <gtest/gtest.h>

namespace KAV::Tests {

namespace {

std::array<int, 4> PixelAt(const Pixels::SBitmap& bitmap, std::int32_t x, std::int32_t y) {
    const auto* const pixel = bitmap.bytes.data() + y * bitmap.stride + 4 * x;
    return {pixel[0], pixel[1], pixel[2], pixel[3]};
}

} // namespace

TEST(Paint, FillsOnlyWhatLiesInThePicture) {
    auto to = Pixels::TransparentBitmap(4, 3);
    Native::Fill(to, {-5, 1, 7, 100}, 0xFF102030);
    EXPECT_EQ(PixelAt(to, 1, 1), (std::array{0x30, 0x20, 0x10, 0xFF}));
    EXPECT_EQ(PixelAt(to, 1, 2), (std::array{0x30, 0x20, 0x10, 0xFF}));
    EXPECT_EQ(PixelAt(to, 2, 1), (std::array{0, 0, 0, 0}));
    EXPECT_EQ(PixelAt(to, 1, 0), (std::array{0, 0, 0, 0}));
    Native::Fill(to, {3, 0, -2, 1}, 0xFFFFFFFF);
    Native::Fill(to, {0, 0, 0x7FFFFFFF, 0}, 0xFFFFFFFF);
    EXPECT_EQ(PixelAt(to, 2, 0), (std::array{0, 0, 0, 0}));
}

TEST(Paint, BlendsByAlpha) {
    auto to = Pixels::TransparentBitmap(1, 1);
    Native::Fill(to, {0, 0, 1, 1}, 0xFF000000);
    Native::Fill(to, {0, 0, 1, 1}, 0x80FF0000);
    EXPECT_EQ(PixelAt(to, 0, 0), (std::array{0, 0, 0x80, 0xFF}));
}

TEST(Paint, FrameLiesInsideTheArea) {
    auto to = Pixels::TransparentBitmap(6, 6);
    Native::Frame(to, {1, 1, 4, 4}, 1, 0xFFFFFFFF);
    for (std::int32_t y = 0; y < 6; ++y) {
        for (std::int32_t x = 0; x < 6; ++x) {
            const bool isInside = x >= 1 && x <= 4 && y >= 1 && y <= 4;
            const bool isInner = x >= 2 && x <= 3 && y >= 2 && y <= 3;
            EXPECT_EQ(PixelAt(to, x, y)[3], isInside && !isInner ? 0xFF : 0) << x << ", " << y;
        }
    }
}

TEST(Paint, StrokeCoversItsWidth) {
    auto to = Pixels::TransparentBitmap(20, 9);
    const std::array<Native::SSpot, 2> line{{{-5.0f, 4.5f}, {30.0f, 4.5f}}};
    Native::Stroke(to, line, 2.0f, 0xFFFFFFFF);
    for (std::int32_t x = 0; x < 20; ++x) {
        EXPECT_EQ(PixelAt(to, x, 4)[3], 0xFF);
        EXPECT_EQ(PixelAt(to, x, 3)[3], 0x80) << "half of the second row";
        EXPECT_EQ(PixelAt(to, x, 5)[3], 0x80);
        EXPECT_EQ(PixelAt(to, x, 2)[3], 0);
    }
}

TEST(Paint, OverlayBlendsAndIsCut) {
    auto to = Pixels::TransparentBitmap(2, 1);
    Native::Fill(to, {0, 0, 2, 1}, 0xFF000000);
    auto from = Pixels::TransparentBitmap(3, 2);
    Native::Fill(from, {0, 0, 3, 2}, 0x80FFFFFF);
    Native::Overlay(to, from, -2, -1);
    EXPECT_EQ(PixelAt(to, 0, 0), (std::array{0x80, 0x80, 0x80, 0xFF}));
    EXPECT_EQ(PixelAt(to, 1, 0), (std::array{0, 0, 0, 0xFF}));
}

} // namespace KAV::Tests
