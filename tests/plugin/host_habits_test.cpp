// The behaviour of real hosts, each as a test: hosts choose the order and the threads of their calls.

#include "device_gui/xxx_gui.h"
#include "tests/support/recording_host.h"

#include <cmath>
#include <gtest/gtest.h>
#include <thread>

using namespace KAV;
using namespace KAV::Tests;
using namespace KAV::VST;

namespace {

using Channels = std::vector<std::vector<float>>;

Channels Tone(std::size_t frames, float amplitude = 0.5f) {
    Channels channels(2, std::vector<float>(frames));
    for (std::size_t i = 0; i < frames; ++i) {
        channels[0][i] = channels[1][i] = amplitude * std::sin(static_cast<float>(i) * 0.07f);
    }
    return channels;
}

bool AllFinite(const Channels& channels) {
    for (const auto& channel : channels) {
        for (const float x : channel) {
            if (!std::isfinite(x)) return false;
        }
    }
    return true;
}

class HostHabits : public testing::Test {
protected:
    CRecordingHost host;
    CHostedEffect effect{host.Callback()};

    void Resume() { effect.Dispatch(effMainsChanged, 0, 1); }
    void Suspend() { effect.Dispatch(effMainsChanged, 0, 0); }
};

} // namespace

TEST_F(HostHabits, SavedValuesBeforeResumeThenProgramAndChunkAndResumeAgain) {
    for (const std::int32_t chunkIndex : {0, 1}) {
        for (std::int32_t index = 0; index < 109; ++index) effect.Set(index, effect.Get(index));
        effect.Set(4, 0.5f);
        Resume();
        effect.Dispatch(effSetProgram, 0, 0);
        char chunk[] = "a chunk of another kind";
        effect.Dispatch(effSetChunk, chunkIndex, sizeof(chunk), chunk);
        Resume(); // with no suspend between
        EXPECT_EQ(effect.Get(4), 0.5f);
        auto block = Tone(512);
        effect.Process(block);
        EXPECT_TRUE(AllFinite(block));
    }
}

TEST_F(HostHabits, SecondResumeAndSuspendOnTheAudioThreadChangeNoSample) {
    CHostedEffect quiet(host.Callback());
    for (int round = 0; round < 4; ++round) {
        auto block = Tone(256);
        auto expected = block;
        std::thread audio([&] {
            Suspend();
            Resume();
            effect.Process(block);
            Resume();
        });
        audio.join();
        quiet.Process(expected); // never resumed, never started
        EXPECT_EQ(block, expected);
    }
}

TEST_F(HostHabits, RateAndBlockSizeBeforeOpenAndAgainLater) {
    effect.Dispatch(effSetSampleRate, 0, 0, nullptr, 96000.0f);
    effect.Dispatch(effSetBlockSize, 0, 8192);
    effect.Dispatch(effOpen);
    effect.Dispatch(effSetSampleRate, 0, 0, nullptr, 48000.0f);
    effect.Dispatch(effSetBlockSize, 0, 1024);
    Resume();
    effect.Dispatch(effSetSampleRate, 0, 0, nullptr, 192000.0f);
    EXPECT_EQ(effect.Record().initialDelay, 256);
    auto block = Tone(1024);
    effect.Process(block);
    EXPECT_TRUE(AllFinite(block));
}

TEST_F(HostHabits, ScannersThatKnowNeitherRateNorSize) {
    effect.Dispatch(effOpen);
    effect.Dispatch(effSetSampleRate, 0, 0, nullptr, 0.0f);
    effect.Dispatch(effSetBlockSize, 0, 0);
    Resume();
    auto block = Tone(64);
    effect.Process(block);
    EXPECT_TRUE(AllFinite(block));
}

TEST(HostHabitsOfVersion, OldAndOddVersionsAreHostsAndZeroIsNone) {
    for (const std::intptr_t version : {2, 2300, 2400, -1}) {
        CRecordingHost host;
        host.version = version;
        CHostedEffect effect(host.Callback());
        EXPECT_EQ(effect.Dispatch(effGetVstVersion), 2400);
    }
}

TEST_F(HostHabits, BlocksChangeFromCallToCall) {
    effect.Dispatch(effSetBlockSize, 0, 8192);
    for (const std::size_t frames : {1024u, 704u, 64u, 1u, 8192u, 7u, 1024u}) {
        auto block = Tone(frames);
        effect.Process(block);
        EXPECT_TRUE(AllFinite(block)) << frames;
    }
}

TEST_F(HostHabits, BlocksLongerThanAnnouncedRunAsSeveral) {
    CHostedEffect pieces(host.Callback());
    for (auto* each : {&effect, &pieces}) each->Dispatch(effSetBlockSize, 0, 100);
    auto whole = Tone(250);
    const auto input = whole;
    effect.Process(whole);
    Channels joined(2);
    for (const auto& [start, end] : {std::pair{0, 100}, {100, 200}, {200, 250}}) {
        Channels piece(2);
        for (std::size_t c = 0; c < 2; ++c) piece[c].assign(input[c].begin() + start, input[c].begin() + end);
        pieces.Process(piece);
        for (std::size_t c = 0; c < 2; ++c)
            joined[c].insert(joined[c].end(), piece[c].begin(), piece[c].end());
    }
    EXPECT_EQ(whole, joined);
}

TEST_F(HostHabits, ProcessOnTheMainThreadAndOnAnotherGivesTheSame) {
    CHostedEffect other(host.Callback());
    auto here = Tone(512);
    auto there = here;
    effect.Process(here);
    std::thread audio([&] { other.Process(there); });
    audio.join();
    EXPECT_EQ(here, there);
}

TEST(HostHabitsOfScanning, ManyShortLivedInstances) {
    CRecordingHost host;
    host.record = false;
    for (int i = 0; i < 100; ++i) {
        CHostedEffect effect(host.Callback());
        effect.Dispatch(effOpen);
        auto block = Tone(64);
        effect.Process(block);
    }
}

TEST_F(HostHabits, EditorCallsFromAThreadOfTheirOwnAndInAnyOrder) {
    std::thread editor([&] {
        void* rectangle = nullptr;
        EXPECT_EQ(effect.Dispatch(effEditOpen, 0, 0, &host), 0); // there's no window to open
        EXPECT_EQ(effect.Dispatch(effEditGetRect, 0, 0, nullptr), 0);
        EXPECT_EQ(effect.Dispatch(effEditGetRect, 0, 0, &rectangle), 1);
        EXPECT_EQ(static_cast<ERect*>(rectangle)->right, effect.Device().GUI().Width());
        EXPECT_EQ(static_cast<ERect*>(rectangle)->bottom, effect.Device().GUI().Height());
        for (int i = 0; i < 25; ++i) effect.Dispatch(effEditIdle);
        EXPECT_EQ(effect.Dispatch(effEditClose), 0);
    });
    editor.join();
    EXPECT_EQ(effect.Record().flags & effFlagsHasEditor, 0);
}
