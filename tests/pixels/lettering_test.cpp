#include "tests/pixels/lettering_fixture.h"
#include "tests/support/golden_picture.h"

#include <cmath>
#include <cstdlib>
#include <limits>

using namespace KAV;
using namespace KAV::Pixels;
using namespace KAV::Tests;

namespace {

using Lettering = CLetteringTest;

// DejaVu's own measures, in ems.
constexpr float Ascent = 1901.0f / 2048.0f;
constexpr float Descent = 483.0f / 2048.0f;
constexpr float DigitWidth = 1172.0f / 2048.0f; // condensed, as wide as each other

} // namespace

// Measures

TEST_F(Lettering, MeasuresTheTypefacesOwnAdvancesAndLineHeight) {
    for (const float pixels : {8.0f, 13.333334f, 100.0f}) {
        const auto size = lettering->Measure(Line(u"0123456789", pixels));
        EXPECT_NEAR(size.width, 10 * DigitWidth * pixels, 0.001f * pixels);
        EXPECT_NEAR(size.height, (Ascent + Descent) * pixels, 0.001f * pixels);
    }
    EXPECT_EQ(lettering->Measure(Line(u"")).width, 0.0f);
    EXPECT_NEAR(lettering->Measure(Line(u"")).height, (Ascent + Descent) * 20.0f, 0.02f);
}

TEST_F(Lettering, MeasuresWithoutRegardToTheBox) {
    auto line = Line(u"wider than its box", 20.0f, 10, 3);
    line.ellipsis = true;
    EXPECT_EQ(lettering->Measure(line), lettering->Measure(Line(u"wider than its box")));
}

TEST_F(Lettering, Kerns) {
    EXPECT_LT(Width(u"AV"), Width(u"A") + Width(u"V") - 0.5f);
    EXPECT_LT(Width(u"To"), Width(u"T") + Width(u"o") - 0.5f);
    EXPECT_NEAR(Width(u"HH"), 2 * Width(u"H"), 0.001f);
    // Drawn as measured.
    const auto apart = InkOf(Drawn(Line(u"A"))).right + std::lround(Width(u"V"));
    EXPECT_LT(InkOf(Drawn(Line(u"AV"))).right, apart);
}

TEST_F(Lettering, KeepsItsProportionsAtEverySize) {
    const std::u16string text = u"Output Ceiling -12.3 dB";
    const float em = Width(text, 100.0f) / 100.0f;
    for (const float pixels : {7.0f, 8.0f, 8.5f, 9.0f, 10.0f, 11.7f, 18.0f})
        EXPECT_NEAR(Width(text, pixels), em * pixels, 0.01f) << pixels;
}

TEST_F(Lettering, HasFourStyles) {
    auto line = Line(u"lily", 40.0f);
    const auto plain = Drawn(line);
    const auto plainWidth = lettering->Measure(line).width;
    line.bold = true;
    const auto bold = Drawn(line);
    EXPECT_GT(lettering->Measure(line).width, plainWidth * 1.05f);
    line.italic = true;
    const auto both = Drawn(line);
    line.bold = false;
    const auto italic = Drawn(line);
    const std::vector<const SBitmap*> all{&plain, &bold, &both, &italic};
    for (std::size_t n = 0; n < all.size(); ++n) {
        for (std::size_t other = 0; other < n; ++other) EXPECT_NE(all[n]->bytes, all[other]->bytes);
    }
    const auto total = [](const SBitmap& picture) {
        int sum = 0;
        for (const auto byte : picture.bytes) sum += byte;
        return sum;
    };
    EXPECT_GT(total(bold), total(plain) * 5 / 4);
    EXPECT_GT(total(both), total(italic) * 5 / 4);
    // An l leans to the right: its top stands further right than its foot.
    const auto lean = [this](bool isItalic) {
        auto letter = Line(u"l", 40.0f);
        letter.italic = isItalic;
        const auto picture = Drawn(letter);
        const auto ink = InkOf(picture);
        const auto top = InkOf(Cut(picture, 0, ink.top, picture.width, 3));
        const auto foot = InkOf(Cut(picture, 0, ink.bottom - 3, picture.width, 3));
        return top.left - foot.left;
    };
    EXPECT_EQ(lean(false), 0);
    EXPECT_GE(lean(true), 4);
}

