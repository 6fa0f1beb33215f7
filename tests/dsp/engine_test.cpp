#include "dsp/plugin_dsp.h"

#include <algorithm>
#include <cmath>
#include <gtest/gtest.h>
#include <limits>
#include <numbers>
#include <vector>

using namespace KAV;

namespace {

using Audio = std::vector<std::vector<float>>;

constexpr std::size_t Block = 256;

class Engine : public testing::Test {
protected:
    CPluginDSP<float, float, DSP::CPluginMC<float, float>> engine;

    void SetUp() override {
        auto& values = engine.parameters;
        values.channelInGroup[0][0] = true;
        values.channelInGroup[1][0] = true;
        for (std::size_t g = 0; g < 4; ++g) {
            values.inputGain[g].SetBase(1.0f);
            values.threshold[g].SetBase(1.0f);
            values.ceiling[g].SetBase(1.0f);
            values.release[g].SetBase(0.4f);
            values.limiter[g] = true;
        }
        values.mainInputGain.SetBase(0.5f);
        values.mainOutputGain.SetBase(0.5f);
        engine.SetSampleRate(48000.0f);
        engine.SetBlockSize(static_cast<int>(Block));
    }
    void Process(Audio& audio) {
        std::vector<float*> channels;
        for (auto& channel : audio) channels.push_back(channel.data());
        engine.Process(
            channels.data(), nullptr, static_cast<int>(channels.size()), static_cast<int>(audio[0].size()));
    }
    /// Constant levels, one per channel, until all ramps have ended; returns the last sample of each channel.
    std::vector<float> Settle(const std::vector<float>& levels, int blocks = 400) {
        std::vector<float> last;
        for (int block = 0; block < blocks; ++block) {
            Audio audio;
            for (const float level : levels) audio.emplace_back(Block, level);
            Process(audio);
            last.clear();
            for (const auto& channel : audio) last.push_back(channel.back());
        }
        return last;
    }
    /// Assigns channel k to entry k of the group.
    void MapStraight(std::size_t group) {
        for (int entry = 0; entry < RoutingEntries; ++entry) engine.routing[group].SetPair(entry, entry, -1);
    }
    void Take(std::size_t channel, std::size_t group, bool on = true) {
        engine.parameters.channelInGroup[channel][group] = on;
    }
};

} // namespace

TEST_F(Engine, BlockWithAMissingChannelIsLeftAlone) {
    std::vector<float> samples(Block, 0.5f);
    std::vector<float*> channels{samples.data(), nullptr};
    engine.Process(channels.data(), nullptr, 2, static_cast<int>(Block));
    EXPECT_EQ(samples, std::vector<float>(Block, 0.5f));
}

TEST_F(Engine, ChannelInNoGroupPassesWithTheMainGains) {
    engine.parameters.mainInputGain.SetBase(0.625f);  // +6 dB
    engine.parameters.mainOutputGain.SetBase(0.375f); // -6 dB
    Take(1, 0, false);
    const auto out = Settle({0.25f, 0.25f});
    EXPECT_NEAR(out[1], 0.25f, 1e-6f);
    engine.parameters.mainOutputGain.SetBase(0.5f);
    EXPECT_NEAR(Settle({0.25f, 0.25f})[1], 0.25f * static_cast<float>(std::pow(10.0, 0.3)), 1e-5f);
}

TEST_F(Engine, SerialGroupsRunInTheOrderOfTheirNumbers) {
    Take(0, 1);
    engine.parameters.inputGain[0].SetBase(0.0f);        // -20 dB, so that the second has nothing to limit
    engine.parameters.threshold[1].SetBase(1.0f / 3.0f); // -20 dB, brought back to 0 dB
    EXPECT_NEAR(Settle({0.5f, 0.5f})[0], 0.5f, 1e-5f);
    engine.parameters.inputGain[0].SetBase(1.0f);
    engine.parameters.inputGain[1].SetBase(0.0f);
    engine.parameters.threshold[0].SetBase(
        1.0f / 3.0f); // the first drives and limits, the second restores the level
    engine.parameters.threshold[1].SetBase(1.0f);
    EXPECT_NEAR(Settle({0.5f, 0.5f})[0], 0.1f, 1e-5f);
}

