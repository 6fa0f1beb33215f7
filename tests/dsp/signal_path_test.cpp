// The promises of the signal path, tested on the engine and on the plain model that the random sessions
// compare it with, so that a fault in one isn't hidden by the same fault in the other.

#include "tests/dsp/engine_subject.h"
#include "tests/dsp/reference/flush_scope.h"
#include "tests/dsp/reference/frame.h"
#include "tests/dsp/subject_names.h"

#include <cmath>
#include <gtest/gtest.h>
#include <limits>
#include <numbers>
#include <utility>
#include <vector>

using namespace KAV;

namespace {

using CSound = std::vector<std::vector<float>>;

constexpr float Infinity = std::numeric_limits<float>::infinity();
constexpr float NotANumber = std::numeric_limits<float>::quiet_NaN();

CSound Constant(std::size_t channels, std::size_t frames, float value) {
    return CSound(channels, std::vector<float>(frames, value));
}

CSound Noise(std::size_t channels, std::size_t frames, std::uint32_t seed = 1) {
    CSound sound = Constant(channels, frames, 0.0f);
    for (auto& channel : sound) {
        for (float& x : channel) {
            seed = seed * 1664525u + 1013904223u;
            x = static_cast<float>(seed >> 8) / 8388608.0f - 1.0f;
        }
    }
    return sound;
}

float Gain(double db) {
    return static_cast<float>(std::pow(10.0, db / 20.0));
}

double MainGain(double position) {
    return std::pow(10.0, (48.0 * position - 24.0) / 20.0);
}

struct SModel {
    static constexpr const char* Name = "Model";
    Reference::CCoverage coverage;
    Reference::CFrame engine{coverage};
};
struct SProduct {
    static constexpr const char* Name = "Engine";
    Tests::CEngineSubject engine;
};

/// One subject at 44100 Hz and blocks of 1024 at most, its settings, and the host's side of a block.
template<typename TSubject>
class SignalPath : public testing::Test {
protected:
    void SetUp() override { engine.Apply(settings); }
    void Run(CSound& sound) { Run(engine, sound); }
    void Run(Reference::IEngine& other, CSound& sound) {
        std::vector<float*> channels;
        for (auto& channel : sound) channels.push_back(channel.data());
        other.Apply(settings);
        other.Process(
            channels.data(), static_cast<int>(sound.size()), static_cast<int>(sound.front().size()));
    }
    CSound Ran(CSound sound) {
        Run(sound);
        return sound;
    }
    /// Runs quiet sound until every smoothed position has arrived.
    void Settle(std::size_t channels) {
        for (int i = 0; i < 40; ++i) Ran(Constant(channels, 1000, 1e-4f));
    }
    /// The last sample of each channel, for constant levels, after everything has settled and the delays are
    /// full.
    std::vector<float> Settled(const std::vector<float>& levels) {
        std::vector<float> last;
        for (int i = 0; i < 40; ++i) {
            CSound sound;
            for (const float level : levels) sound.emplace_back(1000, level);
            Run(sound);
            last.clear();
            for (const auto& channel : sound) last.push_back(channel.back());
        }
        return last;
    }
    void ToggleOff(int group) {
        for (auto& entry : settings.channelInGroup) entry[group] = false;
    }

    TSubject subject;
    Reference::IEngine& engine = subject.engine;
    Reference::SSettings settings;
};

using CSubjects = testing::Types<SModel, SProduct>;
TYPED_TEST_SUITE(SignalPath, CSubjects, Tests::SSubjectNames);

} // namespace

// Main gains

TYPED_TEST(SignalPath, FadesInOverATenthOfASecond) {
    this->ToggleOff(0);
    for (int block = 1; block <= 30; ++block) {
        const auto sound = this->Ran(Constant(1, 441, 0.01f)); // ten milliseconds
        double position = 0.5 - 0.5 * std::pow(0.01, 0.1 * block);
        if (block > 9) position = 0.5; // within a hundredth
        const double expected = 0.01 * MainGain(position) * MainGain(position);
        EXPECT_NEAR(sound[0][440], expected, expected * 1e-4) << block;
    }
}

