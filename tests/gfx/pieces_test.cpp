#include "gfx/pieces.h"

#include "gfx/picture_pixels.h"
#include "gfx/pixel_format.h"

#include <gtest/gtest.h>
#include <limits>
#include <vector>

using namespace KAV;
using namespace KAV::GFX;

namespace {

STexture Texture(std::int32_t width, std::int32_t height) {
    STexture texture;
    texture.nW = width;
    texture.nH = height;
    return texture;
}

std::vector<SPiece> TilesOf(const SPiece& piece, std::int32_t width, std::int32_t height) {
    std::vector<SPiece> tiles;
    ForEachTile(piece, width, height, [&tiles](const SPiece& tile) { tiles.push_back(tile); });
    return tiles;
}

} // namespace

TEST(Pieces, ArePixelsOfThePictureEvenIfTheTextureIsPadded) {
    SDraw draw;
    draw.sTo = {10, 20, 30, 40};
    draw.sFrom = {0.25f, 0.75f, 0.5f, 1.0f};
    EXPECT_EQ(PieceOf(Texture(40, 20), draw), (SPiece{{10, 20, 30, 40}, {10, 10, 20, 10}}));
    auto padded = Texture(40, 20);
    padded.fU = 0.625f; // of 64
    padded.fV = 0.625f; // of 32
    draw.sFrom = {0.0f, 0.625f, 0.0f, 0.625f};
    EXPECT_EQ(PieceOf(padded, draw), (SPiece{{10, 20, 30, 40}, {0, 0, 40, 20}}));
}

TEST(Slices, KeepTheMarginsAndStretchTheMiddle) {
    SDraw9 draw;
    draw.sTo = {100, 200, 50, 60};
    draw.nMrgL = 3;
    draw.nMrgT = 4;
    draw.nMrgR = 5;
    draw.nMrgB = 6;
    const auto slices = SlicesOf(Texture(20, 30), draw);
    EXPECT_EQ(slices[0], (SPiece{{100, 200, 3, 4}, {0, 0, 3, 4}}));
    EXPECT_EQ(slices[1], (SPiece{{103, 200, 42, 4}, {3, 0, 12, 4}}));
    EXPECT_EQ(slices[2], (SPiece{{145, 200, 5, 4}, {15, 0, 5, 4}}));
    EXPECT_EQ(slices[4], (SPiece{{103, 204, 42, 50}, {3, 4, 12, 20}}));
    EXPECT_EQ(slices[8], (SPiece{{145, 254, 5, 6}, {15, 24, 5, 6}}));
}

TEST(Slices, AreThoseOfTheFrameThatTheValueChooses) {
    auto sheet = Texture(60, 40); // cells of 20 by 20
    sheet.nColumns = 3;
    sheet.nRows = 2;
    sheet.nFrames = 5;
    const auto first = [&](float value) {
        SDraw9 draw;
        draw.sTo = {0, 0, 30, 30};
        draw.nMrgL = draw.nMrgT = draw.nMrgR = draw.nMrgB = 5;
        draw.fValue = value;
        return SlicesOf(sheet, draw)[0].sFrom;
    };
    EXPECT_EQ(first(0.0f), (SRect{0, 0, 5, 5}));
    EXPECT_EQ(first(0.12f), (SRect{0, 0, 5, 5}));
    EXPECT_EQ(first(0.13f), (SRect{20, 0, 5, 5}));
    EXPECT_EQ(first(0.5f), (SRect{40, 0, 5, 5}));
    EXPECT_EQ(first(0.75f), (SRect{0, 20, 5, 5}));
    EXPECT_EQ(first(1.0f), (SRect{20, 20, 5, 5}));
    EXPECT_EQ(first(7.0f), (SRect{20, 20, 5, 5}));
}

TEST(Tiles, AreThePieceItselfWithinThePicture) {
    const SPiece piece{{1, 2, 30, 40}, {0, 0, 20, 10}};
    EXPECT_EQ(TilesOf(piece, 20, 10), std::vector{piece});
}

TEST(Tiles, RepeatThePictureInBothDirections) {
    const auto tiles = TilesOf({{100, 50, 70, 30}, {-5, 0, 35, 15}}, 20, 10);
    const std::vector<SPiece> expected{{{100, 50, 10, 20}, {15, 0, 5, 10}},
        {{110, 50, 40, 20}, {0, 0, 20, 10}}, {{150, 50, 20, 20}, {0, 0, 10, 10}},
        {{100, 70, 10, 10}, {15, 0, 5, 5}}, {{110, 70, 40, 10}, {0, 0, 20, 5}},
        {{150, 70, 20, 10}, {0, 0, 10, 5}}};
    EXPECT_EQ(tiles, expected);
}