// Places

TEST_F(Lettering, StandsInItsBoxAsAligned) {
    for (std::int32_t align = 0; align < 9; ++align) {
        auto line = Line(u"H", 20.0f, 61, 43);
        line.left = 10;
        line.top = 5;
        line.align = align;
        const auto ink = InkOf(Drawn(line));
        const float free = 61.0f - Width(u"H");
        const float left = 10.0f + free * static_cast<float>(align % 3) / 2.0f;
        const float over = 43.0f - (Ascent + Descent) * 20.0f;
        const float baseline = 5.0f + over * static_cast<float>(align / 3) / 2.0f + Ascent * 20.0f;
        // An H stands on the line, and its stems are a tenth of an em inside its advance.
        EXPECT_EQ(ink.bottom, std::lround(baseline)) << align;
        EXPECT_NEAR(static_cast<float>(ink.left), left + 1.8f, 1.0f) << align;
        EXPECT_NEAR(static_cast<float>(ink.right), left + Width(u"H") - 1.8f, 1.0f) << align;
    }
}

TEST_F(Lettering, WithoutAKnownAlignmentStandsAtTheTopLeft) {
    auto line = Line(u"Hg");
    const auto expected = Drawn(line);
    for (const std::int32_t align : {-1, 9, 100, std::numeric_limits<std::int32_t>::min()}) {
        line.align = align;
        EXPECT_TRUE(AreTheSame(Drawn(line), expected)) << align;
    }
}

TEST_F(Lettering, StandsStillWhateverItsLetters) {
    for (const std::int32_t align : {0, 3, 6}) {
        auto line = Line(u"Hx");
        line.align = align;
        const auto first = Cut(Drawn(line), 0, 0, 13, 40);
        for (const auto* const text : {u"Hg", u"H\u00C5", u"H", u"H."}) {
            line.text = text;
            EXPECT_TRUE(AreTheSame(Cut(Drawn(line), 0, 0, 13, 40), first)) << align;
        }
    }
}

TEST_F(Lettering, MovesByWholePixelsWithItsBox) {
    auto line = Line(u"Moves 12.3", 9.0f, 70, 20);
    line.align = 4;
    const auto still = Drawn(line);
    line.left = 7;
    line.top = 3;
    EXPECT_TRUE(AreTheSame(Cut(Drawn(line), 7, 3, 70, 20), still));
}

TEST_F(Lettering, WiderThanItsBoxFollowsItsAlignmentAndIsCutThere) {
    for (std::int32_t column = 0; column < 3; ++column) {
        auto line = Line(u"Much too wide for such a box", 14.0f, 300, 20);
        line.align = column;
        const auto whole = Drawn(line);
        line.width = 60;
        EXPECT_TRUE(AreTheSame(Drawn(line), Cut(whole, column * 120, 0, 60, 20))) << column;
    }
}

TEST_F(Lettering, HigherThanItsBoxFollowsItsAlignmentAndIsCutThere) {
    for (std::int32_t row = 0; row < 3; ++row) {
        auto line = Line(u"High", 30.0f, 80, 60);
        line.align = 3 * row;
        const auto whole = Drawn(line);
        line.height = 10;
        EXPECT_TRUE(AreTheSame(Drawn(line), Cut(whole, 0, row * 25, 80, 10))) << row;
    }
}