TEST_F(Engine, ParallelGroupsAddAtEveryFactor) {
    Take(0, 1);
    engine.parameters.inputGain[0].SetBase(0.7f); // -6 dB
    engine.parameters.inputGain[1].SetBase(0.4f); // -12 dB
    engine.parameters.highQuality = true;         // a constant passes it unchanged
    engine.groupsParallel = true;
    const float sum = 0.5f * static_cast<float>(std::pow(10.0, -0.3) + std::pow(10.0, -0.6));
    for (const std::int32_t index : {0, 1, 2, 3}) {
        engine.parameters.oversampling = index;
        const auto out = Settle({0.5f, 0.5f}, 300);
        EXPECT_NEAR(out[0], sum, 1e-5f) << index;
        EXPECT_NEAR(out[1], 0.5f * static_cast<float>(std::pow(10.0, -0.3)), 1e-5f) << index;
    }
}

TEST_F(Engine, EntryOfTwoChannelsTakesBoth) {
    engine.routing[0].SetPair(0, 2, 0);
    engine.routing[0].SetPair(1, -1, -1);
    engine.parameters.inputGain[0].SetBase(0.0f); // -20 dB
    const auto out = Settle({0.5f, 0.5f, 0.25f});
    EXPECT_NEAR(out[0], 0.05f, 1e-5f);
    EXPECT_NEAR(out[1], 0.5f, 1e-6f);
    EXPECT_NEAR(out[2], 0.025f, 1e-5f);
}

TEST_F(Engine, AllGroupsMutedStillRunsMainGainsAndOversampling) {
    for (auto& mute : engine.parameters.mute) mute = true;
    engine.parameters.oversampling = 2;
    engine.parameters.mainInputGain.SetBase(0.625f);
    EXPECT_NEAR(Settle({0.25f, 0.25f})[0], 0.25f * static_cast<float>(std::pow(10.0, 0.3)), 1e-3f);
}

TEST_F(Engine, QualitySwitchPicksTheSteepFilters) {
    Take(0, 0, false);
    Take(1, 0, false);
    engine.parameters.oversampling = 1;
    const auto highest = [this](bool highQuality) {
        engine.parameters.highQuality = highQuality;
        Audio audio{std::vector<float>(Block)};
        for (int block = 0; block < 60; ++block) { // 0.45 of the rate is 9 periods in 20 samples
            for (std::size_t i = 0; i < Block; ++i) {
                const auto n = static_cast<double>(static_cast<std::size_t>(block) * Block + i);
                audio[0][i] = static_cast<float>(std::sin(std::numbers::pi * 0.9 * n));
            }
            Process(audio);
        }
        float peak = 0.0f;
        for (const float x : audio[0]) peak = std::max(peak, x);
        return peak;
    };
    EXPECT_NEAR(highest(false), 0.5f, 0.08f); // the corner of the standard pair, 3 dB down each way
    EXPECT_NEAR(highest(true), 1.0f, 0.02f);
}

TEST_F(Engine, LatencyIsThatOfThePresentSettingsBeforeABlockHasSeenThem) {
    engine.SetSampleRate(44100.0f);
    engine.parameters.oversampling = 3;
    EXPECT_EQ(engine.Latency(), 512) << "unscaled, in samples of the oversampled rate";
    Settle({0.1f, 0.1f}, 1);
    EXPECT_EQ(engine.Latency(), 512);
    EXPECT_EQ(engine.Limiter(0).Lookahead(), 512u);
    engine.parameters.oversampling = 0;
    EXPECT_EQ(engine.Latency(), 64);
    engine.SetSampleRate(96000.0f);
    EXPECT_EQ(engine.Latency(), 128);
}

