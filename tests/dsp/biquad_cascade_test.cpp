#include "dsp/biquad_cascade.h"

#include "dsp/flush_denormals.h"
#include "tests/dsp/processor_paths.h"
#include "tests/support/peak_difference.h"
#include "utils/cpu_features.h"

#include <algorithm>
#include <array>
#include <bit>
#include <cfenv>
#include <cmath>
#include <complex>
#include <gtest/gtest.h>
#include <limits>
#include <numbers>
#include <random>
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

/// Butterworth's magnitude after the bilinear transform.
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
    for (const float y : quiet)
        EXPECT_LT(std::fabs(y), 1e-7f); // except for the value that keeps denormals away
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
            std::feclearexcept(FE_ALL_EXCEPT); // the processor's own flag for results that became too small
            cascade.Process(channels, samples.size());
            EXPECT_FALSE(std::fetestexcept(FE_UNDERFLOW)) << "order " << order << ", factor " << factor;
            for (const float y : samples) ASSERT_LT(std::fabs(y), 1e-20f);
        }
    }
}

namespace {

using Channels = std::vector<std::vector<float>>;
using namespace KAV::Utils;

constexpr std::uint64_t PairFeatures = CpuFma | CpuSse2;
constexpr std::uint64_t FourFeatures = CpuFma | CpuSse2 | CpuAvx;

/// Similar to music, below full scale; different for each channel.
Channels Music(std::size_t count, std::size_t length) {
    Channels channels(count, std::vector<float>(length));
    std::uint32_t noise = 1;
    for (std::size_t c = 0; c < count; ++c) {
        for (std::size_t i = 0; i < length; ++i) {
            noise = noise * 1664525u + 1013904223u;
            const double t = static_cast<double>(i) / 44100.0 * static_cast<double>(c + 1);
            const double tones = 0.5 * std::sin(345.0 * t) + 0.25 * std::sin(2765.0 * t);
            channels[c][i] =
                static_cast<float>(tones + 0.1 * (static_cast<double>(noise >> 8) / 8388608.0 - 1.0));
        }
    }
    return channels;
}

void Filter(BiquadCascade& cascade, Channels& channels, std::uint64_t features) {
    std::vector<float*> pointers;
    for (auto& channel : channels) pointers.push_back(channel.data());
    cascade.Process(pointers, channels[0].size(), features);
}

Channels Filtered(std::size_t order, double cutoff, Channels channels, std::uint64_t features) {
    BiquadCascade cascade(order);
    cascade.Design(cutoff);
    Filter(cascade, channels, features);
    return channels;
}

bool HasFused() {
    return (DetectFeatures() & FourFeatures) == FourFeatures;
}

} // namespace

TEST(BiquadCascade, WidthOfAPassFollowsTheProcessorsFeatures) {
    for (const std::uint64_t without : {std::uint64_t{0}, std::uint64_t{CpuAvx}, CpuAvx | CpuSse2})
        EXPECT_EQ(BiquadCascade::PassWidth(without), 1u);
    EXPECT_EQ(BiquadCascade::PassWidth(CpuFma), 1u);
#if defined(__x86_64__)
    EXPECT_EQ(BiquadCascade::PassWidth(PairFeatures), 2u);
    EXPECT_EQ(BiquadCascade::PassWidth(FourFeatures), 4u);
    EXPECT_EQ(BiquadCascade::PassWidth(CpuFma | CpuAvx), 4u);
#endif
}

