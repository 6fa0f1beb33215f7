#include "utils/number.h"

#include "tests/support/comma_locale.h"

#include <array>
#include <atomic>
#include <bit>
#include <clocale>
#include <cmath>
#include <cstdio>
#include <gtest/gtest.h>
#include <limits>
#include <string>
#include <thread>

using namespace KAV::Utils;
using namespace KAV::Tests;

namespace {

constexpr float Default = -123.5f;

float Read(std::string_view text) {
    return ToFloat(text, Default);
}

std::string Format(float value, int decimals) {
    std::array<char, DecimalCapacity> buffer{};
    return std::string(FormatDecimal(value, decimals, buffer));
}

} // namespace

TEST(ToInt, ReadsTheNumberAtTheBeginning) {
    EXPECT_EQ(ToInt("42"), 42);
    EXPECT_EQ(ToInt(" \t\n\v\f\r-7 and more"), -7);
    EXPECT_EQ(ToInt("+0012x"), 12);
    EXPECT_EQ(ToInt("0x10"), 0);
    EXPECT_EQ(ToInt("2147483647"), 2147483647);
    EXPECT_EQ(ToInt("-2147483648"), std::numeric_limits<std::int32_t>::min());
    EXPECT_EQ(ToInt(std::string(500, '0') + "9"), 9);
}

TEST(ToInt, IsZeroForNoNumberOrOneOutOfRange) {
    for (const char* const text :
        {"", " ", "-", "+-1", "--1", "abc", ".5", "2147483648", "-2147483649", "99999999999999999999999999",
            "\xC2\xA0"
            "1"}) {
        EXPECT_EQ(ToInt(text), 0) << text;
    }
    EXPECT_EQ(ToInt(std::string_view("1\0002", 3)), 1);
}

TEST(ToInt, ReadsWideTexts) {
    EXPECT_EQ(ToInt(u" 42;"), 42);
    EXPECT_EQ(ToInt(u"\xFF11"), 0); // a digit, but not in C
    EXPECT_EQ(ToInt(u""), 0);
}

TEST(ToFloat, ReadsWhatTheCLibraryReads) {
    EXPECT_EQ(Read("1.5"), 1.5f);
    EXPECT_EQ(Read(" \t\n\v\f\r+1.5e2dB"), 150.0f);
    EXPECT_EQ(Read("-.5"), -0.5f);
    EXPECT_EQ(Read("5."), 5.0f);
    EXPECT_EQ(Read("1e"), 1.0f);
    EXPECT_EQ(Read("1e+"), 1.0f);
    EXPECT_EQ(Read("1,5"), 1.0f);
    EXPECT_EQ(Read("0x1p3"), 8.0f);
    EXPECT_EQ(Read("-0X1.8"), -1.5f);
    EXPECT_EQ(Read("0x"), 0.0f);
    EXPECT_EQ(Read("0xg"), 0.0f);
    EXPECT_EQ(Read("0x-1"), 0.0f);
    EXPECT_EQ(Read("0xinf"), 0.0f);
    EXPECT_EQ(Read("3.4028235e38"), std::numeric_limits<float>::max());
    EXPECT_EQ(Read("1.17549435e-38"), std::numeric_limits<float>::min());
    EXPECT_EQ(Read("0.1"), 0.1f);
    EXPECT_EQ(Read("16777217"), 16777216.0f);
    EXPECT_EQ(Read(std::string(1000, '0') + "1." + std::string(1000, '0')), 1.0f);
    EXPECT_TRUE(std::signbit(Read("-0")));
}

TEST(ToFloat, ReadsInfinityAndNotANumberInAnyCase) {
    for (const char* const text : {"inf", "INF", "+Infinity", " infinit"})
        EXPECT_EQ(Read(text), HUGE_VALF) << text;
    EXPECT_EQ(Read("-inf"), -HUGE_VALF);
    for (const char* const text : {"nan", "NaN", "-nan", "nan(123)", "nanx"})
        EXPECT_TRUE(std::isnan(Read(text))) << text;
}

TEST(ToFloat, RoundsOnceAndToNearest) {
    // Between 1 and the next float, above the midpoint by less than a double can represent.
    EXPECT_EQ(Read("1.00000005960464477539062500000000000001"), std::nextafter(1.0f, 2.0f));
    EXPECT_EQ(Read("1.000000059604644775390625"), 1.0f);
    EXPECT_EQ(Read("0x1.00000100000000000001"), std::nextafter(1.0f, 2.0f));
}

TEST(ToFloat, GivesTheDefaultForNoNumber) {
    for (const char* const text : {"", " ", "-", "+", ".", "e5", "--1", "+-1", "abc", "$1",
             "\xC2\xA0"
             "1",
             "i", "in"})
        EXPECT_EQ(Read(text), Default) << text;
}

