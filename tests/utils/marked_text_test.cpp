#include "utils/marked_text.h"

#include <gtest/gtest.h>
#include <string>
#include <vector>

using namespace KAV::Utils;

namespace {

std::vector<std::string> Pieces(std::string_view text, std::string_view delimiter) {
    std::vector<std::string> pieces;
    CPieces walk(text, delimiter);
    while (walk.Next()) pieces.emplace_back(walk.Piece());
    return pieces;
}

using Texts = std::vector<std::string>;

} // namespace

TEST(ExtractTag, GivesWhatStandsBetweenTheMarksInTheirOrder) {
    EXPECT_EQ(ExtractTag("x<name a=\"1\">value</name>", "<name", ">", "<"), "value");
    EXPECT_EQ(ExtractTag("a<b>c<name>d<", "<name", ">", "<"), "d");
    EXPECT_EQ(ExtractTag("<simd>0</simd><simd>1</simd>", "<simd", ">", "</"), "0");
}

TEST(ExtractTag, IsEmptyWhenAMarkIsMissing) {
    for (const char* const text : {"", "name>v<", "<name", "<name>", "<name>value", "<name></name>"})
        EXPECT_EQ(ExtractTag(text, "<name", ">", "<"), "") << text;
}

TEST(Pieces, KeepEmptyOnesAndEndWithTheLast) {
    EXPECT_EQ(Pieces("a\r\n\r\nb", "\r\n"), (Texts{"a", "", "b"}));
    EXPECT_EQ(Pieces("a\r\n", "\r\n"), (Texts{"a", ""}));
    EXPECT_EQ(Pieces("a\nb\r", "\r\n"), (Texts{"a\nb\r"}));
    EXPECT_EQ(Pieces("", "\r\n"), Texts{});
}

TEST(ReplaceAll, ReplacesFromLeftToRightInOnePass) {
    EXPECT_EQ(ReplaceAll("aXbXXc", "X", "yy"), "ayybyyyyc");
    EXPECT_EQ(ReplaceAll("aaa", "aa", "b"), "ba");
    EXPECT_EQ(ReplaceAll("ab", "b", "bb"), "abb");
    EXPECT_EQ(ReplaceAll("abc", "abc", ""), "");
    EXPECT_EQ(ReplaceAll("", "x", "y"), "");
}

TEST(FindMark, CountsWhatItHasPassedOver) {
    const auto before = SearchedBytes();
    EXPECT_EQ(FindMark("0123456789", "5"), 5u);
    EXPECT_EQ(SearchedBytes(), before + 5);
    EXPECT_EQ(FindMark("0123456789", "x"), std::string_view::npos);
    EXPECT_EQ(SearchedBytes(), before + 15);
}
