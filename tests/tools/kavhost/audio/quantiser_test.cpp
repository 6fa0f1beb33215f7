#include "tools/kavhost/audio/quantiser.h"

#include <cmath>
#include <gtest/gtest.h>
#include <limits>
#include <vector>

using namespace KAV::Host;

namespace {

constexpr float Infinity = std::numeric_limits<float>::infinity();
constexpr float NotANumber = std::numeric_limits<float>::quiet_NaN();

/// The number in steps of the format.
std::int64_t Steps(CQuantiser& quantiser, int bits, float sample) {
    return quantiser.Quantise(sample) >> (32 - bits);
}

} // namespace

TEST(Quantiser, KeepsEveryNumberOfTheFormatWithoutDither) {
    for (const int bits : {8, 16, 24}) {
        CQuantiser quantiser(bits, false);
        const double scale = std::ldexp(1.0, bits - 1);
        const double stride = std::max(1.0, std::floor(scale / 1000));
        for (double step = -scale; step < scale; step += stride) {
            const auto sample = static_cast<float>(step / scale);
            EXPECT_EQ(static_cast<double>(Steps(quantiser, bits, sample)), step);
            EXPECT_EQ(SampleOf(quantiser.Quantise(sample)), sample);
        }
        EXPECT_EQ(quantiser.Clipped(), 0u);
    }
}

TEST(Quantiser, RoundsToTheNearestStepWithoutDither) {
    CQuantiser quantiser(16, false);
    EXPECT_EQ(Steps(quantiser, 16, 10.4f / 32768), 10);
    EXPECT_EQ(Steps(quantiser, 16, 10.6f / 32768), 11);
    EXPECT_EQ(Steps(quantiser, 16, -10.4f / 32768), -10);
    EXPECT_EQ(Steps(quantiser, 16, -10.6f / 32768), -11);
}

TEST(Quantiser, ClipsAndNeverWraps) {
    for (const int bits : {8, 16, 24, 32}) {
        for (const bool dither : {false, true}) {
            CQuantiser quantiser(bits, dither);
            const std::int64_t highest = (std::int64_t{1} << (bits - 1)) - 1;
            for (const float sample : {1.1f, 2.0f, 1e9f, 3e38f, Infinity}) {
                EXPECT_EQ(Steps(quantiser, bits, sample), highest);
                EXPECT_EQ(Steps(quantiser, bits, -sample), -highest - 1);
            }
            EXPECT_EQ(quantiser.Clipped(), 10u);
        }
    }
    CQuantiser quantiser(16, false);
    EXPECT_EQ(Steps(quantiser, 16, 1.0f), 32767); // one step too far, but not clipped: it is full scale
    EXPECT_EQ(Steps(quantiser, 16, -1.0f), -32768);
    EXPECT_EQ(quantiser.Clipped(), 0u);
    EXPECT_EQ(Steps(quantiser, 16, 1.0001f), 32767);
    EXPECT_EQ(quantiser.Clipped(), 1u);
}

TEST(Quantiser, CountsWhatIsOffByMoreThanAStepAndHowFar) {
    for (const bool dither : {false, true}) {
        CQuantiser quantiser(16, dither);
        // The highest number is 32767, the lowest -32768.
        for (const float steps : {32767.0f, 32767.9f, 32768.0f, -32768.0f, -32768.9f, -32769.0f})
            quantiser.Quantise(steps / 32768);
        EXPECT_EQ(quantiser.Clipped(), 0u);
        EXPECT_EQ(quantiser.ClippedBySteps(), 0);
        quantiser.Quantise(32768.5f / 32768);
        EXPECT_EQ(quantiser.Clipped(), 1u);
        EXPECT_EQ(quantiser.ClippedBySteps(), 1.5);
        quantiser.Quantise(-32769.25f / 32768);
        EXPECT_EQ(quantiser.Clipped(), 2u);
        EXPECT_EQ(quantiser.ClippedBySteps(), 1.5);
        quantiser.Quantise(-2.0f);
        EXPECT_EQ(quantiser.Clipped(), 3u);
        EXPECT_EQ(quantiser.ClippedBySteps(), 32768);
    }
}

TEST(Quantiser, NeverWrapsFullScaleWithDither) {
    CQuantiser quantiser(16, true);
    for (int i = 0; i < 100000; ++i) {
        EXPECT_GE(Steps(quantiser, 16, 1.0f), 32765);
        EXPECT_LE(Steps(quantiser, 16, -1.0f), -32766);
    }
}

TEST(Quantiser, MakesNotANumberZero) {
    CQuantiser quantiser(16, true);
    EXPECT_EQ(quantiser.Quantise(NotANumber), 0);
}

TEST(Quantiser, DithersWithTriangularNoiseThatHidesTheRounding) {
    // Triangular dither two steps wide makes the total error's mean 0 and its variance 1/4 step^2 (1/6 from
    // the noise, 1/12 from the rounding), wherever the sample is between two steps.
    constexpr int count = 200000;
    for (const double offset : {0.0, 0.25, 0.5, 0.9}) {
        CQuantiser quantiser(16, true);
        const double value = 100 + offset;
        double sum = 0, squares = 0, largest = 0;
        for (int i = 0; i < count; ++i) {
            const double error =
                static_cast<double>(Steps(quantiser, 16, static_cast<float>(value / 32768))) - value;
            sum += error;
            squares += error * error;
            largest = std::max(largest, std::abs(error));
        }
        EXPECT_NEAR(sum / count, 0, 0.005); // four standard deviations: 4 x 0.5 / sqrt(200000)
        EXPECT_NEAR(squares / count, 0.25, 0.005);
        EXPECT_LE(largest, 1.5); // one step of noise and half a step of rounding
    }
}

TEST(Quantiser, GivesTheSameResultInEveryRun) {
    const std::vector<float> samples(1000, 0.1f);
    std::vector<std::int32_t> first(1000), second(1000);
    CQuantiser(16, true).Quantise(samples, first);
    CQuantiser(16, true).Quantise(samples, second);
    EXPECT_EQ(first, second);
    CQuantiser(16, false).Quantise(samples, second);
    EXPECT_NE(first, second);
}
