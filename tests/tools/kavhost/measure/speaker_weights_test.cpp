#include "tools/kavhost/measure/speaker_weights.h"

#include "tools/kavhost/audio/speaker_layout.h"

#include <gtest/gtest.h>

using namespace KAV::Host;

namespace {

using Weights = std::vector<double>;
using EOrigin = SSpeakerWeights::EOrigin;

SSpeakerWeights WeightsOf(
    int channels, std::optional<std::uint32_t> mask, const std::vector<std::string>& labels = {}) {
    return WeightsFor({48000, channels, ESampleFormat::Float32, mask}, labels);
}

Weights OfLayout(int channels, const char* name) {
    const auto weights = WeightsOf(channels, MaskOf(name));
    EXPECT_EQ(weights.origin, EOrigin::Mask) << name;
    EXPECT_EQ(weights.layout, LayoutName(*MaskOf(name)));
    return weights.channels;
}

constexpr double Side = SideWeight;

} // namespace

TEST(SpeakerWeights, AreMoreForThePairAtTheSides) {
    EXPECT_EQ(OfLayout(5, "5.0(side)"), (Weights{1, 1, 1, Side, Side}));
    EXPECT_EQ(OfLayout(6, "5.1(side)"), (Weights{1, 1, 1, 0, Side, Side}));
    EXPECT_EQ(OfLayout(7, "6.1"), (Weights{1, 1, 1, 0, 1, Side, Side})); // the speaker behind comes first
    EXPECT_EQ(OfLayout(8, "7.1(wide-side)"), (Weights{1, 1, 1, 0, 1, 1, Side, Side}));
}

TEST(SpeakerWeights, TakeThePairAtTheBackForTheSurroundWhereItIsTheOnlyPair) {
    EXPECT_EQ(OfLayout(4, "quad"), (Weights{1, 1, Side, Side}));
    EXPECT_EQ(OfLayout(6, "5.1"), (Weights{1, 1, 1, 0, Side, Side}));
    EXPECT_EQ(OfLayout(7, "6.1(back)"), (Weights{1, 1, 1, 0, Side, Side, 1}));
    EXPECT_EQ(OfLayout(8, "7.1(wide)"), (Weights{1, 1, 1, 0, Side, Side, 1, 1}));
}

TEST(SpeakerWeights, AreOneForThePairAtTheBackOfLayoutsThatHaveBoth) {
    EXPECT_EQ(OfLayout(8, "7.1"), (Weights{1, 1, 1, 0, 1, 1, Side, Side}));
    EXPECT_EQ(OfLayout(12, "7.1.4"), (Weights{1, 1, 1, 0, 1, 1, Side, Side, 1, 1, 1, 1}));
}

TEST(SpeakerWeights, AreOneForMonoStereoAndWhatIsAbove) {
    EXPECT_EQ(OfLayout(1, "mono"), (Weights{1}));
    EXPECT_EQ(OfLayout(2, "stereo"), (Weights{1, 1}));
    EXPECT_EQ(OfLayout(3, "2.1"), (Weights{1, 1, 0}));
    EXPECT_EQ(OfLayout(4, "4.0"), (Weights{1, 1, 1, 1}));
    EXPECT_EQ(OfLayout(8, "cube"), (Weights{1, 1, Side, Side, 1, 1, 1, 1}));
}

TEST(SpeakerWeights, AreOneForChannelsBeyondTheMask) {
    EXPECT_EQ(WeightsOf(4, Speakers::FrontLeft | Speakers::Lfe).channels, (Weights{1, 0, 1, 1}));
}

TEST(SpeakerWeights, AreThoseOfTheRoutingsLabelsWithoutAMask) {
    const auto film = WeightsOf(6, std::nullopt, {"L", "C", "R", "Ls", "Rs", "LFE"});
    EXPECT_EQ(film.channels, (Weights{1, 1, 1, Side, Side, 0}));
    EXPECT_EQ(film.origin, EOrigin::Routing);
    EXPECT_EQ(Explained(film), "no speaker mask; by the routing: L C R Ls Rs LFE");
    EXPECT_EQ(WeightsOf(10, 0, {"L", "R", "C", "LFE", "Lss", "Rss", "Lrs", "Rrs", "Lw", "Rw"}).channels,
        (Weights{1, 1, 1, 0, Side, Side, 1, 1, Side, Side}));
    EXPECT_EQ(WeightsOf(6, std::nullopt, {"L", "R", "Ls", "Rs", "Sl", "Sr"}).channels,
        (Weights{1, 1, 1, 1, Side, Side}));
    EXPECT_EQ(WeightsOf(3, std::nullopt, {"Ls"}).channels, (Weights{Side, 1, 1}));
    EXPECT_EQ(WeightsOf(2, std::nullopt, {"L", "R", "Ls", "Rs"}).channels, (Weights{1, 1}));
    EXPECT_EQ(WeightsOf(6, MaskOf("5.1"), {"L", "C", "R", "Ls", "Rs", "LFE"}).origin, EOrigin::Mask);
}

TEST(SpeakerWeights, AreThoseOfTheUsualLayoutWithoutAnythingElse) {
    const std::vector<Weights> usual{{1}, {1, 1}, {1, 1, 1}, {1, 1, Side, Side}, {1, 1, 1, Side, Side},
        {1, 1, 1, 0, Side, Side}, {1, 1, 1, 0, Side, Side, 1}, {1, 1, 1, 0, Side, Side, 1, 1}};
    for (int channels = 1; channels <= 8; ++channels) {
        for (const std::optional<std::uint32_t> mask : {std::optional<std::uint32_t>(), {0}}) {
            const auto weights = WeightsOf(channels, mask);
            EXPECT_EQ(weights.channels, usual[static_cast<std::size_t>(channels) - 1]) << channels;
            EXPECT_EQ(weights.origin, EOrigin::Usual);
        }
    }
    EXPECT_EQ(Explained(WeightsOf(8, std::nullopt)),
        "no speaker mask; the usual layout: L R C LFE Lss Rss Lrs Rrs");
}

TEST(SpeakerWeights, AreAllTheSameAboveEightChannelsWithoutAnythingElse) {
    for (const int channels : {9, 16}) {
        const auto weights = WeightsOf(channels, std::nullopt);
        EXPECT_EQ(weights.channels, Weights(static_cast<std::size_t>(channels), 1.0));
        EXPECT_EQ(weights.origin, EOrigin::Nothing);
        EXPECT_EQ(Explained(weights), "no speaker mask: all channels weigh the same");
    }
}
