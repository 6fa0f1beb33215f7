#include "pixels/image_name.h"

#include "panel/sprites.h"

#include <cmath>
#include <gtest/gtest.h>
#include <limits>
#include <string>

using namespace KAV::Pixels;

namespace {

SImageGrid Grid(std::int32_t frames, std::int32_t columns, std::int32_t rows) {
    return {frames, columns, rows};
}

} // namespace

TEST(ImageGrid, OneNumberIsOneColumn) {
    EXPECT_EQ(GridOf(u"ToolBtnA((4))##Sz-1x-1pxSb0.png"), Grid(4, 1, 4));
    EXPECT_EQ(GridOf(u"ToolMeterChnl((16))##Sz-1x-1pxSb0.png"), Grid(16, 1, 16));
    EXPECT_EQ(GridOf(u"One((1))"), Grid(1, 1, 1));
}

TEST(ImageGrid, TwoNumbersAreFramesAndColumns) {
    EXPECT_EQ(GridOf(u"SwitchGPU2((3x3))##Sz-1x-1pxSb0.png"), Grid(3, 3, 1));
    EXPECT_EQ(GridOf(u"SwitchSIMD((2x2))##Sz-1x-1pxSb0.png"), Grid(2, 2, 1));
    EXPECT_EQ(GridOf(u"Column((5x1))"), Grid(5, 1, 5));
    EXPECT_EQ(GridOf(u"Wide((2x5))"), Grid(2, 5, 1));
}

TEST(ImageGrid, TheLastRowMayHaveEmptyCells) {
    EXPECT_EQ(GridOf(u"Fader((63x20))##Sz-1x-1pxSb0.png"), Grid(63, 20, 4));
    EXPECT_EQ(GridOf(u"MeterLed((63x47))"), Grid(63, 47, 2));
    for (std::int32_t frames = 1; frames <= 70; ++frames) {
        for (std::int32_t columns = 1; columns <= 25; ++columns) {
            const auto name = u"A((" + std::u16string(1, static_cast<char16_t>(u'0' + frames / 10)) +
                              static_cast<char16_t>(u'0' + frames % 10) + u"x" +
                              static_cast<char16_t>(u'0' + columns / 10) +
                              static_cast<char16_t>(u'0' + columns % 10) + u"))";
            const auto rows = static_cast<std::int32_t>(
                std::ceil(static_cast<float>(frames) / static_cast<float>(columns)));
            EXPECT_EQ(GridOf(name), Grid(frames, columns, rows));
        }
    }
}

TEST(ImageGrid, IsOneFrameWithoutAGrid) {
    for (const std::u16string_view name : {u"Hint##Sz-1x-1pxSb0.png", u"Hint.png", u"Hint", u"", u"Hint((3",
             u"Hint(3)##Sz-1x-1pxSb0.png", u"Hint))3((", u"Hint##Sz-1x-1pxSb0((3)).png"}) {
        EXPECT_EQ(GridOf(name), Grid(1, 1, 1));
    }
}

TEST(ImageGrid, IsOneFrameWithNumbersThatMakeNone) {
    for (const std::u16string_view name : {u"A(())", u"A((x))", u"A((0))", u"A((-3))", u"A((3x0))",
             u"A((3x-1))", u"A((3x))", u"A((x3))", u"A((many))", u"A((99999999999))"}) {
        EXPECT_EQ(GridOf(name), Grid(1, 1, 1));
    }
}

TEST(ImageGrid, ReadsEachNumberAsFarAsItGoes) {
    EXPECT_EQ(GridOf(u"A((8 frames x 4 columns))"), Grid(8, 4, 2));
    EXPECT_EQ(GridOf(u"A((8x4x2))"), Grid(8, 4, 2));
    EXPECT_EQ(GridOf(u"A((2147483647x2))"), Grid(2147483647, 2, 1073741824));
}

TEST(ImageGrid, IsTheSameInTheNameThatIsStored) {
    for (const auto& sprite : KAV::Panel::Sprites) {
        for (const std::string& name : {std::string(sprite.image), KAV::Panel::ResourceNameOf(sprite)}) {
            EXPECT_EQ(GridOf(std::u16string(name.begin(), name.end())),
                Grid(sprite.frames, sprite.columns, sprite.Rows()))
                << name;
        }
    }
}

TEST(ImageMark, IsTheStoredSizeWithoutABlurUnlessTheNameSaysOtherwise) {
    for (const std::u16string_view name :
        {u"Hint##Sz-1x-1pxSb0.png", u"Hint.png", u"", u"Hint##", u"Hint##.png", u"SzHint##Sb3.png"}) {
        EXPECT_EQ(MarkOf(name), SImageMark()) << name.size();
    }
    EXPECT_EQ(MarkOf(u"Sz7x7pxSb7##Sz40x30pxSb12.png"), (SImageMark{40, 30, 12}));
}

TEST(ImageMark, ReplacesTheOneOfTheName) {
    EXPECT_EQ(WithMark(u"Knob02((63x8))##Sz-1x-1pxSb0.png", {}), u"Knob02((63x8))##Sz-1x-1pxSb0.png");
    EXPECT_EQ(
        WithMark(u"Knob02((63x8))##Sz-1x-1pxSb0.png", {60, 61, 5}), u"Knob02((63x8))##Sz60x61pxSb5.png");
    EXPECT_EQ(WithMark(u"Knob02((63x8))##Sz60x61pxSb5.png", {-1, 7, 0}), u"Knob02((63x8))##Sz-1x7pxSb0.png");
}

TEST(ImageMark, IsAddedToAPlainName) {
    EXPECT_EQ(WithMark(u"Hint.png", {}), u"Hint##Sz-1x-1pxSb0.png");
    EXPECT_EQ(WithMark(u"Hint.v2.bmp", {1, 2, 3}), u"Hint.v2##Sz1x2pxSb3.bmp");
    EXPECT_EQ(WithMark(u"Hint", {1, 2, 3}), u"Hint##Sz1x2pxSb3.");
    EXPECT_EQ(WithMark(u"Hint##", {1, 2, 3}), u"Hint##Sz1x2pxSb3.");
}

TEST(ImageMark, ComesAfterANameWithoutBlanks) {
    EXPECT_EQ(WithMark(u"My big knob((4)).png", {}), u"My_big_knob((4))##Sz-1x-1pxSb0.png");
}

TEST(ImageMark, ReadsWhatWasWritten) {
    constexpr auto Most = std::numeric_limits<std::int32_t>::max();
    for (const SImageMark mark : {SImageMark{}, {1, 2, 3}, {754, -1, 255}, {Most, Most, 0}}) {
        const auto name = WithMark(u"Fader((63x20)).png", mark);
        EXPECT_EQ(MarkOf(name), mark);
        EXPECT_EQ(GridOf(name), Grid(63, 20, 4));
    }
}
