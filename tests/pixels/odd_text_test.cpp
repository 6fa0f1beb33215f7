// Texts that nobody means: what they look like, and that they cost little.

#include "tests/pixels/lettering_fixture.h"
#include "tests/support/golden_picture.h"

#include <cmath>
#include <limits>
#include <new>

using namespace KAV;
using namespace KAV::Pixels;
using namespace KAV::Tests;

namespace {

using OddText = CLetteringTest;

int rendered = 0; // glyphs

FT_Error CountedRender(FT_GlyphSlot slot, FT_Render_Mode mode) {
    ++rendered;
    return Platform::FreeType()->render_glyph(slot, mode);
}

FT_Error NoMemoryForALibrary(FT_Memory, FT_Library*) {
    return FT_Err_Out_Of_Memory;
}
FT_Error NoFace(FT_Library, const FT_Byte*, FT_Long, FT_Long, FT_Face*) {
    return FT_Err_Unknown_File_Format;
}
FT_Error NoMemoryForAFace(FT_Library, const FT_Byte*, FT_Long, FT_Long, FT_Face*) {
    return FT_Err_Out_Of_Memory;
}
FT_Error NoMemoryForAGlyph(FT_Face, FT_UInt, FT_Int32) {
    return FT_Err_Out_Of_Memory;
}
FT_Error NoGlyph(FT_Face, FT_UInt, FT_Int32) {
    return FT_Err_Invalid_Outline;
}

} // namespace

TEST_F(OddText, ControlCharactersAreBlanks) {
    const auto expected = Drawn(Line(u"a b"));
    for (const char16_t control :
        std::u16string{0, 1, 9, 10, 13, 27, 31, 127, 128, 0x85, 0x9F, 0x2028, 0x2029}) {
        const std::u16string text{u'a', control, u'b'};
        EXPECT_TRUE(AreTheSame(Drawn(Line(text)), expected)) << int{control};
    }
}

TEST_F(OddText, AZeroEndsNothing) {
    const std::u16string text(u"a\0b", 3);
    EXPECT_EQ(Width(text), Width(u"a b"));
    EXPECT_EQ(lettering->Gaps(Line(text)).size(), 4u);
}

TEST_F(OddText, MarksThatDirectTheLayoutAreNothing) {
    for (const char16_t mark : std::u16string{0xAD, 0x200B, 0x200D, 0x200F, 0x202A, 0x2060, 0xFE0F, 0xFEFF}) {
        const std::u16string text{u'l', mark, u'l'};
        EXPECT_TRUE(AreTheSame(Drawn(Line(text)), Drawn(Line(u"ll")))) << int{mark};
        EXPECT_EQ(Width(text), Width(u"ll")) << int{mark};
    }
}

TEST_F(OddText, HalvesOfPairsAreBoxes) {
    const auto box = Drawn(Line(u"a\uFFFFb")); // no character of any font
    EXPECT_NE(box.bytes, Drawn(Line(u"a b")).bytes);
    for (const char16_t half : std::u16string{0xD800, 0xDBFF, 0xDC00, 0xDFFF}) {
        const std::u16string inside{u'a', half, u'b'};
        EXPECT_TRUE(AreTheSame(Drawn(Line(inside)), box)) << int{half};
    }
    const auto last = Drawn(Line(u"a\uFFFF"));
    EXPECT_TRUE(AreTheSame(Drawn(Line(std::u16string{u'a', char16_t{0xD83D}})), last));
    // Two low ones, and the halves in the wrong order.
    const auto two = Drawn(Line(u"\uFFFF\uFFFF"));
    EXPECT_TRUE(AreTheSame(Drawn(Line(std::u16string{0xDE00, 0xDE00})), two));
    EXPECT_TRUE(AreTheSame(Drawn(Line(std::u16string{0xDE00, 0xD83D})), two));
}

TEST_F(OddText, GreekCyrillicHebrewAndArabicAreInTheTypefaceAndStandInTheOrderOfTheText) {
    EXPECT_EQ(search.Answers(), 0u);
    for (const auto& [text, first, second] :
        {std::tuple{u"\u0394\u03B1", u"\u0394", u"\u03B1"}, {u"\u0416\u0451", u"\u0416", u"\u0451"},
            {u"\u05E9\u05DC", u"\u05E9", u"\u05DC"}, {u"\u0645\u0631", u"\u0645", u"\u0631"}}) {
        const auto gap = lettering->Gaps(Line(text))[1];
        EXPECT_FLOAT_EQ(gap, Width(first));
        EXPECT_FLOAT_EQ(Width(text), Width(first) + Width(second));
        EXPECT_NE(Drawn(Line(text)).bytes, Drawn(Line(u"\uFFFF\uFFFF")).bytes);
    }
    EXPECT_EQ(search.FontsWith(U'\u0416'), nullptr) << "nobody has asked before";
}

TEST_F(OddText, AStyleThatLacksALetterTakesItFromThePlainOne) {
    auto line = Line(u"\u0645"); // not in the oblique style
    const auto plain = Drawn(line);
    line.italic = true;
    EXPECT_TRUE(AreTheSame(Drawn(line), plain));
}

