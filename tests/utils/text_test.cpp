#include "utils/text.h"

#include <array>
#include <clocale>
#include <cmath>
#include <cstdio>
#include <gtest/gtest.h>
#include <limits>
#include <string>

using namespace KAV::Utils;

namespace {

std::string Format(float value, int decimals) {
    std::array<char, DecimalCapacity> buffer{};
    return std::string(FormatDecimal(value, decimals, buffer));
}

} // namespace

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
    CopyText("ab\xC3\xA4", buffer); // the second byte of the letter would be the fourth
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
