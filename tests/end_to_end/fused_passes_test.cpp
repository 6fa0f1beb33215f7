#include "dsp/biquad_cascade.h"
#include "tests/end_to_end/music.h"
#include "tests/support/peak_difference.h"
#include "utils/cpu_features.h"

#include <array>
#include <gtest/gtest.h>
#include <utility>
#include <vector>

using namespace KAV;
using namespace KAV::Tests;

namespace {

using Channels = std::array<std::vector<float>, 2>;

/// Ten seconds of a produced track.
Channels TenSeconds() {
    const auto music = RealMusic();
    EXPECT_EQ(music.channels, 2);
    const auto frames = static_cast<std::size_t>(music.rateHz) * 10;
    Channels channels{std::vector<float>(frames), std::vector<float>(frames)};
    for (std::size_t i = 0; i < frames; ++i) {
        for (std::size_t c = 0; c < 2; ++c) channels[c][i] = music.samples[2 * i + c];
    }
    return channels;
}

Channels Filtered(std::size_t order, double cutoff, Channels channels, std::uint64_t features) {
    DSP::BiquadCascade cascade(order);
    cascade.Design(cutoff);
    std::array<float*, 2> pointers{channels[0].data(), channels[1].data()};
    cascade.Process(pointers, channels[0].size(), features);
    return channels;
}

} // namespace

TEST(RealMusic, GoesThroughFusedPassesWithinTenToTheMinusSevenOfItsPeak) {
    const auto features = Utils::DetectFeatures();
    if (DSP::BiquadCascade::PassWidth(features) == 1) GTEST_SKIP() << "this processor has no fused passes";
    const auto music = TenSeconds();
    for (const auto& [order, corner] : {std::pair{4u, 0.9}, {32u, 0.99}}) { // as the oversampler uses them
        for (const double factor : {2.0, 4.0, 8.0}) {
            const auto plain = Filtered(order, corner * 0.5 / factor, music, 0);
            const auto fused = Filtered(order, corner * 0.5 / factor, music, features);
            const auto [peak, difference] = Compare(plain, fused);
            EXPECT_GT(peak, 0.5);
            EXPECT_LE(difference, 1e-7 * peak) << "order " << order << ", factor " << factor;
        }
    }
}
