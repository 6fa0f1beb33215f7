#include "tools/kavhost/play/rate_converter.h"

#include "tests/support/counted_allocations.h"

#include <algorithm>
#include <cmath>
#include <gtest/gtest.h>
#include <numbers>
#include <utility>
#include <vector>

using namespace KAV::Host;
using namespace KAV::Tests;

namespace {

constexpr std::pair<int, int> Rates[] = {
    {44100, 48000}, {48000, 44100}, {96000, 48000}, {22050, 192000}, {11025, 48000}, {44101, 47999}};

double Tone(double hz, double seconds) {
    return 0.5 * std::sin(2 * std::numbers::pi * hz * seconds);
}

/// A file of one channel with a tone, as its frames are asked for.
class CToneFile final {
public:
    CToneFile(double hz, double rateHz)
        : source([this, hz, rateHz](std::span<float> samples) {
              for (float& sample : samples)
                  sample = static_cast<float>(Tone(hz, static_cast<double>(frames++) / rateHz));
          }) {}

    std::size_t frames = 0;
    AudioSource source;
};

std::vector<float> Converted(int fromHz, int toHz, double toneHz, std::size_t frames, std::size_t piece) {
    CToneFile file(toneHz, fromHz);
    CRateConverter converter(fromHz, toHz, 1);
    std::vector<float> out(frames);
    for (std::size_t i = 0; i < frames; i += piece)
        converter.Fill(std::span(out).subspan(i, std::min(piece, frames - i)), file.source);
    return out;
}

/// The largest difference from the tone itself, once the silence before the file has left the filter.
double ErrorOf(int fromHz, int toHz, double toneHz) {
    const auto out = Converted(fromHz, toHz, toneHz, static_cast<std::size_t>(toHz) / 5, 480);
    double error = 0;
    for (auto i = out.size() / 4; i < out.size(); ++i)
        error = std::max(error, std::abs(out[i] - Tone(toneHz, static_cast<double>(i) / toHz)));
    return error;
}

} // namespace

TEST(RateConverter, ChangesNothingAtTheSameRate) {
    const auto out = Converted(44100, 44100, 1000, 1000, 64);
    for (std::size_t i = 0; i < out.size(); ++i)
        ASSERT_EQ(out[i], static_cast<float>(Tone(1000, static_cast<double>(i) / 44100)));
}

TEST(RateConverter, KeepsTonesInTimeAndLevel) {
    for (const auto& [from, to] : Rates) {
        const double lower = std::min(from, to);
        EXPECT_LT(ErrorOf(from, to, 0.01 * lower), 1e-4) << from << " to " << to;
        EXPECT_LT(ErrorOf(from, to, 0.3 * lower), 1e-4) << from << " to " << to;
        EXPECT_LT(ErrorOf(from, to, 0.44 * lower), 1e-3) << from << " to " << to; // near the band's end
    }
}

TEST(RateConverter, RemovesWhatTheLowerRateCannotHold) {
    for (const double hz : {25'000.0, 30'000.0, 47'000.0}) {
        const auto out = Converted(96000, 48000, hz, 9600, 480);
        double most = 0;
        for (std::size_t i = 2400; i < out.size(); ++i) most = std::max(most, std::abs(double{out[i]}));
        EXPECT_LT(most, 0.5 * 2e-4) << hz; // 74 dB
    }
}

TEST(RateConverter, TakesAsMuchAsTheRatesSay) {
    for (const auto& [from, to] : Rates) {
        CToneFile file(100, from);
        CRateConverter converter(from, to, 1);
        std::vector<float> out(static_cast<std::size_t>(to)); // a second
        converter.Fill(out, file.source);
        const auto first = file.frames;
        converter.Fill(out, file.source);
        EXPECT_NEAR(static_cast<double>(file.frames - first), from, 256) << from << " to " << to;
    }
}

TEST(RateConverter, IsTheSameInPiecesOfAnySize) {
    const auto whole = Converted(44100, 48000, 997, 2000, 2000);
    for (const std::size_t piece : {std::size_t{1}, std::size_t{7}, std::size_t{480}})
        EXPECT_EQ(Converted(44100, 48000, 997, 2000, piece), whole);
}

TEST(RateConverter, KeepsChannelsApart) {
    const AudioSource source = [](std::span<float> samples) {
        for (std::size_t i = 0; i < samples.size(); ++i)
            samples[i] = i % 3 == 0 ? 0.25f : i % 3 == 1 ? 0 : -0.5f;
    };
    CRateConverter converter(44100, 48000, 3);
    std::vector<float> out(3 * 400);
    converter.Fill(out, source);
    for (std::size_t i = 3 * 200; i < out.size(); i += 3) {
        ASSERT_NEAR(out[i], 0.25f, 1e-5f);
        ASSERT_EQ(out[i + 1], 0);
        ASSERT_NEAR(out[i + 2], -0.5f, 1e-5f);
    }
}

TEST(RateConverter, AllocatesNothing) {
    CToneFile file(1000, 44100);
    CRateConverter converter(44100, 48000, 1);
    std::vector<float> out(4800);
    const auto before = Allocations();
    converter.Fill(out, file.source);
    EXPECT_EQ(Allocations(), before);
}