TEST_F(Engine, RampsOfAGroupTakeAFactorsPartOfTheirTime) {
    // Group smoothers run at the rate of oversampled blocks but step once per block: at x8 a step covers
    // eight times as much. The main gain's ramp stays the same, so only the groups are measured.
    const auto blocksUntilOpen = [this](std::int32_t index) {
        engine.parameters.oversampling = index;
        engine.parameters.inputGain[0].SetBase(1.0f);
        Settle({0.1f, 0.1f}, 600);
        engine.parameters.inputGain[0].SetBase(0.0f);
        int blocks = 0;
        while (Settle({0.1f, 0.1f}, 1).at(0) > 0.0102f && blocks < 1000) ++blocks;
        return blocks;
    };
    const int plain = blocksUntilOpen(0);
    const int eight = blocksUntilOpen(3);
    EXPECT_GT(plain, 15);
    EXPECT_LT(eight, plain / 3);
}

TEST_F(Engine, RateThatIsADenormalIsIgnored) {
    engine.SetSampleRate(1e-40f);
    EXPECT_NEAR(Settle({0.5f, 0.5f})[0], 0.5f, 1e-6f);
}

TEST_F(Engine, RateFarBelowTheSupportedOnesStillLimits) {
    engine.SetSampleRate(1000.0f);
    EXPECT_EQ(engine.Latency(), 64);
    EXPECT_NEAR(Settle({3.0f, 3.0f})[0], 1.0f, 1e-5f);
}

TEST_F(Engine, BlockBeforeAnyAnnouncementIsProcessed) {
    CPluginDSP<float, float, DSP::CPluginMC<float, float>> fresh;
    std::vector<float> samples(3000, 0.5f);
    std::vector<float*> channels{samples.data()};
    fresh.Process(channels.data(), nullptr, 1, 3000);
    EXPECT_EQ(samples[0], 0.5f) << "all positions are 0, so the main gains are at their start";
}

TEST_F(Engine, SixteenChannelsRunAndMoreAreLeftAlone) {
    MapStraight(0);
    for (std::size_t c = 0; c < 16; ++c) Take(c, 0);
    engine.parameters.inputGain[0].SetBase(0.0f);
    const auto out = Settle(std::vector<float>(18, 0.5f));
    for (std::size_t c = 0; c < 16; ++c) EXPECT_NEAR(out[c], 0.05f, 1e-5f) << c;
    EXPECT_EQ(out[16], 0.5f);
    EXPECT_EQ(out[17], 0.5f);
}

TEST_F(Engine, SourceMeterReadsAChannelThatTheGateHasDropped) {
    Settle({0.1f, 1e-8f}, 7 * 48000 / static_cast<int>(Block)); // two seconds after the drop
    EXPECT_GT(engine.Meters().Source(1), 1.0f / 7.0f) << "the meter still reads the buffer, at -160 dB";
    EXPECT_EQ(engine.Meters().Input(1), 0.0f);
    EXPECT_EQ(engine.Meters().Output(1), 0.0f);
    EXPECT_GT(engine.Meters().Input(0), 0.0f);
}

TEST_F(Engine, OutputMetersGoByPlaceInTheListNotByChannel) {
    // Entries 0 and 1 name channels that don't exist; entry 4 gets the first place.
    engine.routing[0].SetPair(0, 7, -1);
    engine.routing[0].SetPair(1, -1, -1);
    engine.routing[0].SetPair(4, 1, -1);
    Take(4, 0);
    Settle({0.1f, 0.5f});
    EXPECT_EQ(engine.Meters().Output(0), 0.0f);
    EXPECT_EQ(engine.Meters().Output(1), 0.0f);
    EXPECT_NEAR(engine.Meters().Output(4), 0.75f, 2e-2f);
    EXPECT_EQ(engine.Meters().Output(4), engine.Meters().Input(4));
}

TEST_F(Engine, MeterOfAPairShowsItsSecondChannelWhereTheSourceShowsTheHigherOne) {
    engine.routing[0].SetPair(0, 0, 1);
    engine.routing[0].SetPair(1, -1, -1);
    Settle({1.0f, 0.25f}, 800);
    EXPECT_EQ(engine.Meters().Source(0), 1.0f);
    EXPECT_EQ(engine.Meters().Group(0), 1.0f);
    EXPECT_NEAR(engine.Meters().Input(0), 0.5f, 2e-2f); // -12 dB
    EXPECT_NEAR(engine.Meters().Output(0), 0.5f, 2e-2f);
}