TYPED_TEST(SignalPath, MainGainsFallOverATenthOfASecond) {
    this->ToggleOff(0);
    this->settings.mainInput = 1.0f;
    this->Settle(1);
    this->settings.mainInput = 0.5f;
    for (int block = 1; block <= 8; ++block) {
        const auto sound = this->Ran(Constant(1, 441, 0.01f));
        const double expected = 0.01 * MainGain(0.5 + 0.5 * std::pow(0.01, 0.1 * block));
        EXPECT_NEAR(sound[0][440], expected, expected * 1e-4) << block;
    }
}

TYPED_TEST(SignalPath, LeavesAMainGainAtUnityThatStartsAtItsLowestPosition) {
    this->ToggleOff(0);
    this->settings.mainInput = this->settings.mainOutput = 0.0f;
    EXPECT_EQ(this->Settled({0.5f})[0], 0.5f);
    this->settings.mainInput = 1.0f;
    this->Settle(1);
    this->settings.mainInput = 0.0f; // so that it has a distance to move
    EXPECT_NEAR(this->Settled({0.5f})[0], 0.5 * MainGain(0.0), 1e-6);
}

TYPED_TEST(SignalPath, ReturnsTheInputItselfOnceBypassHasFadedIn) {
    this->settings.mainInput = 0.8f;
    this->settings.mainOutput = 0.1f;
    this->settings.threshold[0] = 0.2f;
    this->Settle(2);
    this->settings.hostBypass = true;
    this->Settle(2);
    EXPECT_EQ(this->Ran(Constant(2, 300, 3.0f)), Constant(2, 300, 3.0f));
}

// Calls from the host

TYPED_TEST(SignalPath, ProcessesALongerBlockInSlicesOfTheAnnouncedLength) {
    TypeParam other;
    this->engine.SetBlockSize(100);
    other.engine.SetBlockSize(100);
    const CSound input = Noise(3, 250);
    const CSound whole = this->Ran(input);
    for (const std::size_t part : {0u, 1u, 2u}) {
        CSound slice;
        for (const auto& channel : input) {
            const auto begin = channel.begin() + static_cast<std::ptrdiff_t>(100 * part);
            slice.emplace_back(begin, part == 2 ? channel.end() : begin + 100);
        }
        this->Run(other.engine, slice);
        for (std::size_t c = 0; c < slice.size(); ++c) {
            for (std::size_t i = 0; i < slice[c].size(); ++i) {
                ASSERT_EQ(slice[c][i], whole[c][100 * part + i]) << "channel " << c << ", part " << part;
            }
        }
    }
}

TYPED_TEST(SignalPath, CallsThatMakeNoSenseLeaveAllStateUntouched) {
    // In the middle of every ramp and with full delays, so that an extra step is audible.
    TypeParam plain;
    this->settings.oversampling = 1;
    this->settings.groupsParallel = true;
    this->settings.channelInGroup[1][1] = true;
    this->settings.threshold[0] = 0.7f;
    for (int block = 0; block < 3; ++block) {
        const CSound input = Noise(2, 500, static_cast<std::uint32_t>(block));
        CSound expected = input;
        this->Run(plain.engine, expected);
        ASSERT_EQ(this->Ran(input), expected) << block;

        for (const float rate : {0.0f, -1.0f, 1600001.0f, NotANumber, Infinity}) {
            this->engine.SetSampleRate(rate);
        }
        this->engine.SetBlockSize(0);
        this->engine.SetBlockSize(-5);
        CSound untouched = Constant(2, 10, 0.5f);
        float* const channels[2] = {untouched[0].data(), untouched[1].data()};
        this->engine.Process(nullptr, 2, 100);
        this->engine.Process(channels, 0, 10);
        this->engine.Process(channels, -1, 10);
        this->engine.Process(channels, 2, 0);
        this->engine.Process(channels, 2, -5);
        EXPECT_EQ(untouched, Constant(2, 10, 0.5f));
    }
}