TEST_F(Lettering, NeverLeavesItsBox) {
    for (std::int32_t align = 0; align < 9; ++align) {
        auto line = Line(u"jfWide and high\u00C5\u0323", 30.0f, 33, 14);
        line.italic = true;
        line.left = 20;
        line.top = 11;
        line.align = align;
        auto picture = TransparentBitmap(80, 40);
        lettering->Draw(line, picture);
        const auto ink = InkOf(picture);
        ASSERT_FALSE(ink.IsEmpty());
        EXPECT_GE(ink.left, 20);
        EXPECT_GE(ink.top, 11);
        EXPECT_LE(ink.right, 53);
        EXPECT_LE(ink.bottom, 25);
    }
}

TEST_F(Lettering, DrawsThePartOfABoxThatIsInThePicture) {
    auto line = Line(u"Partly", 20.0f, 100, 40);
    line.align = 4;
    const auto whole = Drawn(line);
    for (const auto& [left, top] : {std::pair{-30, -8}, {40, 10}, {-30, 10}, {-50, -15}}) {
        line.left = left;
        line.top = top;
        auto picture = TransparentBitmap(60, 30);
        lettering->Draw(line, picture);
        const auto x = std::max(left, 0);
        const auto y = std::max(top, 0);
        const auto width = std::min(60, left + 100) - x;
        const auto height = std::min(30, top + 40) - y;
        EXPECT_TRUE(
            AreTheSame(Cut(picture, x, y, width, height), Cut(whole, x - left, y - top, width, height)))
            << left;
    }
}

// Ellipsis

TEST_F(Lettering, EndsInAnEllipsisWhereItIsTooWideAndKeepsAllThatHasRoom) {
    const std::u16string text = u"Oversampling";
    for (std::int32_t width = 1; width < 90; ++width) {
        auto line = Line(text, 12.0f, width, 20);
        line.ellipsis = true;
        const auto drawn = Drawn(line);
        std::u16string expected = text;
        if (Width(text, 12.0f) > static_cast<float>(width)) {
            for (std::size_t kept = text.size(); kept-- > 0;) {
                expected = text.substr(0, kept) + u"\u2026";
                if (Width(expected, 12.0f) <= static_cast<float>(width)) break;
            }
        }
        EXPECT_TRUE(AreTheSame(drawn, Drawn(Line(expected, 12.0f, width, 20)))) << width;
    }
}

TEST_F(Lettering, AlignsWhatTheEllipsisLeaves) {
    for (const std::int32_t align : {3, 4, 5}) {
        auto line = Line(u"Oversampling", 12.0f, 50, 20);
        line.align = align;
        line.ellipsis = true;
        auto shortened = Line(u"Oversa\u2026", 12.0f, 50, 20);
        shortened.align = align;
        EXPECT_TRUE(AreTheSame(Drawn(line), Drawn(shortened))) << align;
    }
}

TEST_F(Lettering, ABoxThatIsJustWideEnoughNeedsNoEllipsis) {
    for (float pixels = 7.0f; pixels < 20.0f; pixels += 0.37f) {
        auto line = Line(u"Threshold: -0.3 dB", pixels);
        line.width = static_cast<std::int32_t>(std::ceil(lettering->Measure(line).width));
        const auto plain = Drawn(line);
        line.ellipsis = true;
        EXPECT_TRUE(AreTheSame(Drawn(line), plain)) << pixels;
    }
    // To the last bit, at sizes that make the width a whole number.
    const float em = Width(u"-0.3 dB", 1000.0f) / 1000.0f;
    int whole = 0;
    for (std::int32_t width = 10; width < 200; ++width) {
        auto line = Line(u"-0.3 dB", static_cast<float>(width) / em, width, 100);
        if (lettering->Measure(line).width > static_cast<float>(width)) continue;
        const auto plain = Drawn(line);
        line.ellipsis = true;
        EXPECT_TRUE(AreTheSame(Drawn(line), plain)) << width;
        ++whole;
    }
    EXPECT_GT(whole, 50);
}

