// Texts as they were looked at and found right: one picture for each theme, on the ground of a panel.

#include "tests/pixels/held_finder.h"
#include "tests/pixels/lettering_fixture.h"
#include "tests/support/golden_picture.h"

#include <array>

using namespace KAV;
using namespace KAV::Pixels;
using namespace KAV::Tests;

namespace {

constexpr std::uint32_t Bright = 0xFFE0E0E0;

class TextPictures : public CLetteringTest {
protected:
    SBitmap picture;

    void Begin(std::int32_t width, std::int32_t height) {
        picture = TransparentBitmap(width, height);
        Fill(0, 0, width, height, 0xFF282828);
    }
    void Fill(
        std::int32_t left, std::int32_t top, std::int32_t width, std::int32_t height, std::uint32_t colour) {
        for (std::int32_t y = top; y < top + height; ++y) {
            for (std::int32_t x = left; x < left + width; ++x) {
                for (std::size_t n = 0; n < 4; ++n)
                    picture.bytes[static_cast<std::size_t>(y * picture.stride + 4 * x) + n] =
                        static_cast<std::uint8_t>(colour >> (8 * n));
            }
        }
    }
    static STextLine At(std::int32_t left, std::int32_t top, std::int32_t width, std::int32_t height,
        std::u16string_view text, float pixels) {
        auto line = Line(text, pixels, width, height);
        line.left = left;
        line.top = top;
        line.align = 3;
        line.colour = Bright;
        return line;
    }
    /// Nine boxes, one for each alignment.
    void DrawAligned(std::u16string_view text, bool ellipsis) {
        Begin(3 * 74 + 4, 3 * 34 + 4);
        for (std::int32_t align = 0; align < 9; ++align) {
            auto line = At(4 + align % 3 * 74, 4 + align / 3 * 34, 70, 30, text, 12.0f);
            Fill(line.left, line.top, line.width, line.height, 0xFF404850);
            line.align = align;
            line.ellipsis = ellipsis;
            lettering->Draw(line, picture);
        }
    }
};

} // namespace

TEST_F(TextPictures, Sizes) {
    constexpr std::array<float, 6> sizes{8, 9, 10, 12, 14, 18};
    constexpr std::array<const char16_t*, 3> texts{u"Threshold: -12.3 dB  Release 0.40 ms",
        u"Auto Release  OS x4  Oversampling", u"L R Ls Rs LFE 16 AVATo fill"};
    Begin(330, 312);
    std::int32_t top = 4;
    for (const float size : sizes) {
        for (const auto* const text : texts) {
            lettering->Draw(At(4, top, 322, 22, text, size), picture);
            top += static_cast<std::int32_t>(size) + 4;
        }
        top += 3;
    }
    EXPECT_TRUE(IsTheCommittedPicture(picture, "text_sizes"));
}

TEST_F(TextPictures, FractionsOfSizes) {
    Begin(150, 150);
    std::int32_t top = 2;
    for (float size = 8.0f; size < 11.0f; size += 0.333f, top += 16)
        lettering->Draw(At(4, top, 140, 16, u"Ceiling -0.3 dB 8.5 kHz", size), picture);
    EXPECT_TRUE(IsTheCommittedPicture(picture, "text_fractions"));
}

TEST_F(TextPictures, Alignments) {
    DrawAligned(u"Gain: jg 7", false);
    EXPECT_TRUE(IsTheCommittedPicture(picture, "text_alignments"));
}

TEST_F(TextPictures, AlignmentsOfTextsThatAreTooWide) {
    DrawAligned(u"Much wider than this", false);
    EXPECT_TRUE(IsTheCommittedPicture(picture, "text_wide"));
}

TEST_F(TextPictures, AlignmentsOfEllipses) {
    DrawAligned(u"Much wider than this", true);
    EXPECT_TRUE(IsTheCommittedPicture(picture, "text_ellipses"));
}

TEST_F(TextPictures, Styles) {
    Begin(250, 110);
    std::int32_t top = 2;
    for (const float size : {9.0f, 12.0f, 20.0f}) {
        for (const int style : {0, 1, 2, 3}) {
            auto line = At(style % 2 == 0 ? 4 : 126, top, 120, 24, u"Limiter 12.5 WAVE", size);
            line.bold = style % 2 == 1;
            line.italic = style / 2 == 1;
            line.ellipsis = true;
            lettering->Draw(line, picture);
            if (style == 1 || style == 3) top += static_cast<std::int32_t>(size) + 4;
        }
    }
    EXPECT_TRUE(IsTheCommittedPicture(picture, "text_styles"));
}

TEST_F(TextPictures, Colours) {
    Begin(200, 84);
    Fill(100, 0, 100, 84, 0xFFD8D0C0);
    std::int32_t top = 2;
    for (const std::uint32_t colour : {0xFFFFFFFFU, 0xFF000000U, 0x64C0C0C0U, 0xC0FF6020U, 0x802080FFU}) {
        auto line = At(4, top, 192, 16, u"Half of it on dark, half on light ground", 10.0f);
        line.colour = colour;
        line.align = 4;
        lettering->Draw(line, picture);
        top += 16;
    }
    EXPECT_TRUE(IsTheCommittedPicture(picture, "text_colours"));
}

TEST_F(TextPictures, Scripts) {
    CHeldFinder finder;
    finder.fonts = {{JapaneseFont, 0}};
    CGlyphSearch helped(finder.Maker());
    lettering = MakeLettering(library, helped);
    constexpr std::array<const char16_t*, 6> texts{
        u"Gr\u00F6\u00DFe \u00E6\u00F8\u0159\u0142 \u20AC \u00B1\u221E",
        u"\u0391\u03C5\u03B4\u03AF\u03C9 \u0394\u03AD\u03BB\u03C4\u03B1",
        u"\u041F\u0440\u0438\u0432\u0435\u0442 \u0451\u0436",
        u"\u05E9\u05DC\u05D5\u05DD \u0645\u0631\u062D\u0628\u0627",
        u"\u30DE\u30B9\u30BF\u30FC \u65E5\u672C\u8A9E ok",
        u"a\xD800"
        u"b\tc \U0001F600"};
    Begin(320, 170);
    for (const bool isFound : {false, true}) {
        const std::int32_t left = isFound ? 162 : 4;
        std::int32_t top = 2;
        for (const auto* const text : texts) {
            lettering->Draw(At(left, top, 150, 12, text, 9.0f), picture);
            auto larger = At(left, top + 11, 150, 16, text, 13.0f);
            larger.bold = true;
            lettering->Draw(larger, picture);
            top += 28;
        }
        finder.Release();
        while (!isFound && !lettering->HasNewGlyphs()) std::this_thread::yield();
    }
    EXPECT_TRUE(IsTheCommittedPicture(picture, "text_scripts"));
    lettering.reset(); // before the search
}