TYPED_TEST(SignalPath, AnnouncingTheSameSizeAgainIsInaudible) {
    // Not even where parallel groups and oversampling work in reallocated buffers.
    TypeParam plain;
    this->settings.groupsParallel = true;
    this->settings.channelInGroup[0][1] = true;
    this->settings.oversampling = 2;
    this->settings.hostBypass = true;
    for (int block = 0; block < 4; ++block) {
        const CSound input = Noise(2, 1000, static_cast<std::uint32_t>(block));
        CSound expected = input;
        this->Run(plain.engine, expected);
        ASSERT_EQ(this->Ran(input), expected) << block;
        this->engine.SetBlockSize(1024);
        this->engine.SetSampleRate(44100.0f);
    }
}

TYPED_TEST(SignalPath, BlockSizeMayGrowAndShrink) {
    TypeParam plain;
    plain.engine.SetBlockSize(4000);
    this->settings.groupsParallel = true;
    this->settings.channelInGroup[0][1] = true;
    this->settings.oversampling = 3;
    for (const std::size_t frames : {10u, 4000u, 100u}) {
        this->engine.SetBlockSize(static_cast<int>(frames));
        const CSound input = Noise(3, frames);
        CSound expected = input;
        this->Run(plain.engine, expected);
        ASSERT_EQ(this->Ran(input), expected) << frames;
    }
    // Nor do the channels take each other's places.
    this->engine.SetBlockSize(4000);
    CSound sound;
    for (int block = 0; block < 20; ++block) {
        sound = {
            std::vector<float>(4000, 0.1f), std::vector<float>(4000, 0.3f), std::vector<float>(4000, -0.4f)};
        this->Run(sound);
    }
    for (std::size_t i = 0; i < 4000; ++i) {
        ASSERT_NEAR(sound[0][i], 0.2f, 1e-3f) << i;
        ASSERT_NEAR(sound[1][i], 0.3f, 1e-3f) << i;
        ASSERT_NEAR(sound[2][i], -0.4f, 1e-3f) << i;
    }
}

TYPED_TEST(SignalPath, TakesRatesUpToTheHighest) {
    this->engine.SetSampleRate(1600000.0f);
    EXPECT_EQ(this->engine.GetLatency(), 35 * 64); // 1600000 x 0.0014 / 64 is 35
}

TYPED_TEST(SignalPath, FlushesDenormalsOnlyWhileItRuns) {
    this->settings.mainInput = 1.0f;
    Reference::WriteFlushBits(0);
    const auto sound = this->Ran(Constant(1, 10, 1e-40f));
    EXPECT_EQ(Reference::ReadFlushBits(), 0u);
    EXPECT_EQ(sound[0][5], 0.0f);
    volatile float denormal = 1e-40f;
    EXPECT_GT(denormal * 0.5f, 0.0f);
}

TYPED_TEST(SignalPath, ReportsTheLookAheadOfTheGroupsInUse) {
    EXPECT_EQ(this->engine.GetLatency(), 64);
    this->settings.channelInGroup[7][2] = true;
    this->settings.mute[2] = true; // neither this nor the next two count
    this->settings.solo[1] = true;
    this->settings.limiter[2] = false;
    this->engine.Apply(this->settings);
    EXPECT_EQ(this->engine.GetLatency(), 128);
    this->engine.SetSampleRate(96000.0f);
    EXPECT_EQ(this->engine.GetLatency(), 256);
    this->settings.groupsParallel = true;
    this->engine.Apply(this->settings);
    EXPECT_EQ(this->engine.GetLatency(), 128);
    this->ToggleOff(0);
    this->ToggleOff(2);
    for (const bool parallel : {false, true}) {
        this->settings.groupsParallel = parallel;
        this->engine.Apply(this->settings);
        EXPECT_EQ(this->engine.GetLatency(), 0);
    }
}

// Silence