TEST(ToFloat, GivesTheDefaultOutOfRangeAndForDenormals) {
    for (const char* const text : {"1e39", "-1e39", "3.4028236e38", "1e999999999", "0x1p128", "1e-39",
             "1e-46", "-1e-60", "1e-999999999", "0x1p-149", "0x1p-127", "1.1754942e-38", "0x0.0001p-200"}) {
        EXPECT_EQ(Read(text), Default) << text;
    }
    EXPECT_EQ(Read("0e-999999999"), 0.0f);
    EXPECT_EQ(Read("0.000e99"), 0.0f);
}

TEST(ToFloat, ReadsWideTexts) {
    EXPECT_EQ(ToFloat(u"-6.5 dB", Default), -6.5f);
    EXPECT_EQ(ToFloat(u"\x0661", Default), Default);
    EXPECT_EQ(ToFloat(u"1\x4E00", Default), 1.0f);
}

TEST(Numbers, DoNotFollowTheHostsLocale) {
    const CCommaLocale locale;
    EXPECT_EQ(Read("1.5"), 1.5f);
    EXPECT_EQ(Read("1,5"), 1.0f);
    EXPECT_EQ(FormatFixed(1.5, 3), "1.500");
    EXPECT_EQ(Format(1.5f, 1), "1.5");
    EXPECT_STREQ(std::localeconv()->decimal_point, ","); // and leaves it unchanged
}

TEST(Numbers, StayTheSameWhileAnotherThreadChangesTheLocale) {
    const CCommaLocale locale;
    std::atomic<bool> end{false};
    std::thread host([&] {
        while (!end) {
            CCommaLocale::Switch(false);
            CCommaLocale::Switch(true);
        }
    });
    for (int i = 0; i < 2000; ++i) {
        ASSERT_EQ(Read("1234.5"), 1234.5f);
        ASSERT_EQ(ToInt(" 12,5"), 12);
        ASSERT_EQ(FormatFixed(-0.25, 3), "-0.250");
    }
    end = true;
    host.join();
}

TEST(FormatInt, WritesDecimalOrHexadecimal) {
    EXPECT_EQ(FormatInt(0), u"0");
    EXPECT_EQ(FormatInt(-2147483647 - 1), u"-2147483648");
    EXPECT_EQ(FormatInt(255, EBase::Hexadecimal), u"0xff");
    EXPECT_EQ(FormatInt(-1, EBase::Hexadecimal), u"0xffffffff");
    EXPECT_EQ(FormatUnsigned(4294967295u), u"4294967295");
}

TEST(FormatFixed, WritesWhatPrintfWritesIntoThirtyTwoBytes) {
    for (const double value : {0.0, -0.0, 0.0005, 0.0015, 1.0 / 3.0, -12.3456789, 999.9995,
             3.4028234663852886e38, -1.7976931348623157e308, 5e-324}) {
        for (int decimals = 0; decimals <= 9; ++decimals) {
            std::array<char, 32> expected{};
            std::snprintf(expected.data(), expected.size(), "%.*f", decimals, value);
            EXPECT_EQ(FormatFixed(value, decimals), expected.data());
        }
    }
    EXPECT_EQ(FormatFixed(3.4028234663852886e38, 3).size(), 31u);
}

TEST(FormatFixed, NamesWhatIsNoNumber) {
    EXPECT_EQ(FormatFixed(std::numeric_limits<double>::infinity(), 3), "inf");
    EXPECT_EQ(FormatFixed(-std::numeric_limits<double>::infinity(), 3), "-inf");
    EXPECT_EQ(FormatFixed(std::copysign(std::numeric_limits<double>::quiet_NaN(), 1.0), 3), "nan");
}

TEST(FormatDecimal, WritesWhatPrintfWritesInTheCLocale) {
    for (const float value : {0.0f, -0.0f, 0.05f, 0.15f, 0.25f, 0.35f, -0.04f, 1.005f, 12.345f, -23.95f,
             999.995f, 400.01f, 3e38f, -3e38f, 1e-30f, std::numeric_limits<float>::denorm_min()}) {
        for (int decimals = 0; decimals <= 2; ++decimals) {
            std::array<char, 64> expected{};
            std::snprintf(expected.data(), expected.size(), "%.*f", decimals, static_cast<double>(value));
            EXPECT_EQ(Format(value, decimals), expected.data());
        }
    }
}

TEST(FormatDecimal, NamesWhatIsNoNumber) {
    EXPECT_EQ(Format(std::numeric_limits<float>::infinity(), 1), "inf");
    EXPECT_EQ(Format(-std::numeric_limits<float>::infinity(), 1), "-inf");
    EXPECT_EQ(Format(std::copysign(std::numeric_limits<float>::quiet_NaN(), 1.0f), 1), "nan");
}
