#include "dsp/oversampler.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <gtest/gtest.h>
#include <numbers>
#include <vector>

using namespace KAV::DSP;

namespace {

constexpr std::size_t Frames = 4096;

Oversampler Make(std::int32_t factor, bool highQuality) {
    Oversampler oversampler;
    oversampler.Reserve(Frames);
    oversampler.SetFactor(factor);
    oversampler.SetHighQuality(highQuality);
    return oversampler;
}

/// Raises one channel and lowers it again.
void There(Oversampler& oversampler, std::vector<float>& samples) {
    std::array<float*, 1> channels{samples.data()};
    oversampler.Up(channels, samples.size());
    oversampler.Down(channels);
    EXPECT_EQ(channels[0], samples.data());
}

double Amplitude(const std::vector<float>& samples) {
    double peak = 0.0;
    for (std::size_t i = samples.size() / 2; i < samples.size(); ++i) {
        peak = std::max(peak, std::fabs(static_cast<double>(samples[i])));
    }
    return peak;
}

std::vector<float> Sine(double fractionOfRate) {
    std::vector<float> samples(Frames);
    for (std::size_t i = 0; i < Frames; ++i) {
        samples[i] =
            static_cast<float>(std::sin(2.0 * std::numbers::pi * fractionOfRate * static_cast<double>(i)));
    }
    return samples;
}

} // namespace

TEST(Oversampler, FactorOneLeavesTheSignalUntouched) {
    for (const bool highQuality : {false, true}) {
        auto oversampler = Make(1, highQuality);
        auto samples = Sine(0.21);
        const auto input = samples;
        There(oversampler, samples);
        EXPECT_EQ(samples, input);
    }
}

TEST(Oversampler, ConstantComesBackAsItWentUpToTheFiltersOwnError) {
    // The standard pair passes a little of the images at multiples of the base rate, which fold back onto a
    // constant.
    for (const auto& [factor, highQuality, expected] : {std::tuple{2, false, 1.0}, {4, false, 0.99973},
             {8, false, 0.99838}, {2, true, 1.0}, {4, true, 1.0}, {8, true, 1.0}}) {
        auto oversampler = Make(factor, highQuality);
        std::vector<float> samples(Frames, 1.0f);
        There(oversampler, samples);
        EXPECT_NEAR(samples.back(), expected, 1e-5) << factor << (highQuality ? " high" : " standard");
    }
}

TEST(Oversampler, StandardPairAttenuatesWhatLiesJustBelowTheBaseNyquist) {
    auto oversampler = Make(2, false);
    auto samples = Sine(0.45);
    There(oversampler, samples);
    // Each direction is 3 dB down at 0.9 of Nyquist. The image at 0.55 of the rate, which is attenuated by
    // more than 11 dB each way, folds back onto the tone and changes the sum by at most 0.074 of full scale.
    EXPECT_NEAR(Amplitude(samples), 0.5, 0.08);
}

TEST(Oversampler, HighQualityPassesWhatTheStandardPairAttenuates) {
    auto oversampler = Make(2, true);
    auto samples = Sine(0.45);
    There(oversampler, samples);
    EXPECT_NEAR(20.0 * std::log10(Amplitude(samples)), 0.0, 0.1);
}

TEST(Oversampler, SkippedChannelsStayNullBothWays) {
    auto oversampler = Make(4, false);
    std::vector<float> samples(64, 0.5f);
    std::array<float*, 3> channels{nullptr, samples.data(), nullptr};
    oversampler.Up(channels, 64);
    EXPECT_EQ(channels[0], nullptr);
    EXPECT_NE(channels[1], samples.data());
    EXPECT_EQ(channels[2], nullptr);
    oversampler.Down(channels);
    EXPECT_EQ(channels[0], nullptr);
    EXPECT_EQ(channels[1], samples.data());
    EXPECT_EQ(channels[2], nullptr);
}

TEST(Oversampler, FactorChangeEmptiesTheFiltersAndAQualityChangeDoesNot) {
    auto oversampler = Make(2, false);
    std::vector<float> loud(256, 1.0f);
    There(oversampler, loud);
    oversampler.SetHighQuality(true);
    std::vector<float> silence(256, 0.0f);
    There(oversampler, silence);
    oversampler.SetHighQuality(false);
    std::vector<float> tail(256, 0.0f);
    There(oversampler, tail);
    EXPECT_GT(std::fabs(tail[0]), 1e-3f) << "the standard pair continues from its own delays";
    There(oversampler, loud);
    oversampler.SetFactor(4);
    oversampler.SetFactor(2);
    std::vector<float> empty(256, 0.0f);
    There(oversampler, empty);
    EXPECT_LT(std::fabs(empty[0]), 1e-6f);
}

TEST(Oversampler, SameOutputForBlocksOfAnyLength) {
    for (const bool highQuality : {false, true}) {
        auto whole = Make(4, highQuality);
        auto expected = Sine(0.21);
        There(whole, expected);
        for (const std::size_t block : {1u, 7u, 512u}) {
            auto pieces = Make(4, highQuality);
            const auto input = Sine(0.21);
            std::vector<float> joined;
            for (std::size_t i = 0; i < input.size(); i += block) {
                const auto end = std::min(i + block, input.size());
                std::vector<float> piece(input.begin() + static_cast<std::ptrdiff_t>(i),
                    input.begin() + static_cast<std::ptrdiff_t>(end));
                There(pieces, piece);
                joined.insert(joined.end(), piece.begin(), piece.end());
            }
            EXPECT_EQ(joined, expected) << block << (highQuality ? " high" : " standard");
        }
    }
}