TYPED_TEST(SignalPath, DropsAChannelAfterFiveSecondsOfSilenceAndTakesItBackAtOnce) {
    this->ToggleOff(0);
    this->settings.mainInput = 1.0f; // +24 dB distinguishes a processed channel from a dropped one
    this->engine.SetSampleRate(8000.0f);
    const auto boosted = static_cast<float>(1e-8 * MainGain(1.0));
    for (int block = 0; block < 40; ++block) {
        CSound sound{std::vector<float>(1000, 1e-8f), std::vector<float>(1000, 0.01f)};
        this->Run(sound);
        if (block > 10) {
            EXPECT_NEAR(sound[0][500], boosted, 1e-12f) << block;
        }
    }
    CSound last{{1e-8f}, {0.01f}};
    this->Run(last);
    EXPECT_EQ(last[0][0], 1e-8f);
    EXPECT_NEAR(last[1][0], 0.01 * MainGain(1.0), 1e-6);
    CSound back = Constant(2, 100, 1e-8f);
    back[0][60] = 0.1f;
    this->Run(back);
    EXPECT_NEAR(back[0][0], boosted, 1e-12f);
    EXPECT_NEAR(back[0][60], 0.1 * MainGain(1.0), 1e-5);
}

TYPED_TEST(SignalPath, RateSetsHowManySamplesOfSilenceAreFiveSeconds) {
    this->ToggleOff(0);
    this->settings.mainInput = 1.0f;
    for (const float rate : {1000.0f, 2000.0f}) {
        this->engine.SetSampleRate(rate);
        this->Ran(Constant(1, 10, 0.5f));
        this->Ran(Constant(1, static_cast<std::size_t>(rate) * 5, 0.0f));
        EXPECT_NE(this->Ran(Constant(1, 1, 1e-8f))[0][0], 0.0f);
        EXPECT_EQ(this->Ran(Constant(1, 1, 1e-8f))[0][0], 1e-8f) << rate;
    }
}

// Groups

TYPED_TEST(SignalPath, SumsParallelGroupsAndChainsSerialOnes) {
    this->settings.channelInGroup[0][3] = true;
    this->settings.inputGain[0] = 0.7f; // -6 dB
    this->settings.inputGain[3] = 0.4f; // -12 dB
    this->Settle(2);
    auto sound = this->Ran(Constant(2, 200, 0.5f));
    EXPECT_NEAR(sound[0][60], 1e-4f * Gain(-18.0), 1e-8); // delayed by both groups
    EXPECT_NEAR(sound[0][199], 0.5f * Gain(-18.0), 1e-6);
    EXPECT_NEAR(sound[1][199], 0.5f * Gain(-6.0), 1e-6);

    this->settings.groupsParallel = true;
    this->Settle(2);
    sound = this->Ran(Constant(2, 200, 0.5f));
    EXPECT_NEAR(sound[0][64], 0.5f * (Gain(-6.0) + Gain(-12.0)), 1e-6);
    EXPECT_NEAR(sound[1][64], 0.5f * Gain(-6.0), 1e-6);
}

TYPED_TEST(SignalPath, MuteTakesOneGroupOutAndIsNoSilencer) {
    this->settings.channelInGroup[0][1] = true;
    this->settings.inputGain[0] = 0.7f; // -6 dB
    this->settings.inputGain[1] = 0.4f; // -12 dB
    for (const bool parallel : {false, true}) {
        this->settings.groupsParallel = parallel;
        this->settings.mute[0] = true;
        this->settings.mute[1] = false;
        EXPECT_NEAR(this->Settled({0.5f})[0], 0.5f * Gain(-12.0), 1e-6) << parallel;
        this->settings.mute[0] = false;
        this->settings.mute[1] = true;
        EXPECT_NEAR(this->Settled({0.5f})[0], 0.5f * Gain(-6.0), 1e-6) << parallel;
        this->settings.mute[0] = true;
        EXPECT_EQ(this->Ran(Constant(3, 10, 0.5f)), Constant(3, 10, 0.5f)) << parallel;
    }
}