TEST_F(Engine, GroupThatIsNotShownKeepsCollectingItsInputPeaks) {
    MapStraight(1);
    Take(0, 1);
    engine.groupsParallel = true;
    Settle({0.01f, 0.01f});
    Settle({1.0f, 0.01f}, 1);
    Settle({0.01f, 0.01f}, 2000); // the spike is no longer in any meter
    EXPECT_LT(engine.Meters().Input(0), 0.1f);
    engine.currentGroup = 1;
    Settle({0.01f, 0.01f}, 1);
    EXPECT_GT(engine.Meters().Input(0), 0.99f) << "the spike is shown once the group is";
    EXPECT_LT(engine.Meters().Output(0), 0.1f);
}

TEST_F(Engine, MetersShowTheLastGroupForANumberBeyondIt) {
    MapStraight(3);
    Take(1, 0, false);
    Take(1, 3);
    engine.currentGroup = 9;
    Settle({0.5f, 0.5f});
    EXPECT_EQ(engine.Meters().Input(0), 0.0f);
    EXPECT_GT(engine.Meters().Input(1), 0.5f);
}

TEST_F(Engine, MetersGlideFromTheOldGroupsValues) {
    Settle({0.9f, 0.9f});
    const float before = engine.Meters().Input(0);
    engine.currentGroup = 3; // takes nothing
    Settle({0.9f, 0.9f}, 10);
    const float after = engine.Meters().Input(0);
    EXPECT_LT(after, before);
    EXPECT_GT(after, 0.8f * before);
    Settle({0.9f, 0.9f}, 1000);
    EXPECT_EQ(engine.Meters().Input(0), 0.0f);
    EXPECT_GT(engine.Meters().Group(0), 0.9f) << "groups have their own meters";
    EXPECT_EQ(engine.Meters().Group(3), 0.0f);
}

TEST_F(Engine, MetersOfAMutedGroupFall) {
    Settle({0.9f, 0.9f});
    engine.parameters.mute[0] = true;
    Settle({0.9f, 0.9f}, 1000);
    EXPECT_EQ(engine.Meters().Input(0), 0.0f);
    EXPECT_EQ(engine.Meters().Group(0), 0.0f);
    EXPECT_GT(engine.Meters().Source(0), 0.9f);
}

TEST_F(Engine, HalfOfAPairThatIsNotLimitedComesALookAheadEarlier) {
    engine.routing[0].type = ERoutingType::MidSide;
    Take(1, 0, false);
    Settle({0.0f, 0.0f});
    Audio audio{std::vector<float>(Block, 0.0f), std::vector<float>(Block, 0.0f)};
    audio[0][10] = 0.5f; // mid 0.25 and side 0.25
    Process(audio);
    EXPECT_NEAR(audio[0][10], 0.25f, 1e-6f);
    EXPECT_NEAR(audio[1][10], -0.25f, 1e-6f);
    EXPECT_NEAR(audio[0][74], 0.25f, 1e-6f);
    EXPECT_NEAR(audio[1][74], 0.25f, 1e-6f);
}

TEST_F(Engine, MidSideGroupOfOneChannelRunsPlain) {
    engine.routing[0].type = ERoutingType::MidSide;
    engine.parameters.inputGain[0].SetBase(0.0f); // -20 dB
    EXPECT_NEAR(Settle({0.5f})[0], 0.05f, 1e-5f);
}

TEST_F(Engine, CleanSoundComesBackAfterNotANumberAndInfinityAtEveryFactor) {
    for (const bool highQuality : {false, true}) {
        for (const std::int32_t index : {0, 1, 2, 3}) {
            engine.parameters.oversampling = index;
            engine.parameters.highQuality = highQuality;
            for (const float bad :
                {std::numeric_limits<float>::quiet_NaN(), std::numeric_limits<float>::infinity()}) {
                const auto before = Settle({0.25f, 0.5f}, 60);
                Settle({bad, 0.5f}, 1);
                const auto after = Settle({0.25f, 0.5f}, 60);
                EXPECT_NEAR(after[0], before[0], 1e-5f) << index << bad;
                EXPECT_NEAR(after[1], before[1], 1e-5f) << index << bad;
            }
        }
    }
}