TEST(BiquadCascade, ChannelLeftOverIsTheOnlyOneThatRunsPlainInAWidePass) {
    if (!HasFused()) GTEST_SKIP() << "this processor has no fused multiply-add";
    for (const auto& [features, width] : {std::pair{PairFeatures, 2u}, {FourFeatures, 4u}}) {
        for (std::size_t count = 1; count <= 16; ++count) {
            // What is left of a tone far above the corner is rounding noise, which distinguishes one
            // arithmetic from another. A pass flips the sign against denormals once per sample; an even
            // length leaves it as it was.
            Channels tones(count, std::vector<float>(3000));
            for (std::size_t c = 0; c < count; ++c) {
                for (std::size_t n = 0; n < 3000; ++n)
                    tones[c][n] = static_cast<float>(
                        std::sin(static_cast<double>(n) * (2.5 + 0.03 * static_cast<double>(c))));
            }
            const auto plain = Filtered(32, 0.05, tones, 0);
            const auto fused = Filtered(32, 0.05, tones, features);
            for (std::size_t c = 0; c < count; ++c) {
                const bool leftOver = c == count - 1 && count % width == 1;
                EXPECT_EQ(plain[c] == fused[c], leftOver) << "channel " << c << " of " << count;
            }
        }
    }
}

TEST(BiquadCascade, FusedPassesOfAnyWidthGiveTheSameBits) {
    if (!HasFused()) GTEST_SKIP() << "this processor has no fused multiply-add";
    const auto music = Music(16, 2000);
    EXPECT_EQ(Filtered(4, 0.2, music, PairFeatures), Filtered(4, 0.2, music, FourFeatures));
    EXPECT_EQ(Filtered(32, 0.2, music, PairFeatures), Filtered(32, 0.2, music, FourFeatures));
}

TEST(BiquadCascade, FusedPassesStayWithinTenToTheMinusSevenOfThePeak) {
    if (!HasFused()) GTEST_SKIP() << "this processor has no fused multiply-add";
    for (const auto& [order, corner] : {std::pair{4u, 0.9}, {32u, 0.99}}) { // as the oversampler uses them
        for (const double factor : {2.0, 4.0, 8.0}) {
            const auto music = Music(3, 441000); // ten seconds
            const auto plain = Filtered(order, corner * 0.5 / factor, music, 0);
            const auto fused = Filtered(order, corner * 0.5 / factor, music, FourFeatures);
            const auto [peak, difference] = KAV::Tests::Compare(plain, fused);
            EXPECT_GT(peak, 0.5);
            EXPECT_LE(difference, 1e-7 * peak) << "order " << order << ", factor " << factor;
        }
    }
}

TEST(BiquadCascade, PlaceThatAPassDoesNotTakeKeepsItsDelays) {
    for (const std::uint64_t features : {std::uint64_t{0}, DetectFeatures()}) {
        BiquadCascade cascade(4);
        cascade.Design(0.05);
        Channels all(4, std::vector<float>(64, 1.0f));
        Filter(cascade, all, features);
        Channels three(3, std::vector<float>(64, 0.0f));
        Filter(cascade, three, features);
        Channels again(4, std::vector<float>(64, 0.0f));
        Filter(cascade, again, features);
        EXPECT_GT(std::fabs(again[3][0]), 0.5f) << "the fourth continues from its own delays";
        EXPECT_LT(std::fabs(again[0][0]), 0.1f);
    }
}

TEST(BiquadCascade, PlaceWithANonFiniteStateIsEmptiedAtTheEndAndNoOther) {
    for (const std::uint64_t features : {std::uint64_t{0}, DetectFeatures()}) {
        for (const float bad :
            {std::numeric_limits<float>::quiet_NaN(), std::numeric_limits<float>::infinity()}) {
            BiquadCascade cascade(4);
            cascade.Design(0.05);
            Channels channels(3, std::vector<float>(64, 1.0f));
            channels[1][5] = bad;
            Filter(cascade, channels, features);
            EXPECT_FALSE(std::isfinite(channels[1].back()));
            Channels silence(3, std::vector<float>(64, 0.0f));
            Filter(cascade, silence, features);
            EXPECT_GT(std::fabs(silence[0][0]), 0.5f);
            EXPECT_LT(std::fabs(silence[1][0]), 1e-6f);
            EXPECT_GT(std::fabs(silence[2][0]), 0.5f);
        }
    }
}