TYPED_TEST(SignalPath, SoloRunsOnlyItsGroupsAndSilencesWhatTheyDoNotTake) {
    this->settings.channelInGroup[0][1] = true;
    this->settings.inputGain[0] = 0.7f; // -6 dB
    this->settings.inputGain[1] = 0.4f; // -12 dB
    this->Settle(3);
    this->settings.solo[0] = true;
    this->settings.mute[0] = true; // solo wins over mute
    EXPECT_NEAR(this->Settled({0.5f, 0.5f, 0.5f})[0], 0.5f * Gain(-6.0), 1e-6);
    EXPECT_NEAR(this->Settled({0.5f, 0.5f, 0.5f})[1], 0.5f * Gain(-6.0), 1e-6);
    EXPECT_EQ(this->Settled({0.5f, 0.5f, 0.5f})[2], 0.0f);
    this->settings.mute[0] = false;
    this->settings.mute[1] = true; // of another group
    EXPECT_NEAR(this->Settled({0.5f, 0.5f, 0.5f})[0], 0.5f * Gain(-6.0), 1e-6);
    this->settings.channelInGroup[1][0] = false; // from now on no group takes it
    auto sound = this->Ran(Constant(3, 10, 0.5f));
    EXPECT_EQ(sound[1], std::vector<float>(10, 0.0f));

    this->settings.solo[0] = false;
    this->settings.solo[2] = true; // a group without channels
    sound = this->Ran(Constant(3, 10, 0.5f));
    EXPECT_EQ(sound, Constant(3, 10, 0.0f));
}

TYPED_TEST(SignalPath, SoloSilencesCompletelyAtEveryFactor) {
    this->settings.solo[0] = true;
    for (const int index : {0, 1, 2, 3}) {
        this->settings.oversampling = index;
        for (int block = 0; block < 3; ++block) {
            EXPECT_EQ(this->Ran(Noise(3, 500))[2], std::vector<float>(500, 0.0f)) << index;
        }
    }
}

TYPED_TEST(SignalPath, ValuesMoveInGroupsThatRunOnNothing) {
    // First group 0 without a channel, then group 1 while it is muted: the channels that follow get no
    // fade-in.
    this->ToggleOff(0);
    this->settings.inputGain[0] = 0.7f; // -6 dB
    this->settings.channelInGroup[0][1] = true;
    this->settings.mute[1] = true;
    this->Settle(1);
    this->settings.channelInGroup[0][0] = true;
    EXPECT_NEAR(this->Ran(Constant(1, 200, 0.5f))[0][199], 0.5f * Gain(-6.0), 1e-6);
    this->settings.inputGain[0] = 1.0f;
    this->settings.inputGain[1] = 0.4f; // -12 dB
    this->Settle(1);
    this->settings.mute[1] = false;
    EXPECT_NEAR(this->Ran(Constant(1, 300, 0.5f))[0][299], 0.5f * Gain(-12.0), 1e-6);
}

TYPED_TEST(SignalPath, TakesSixteenSlotsOfALongerMap) {
    this->settings.groupsParallel = true;
    for (int entry = 0; entry < 16; ++entry) {
        this->settings.channelInGroup[entry][0] = true;
        this->settings.map[0][entry][0] = 0;
        this->settings.map[0][entry][1] = 1;
    }
    // Eight entries of two slots each, so each channel comes out as the sum of eight copies.
    const auto sound = this->Settled({0.01f, 0.02f});
    EXPECT_NEAR(sound[0], 0.08f, 1e-6f);
    EXPECT_NEAR(sound[1], 0.16f, 1e-6f);
    for (int entry = 0; entry < 16; ++entry) {
        this->settings.map[0][entry][0] = entry;
        this->settings.map[0][entry][1] = (entry + 1) % 16;
    }
    for (const bool parallel : {false, true}) {
        this->settings.groupsParallel = parallel;
        EXPECT_NEAR(this->Settled(std::vector<float>(16, 0.01f))[15], 0.01f, 1e-6f)
            << "the last channel comes after the sixteenth place and is left unchanged";
    }
}