TEST_F(Lettering, AnEllipsisFollowsALetterAndNoBlank) {
    const auto width = static_cast<std::int32_t>(std::ceil(Width(u"Mid   \u2026")));
    auto line = Line(u"Mid     Side", 20.0f, width);
    line.ellipsis = true;
    EXPECT_TRUE(AreTheSame(Drawn(line), Drawn(Line(u"Mid\u2026", 20.0f, width))));
}

TEST_F(Lettering, AnEllipsisReplacesWholeCharacters) {
    const std::u16string face = u"\U0001F600"; // two units, and in the typeface
    std::u16string text;
    for (int n = 0; n < 9; ++n) text += face;
    for (std::int32_t width = 20; width < 120; ++width) {
        auto line = Line(text, 20.0f, width);
        line.ellipsis = true;
        const auto drawn = Drawn(line);
        bool isWhole = false;
        for (std::size_t kept = 0; kept < 9 && !isWhole; ++kept) {
            const auto shortened = text.substr(0, 2 * kept) + u"\u2026";
            isWhole = bool(AreTheSame(drawn, Drawn(Line(shortened, 20.0f, width))));
        }
        EXPECT_TRUE(isWhole) << width;
    }
}

// Colours

TEST_F(Lettering, BlendsItsColourOverThePicture) {
    const auto inside = [this](std::uint32_t colour, std::uint32_t ground) {
        auto line = Line(u"\u2588\u2588", 40.0f, 30, 30); // full blocks
        line.colour = colour;
        line.align = 4;
        auto picture = TransparentBitmap(30, 30);
        for (std::size_t n = 0; n < picture.bytes.size(); ++n)
            picture.bytes[n] = static_cast<std::uint8_t>(ground >> (8 * (n % 4)));
        lettering->Draw(line, picture);
        return PixelAt(picture, 15, 15);
    };
    EXPECT_EQ(inside(0xFF204060, 0), 0xFF204060u);
    EXPECT_EQ(inside(0xFF204060, 0xFFFFFFFF), 0xFF204060u);
    EXPECT_EQ(inside(0x80FF8000, 0), 0x80804000u);
    EXPECT_EQ(inside(0x80FF8000, 0xFFFFFFFF), 0xFFFFBF7Fu);
    EXPECT_EQ(inside(0x80FF8000, 0x40402010), 0xA0A05008u);
    EXPECT_EQ(inside(0x00FFFFFF, 0x40402010), 0x40402010u);
}

TEST_F(Lettering, LettersThatTouchDoNotCoverTwice) {
    auto line = Line(u"AVATToWAVAfff\u2588\u2588", 33.0f, 300, 60);
    line.bold = line.italic = true;
    line.colour = 0x64C0C0C0;
    const auto picture = Drawn(line);
    std::uint32_t most = 0;
    for (std::int32_t y = 0; y < 60; ++y) {
        for (std::int32_t x = 0; x < 300; ++x) most = std::max(most, PixelAt(picture, x, y) >> 24U);
    }
    EXPECT_EQ(most, 0x64u);
}

TEST_F(Lettering, IsGreyAtItsEdgesAndPremultiplied) {
    auto line = Line(u"Soft Oval", 30.0f);
    line.colour = 0xFFFF8040;
    const auto picture = Drawn(line);
    int partly = 0;
    for (std::int32_t y = 0; y < picture.height; ++y) {
        for (std::int32_t x = 0; x < picture.width; ++x) {
            const auto pixel = PixelAt(picture, x, y);
            const auto alpha = pixel >> 24U;
            if (alpha != 0 && alpha != 255) ++partly;
            EXPECT_EQ(pixel >> 16U & 255U, alpha);
            EXPECT_EQ(pixel >> 8U & 255U, (128 * alpha + 127) / 255);
            EXPECT_EQ(pixel & 255U, (64 * alpha + 127) / 255);
        }
    }
    EXPECT_GT(partly, 200);
}

