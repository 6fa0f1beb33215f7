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

TEST(ReadNumber, TakesAMinusSignOfEitherKind) {
    const auto number = ReadNumber(" \xE2\x88\x92"
                                   "12.5 dB");
    ASSERT_TRUE(number);
    EXPECT_EQ(number->value, -12.5);
    EXPECT_EQ(number->decimals, 1);
    EXPECT_EQ(number->unit, "dB");
    EXPECT_EQ(ReadNumber("\xE2\x88\x92inf")->value, -std::numeric_limits<double>::infinity());
}

TEST(ReadNumber, RefusesWhatDoesNotBeginWithANumber) {
    for (const char* text : {"", " ", "dB", "x4", "+-3", "nan", "-", ".", "\xE2\x88\x92", "\xE2\x88\x92-3",
             "-\xE2\x88\x92"
             "3",
             "+\xE2\x88\x92"
             "3",
             "\xE2\x88\x93"
             "3"})
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

TEST(Fixed, WritesNoSignInFrontOfZero) {
    EXPECT_EQ(Fixed(-0.004, 2), "0.00");
    EXPECT_EQ(Fixed(-0.0, 0), "0");
    EXPECT_EQ(Fixed(-0.006, 2), "-0.01");
    EXPECT_EQ(Fixed(-10, 1), "-10.0");
    EXPECT_EQ(Shortest(-0.0), "0");
    EXPECT_EQ(Shortest(-0.5), "-0.5");
}

TEST(Utf8, SurvivesTheWayThroughAPath) {
    const std::string name = "\xC3\xA4\xE2\x82\xAC\xF0\x9F\x8E\xB5.wav";
    EXPECT_EQ(Utf8(PathOf(name)), name);
}

TEST(Printable, ShowsWhatATerminalWouldObey) {
    EXPECT_EQ(Printable("a\nb\rc\td"), "a\\nb\\rc\\td");
    EXPECT_EQ(Printable("\x1b[31mred\x7f"), "\\x1b[31mred\\x7f");
    EXPECT_EQ(Printable("\xC2\x9B"
                        "31m"),
        "\\xc2\\x9b31m"); // the same in one character
    EXPECT_EQ(Printable(std::string("a\0b", 3)), "a\\x00b");
}

TEST(Printable, KeepsAllOtherText) {
    const std::string text = "C:\\songs \xC2\xA0\xC3\xA4\xE2\x82\xAC\xF0\x9F\x8E\xB5.wav";
    EXPECT_EQ(Printable(text), text);
}

TEST(Printable, ShowsBytesThatAreNoText) {
    EXPECT_EQ(Printable("\xFF.wav"), "\\xff.wav");
    EXPECT_EQ(Printable("\xE2\x82"), "\\xe2\\x82"); // a character that is cut off
    EXPECT_EQ(Printable("\xE2\x82x"), "\\xe2\\x82x");
}
