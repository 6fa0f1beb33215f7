// Characters that the typeface lacks, and the fonts that have them.

#include "tests/pixels/held_finder.h"
#include "tests/pixels/lettering_fixture.h"
#include "tests/support/file_text.h"
#include "tests/support/golden_picture.h"

#include <filesystem>

using namespace KAV;
using namespace KAV::Pixels;
using namespace KAV::Tests;

namespace {

namespace fs = std::filesystem;

constexpr auto PlainFont = "/usr/share/fonts/truetype/dejavu/DejaVuSansMono.ttf"; // without kanji
constexpr auto Japanese = u"\u65E5\u672C\u8A9E";                                  // 3 letters
constexpr auto ThreeBoxes = u"\uFFFF\uFFFF\uFFFF";

std::string colourFont; // that is opened as one

FT_Error OpenedWithColours(FT_Library library, const char* path, FT_Long index, FT_Face* face) {
    const auto error = Platform::FreeType()->new_face(library, path, index, face);
    if (error == 0 && colourFont == path) (*face)->face_flags |= FT_FACE_FLAG_COLOR;
    return error;
}

int opened = 0;

FT_Error CountedOpen(FT_Library library, const char* path, FT_Long index, FT_Face* face) {
    ++opened;
    return Platform::FreeType()->new_face(library, path, index, face);
}

/// A lettering whose finder finds these fonts for every character.
class HelpedText : public CLetteringTest {
protected:
    void Begin(std::vector<SFontFile> fonts) {
        finder.fonts = std::move(fonts);
        helped = std::make_unique<CGlyphSearch>(finder.Maker());
        lettering = MakeLettering(library, *helped);
        ASSERT_NE(lettering, nullptr);
    }
    /// The fonts for so many characters are known.
    void Find(std::uint32_t count) {
        finder.Release();
        WaitForAnswers(*helped, count);
    }
    bool ShowsBoxes(std::u16string_view text) {
        const std::u16string boxes(text.size(), u'\uFFFF');
        return bool(AreTheSame(Drawn(Line(text)), Drawn(Line(boxes))));
    }

    CHeldFinder finder;
    std::unique_ptr<CGlyphSearch> helped;

    void TearDown() override { lettering.reset(); } // before the search
};

} // namespace

TEST_F(HelpedText, ShowsBoxesUntilTheFontsAreFoundAndSaysSoOnce) {
    Begin({{JapaneseFont, 0}});
    EXPECT_TRUE(ShowsBoxes(Japanese));
    EXPECT_TRUE(ShowsBoxes(Japanese));
    EXPECT_FALSE(lettering->HasNewGlyphs());
    Find(3);
    EXPECT_TRUE(lettering->HasNewGlyphs());
    EXPECT_FALSE(lettering->HasNewGlyphs());
    EXPECT_FALSE(ShowsBoxes(Japanese));
    EXPECT_FALSE(lettering->HasNewGlyphs());
    // Kanji are as wide as they are high.
    EXPECT_FLOAT_EQ(Width(Japanese), 60.0f);
    EXPECT_EQ(finder.Asked(), U"\u65E5\u672C\u8A9E");
}

TEST_F(HelpedText, SaysSoOnceForAllThatIsLookedFor) {
    Begin({{JapaneseFont, 0}});
    Drawn(Line(u"\u65E5"));
    Find(1);
    Drawn(Line(u"\u672C"));
    WaitForAnswers(*helped, 2);
    EXPECT_TRUE(lettering->HasNewGlyphs());
    EXPECT_FALSE(lettering->HasNewGlyphs());
}

TEST_F(HelpedText, IsNotSilentAboutNewsNorRepeatsThem) {
    Begin({{JapaneseFont, 0}});
    Drawn(Line(Japanese));
    Find(3);
    EXPECT_TRUE(lettering->HasNewGlyphs());
    EXPECT_TRUE(ShowsBoxes(u"\u0F40")); // Tibetan, which that font lacks as well
    WaitForAnswers(*helped, 4);
    EXPECT_FALSE(lettering->HasNewGlyphs());
    Drawn(Line(u"\u97F3"));
    WaitForAnswers(*helped, 5);
    EXPECT_TRUE(lettering->HasNewGlyphs());
}

