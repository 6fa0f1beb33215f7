#include "tools/kavhost/base/text.h"

#include <gtest/gtest.h>
#include <limits>

using namespace KAV::Host;

TEST(ReadNumber, TakesANumberFollowedByAUnit) {
    const auto number = ReadNumber("  -6.25 dB ");
    ASSERT_TRUE(number);
    EXPECT_EQ(number->value, -6.25);
    EXPECT_EQ(number->unit, "dB");
    EXPECT_EQ(number->decimals, 2);
}

TEST(ReadNumber, TakesAPlusSignAndInfinity) {
    EXPECT_EQ(ReadNumber("+0.5")->value, 0.5);
    EXPECT_EQ(ReadNumber("-inf dB")->value, -std::numeric_limits<double>::infinity());
    EXPECT_EQ(ReadNumber("1.5e3")->value, 1500);
    EXPECT_EQ(ReadNumber("1.5e3")->decimals, 1);
}

TEST(ReadNumber, RefusesWhatDoesNotBeginWithANumber) {
    for (const char* text : {"", " ", "dB", "x4", "+-3", "nan", "-", "."})
        EXPECT_FALSE(ReadNumber(text)) << text;
}

TEST(ReadNumber, DoesNotReadADecimalComma) {
    EXPECT_EQ(ReadNumber("6,5")->value, 6);
    EXPECT_EQ(ReadNumber("6,5")->unit, ",5"); // not a unit of anything, so it will be refused
}

TEST(ReadIndex, TakesNothingButAWholeNumber) {
    EXPECT_EQ(ReadIndex("12"), 12);
    for (const char* text : {"", "1.0", "1 ", "x", "99999999999"}) EXPECT_FALSE(ReadIndex(text)) << text;
}

TEST(EditDistance, CountsChangesAdditionsAndRemovals) {
    EXPECT_EQ(EditDistance("", "abc"), 3u);
    EXPECT_EQ(EditDistance("abc", ""), 3u);
    EXPECT_EQ(EditDistance("kitten", "sitting"), 3u);
    EXPECT_EQ(EditDistance("Release", "release"), 0u);
}

TEST(Nearest, IsTheCandidateWithTheFewestDifferences) {
    const std::vector<std::string> names{"Input Gain", "Threshold", "Release"};
    EXPECT_EQ(*Nearest("treshold", names), "Threshold");
    EXPECT_EQ(*Nearest("gain", names), "Input Gain");
    EXPECT_EQ(Nearest("gain", {}), nullptr);
}

TEST(Fixed, WritesTheWishedDecimals) {
    EXPECT_EQ(Fixed(-6.125, 2), "-6.12");
    EXPECT_EQ(Fixed(1.0005, 3), "1.000"); // the nearest double is below
    EXPECT_EQ(Fixed(16777217, 0), "16777217");
    EXPECT_EQ(Fixed(-std::numeric_limits<double>::infinity(), 2), "-inf");
    EXPECT_EQ(Fixed(std::numeric_limits<double>::max(), 2).size(), 312u);
}

TEST(Utf8, SurvivesTheWayThroughAPath) {
    const std::string name = "\xC3\xA4\xE2\x82\xAC\xF0\x9F\x8E\xB5.wav";
    EXPECT_EQ(Utf8(PathOf(name)), name);
}