namespace {

/// The same blocks through two cascades, one on the plain path and the other on changing paths; compares all
/// bits.
void ExpectPathsAgree(std::size_t order, std::uint64_t features, unsigned seed) {
    const auto paths = KAV::Tests::ProcessorPaths();
    std::mt19937 random(seed);
    BiquadCascade plain(order);
    BiquadCascade subject(order);
    const double cutoff = std::array{0.05625, 0.1125, 0.225, 0.061875, 0.12375, 0.2475}[random() % 6];
    plain.Design(cutoff);
    subject.Design(cutoff);
    for (int block = 0; block < 12; ++block) {
        const std::size_t count = 1 + random() % 16;
        const std::size_t length = random() % 3 == 0 ? 8 * (1 + random() % 60) : 1 + random() % 130;
        const auto path = paths[random() % paths.size()];
        Channels expected(count, std::vector<float>(length));
        for (auto& channel : expected) {
            const unsigned kind = random() % 8;
            for (float& x : channel) {
                x = static_cast<float>(random() % 65536) / 32768.0f - 1.0f;
                if (kind < 2) x = 0.0f;
                if (kind == 2) x *= 1e-37f;
                if (kind == 3 && random() % 100 == 0) x = std::numeric_limits<float>::infinity();
                if (kind == 4 && random() % 100 == 0) x = std::numeric_limits<float>::quiet_NaN();
                if (kind == 5) x *= 1e38f;
            }
        }
        Channels actual = expected;
        std::vector<float*> a;
        std::vector<float*> b;
        for (auto& channel : expected) a.push_back(channel.data());
        for (auto& channel : actual) b.push_back(channel.data());
        {
            const KAV::DSP::CFlushDenormals flushing;
            plain.Process(a, length, features, KAV::DSP::EProcessorPath::Plain);
            subject.Process(b, length, features, path);
        }
        for (std::size_t c = 0; c < count; ++c) {
            for (std::size_t i = 0; i < length; ++i) {
                if (std::isnan(expected[c][i]) && std::isnan(actual[c][i])) continue;
                ASSERT_EQ(
                    std::bit_cast<std::uint32_t>(expected[c][i]), std::bit_cast<std::uint32_t>(actual[c][i]))
                    << KAV::Tests::NameOf(path) << ", order " << order << ", channel " << c << " of " << count
                    << ", sample " << i << " of " << length << ", block " << block;
            }
        }
    }
}

} // namespace

TEST(BiquadCascade, PathsGiveTheSameBitsHoweverTheyTakeTurns) {
    for (unsigned seed = 1; seed <= 120; ++seed) {
        for (const std::size_t order : {4u, 8u, 32u}) {
            SCOPED_TRACE(seed);
            ASSERT_NO_FATAL_FAILURE(ExpectPathsAgree(order, 0, seed));
            if (!HasFused()) continue;
            ASSERT_NO_FATAL_FAILURE(ExpectPathsAgree(order, FourFeatures, seed));
        }
    }
}

TEST(BiquadCascade, LongSilenceEndsInTheSameBitsOnAnyPath) {
    // The end of a sound decays until only the value against denormals is left.
    for (const std::uint64_t features : {std::uint64_t{0}, DetectFeatures()}) {
        for (const std::size_t order : {4u, 32u}) {
            for (const double cutoff : {0.05625, 0.061875, 0.2475}) {
                Channels expected;
                for (const auto path : KAV::Tests::ProcessorPaths()) {
                    const KAV::DSP::CFlushDenormals flushing;
                    BiquadCascade cascade(order);
                    cascade.Design(cutoff);
                    Channels channels(2, std::vector<float>(100000, 0.0f));
                    channels[0][0] = 1.0f;
                    channels[1][7] = -1.0f;
                    std::array<float*, 2> pointers{channels[0].data(), channels[1].data()};
                    cascade.Process(pointers, channels[0].size(), features, path);
                    if (expected.empty()) expected = channels;
                    for (std::size_t c = 0; c < 2; ++c) {
                        for (std::size_t i = 0; i < channels[c].size(); ++i) {
                            ASSERT_EQ(std::bit_cast<std::uint32_t>(channels[c][i]),
                                std::bit_cast<std::uint32_t>(expected[c][i]))
                                << KAV::Tests::NameOf(path) << ", order " << order << ", sample " << i;
                        }
                    }
                }
            }
        }
    }
}
