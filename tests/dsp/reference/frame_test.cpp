#include "tests/dsp/reference/flush_scope.h"
#include "tests/dsp/reference/frame.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <memory>
#include <utility>
#include <vector>

namespace KAV::Reference {
namespace {

using CSound = std::vector<std::vector<float>>;

CSound Constant(std::size_t channels, std::size_t frames, float value) {
    return CSound(channels, std::vector<float>(frames, value));
}

/// One engine, its settings, and the host's side of a block.
class ReferenceFrame : public testing::Test {
protected:
    void Run(CSound& sound) { Run(_engine, sound); }

    void Run(CFrame& engine, CSound& sound) {
        std::vector<float*> pointers;
        for (std::vector<float>& channel : sound) pointers.push_back(channel.data());
        engine.Apply(_settings);
        const int frames = static_cast<int>(sound.front().size());
        engine.Process(pointers.data(), static_cast<int>(sound.size()), frames);
    }

    /// Runs quiet sound until every smoothed position has arrived.
    void Settle(std::size_t channels) {
        for (int i = 0; i < 40; ++i) {
            CSound sound = Constant(channels, 1000, 1e-4f);
            Run(sound);
        }
    }

    void ToggleOff(int group) {
        for (auto& entry : _settings.channelInGroup) entry[group] = false;
    }

