#include "gfx/draw.h"

#include <cmath>
#include <cstddef>
#include <gtest/gtest.h>
#include <limits>

using namespace KAV::GFX;

namespace {

constexpr float STransform::*Values[] = {&STransform::fSX, &STransform::fSY, &STransform::fSZ,
    &STransform::fRX, &STransform::fRY, &STransform::fRZ, &STransform::fMX, &STransform::fMY,
    &STransform::fMZ};

} // namespace

TEST(Draw, IsTheWholePictureAsItIsUnlessToldOtherwise) {
    const SDraw draw;
    EXPECT_EQ(draw.sFrom.fU1, 0.0f);
    EXPECT_EQ(draw.sFrom.fU2, 1.0f);
    EXPECT_EQ(draw.sFrom.fV1, 0.0f);
    EXPECT_EQ(draw.sFrom.fV2, 1.0f);
    EXPECT_EQ(draw.nColor, 0xFFFFFFFFu);
    EXPECT_TRUE(draw.IsNeutral());
    EXPECT_EQ(SDraw9{}.nColor, 0xFFFFFFFFu);
    EXPECT_TRUE(SDraw9{}.IsNeutral());
}

TEST(Draw, IsNeutralWithScaleOneAndEverythingElseZeroOnly) {
    for (const auto value : Values) {
        const float neutral = STransform{}.*value;
        EXPECT_EQ(neutral, value == Values[0] || value == Values[1] || value == Values[2] ? 1.0f : 0.0f);
        for (const float other : {neutral + 1.0f, neutral - 1.0f, std::nextafter(neutral, 2.0f),
                 std::numeric_limits<float>::quiet_NaN()}) {
            SDraw draw;
            draw.sTransform.*value = other;
            EXPECT_FALSE(draw.IsNeutral()) << other;
            SDraw9 draw9;
            draw9.sTransform.*value = other;
            EXPECT_FALSE(draw9.IsNeutral()) << other;
        }
    }
    SDraw draw;
    draw.sTransform.fRZ = -0.0f;
    EXPECT_TRUE(draw.IsNeutral());
}

TEST(Draw, IsTransparentWithAlphaZeroWhateverTheColour) {
    EXPECT_TRUE(IsTransparent(0x00000000));
    EXPECT_TRUE(IsTransparent(0x00FFFFFF));
    EXPECT_FALSE(IsTransparent(0x01000000));
    EXPECT_FALSE(IsTransparent(0xFFFFFFFF));
}

TEST(Point, IsARecordOfSixteenBytes) {
    EXPECT_EQ(offsetof(SPoint, fX), 0u);
    EXPECT_EQ(offsetof(SPoint, fY), 4u);
    EXPECT_EQ(offsetof(SPoint, fZ), 8u);
    EXPECT_EQ(offsetof(SPoint, nColor), 12u);
    EXPECT_EQ(sizeof(SPoint), 16u);
}
