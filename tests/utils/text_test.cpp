#include "utils/text.h"

#include <array>
#include <gtest/gtest.h>
#include <string>

using namespace KAV::Utils;
using namespace std::string_literals;

TEST(CopyText, CutsToTheBufferAndAddsAZero) {
    std::array<char, 8> buffer;
    buffer.fill('#');
    CopyText("Threshold (1)", buffer);
    EXPECT_STREQ(buffer.data(), "Thresho");
}

TEST(CopyText, LeavesBytesBehindTheZeroAlone) {
    std::array<char, 8> buffer;
    buffer.fill('#');
    CopyText("dB", buffer);
    EXPECT_EQ(std::string(buffer.data(), buffer.size()), std::string("dB\0#####", 8));
}

TEST(CopyText, NeverSplitsACharacter) {
    std::array<char, 4> buffer{};
    CopyText("ab\xC3\xA4", buffer); // the second byte of the character would be the fourth
    EXPECT_STREQ(buffer.data(), "ab");
    CopyText("a\xE2\x82\xAC", buffer);
    EXPECT_STREQ(buffer.data(), "a");
    CopyText("\xF0\x9F\x8E\xB5", buffer);
    EXPECT_STREQ(buffer.data(), "");
}

TEST(CopyText, LeavesAnEmptyBufferUntouched) {
    char byte = '#';
    CopyText("text", std::span<char>(&byte, 0));
    EXPECT_EQ(byte, '#');
}

TEST(Utf, ConvertsEveryCharacterThereAndBack) {
    for (char32_t c = 0; c <= 0x10FFFF; c += c < 0x3000 || c > 0xD700 ? 1 : 7) {
        if (c >= 0xD800 && c <= 0xDFFF) continue;
        if (c == 0x11000) c = 0x10F000; // continue near the end of the range
        std::u16string wide;
        if (c < 0x10000) {
            wide += static_cast<char16_t>(c);
        } else {
            wide += static_cast<char16_t>(0xD800 + ((c - 0x10000) >> 10));
            wide += static_cast<char16_t>(0xDC00 + ((c - 0x10000) & 0x3FF));
        }
        const auto narrow = ToUtf8(wide);
        ASSERT_EQ(narrow.size(), c < 0x80 ? 1u : c < 0x800 ? 2u : c < 0x10000 ? 3u : 4u) << std::hex << +c;
        ASSERT_EQ(ToUtf16(narrow), wide) << std::hex << +c;
    }
}

TEST(Utf, EmptyTextsAreEmptyAndZerosAreKept) {
    EXPECT_EQ(ToUtf16(""), u"");
    EXPECT_EQ(ToUtf8(u""), "");
    EXPECT_EQ(ToUtf16("a\0b"s), u"a\0b"s);
    EXPECT_EQ(ToUtf8(u"a\0b"s), "a\0b"s);
}

TEST(Utf, IllFormedUtf8GivesNothing) {
    for (const char* const text :
        {"\x80", "abc\xC3", "\xE2\x82", "\xF0\x9F\x8E", "\xC3(", "\xE2(\xA1", // cut or broken sequences
            "\xC0\x80", "\xC1\xBF", "\xE0\x80\x80", "\xE0\x9F\xBF", "\xF0\x80\x80\x80", // overlong forms
            "\xED\xA0\x80", "\xED\xBF\xBF", "\xED\xA0\x80\xED\xB0\x80",                 // surrogates
            "\xF4\x90\x80\x80", "\xF8\x88\x80\x80\x80", "\xFE", "\xFF"}) { // beyond the last character
        EXPECT_EQ(ToUtf16(text), u"") << text;
        EXPECT_EQ(ToUtf16("good" + std::string(text) + "good"), u"") << text;
    }
}

TEST(Utf, SurrogatesWithoutPartnersGiveNothing) {
    for (const auto& text : {u"\xD800"s, u"a\xD800"s, u"\xD800z"s, u"\xDC00"s, u"a\xDFFFz"s, u"\xDC00\xD800"s,
             u"\xD800\xD800\xDC00"s}) {
        EXPECT_EQ(ToUtf8(text), "");
    }
}

