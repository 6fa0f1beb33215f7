#include "gfx/pixel_format.h"
#include "gfx/texture.h"

#include <cstddef>
#include <gtest/gtest.h>

using namespace KAV::GFX;

TEST(Texture, HasItsFieldsInOrder) {
    EXPECT_EQ(offsetof(STexture, piGDIP), 0u);
    EXPECT_EQ(offsetof(STexture, nW), 8u);
    EXPECT_EQ(offsetof(STexture, nH), 12u);
    EXPECT_EQ(offsetof(STexture, fU), 16u);
    EXPECT_EQ(offsetof(STexture, fV), 20u);
    EXPECT_EQ(offsetof(STexture, nColumns), 24u);
    EXPECT_EQ(offsetof(STexture, nRows), 28u);
    EXPECT_EQ(offsetof(STexture, nFrames), 32u);
    EXPECT_EQ(offsetof(STexture, nUses), 36u);
    EXPECT_EQ(sizeof(STexture), 40u);
}

TEST(Texture, FreedHasNoPictureAndAGridOfOne) {
    const STexture freed = FreedTexture();
    EXPECT_EQ(freed.piGDIP, 0u);
    EXPECT_EQ(freed.nW, 0);
    EXPECT_EQ(freed.nH, 0);
    EXPECT_EQ(freed.fU, 1.0f);
    EXPECT_EQ(freed.fV, 1.0f);
    EXPECT_EQ(freed.nColumns, 1);
    EXPECT_EQ(freed.nRows, 1);
    EXPECT_EQ(freed.nFrames, 1);
    EXPECT_EQ(freed.nUses, 0);
    EXPECT_EQ(STexture{}, freed);
}

TEST(TextureSide, IsThePicturesWhereAnySizeIsTaken) {
    for (const int side : {1, 2, 3, 754, 1 << 20}) EXPECT_EQ(TextureSide(side, true), side);
}

TEST(TextureSide, IsElseTheSmallestPowerOfTwoThatHoldsThePicture) {
    EXPECT_EQ(TextureSide(754, false), 1024);
    EXPECT_EQ(TextureSide(553, false), 1024);
    for (int power = 2; power < 1 << 19; power *= 2) {
        EXPECT_EQ(TextureSide(power, false), power);
        EXPECT_EQ(TextureSide(power + 1, false), 2 * power);
    }
}

TEST(TextureSide, IsAtLeastTwoAndAtMostTwoToTheNineteenth) {
    for (const int side : {-5, 0, 1, 2}) EXPECT_EQ(TextureSide(side, false), 2);
    for (const int side : {524288, 524289, 2147483647}) EXPECT_EQ(TextureSide(side, false), 524288);
}

TEST(PixelFormat, HasOneBitForAlpha) {
    EXPECT_TRUE(HasAlpha(Argb32));
    EXPECT_TRUE(HasAlpha(PremultipliedArgb32));
    EXPECT_FALSE(HasAlpha(Rgb32));
    EXPECT_FALSE(HasAlpha(Rgb24));
}

TEST(PixelFormat, HasTheNumbersOfGdiPlus) {
    // The lowest byte counts the formats, the next one is the size of a pixel in bits.
    EXPECT_EQ(Rgb24, 137224);
    EXPECT_EQ(Rgb32, 139273);
    EXPECT_EQ(Argb32, 2498570);
    EXPECT_EQ(PremultipliedArgb32, 925707);
}