    CCoverage _coverage;
    CFrame _engine{_coverage};
    SSettings _settings;
};

double MainGain(double position) {
    return std::pow(10.0, (48.0 * position - 24.0) / 20.0);
}

TEST_F(ReferenceFrame, FadesInOverATenthOfASecond) {
    ToggleOff(0);
    double position = 0.0;
    for (int block = 1; block <= 30; ++block) {
        CSound sound = Constant(1, 441, 0.01f); // ten milliseconds
        Run(sound);
        position = 0.5 - 0.5 * std::pow(0.01, 0.1 * block);
        if (block > 9) position = 0.5; // within a hundredth
        const double expected = 0.01 * MainGain(position) * MainGain(position);
        EXPECT_NEAR(sound[0][440], expected, expected * 1e-4) << block;
    }
}

TEST_F(ReferenceFrame, LeavesAMainGainAtUnityThatStartsAtItsLowestPosition) {
    ToggleOff(0);
    _settings.mainInput = 0.0f;
    Settle(1);
    CSound sound = Constant(1, 100, 0.5f);
    Run(sound);
    EXPECT_EQ(sound[0][50], 0.5f);
    _settings.mainInput = 1.0f;
    Settle(1);
    _settings.mainInput = 0.0f;
    Settle(1);
    sound = Constant(1, 100, 0.5f);
    Run(sound);
    EXPECT_NEAR(sound[0][50], 0.5 * MainGain(0.0), 1e-6);
}

TEST_F(ReferenceFrame, ReportsTheLookAheadOfTheGroupsInUse) {
    EXPECT_EQ(_engine.GetLatency(), 64);
    _settings.channelInGroup[7][2] = true;
    _settings.mute[2] = true;
    _engine.Apply(_settings);
    EXPECT_EQ(_engine.GetLatency(), 128);
    _engine.SetSampleRate(96000.0f);
    EXPECT_EQ(_engine.GetLatency(), 256);
    _settings.groupsParallel = true;
    _engine.Apply(_settings);
    EXPECT_EQ(_engine.GetLatency(), 128);
    ToggleOff(0);
    ToggleOff(2);
    _engine.Apply(_settings);
    EXPECT_EQ(_engine.GetLatency(), 0);
}

TEST_F(ReferenceFrame, DropsAChannelAfterFiveSecondsOfSilenceAndTakesItBackAtOnce) {
    ToggleOff(0);
    _settings.mainInput = 1.0f; // +24 dB tells a processed channel from a dropped one
    _engine.SetSampleRate(8000.0f);
    const float boosted = 1e-8f * static_cast<float>(MainGain(1.0));
    for (int block = 0; block < 40; ++block) {
        CSound sound = Constant(1, 1000, 1e-8f);
        Run(sound);
        if (block > 10) {
            EXPECT_NEAR(sound[0][500], boosted, 1e-12f) << block;
        }
    }
    CSound last = Constant(1, 1, 1e-8f);
    Run(last);
    EXPECT_EQ(last[0][0], 1e-8f);
    CSound back = Constant(1, 100, 1e-8f);
    back[0][60] = 0.1f;
    Run(back);
    EXPECT_NEAR(back[0][0], boosted, 1e-12f);
    EXPECT_NEAR(back[0][60], 0.1 * MainGain(1.0), 1e-5);
}

TEST_F(ReferenceFrame, SumsParallelGroupsAndChainsSerialOnes) {
    _settings.channelInGroup[0][3] = true;
    _settings.inputGain[0] = 0.7f; // -6 dB
    _settings.inputGain[3] = 0.4f; // -12 dB
    Settle(1);
    CSound sound = Constant(1, 200, 0.5f);
    Run(sound);
    EXPECT_NEAR(sound[0][60], 1e-4 * std::pow(10.0, -18.0 / 20.0), 1e-8); // delayed by both groups
    EXPECT_NEAR(sound[0][199], 0.5 * std::pow(10.0, -18.0 / 20.0), 1e-6);

    _settings.groupsParallel = true;
    Settle(1);
    sound = Constant(1, 200, 0.5f);
    Run(sound);
    EXPECT_NEAR(sound[0][64], 0.5 * (std::pow(10.0, -6.0 / 20.0) + std::pow(10.0, -12.0 / 20.0)), 1e-6);
}

TEST_F(ReferenceFrame, PassesWhatAMutedGroupLeavesAndSilencesWhatSoloLeaves) {
    Settle(3);
    _settings.mute[0] = true;
    CSound sound = Constant(3, 10, 0.5f);
    Run(sound);
    for (const auto& channel : sound) EXPECT_EQ(channel[0], 0.5f);

    _settings.solo[0] = true; // wins over mute
    sound = Constant(3, 200, 0.5f);
    Run(sound);
    EXPECT_EQ(sound[0][199], 0.5f);
    EXPECT_EQ(sound[2][199], 0.0f);

    _settings.solo[0] = false;
    _settings.solo[1] = true;
    sound = Constant(3, 10, 0.5f);
    Run(sound);
    for (const auto& channel : sound) EXPECT_EQ(channel[5], 0.0f);
}

TEST_F(ReferenceFrame, ReturnsTheInputItselfOnceBypassHasFadedIn) {
    _settings.mainInput = 0.8f;
    _settings.mainOutput = 0.1f;
    _settings.threshold[0] = 0.2f;
    Settle(2);
    _settings.hostBypass = true;
    Settle(2);
    CSound sound = Constant(2, 300, 3.0f);
    Run(sound);
    for (const float sample : sound[1]) EXPECT_EQ(sample, 3.0f);
}

TEST_F(ReferenceFrame, ProcessesALongerBlockInSlicesOfTheAnnouncedLength) {
    CCoverage coverage;
    CFrame other(coverage);
    for (CFrame* engine : {&_engine, &other}) engine->SetBlockSize(100);
    CSound whole = Constant(2, 250, 0.3f);
    Run(whole);
    for (const std::size_t part : {0u, 1u, 2u}) {
        CSound slice = Constant(2, part == 2 ? 50 : 100, 0.3f);
        Run(other, slice);
        for (std::size_t i = 0; i < slice[0].size(); ++i) EXPECT_EQ(slice[0][i], whole[0][100 * part + i]);
    }
}

TEST_F(ReferenceFrame, IgnoresCallsThatMakeNoSense) {
    CCoverage coverage;
    CFrame plain(coverage);
    for (const float rate : {0.0f, -1.0f, 1600001.0f, std::numeric_limits<float>::quiet_NaN()}) {
        _engine.SetSampleRate(rate);
    }
    _engine.SetBlockSize(0);
    _engine.SetBlockSize(-5);
    _engine.Process(nullptr, 2, 100);
    CSound untouched = Constant(1, 10, 0.5f);
    float* pointer = untouched[0].data();
    _engine.Process(&pointer, 0, 10);
    _engine.Process(&pointer, 1, 0);
    EXPECT_EQ(untouched, Constant(1, 10, 0.5f));

    CSound mine = Constant(2, 500, 0.3f);
    CSound fresh = mine;
    Run(mine);
    Run(plain, fresh);
    EXPECT_EQ(mine, fresh);
}

TEST_F(ReferenceFrame, TakesSixteenSlotsOfALongerMap) {
    _settings.groupsParallel = true;
    for (int entry = 0; entry < 16; ++entry) {
        _settings.channelInGroup[entry][0] = true;
        _settings.map[0][entry][0] = 0;
        _settings.map[0][entry][1] = 1;
    }
    Settle(2);
    CSound sound = Constant(2, 200, 0.01f);
    Run(sound);
    // Eight entries of two slots each, so each channel comes out as the sum of eight copies.
    EXPECT_NEAR(sound[0][199], 0.08f, 1e-6f);
    EXPECT_NEAR(sound[1][199], 0.08f, 1e-6f);
}

TEST_F(ReferenceFrame, IgnoresEntriesForChannelsTheHostHasNot) {
    Settle(1);
    _settings.map[0][0][0] = 1;
    _settings.map[0][1][0] = 16;
    CSound sound = Constant(1, 10, 0.5f);
    Run(sound);
    EXPECT_EQ(sound[0][0], 0.5f);
}

TEST_F(ReferenceFrame, FlushesDenormalsOnlyWhileItRuns) {
    _settings.mainInput = 1.0f;
    WriteFlushBits(0);
    CSound sound = Constant(1, 10, 1e-40f);
    Run(sound);
    EXPECT_EQ(ReadFlushBits(), 0u);
    EXPECT_EQ(sound[0][5], 0.0f);
    volatile float denormal = 1e-40f;
    EXPECT_GT(denormal * 0.5f, 0.0f);
}

TEST_F(ReferenceFrame, KeepsALatchUntilItsLimiterRunsAgain) {
    Settle(1);
    CSound loud = Constant(1, 500, 4.0f);
    Run(loud);
    _settings.limiter[0] = false;
    _engine.SetLatch(0);
    CSound sound = Constant(1, 10, 0.1f);
    Run(sound);
    EXPECT_EQ(_engine.ReportedGain(0), 1.0);
    _settings.limiter[0] = true;
    Run(sound);
    EXPECT_NEAR(_engine.ReportedGain(0), 0.25, 1e-9);
}

TEST_F(ReferenceFrame, BringsAConstantBackFromEveryFactor) {
    ToggleOff(0);
    for (const int index : {0, 1, 2, 3}) {
        for (const bool quality : {false, true}) {
            _settings.oversampling = index;
            _settings.highQuality = quality;
            Settle(1);
            CSound sound = Constant(1, 1000, 0.5f);
            for (int i = 0; i < 4; ++i) {
                sound = Constant(1, 1000, 0.5f);
                Run(sound);
            }
            // The standard pair lets a little of the images through.
            EXPECT_NEAR(sound[0][999], 0.5, quality || index < 2 ? 1e-5 : 1e-3) << index << quality;
        }
    }
}

TEST_F(ReferenceFrame, LimitsTheHalvesOfAMidSideGroup) {
    _settings.type[0] = 1;
    _settings.inputGain[0] = 0.0f; // -20 dB
    const auto last = [this] {
        Settle(2);
        CSound sound{std::vector<float>(400, 0.5f), std::vector<float>(400, 0.1f)};
        Run(sound);
        return std::pair(sound[0][399], sound[1][399]);
    };
    EXPECT_NEAR(last().first, 0.05f, 1e-5f);
    _settings.channelInGroup[1][0] = false; // mid 0.3 becomes 0.03, side 0.2 stays
    EXPECT_NEAR(last().first, 0.23f, 1e-5f);
    EXPECT_NEAR(last().second, -0.17f, 1e-5f);
    _settings.solo[0] = true;
    EXPECT_NEAR(last().first, 0.03f, 1e-5f);
    EXPECT_NEAR(last().second, 0.03f, 1e-5f);
    _settings.channelInGroup[0][0] = false;
    _settings.channelInGroup[1][0] = true;
    EXPECT_NEAR(last().first, 0.02f, 1e-5f);
    EXPECT_NEAR(last().second, -0.02f, 1e-5f);
}

TEST_F(ReferenceFrame, MetersShowThePeaksOfTheirPlaces) {
    const float half = static_cast<float>(std::pow(10.0, -6.0 / 20.0));
    for (int i = 0; i < 100; ++i) {
        CSound sound = Constant(2, 1000, half);
        Run(sound);
    }
    for (const int tag : {-4, -5, -20}) EXPECT_NEAR(_engine.Meter(tag), 6.0 / 7.0, 1e-6) << tag;
    for (const int tag : {-24, -25, -40, -41}) EXPECT_NEAR(_engine.Meter(tag), 0.75, 1e-6) << tag;
    for (const int tag : {-6, -21, -26, -42, -55}) EXPECT_EQ(_engine.Meter(tag), 0.0f) << tag;
    EXPECT_EQ(CMeters::SevenPoints(-192.0), 0.0);
    EXPECT_NEAR(CMeters::SevenPoints(-191.999), 1.0 / 7.0, 1e-5);
    EXPECT_EQ(CMeters::SevenPoints(-96.0), 2.0 / 7.0);
    EXPECT_EQ(CMeters::FivePoints(-24.0), 0.25);
    EXPECT_EQ(CMeters::FivePoints(-48.0), 0.0);
    EXPECT_EQ(CMeters::FivePoints(0.0), 1.0);
}

TEST_F(ReferenceFrame, RecoversFromInfinityInItsFilters) {
    ToggleOff(0);
    _settings.oversampling = 1;
    Settle(1);
    CSound sound = Constant(1, 10, std::numeric_limits<float>::infinity());
    Run(sound);
    EXPECT_FALSE(std::isfinite(sound[0][9]));
    for (int i = 0; i < 2; ++i) {
        sound = Constant(1, 1000, 0.5f);
        Run(sound);
    }
    EXPECT_NEAR(sound[0][999], 0.5f, 1e-5f);
}

} // namespace
} // namespace KAV::Reference