TEST(Utf, RepairingReplacesWhatIsIllFormedAndKeepsTheRest) {
    EXPECT_EQ(ToUtf16Repaired("good\xC3"), u"good\xFFFD");
    EXPECT_EQ(ToUtf16Repaired("a\xFFz"), u"a\xFFFDz");
    EXPECT_EQ(ToUtf16Repaired("all good \xC3\xA4"), u"all good \xE4");
}

TEST(Split, KeepsEmptyPiecesAndTheOneBehindTheLastDelimiter) {
    using Pieces = std::vector<std::string_view>;
    EXPECT_EQ(Split("a;b;c", ";"), (Pieces{"a", "b", "c"}));
    EXPECT_EQ(Split("a;b;", ";"), (Pieces{"a", "b", ""}));
    EXPECT_EQ(Split(";;", ";"), (Pieces{"", "", ""}));
    EXPECT_EQ(Split("a|*|b|*", "|*|"), (Pieces{"a", "b|*"}));
    EXPECT_EQ(Split("aaa", "aa"), (Pieces{"", "a"}));
    EXPECT_EQ(Split("no delimiter", "||"), (Pieces{"no delimiter"}));
    EXPECT_EQ(Split("all of it", ""), (Pieces{"all of it"}));
}

TEST(Split, AnEmptyTextHasNoPieces) {
    EXPECT_TRUE(Split(std::string_view(), ";").empty());
    EXPECT_TRUE(Split(std::u16string_view(), u";").empty());
}

TEST(Split, TakesWideTexts) {
    EXPECT_EQ(Split(u"1.0||http://x||", u"||"), (std::vector<std::u16string_view>{u"1.0", u"http://x", u""}));
}

TEST(ToUpper, PairsLatinGreekAndCyrillicAsUnicodeDoes) {
    EXPECT_EQ(ToUpper(u"kvp.Wav 09 [@`{]"), u"KVP.WAV 09 [@`{]");
    EXPECT_EQ(ToUpper(u"\u00E0\u00F6\u00F7\u00F8\u00FE\u00FF"), u"\u00C0\u00D6\u00F7\u00D8\u00DE\u0178");
    EXPECT_EQ(ToUpper(u"\u0101\u012F\u0131\u0137\u0138\u013A\u0148\u0149\u014B\u0177\u017A\u017E\u017F"),
        u"\u0100\u012EI\u0136\u0138\u0139\u0147\u0149\u014A\u0176\u0179\u017DS");
    EXPECT_EQ(ToUpper(u"\u03AC\u03AD\u03AE\u03AF\u03B1\u03C1\u03C2\u03C3\u03C9\u03CB\u03CC\u03CD\u03CE"),
        u"\u0386\u0388\u0389\u038A\u0391\u03A1\u03A3\u03A3\u03A9\u03AB\u038C\u038E\u038F");
    EXPECT_EQ(ToUpper(u"\u0461\u0481\u048B\u04BF\u04C2\u04CE\u04CF\u04D1\u052F"),
        u"\u0460\u0480\u048A\u04BE\u04C1\u04CD\u04C0\u04D0\u052E");
}

TEST(ToUpper, MovesCyrillicBy32AndYoBy80) {
    for (char16_t c = 0x430; c <= 0x44F; ++c)
        EXPECT_EQ(ToUpper(std::u16string(1, c)), std::u16string(1, static_cast<char16_t>(c - 32)));
    EXPECT_EQ(ToUpper(u"\u0451"), u"\u0401");
    EXPECT_EQ(ToUpper(u"\u0450\u045F"), u"\u0400\u040F");
}

TEST(ToUpper, LeavesCapitalsAndWhatHasNoCapitalAlone) {
    for (const std::u16string_view text : {u"ABC\u00C4\u00D7\u0100\u0130\u0139\u0178\u0391\u0401\u0410\u04C0",
             u"\u00DF\u00B5\u0390\u03B0\u221E", u"\u4E00\U0001F600\u0530", u""})
        EXPECT_EQ(ToUpper(text), text);
    std::u16string all;
    for (char16_t c = 1; c < 0x600; ++c) all += c;
    EXPECT_EQ(ToUpper(ToUpper(all)), ToUpper(all));
}

TEST(ToLower, ChangesTheLettersAToZAlone) {
    EXPECT_EQ(ToLower(u"KVP.Wav \xC4\xD6 [@Z`]"), u"kvp.wav \xC4\xD6 [@z`]");
}