TEST_F(Engine, AutomaticGainIsOffUntilItIsLinkedAndThenMovesTheOutputKnob) {
    engine.parameters.inputGain[0].SetBase(0.7f); // -6 dB
    engine.autoGain.rmsTime = 20.0;
    engine.autoGain.filter = 0;
    EXPECT_NEAR(Settle({0.5f, 0.5f})[0], 0.5f * static_cast<float>(std::pow(10.0, -0.3)), 1e-4f);
    Utils::CShared<bool> on{false};
    Utils::CShared<bool> automatic{true};
    Utils::CShared<float> adjusting{-1.0f};
    engine.SetAutoGainLinks({.enable = true});
    Settle({0.5f, 0.5f}, 2); // no switch: disabled
    EXPECT_EQ(float{engine.parameters.mainOutputGain.final}, 0.5f);
    engine.SetAutoGainLinks({true, &on, &automatic, &adjusting});
    Settle({0.5f, 0.5f}, 2);
    EXPECT_EQ(float{adjusting}, 0.0f);
    on = true;
    Settle({0.5f, 0.5f}, 10);
    EXPECT_EQ(float{adjusting}, 1.0f);
    EXPECT_NEAR(Settle({0.5f, 0.5f})[0], 0.5f, 1e-3f);
    EXPECT_NEAR(float{engine.parameters.mainOutputGain.final}, 0.625f, 1e-3f);
    EXPECT_EQ(float{adjusting}, 0.0f);
    engine.hostBypass = true; // disabled: the gain returns to the frame's own ramp
    EXPECT_NEAR(Settle({0.5f, 0.5f}, 1000)[0], 0.5f, 1e-6f);
    EXPECT_NEAR(float{engine.parameters.mainOutputGain.final}, 0.625f, 1e-3f);
}

TEST_F(Engine, AutomaticGainIsTheSameEnabledBeforeOrAfterRateAndBlockSize) {
    const Utils::CShared<bool> on{true};
    std::vector<std::vector<float>> results;
    for (const bool before : {false, true}) {
        CPluginDSP<float, float, DSP::CPluginMC<float, float>> subject;
        subject.autoGain.rmsTime = 200.0;
        subject.parameters.mainInputGain.SetBase(0.5f);
        subject.parameters.mainOutputGain.SetBase(0.5f);
        if (before) subject.SetAutoGainLinks({.enable = true, .on = &on, .automatic = &on});
        subject.SetSampleRate(96000.0f);
        subject.SetBlockSize(4096);
        if (!before) subject.SetAutoGainLinks({.enable = true, .on = &on, .automatic = &on});
        subject.parameters.channelInGroup[0][0] = true;
        subject.parameters.channelInGroup[1][0] = true;
        subject.parameters.inputGain[0].SetBase(0.6f);
        auto& result = results.emplace_back();
        for (int block = 0; block < 12; ++block) {
            std::vector<float> samples(4096);
            for (std::size_t i = 0; i < samples.size(); ++i)
                samples[i] = std::sin(0.1f * static_cast<float>(i % 200));
            std::vector<float> louder = samples; // a copy, so that no channel takes another's place
            std::reverse(louder.begin(), louder.end());
            for (float& x : louder) x *= 1.5f;
            std::vector<float*> channels{samples.data(), louder.data()};
            subject.Process(channels.data(), nullptr, 2, 4096);
            result.insert(result.end(), samples.begin(), samples.end());
        }
    }
    EXPECT_EQ(results[0], results[1]);
}

TEST_F(Engine, AnyRateThatIsTakenGivesFiniteSoundAtEveryFactor) {
    for (const float rate : {std::numeric_limits<float>::min(), 1e-3f, 1.0f, 100.0f, 1.6e6f}) {
        engine.SetSampleRate(rate);
        for (const std::int32_t index : {0, 1, 2, 3}) {
            engine.parameters.oversampling = index;
            engine.parameters.highQuality = index % 2 != 0;
            for (const float y : Settle({0.5f, 2.0f}, 3))
                EXPECT_TRUE(std::isfinite(y)) << rate << ' ' << index;
        }
    }
}