TYPED_TEST(SignalPath, ChannelThatAnEntryNamesTwiceIsAddedTwice) {
    this->settings.groupsParallel = true;
    this->settings.map[0][0][1] = 0;
    const auto sound = this->Settled({0.1f, 0.2f});
    EXPECT_NEAR(sound[0], 0.2f, 1e-6f);
    EXPECT_NEAR(sound[1], 0.2f, 1e-6f);
}

TYPED_TEST(SignalPath, IgnoresEntriesForChannelsTheHostHasNot) {
    this->Settle(1);
    this->settings.map[0][0][0] = 1;
    this->settings.map[0][1][0] = 16;
    EXPECT_EQ(this->Ran(Constant(1, 10, 0.5f)), Constant(1, 10, 0.5f));
    this->settings.inputGain[0] = 0.0f; // -20 dB
    this->settings.map[0][0][0] = 20;
    this->settings.map[0][0][1] = 5;
    this->settings.map[0][1][0] = 1;
    this->settings.map[0][1][1] = 2;
    const auto sound = this->Settled({0.5f, 0.5f});
    EXPECT_NEAR(sound[0], 0.5f, 1e-6f);
    EXPECT_NEAR(sound[1], 0.05f, 1e-6f);
}

TYPED_TEST(SignalPath, KeepsALatchUntilItsLimiterRunsAgain) {
    this->Settle(1);
    this->Ran(Constant(1, 500, 4.0f));
    this->settings.limiter[0] = false;
    this->engine.SetLatch(0);
    this->Ran(Constant(1, 10, 0.1f));
    EXPECT_EQ(this->engine.ReportedGain(0), 1.0);
    this->settings.limiter[0] = true;
    this->Ran(Constant(1, 10, 0.1f));
    EXPECT_NEAR(this->engine.ReportedGain(0), 0.25, 1e-9);
}

// Mid/side

TYPED_TEST(SignalPath, LimitsTheHalvesOfAMidSideGroup) {
    this->settings.type[0] = 1;
    this->settings.inputGain[0] = 0.0f; // -20 dB
    const auto last = [this] { return this->Settled({0.5f, 0.1f}); };
    EXPECT_NEAR(last()[0], 0.05f, 1e-5f);
    EXPECT_NEAR(last()[1], 0.01f, 1e-5f);
    this->settings.channelInGroup[1][0] = false; // mid 0.3 becomes 0.03, side 0.2 stays
    EXPECT_NEAR(last()[0], 0.23f, 1e-5f);
    EXPECT_NEAR(last()[1], -0.17f, 1e-5f);
    this->settings.solo[0] = true;
    EXPECT_NEAR(last()[0], 0.03f, 1e-5f);
    EXPECT_EQ(last()[1], last()[0]);
    this->settings.channelInGroup[0][0] = false;
    this->settings.channelInGroup[1][0] = true;
    EXPECT_NEAR(last()[0], 0.02f, 1e-5f);
    EXPECT_EQ(last()[1], -last()[0]);
    this->settings.type[0] = 2; // no other type differs from none
    EXPECT_NEAR(last()[1], 0.01f, 1e-5f);
}

TYPED_TEST(SignalPath, MidSideGroupWithoutItsLimiterDoesNotDelay) {
    this->settings.type[0] = 1;
    this->settings.limiter[0] = false;
    this->Settle(2);
    CSound sound = Constant(2, 200, 0.0f);
    sound[0][10] = 0.5f;
    this->Run(sound);
    EXPECT_EQ(sound[0][10], 0.5f);
    EXPECT_EQ(sound[0][74], 0.0f);
}

// Oversampling