TEST(Tiles, AreNotRepeatedBeyondReason) {
    EXPECT_EQ(TilesOf({{0, 0, 1e6f, 1e6f}, {0, 0, 1e6f, 1e6f}}, 1, 1).size(), 1u);
    const float none = std::numeric_limits<float>::quiet_NaN();
    EXPECT_EQ(TilesOf({{0, 0, 10, 10}, {0, 0, none, 10}}, 1, 1).size(), 1u);
    EXPECT_EQ(TilesOf({{0, 0, 10, 10}, {0, 0, 10, 10}}, 0, 0).size(), 1u);
}

TEST(Cells, AreWholeOnesOfTheGridAtTheSizeInTheWindow) {
    const Pixels::SImageGrid grid{6, 3, 2};
    const auto wish = [&](const SRect& to, const SRect& from) { return CellOf({to, from}, grid, 60, 40); };
    const auto cell = wish({5, 5, 33, 17}, {20, 20, 20, 20});
    EXPECT_TRUE(cell.IsCell());
    EXPECT_EQ(cell.nColumn, 1);
    EXPECT_EQ(cell.nRow, 1);
    EXPECT_EQ(cell.nW, 33);
    EXPECT_EQ(cell.nH, 17);
    EXPECT_FALSE(wish({5, 5, 33, 17}, {10, 20, 20, 20}).IsCell());
    EXPECT_FALSE(wish({5, 5, 33, 17}, {20, 20, 19, 20}).IsCell());
    EXPECT_FALSE(wish({5, 5, 33, 17}, {60, 20, 20, 20}).IsCell());
    EXPECT_FALSE(wish({5, 5, 33, 17}, {0, 40, 20, 20}).IsCell());
    EXPECT_FALSE(wish({5, 5, 1e6f, 17}, {0, 0, 20, 20}).IsCell());
}

TEST(PicturePixels, AreOpaqueWithoutAlpha) {
    const std::vector<std::uint8_t> rgb{1, 2, 3, 4, 5, 6, 0, 0, 7, 8, 9, 10, 11, 12, 0, 0};
    EXPECT_EQ(PixelsOf(rgb.data(), 8, Rgb24, 2, 2, ETextureAlpha::Straight).vnPixels,
        (std::vector<std::uint32_t>{0xFF030201, 0xFF060504, 0xFF090807, 0xFF0C0B0A}));
    EXPECT_EQ(PixelsOf(rgb.data(), 8, Rgb32, 1, 2, ETextureAlpha::Premultiplied).vnPixels,
        (std::vector<std::uint32_t>{0xFF030201, 0xFF090807}));
}

TEST(PicturePixels, AreMultipliedByTheirAlphaOrDividedByIt) {
    const std::vector<std::uint32_t> straight{0x80FF8000, 0xFF123456, 0x00FFFFFF, 0x01FF00FF};
    const auto multiplied =
        PixelsOf(straight.data(), 16, Argb32, 4, 1, ETextureAlpha::Premultiplied).vnPixels;
    EXPECT_EQ(multiplied, (std::vector<std::uint32_t>{0x80804000, 0xFF123456, 0x00000000, 0x01010001}));
    EXPECT_EQ(PixelsOf(straight.data(), 16, Argb32, 4, 1, ETextureAlpha::Straight).vnPixels, straight);
    EXPECT_EQ(
        PixelsOf(multiplied.data(), 16, PremultipliedArgb32, 4, 1, ETextureAlpha::Premultiplied).vnPixels,
        multiplied);
    const auto divided =
        PixelsOf(multiplied.data(), 16, PremultipliedArgb32, 4, 1, ETextureAlpha::Straight).vnPixels;
    EXPECT_EQ(divided, (std::vector<std::uint32_t>{0x80FF8000, 0xFF123456, 0x00000000, 0x01FF00FF}));
}

TEST(PicturePixels, AreNoneThatDoNotFit) {
    const std::vector<std::uint32_t> pixels(4);
    const auto isNone = [&](const void* bits, int pitch, int format, int width, int height) {
        return PixelsOf(bits, pitch, format, width, height, ETextureAlpha::Straight).IsEmpty();
    };
    EXPECT_TRUE(isNone(nullptr, 8, Argb32, 2, 2));
    EXPECT_TRUE(isNone(pixels.data(), 7, Argb32, 2, 2));
    EXPECT_TRUE(isNone(pixels.data(), 8, 12345, 2, 2));
    EXPECT_TRUE(isNone(pixels.data(), 8, Argb32, 0, 2));
    EXPECT_TRUE(isNone(pixels.data(), 8, Argb32, 2, -1));
    EXPECT_FALSE(isNone(pixels.data(), 8, Argb32, 2, 2));
    auto bitmap = Pixels::TransparentBitmap(2, 2);
    EXPECT_FALSE(PixelsOf(bitmap, ETextureAlpha::Straight).IsEmpty());
    bitmap.bytes.resize(15);
    EXPECT_TRUE(PixelsOf(bitmap, ETextureAlpha::Straight).IsEmpty());
}