TEST_F(Lettering, LeavesTheEndsOfRowsAlone) {
    SBitmap picture{40, 20, 170, EAlpha::Premultiplied, Pixels::PixelBytes(170 * 20, 7)};
    lettering->Draw(Line(u"MMMMMMMM", 16.0f, 100, 20), picture);
    for (std::size_t y = 0; y < 20; ++y) {
        for (std::size_t n = 160; n < 170; ++n) EXPECT_EQ(picture.bytes[170 * y + n], 7);
    }
}

// Rows of captions are crisp: the foot of an E, its middle and its top fill rows of their own.
TEST_F(Lettering, HintsItsHeightsAtTheSizesOfCaptions) {
    for (const float pixels : {8.0f, 9.0f, 10.0f}) {
        const auto picture = Drawn(Line(u"E", pixels, 20, 20));
        const auto ink = InkOf(picture);
        // A bar reaches over the whole letter; it is as dark in its middle as hinting can make it.
        const auto middle = (ink.left + ink.right) / 2;
        EXPECT_GE(PixelAt(picture, middle, ink.bottom - 1) >> 24U, 180u) << pixels;
        EXPECT_GE(PixelAt(picture, middle, ink.top) >> 24U, 180u) << pixels;
        EXPECT_LE(PixelAt(picture, middle, ink.top + 1) >> 24U, 60u) << pixels;
    }
}

// Letters stand where the measures say, to a quarter of a pixel: the same letter looks different at different
// fractions.
TEST_F(Lettering, PlacesLettersAtFractionsOfAPixel) {
    const auto picture = Drawn(Line(u"llllllllllll", 9.0f, 60, 20));
    const float advance = Width(u"l", 9.0f);
    std::vector<Pixels::PixelBytes> looks;
    for (int n = 1; n < 12; ++n) {
        const auto x = static_cast<std::int32_t>(std::floor(advance * static_cast<float>(n)));
        const auto look = Cut(picture, x, 0, 2, 20).bytes;
        if (std::find(looks.begin(), looks.end(), look) == looks.end()) looks.push_back(look);
    }
    EXPECT_GE(looks.size(), 3u);
    EXPECT_NEAR(static_cast<float>(InkOf(picture).right), advance * 12.0f, 1.5f);
}

TEST_F(Lettering, LooksTheSameWhateverTheUserHasSetForFonts) {
    const auto expected = Drawn(Line(u"Settings", 9.0f));
    setenv("FREETYPE_PROPERTIES", "autofitter:no-stem-darkening=0 autofitter:warping=1", 1);
    lettering = MakeLettering(library, search);
    EXPECT_TRUE(AreTheSame(Drawn(Line(u"Settings", 9.0f)), expected));
    unsetenv("FREETYPE_PROPERTIES");
}

// Gaps

TEST_F(Lettering, GapsStandBeforeEachLetterAndBehindTheLast) {
    const std::u16string text = u"Gain To";
    const auto gaps = lettering->Gaps(Line(text));
    ASSERT_EQ(gaps.size(), text.size() + 1);
    EXPECT_EQ(gaps.front(), 0.0f);
    for (std::size_t n = 0; n + 1 < text.size(); ++n) EXPECT_FLOAT_EQ(gaps[n], Width(text.substr(0, n))) << n;
    EXPECT_FLOAT_EQ(gaps.back(), Width(text));
    // The o of To stands under its roof.
    EXPECT_LT(gaps[text.size() - 1], Width(text.substr(0, text.size() - 1)));
    EXPECT_EQ(lettering->Gaps(Line(u"")), std::vector<float>{0.0f});
}

TEST_F(Lettering, GapsOfUnitsOfOneCharacterAreOne) {
    const auto gaps = lettering->Gaps(Line(u"a\U0001F600b"));
    ASSERT_EQ(gaps.size(), 5u);
    EXPECT_EQ(gaps[1], gaps[2]);
    EXPECT_GT(gaps[3], gaps[2] + 5.0f);
}