TYPED_TEST(SignalPath, BringsAConstantBackFromEveryFactor) {
    this->ToggleOff(0);
    for (const int index : {0, 1, 2, 3}) {
        for (const bool quality : {false, true}) {
            this->settings.oversampling = index;
            this->settings.highQuality = quality;
            // The standard pair passes a little of the images.
            EXPECT_NEAR(this->Settled({0.5f})[0], 0.5, quality || index < 2 ? 1e-5 : 1e-3)
                << index << quality;
        }
    }
}

TYPED_TEST(SignalPath, RecoversFromInfinityInItsFilters) {
    this->ToggleOff(0);
    this->settings.oversampling = 1;
    this->Settle(1);
    EXPECT_FALSE(std::isfinite(this->Ran(Constant(1, 10, Infinity))[0][9]));
    this->Ran(Constant(1, 1000, 0.5f));
    EXPECT_NEAR(this->Ran(Constant(1, 1000, 0.5f))[0][999], 0.5f, 1e-5f);
}

TYPED_TEST(SignalPath, AnotherRateEmptiesTheFilters) {
    this->ToggleOff(0);
    this->settings.oversampling = 1;
    this->Settled({0.5f});
    this->engine.SetSampleRate(96000.0f);
    const auto sound = this->Ran(Constant(1, 100, 0.0f));
    for (const float x : sound[0]) EXPECT_NEAR(x, 0.0f, 1e-6f);
}

TYPED_TEST(SignalPath, WithoutVectorCodeAChannelSoundsAsItDoesByItself) {
    // With it several channels use fused operations, which differ in the last bits. The decay at the end of a
    // sound shows them.
    this->ToggleOff(0);
    this->settings.oversampling = 3;
    this->settings.highQuality = true;
    CSound four = Noise(4, 1000);
    for (auto& channel : four) channel.resize(4000, 0.0f);
    const CSound together = this->Ran(four);
    for (std::size_t c = 0; c < 4; ++c) {
        TypeParam other;
        CSound alone{four[c]};
        this->Run(other.engine, alone);
        EXPECT_TRUE(alone[0] == together[c]) << c;
    }
}

// Meters

TYPED_TEST(SignalPath, MetersShowThePeaksOfTheirPlaces) {
    const float half = Gain(-6.0);
    for (int i = 0; i < 100; ++i) this->Ran(Constant(2, 1000, half));
    for (const int tag : {-4, -5, -20}) EXPECT_NEAR(this->engine.Meter(tag), 6.0 / 7.0, 1e-6) << tag;
    for (const int tag : {-24, -25, -40, -41}) EXPECT_NEAR(this->engine.Meter(tag), 0.75, 1e-6) << tag;
    for (const int tag : {-6, -21, -26, -42, -55}) EXPECT_EQ(this->engine.Meter(tag), 0.0f) << tag;
}

TYPED_TEST(SignalPath, SourceMetersShowWhatTheHostSentToTheShownGroup) {
    this->settings.mainInput = 0.75f; // +12 dB, after the meters
    this->settings.editedGroup = 1;
    this->settings.map[1][0][0] = 2;
    for (int i = 0; i < 100; ++i) {
        CSound sound = Constant(3, 1000, 1.0f);
        sound[2].assign(1000, Gain(-6.0));
        this->Run(sound);
    }
    EXPECT_NEAR(this->engine.Meter(-4), 6.0 / 7.0, 1e-6);
    EXPECT_EQ(this->engine.Meter(-5), 1.0f);
}

TYPED_TEST(SignalPath, OutputMetersOfAMidSideGroupShowBothHalves) {
    this->settings.type[0] = 1;
    this->settings.channelInGroup[1][0] = false; // only mid
    for (int i = 0; i < 200; ++i) {
        CSound sound{std::vector<float>(1000, 0.75f), std::vector<float>(1000, -0.25f)};
        this->Run(sound);
    }
    EXPECT_NEAR(this->engine.Meter(-40), 0.5f, 2e-2f);  // mid 0.25, -12 dB
    EXPECT_NEAR(this->engine.Meter(-41), 0.75f, 2e-2f); // side 0.5, -6 dB
}