TEST_F(OddText, WithoutASizeABoxAColourOrLettersIsNothing) {
    const auto isEmpty = [this](const STextLine& line) {
        auto picture = TransparentBitmap(50, 50);
        lettering->Draw(line, picture);
        return InkOf(picture).IsEmpty();
    };
    constexpr auto nan = std::numeric_limits<float>::quiet_NaN();
    for (const float pixels : {0.0f, -12.0f, nan, -std::numeric_limits<float>::infinity(), 0.001f}) {
        EXPECT_TRUE(isEmpty(Line(u"text", pixels))) << pixels;
        EXPECT_LE(lettering->Measure(Line(u"text", pixels)).width, 0.01f) << pixels;
        EXPECT_EQ(lettering->Gaps(Line(u"text", pixels)).size(), 5u) << pixels;
    }
    EXPECT_TRUE(isEmpty(Line(u"")));
    EXPECT_TRUE(isEmpty(Line(u"text", 20.0f, 0, 40)));
    EXPECT_TRUE(isEmpty(Line(u"text", 20.0f, 40, 0)));
    EXPECT_TRUE(isEmpty(Line(u"text", 20.0f, -40, 40)));
    EXPECT_TRUE(isEmpty(Line(u"text", 20.0f, 40, std::numeric_limits<std::int32_t>::min())));
    auto none = TransparentBitmap(0, 0);
    lettering->Draw(Line(u"text"), none);
    EXPECT_FALSE(isEmpty(Line(u"text")));
}

TEST_F(OddText, HugeSizesAndBoxesAreBounded) {
    constexpr auto most = std::numeric_limits<std::int32_t>::max();
    EXPECT_EQ(lettering->Measure(Line(u"M", 1e30f)), lettering->Measure(Line(u"M", 1000.0f)));
    EXPECT_EQ(lettering->Measure(Line(u"M", std::numeric_limits<float>::infinity())),
        lettering->Measure(Line(u"M", 1000.0f)));
    for (std::int32_t align = 0; align < 9; ++align) {
        auto line = Line(u"Huge box", 20.0f, most, most);
        line.align = align;
        auto picture = TransparentBitmap(50, 50);
        lettering->Draw(line, picture);
        EXPECT_EQ(InkOf(picture).IsEmpty(), align != 0) << align;
        line.left = line.top = most - 10;
        lettering->Draw(line, picture);
        line.left = line.top = -most;
        lettering->Draw(line, picture);
    }
}

TEST_F(OddText, TenThousandLettersCostWhatShows) {
    library.render_glyph = CountedRender;
    const std::u16string text(10000, u'w');
    for (const bool ellipsis : {false, true}) {
        for (const std::int32_t align : {3, 4, 5}) {
            auto line = Line(text, 10.0f, 100, 16);
            line.align = align;
            line.ellipsis = ellipsis;
            rendered = 0;
            const auto ink = InkOf(Drawn(line));
            EXPECT_LE(rendered, 20) << align;
            // An ellipsis leaves less than the room of a letter.
            EXPECT_LE(ink.left, ellipsis ? 10 : 2) << align;
            EXPECT_GE(ink.right, ellipsis ? 90 : 98) << align;
        }
    }
    const float width = Width(u"w", 10.0f);
    EXPECT_NEAR(Width(text, 10.0f), 10000 * width, width);
    const auto gaps = lettering->Gaps(Line(text, 10.0f));
    ASSERT_EQ(gaps.size(), 10001u);
    EXPECT_TRUE(std::is_sorted(gaps.begin(), gaps.end()));
}

// The library's errors

TEST_F(OddText, WithoutALibraryOrATypefaceThereIsNoLettering) {
    auto broken = library;
    broken.new_library = NoMemoryForALibrary;
    EXPECT_EQ(MakeLettering(broken, search), nullptr);
    broken = library;
    broken.new_memory_face = NoFace;
    EXPECT_EQ(MakeLettering(broken, search), nullptr);
    broken.new_memory_face = NoMemoryForAFace;
    EXPECT_EQ(MakeLettering(broken, search), nullptr);
}

TEST_F(OddText, AStyleThatCannotBeReadIsThePlainOne) {
    const auto plain = Drawn(Line(u"text"));
    library.new_memory_face = NoFace;
    auto line = Line(u"text");
    line.bold = true;
    EXPECT_TRUE(AreTheSame(Drawn(line), plain));
}

TEST_F(OddText, MemoryThatIsShortIsToldAndAGlyphThatCannotBeDrawnLeftOut) {
    const auto whole = Drawn(Line(u"text"));
    library.load_glyph = NoMemoryForAGlyph;
    EXPECT_THROW(Drawn(Line(u"text")), std::bad_alloc);
    library.load_glyph = NoGlyph;
    EXPECT_TRUE(InkOf(Drawn(Line(u"text"))).IsEmpty());
    library = *Platform::FreeType();
    EXPECT_TRUE(AreTheSame(Drawn(Line(u"text")), whole));
}

TEST(LetteringOfProcess, TwoOfThemShareNothing) {
    auto first = CLettering::Create();
    const auto second = CLettering::Create();
    ASSERT_NE(first, nullptr);
    ASSERT_NE(second, nullptr);
    STextLine line;
    line.text = u"text";
    line.pixels = 10.0f;
    const auto before = second->Measure(line);
    first.reset();
    EXPECT_EQ(second->Measure(line), before);
}