// One of two labels is drawn again by chance in between. The other still shows boxes.
TEST_F(HelpedText, SaysSoEvenIfTheFontsHaveBeenUsedMeanwhile) {
    Begin({{JapaneseFont, 0}});
    Drawn(Line(Japanese));
    Find(3);
    EXPECT_FALSE(ShowsBoxes(Japanese));
    EXPECT_TRUE(lettering->HasNewGlyphs());
}

TEST_F(HelpedText, MeasuringAsksAsWell) {
    Begin({{JapaneseFont, 0}});
    const float boxes = Width(ThreeBoxes);
    EXPECT_EQ(Width(Japanese), boxes);
    Find(3);
    EXPECT_TRUE(lettering->HasNewGlyphs());
    EXPECT_GT(Width(Japanese), boxes);
    EXPECT_FLOAT_EQ(lettering->Gaps(Line(Japanese))[1], 20.0f);
}

TEST_F(HelpedText, AllOfAProcessShareWhatIsFound) {
    Begin({{JapaneseFont, 0}});
    const auto other = MakeLettering(library, *helped);
    Drawn(Line(Japanese));
    Find(3);
    EXPECT_FALSE(other->HasNewGlyphs()) << "it has shown no box";
    auto picture = TransparentBitmap(200, 40);
    other->Draw(Line(Japanese), picture);
    EXPECT_TRUE(AreTheSame(picture, Drawn(Line(Japanese))));
    EXPECT_EQ(finder.Asked().size(), 3u);
}

TEST_F(HelpedText, ABoxStandsForGoodWhereNoFontHasTheCharacter) {
    Begin({});
    EXPECT_TRUE(ShowsBoxes(Japanese));
    Find(3);
    EXPECT_FALSE(lettering->HasNewGlyphs());
    EXPECT_TRUE(ShowsBoxes(Japanese));
    EXPECT_EQ(finder.Asked().size(), 3u) << "and isn't looked for again";
}

TEST_F(HelpedText, FontsThatCannotBeUsedArePassedOver) {
    const auto folder = fs::temp_directory_path();
    const auto garbage = (folder / "garbage.ttf").string();
    WriteText(garbage, std::string(5000, '\7'));
    const auto cut = (folder / "cut.ttf").string();
    WriteText(cut, ReadText(JapaneseFont).substr(0, 3000));
    const auto empty = (folder / "empty.ttf").string();
    WriteText(empty, "");
    for (const auto& path :
        {garbage, cut, empty, (folder / "missing.ttf").string(), folder.string(), std::string(PlainFont)}) {
        CHeldFinder own;
        own.fonts = {{path, 0}, {JapaneseFont, 0}};
        own.Release();
        CGlyphSearch ownSearch(own.Maker());
        lettering = MakeLettering(library, ownSearch);
        Drawn(Line(Japanese));
        WaitForAnswers(ownSearch, 3);
        EXPECT_TRUE(lettering->HasNewGlyphs()) << path;
        EXPECT_FLOAT_EQ(Width(Japanese), 60.0f) << path;
        EXPECT_FALSE(ShowsBoxes(Japanese)) << path;
        lettering.reset();
    }
}

