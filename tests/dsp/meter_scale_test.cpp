#include "dsp/meter_scale.h"

#include <array>
#include <bit>
#include <cmath>
#include <cstdint>
#include <gtest/gtest.h>
#include <limits>
#include <span>

using namespace KAV::DSP;

namespace {

float PeakOfDb(double db) {
    return static_cast<float>(std::pow(10.0, db / 20.0));
}

/// The place of a peak by the definition: `first` at the lowest point, and from there the same height for
/// each segment.
float PlainScale(float peak, std::span<const double> points, double first, double segments) {
    const double db = peak > 0.0f ? 20.0 * std::log10(static_cast<double>(peak)) : -999.9;
    if (db <= points.front()) return 0.0f;
    if (db >= points.back()) return 1.0f;
    std::size_t i = 0;
    while (db > points[i + 1]) ++i;
    const double part = (points[i + 1] - db) / (points[i + 1] - points[i]);
    return static_cast<float>((first + 1.0 - part + static_cast<double>(i)) / segments);
}

void ExpectDefinedPlaces(float peak) {
    constexpr std::array seven{-192.0, -96.0, -48.0, -24.0, -12.0, -6.0, 0.0};
    constexpr std::array five{-48.0, -24.0, -12.0, -6.0, 0.0};
    ASSERT_EQ(SevenPointScale(peak), PlainScale(peak, seven, 1.0, 7.0)) << peak;
    ASSERT_EQ(FivePointScale(peak), PlainScale(peak, five, 0.0, 4.0)) << peak;
}

} // namespace

TEST(SevenPointScale, GivesEachSegmentASeventhAndJumpsAtItsLowestPoint) {
    EXPECT_EQ(SevenPointScale(0.0f), 0.0f);
    EXPECT_EQ(SevenPointScale(PeakOfDb(-192.5)), 0.0f);
    EXPECT_NEAR(SevenPointScale(PeakOfDb(-191.9)), 1.0 / 7.0, 1e-3);
    const std::array points{-192.0, -96.0, -48.0, -24.0, -12.0, -6.0, 0.0};
    for (std::size_t i = 0; i + 1 < points.size(); ++i) {
        const double above = static_cast<double>(i + 1) / 7.0;
        EXPECT_NEAR(SevenPointScale(PeakOfDb(points[i + 1])), above + 1.0 / 7.0, 1e-5) << points[i + 1];
        EXPECT_NEAR(SevenPointScale(PeakOfDb((points[i] + points[i + 1]) / 2)), above + 0.5 / 7.0, 1e-5);
    }
    EXPECT_EQ(SevenPointScale(1.0f), 1.0f);
    EXPECT_EQ(SevenPointScale(std::numeric_limits<float>::infinity()), 1.0f);
}

TEST(FivePointScale, GivesEachSegmentAQuarterFromItsLowestPointOn) {
    EXPECT_EQ(FivePointScale(0.0f), 0.0f);
    EXPECT_NEAR(FivePointScale(PeakOfDb(-47.9)), 0.0, 2e-3);
    const std::array points{-48.0, -24.0, -12.0, -6.0, 0.0};
    for (std::size_t i = 0; i + 1 < points.size(); ++i) {
        const double below = static_cast<double>(i) / 4.0;
        EXPECT_NEAR(FivePointScale(PeakOfDb(points[i + 1])), below + 0.25, 1e-5) << points[i + 1];
        EXPECT_NEAR(FivePointScale(PeakOfDb((points[i] + points[i + 1]) / 2)), below + 0.125, 1e-5);
    }
    EXPECT_EQ(FivePointScale(2.0f), 1.0f);
}

TEST(MeterScales, AreThoseOfTheDefinitionToTheBit) {
    // From a denormal to above full scale, in steps that reach all parts of the mantissa.
    for (std::uint32_t bits = 0; bits < std::bit_cast<std::uint32_t>(4.0f); bits += 1009) {
        ASSERT_NO_FATAL_FAILURE(ExpectDefinedPlaces(std::bit_cast<float>(bits)));
    }
}

TEST(MeterScales, AreThoseOfTheDefinitionAroundEachPoint) {
    for (const double db : {-192.0, -96.0, -48.0, -24.0, -12.0, -6.0, 0.0}) {
        float peak = PeakOfDb(db);
        for (int i = 0; i < 2000; ++i) peak = std::nextafter(peak, 0.0f);
        for (int i = 0; i < 4000; ++i) {
            ASSERT_NO_FATAL_FAILURE(ExpectDefinedPlaces(peak));
            peak = std::nextafter(peak, 2.0f);
        }
    }
}
