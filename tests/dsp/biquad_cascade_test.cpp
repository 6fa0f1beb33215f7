#include "dsp/biquad_cascade.h"

#include <algorithm>
#include <array>
#include <cfenv>
#include <cmath>
#include <complex>
#include <gtest/gtest.h>
#include <numbers>
#include <utility>
#include <vector>

using KAV::DSP::BiquadCascade;

namespace {

/// Gain of the cascade at a fraction of the rate, from its impulse response.
double Measure(std::size_t order, double cutoff, double frequency) {
    BiquadCascade cascade(order);
    cascade.Design(cutoff);
    std::vector<float> impulse(32768, 0.0f);
    impulse[0] = 1.0f;
    std::array<float*, 1> channels{impulse.data()};
    cascade.Process(channels, impulse.size());
    std::complex<double> sum = 0.0;
    for (std::size_t i = 0; i < impulse.size(); ++i) {
        sum += static_cast<double>(impulse[i]) *
               std::polar(1.0, -2.0 * std::numbers::pi * frequency * static_cast<double>(i));
    }
    return std::abs(sum);
}

/// Butterworth's magnitude behind the bilinear transform.
double Expected(std::size_t order, double cutoff, double frequency) {
    const double ratio = std::tan(std::numbers::pi * frequency) / std::tan(std::numbers::pi * cutoff);
    return 1.0 / std::sqrt(1.0 + std::pow(ratio, 2.0 * static_cast<double>(order)));
}

} // namespace

TEST(BiquadCascade, HasButterworthsMagnitudeInPassBandCornerAndStopBand) {
    for (const std::size_t order : {4u, 32u}) {
        for (const double cutoff : {0.05625, 0.1125, 0.225, 0.2475}) {
            for (const double part : {0.01, 0.5, 0.9, 1.0, 1.1, 1.5, 1.9}) {
                const double frequency = part * cutoff;
                EXPECT_NEAR(Measure(order, cutoff, frequency), Expected(order, cutoff, frequency), 2e-5)
                    << "order " << order << ", corner " << cutoff << ", at " << frequency;
            }
        }
    }
}

TEST(BiquadCascade, ChannelsHaveDelaysOfTheirOwn) {
    BiquadCascade cascade(4);
    cascade.Design(0.2);
    std::vector<float> loud(64, 1.0f);
    std::vector<float> quiet(64, 0.0f);
    std::array<float*, 2> channels{loud.data(), quiet.data()};
    cascade.Process(channels, 64);
    for (const float y : quiet) EXPECT_LT(std::fabs(y), 1e-7f); // but for the value that keeps denormals away
}

TEST(BiquadCascade, SilenceLeavesNoDenormalsAndNoOffsetBehind) {
    for (const auto& [order, corner] : {std::pair{4u, 0.9}, {32u, 0.99}}) { // as the oversampler uses them
        for (const double factor : {2.0, 4.0, 8.0}) {
            BiquadCascade cascade(order);
            cascade.Design(corner * 0.5 / factor);
            std::vector<float> samples(200000, 0.0f);
            samples[0] = 1.0f;
            std::array<float*, 1> channels{samples.data()};
            cascade.Process(channels, samples.size());
            std::fill(samples.begin(), samples.end(), 0.0f);
            std::feclearexcept(FE_ALL_EXCEPT); // the processor itself tells of numbers that became too small
            cascade.Process(channels, samples.size());
            EXPECT_FALSE(std::fetestexcept(FE_UNDERFLOW)) << "order " << order << ", factor " << factor;
            for (const float y : samples) ASSERT_LT(std::fabs(y), 1e-20f);
        }
    }
}