// All its tables are there, and the glyphs' own isn't whole.
TEST_F(HelpedText, AFontWhoseGlyphsAreDamagedIsPassedOver) {
    const auto path = (fs::temp_directory_path() / "damaged.ttf").string();
    auto bytes = ReadText(JapaneseFont);
    const auto entry = bytes.find("glyf");
    ASSERT_NE(entry, std::string::npos);
    const auto number = [&bytes](std::size_t at) {
        std::size_t value = 0;
        for (std::size_t n = 0; n < 4; ++n) value = value << 8U | static_cast<unsigned char>(bytes[at + n]);
        return value;
    };
    const auto offset = number(entry + 8);
    const auto length = number(entry + 12);
    std::fill_n(bytes.begin() + static_cast<std::ptrdiff_t>(offset), length, '\x7F');
    WriteText(path, bytes);
    Begin({{path, 0}, {JapaneseFont, 0}});
    Drawn(Line(Japanese));
    Find(3);
    EXPECT_TRUE(lettering->HasNewGlyphs());
    EXPECT_FALSE(ShowsBoxes(Japanese));
    EXPECT_FALSE(InkOf(Drawn(Line(Japanese))).IsEmpty());
}

TEST_F(HelpedText, ColourFontsArePassedOver) {
    colourFont = JapaneseFont;
    library.new_face = OpenedWithColours;
    Begin({{JapaneseFont, 0}});
    Drawn(Line(Japanese));
    Find(3);
    EXPECT_FALSE(lettering->HasNewGlyphs());
    EXPECT_TRUE(ShowsBoxes(Japanese));
}

TEST_F(HelpedText, AFontIsOpenedOnce) {
    opened = 0;
    library.new_face = CountedOpen;
    Begin({{"/nowhere", 0}, {JapaneseFont, 0}});
    Drawn(Line(Japanese));
    Find(3);
    Drawn(Line(Japanese));
    Drawn(Line(Japanese));
    EXPECT_EQ(opened, 2) << "that which can't be used included";
}

TEST_F(HelpedText, WhatItFoundStandsOnTheSameLineAsTheRest) {
    Begin({{JapaneseFont, 0}});
    Drawn(Line(Japanese));
    Find(3);
    const auto alone = Cut(Drawn(Line(u"H ")), 0, 0, 15, 40);
    EXPECT_TRUE(AreTheSame(Cut(Drawn(Line(u"H \u65E5")), 0, 0, 15, 40), alone));
    EXPECT_EQ(lettering->Measure(Line(Japanese)).height, lettering->Measure(Line(u"H")).height);
}

TEST_F(HelpedText, ALetteringMayEndWhileItsFontsAreLookedFor) {
    Begin({{JapaneseFont, 0}});
    Drawn(Line(Japanese));
    finder.WaitUntilAsked();
    lettering.reset();
    helped.reset();
    finder.Release();
    finder.WaitUntilEnded();
}

// The system's own fonts, by the process's own search.
TEST(SystemFonts, ShowJapanese) {
    const auto lettering = CLettering::Create();
    ASSERT_NE(lettering, nullptr);
    STextLine line;
    line.text = Japanese;
    line.pixels = 20.0f;
    line.colour = 0xFFFFFFFF;
    line.width = line.height = 70;
    const auto drawn = [&] {
        auto picture = TransparentBitmap(70, 70);
        lettering->Draw(line, picture);
        return picture;
    };
    const auto boxes = drawn();
    while (!lettering->HasNewGlyphs()) std::this_thread::yield();
    EXPECT_NE(drawn().bytes, boxes.bytes);
    line.text = ThreeBoxes;
    EXPECT_TRUE(AreTheSame(drawn(), boxes));
}

TEST(SystemFonts, GiveOutlinesWithoutColourThatHaveTheCharacter) {
    const auto finder = FindSystemFonts();
    ASSERT_NE(finder, nullptr);
    const auto fonts = finder->FontsWith(U'\u65E5');
    EXPECT_TRUE(std::any_of(
        fonts.begin(), fonts.end(), [](const SFontFile& font) { return font.path == JapaneseFont; }));
    EXPECT_TRUE(std::none_of(
        fonts.begin(), fonts.end(), [](const SFontFile& font) { return font.path == PlainFont; }));
    for (const auto& font : fonts) EXPECT_TRUE(fs::exists(font.path)) << font.path;
    EXPECT_TRUE(finder->FontsWith(U'\U0010FFFD').empty()) << "private, and nobody's here";
    EXPECT_FALSE(finder->FontsWith(U'a').empty());
}
