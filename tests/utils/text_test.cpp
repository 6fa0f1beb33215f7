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

TEST(ToLower, ChangesTheLettersAToZAlone) {
    EXPECT_EQ(ToLower(u"KVP.Wav \xC4\xD6 [@Z`]"), u"kvp.wav \xC4\xD6 [@z`]");
}
