#include "tools/kavhost/play/player.h"

#include "tests/support/counted_allocations.h"
#include "tests/tools/kavhost/support.h"
#include "tools/kavhost/audio/audio_file.h"
#include "tools/kavhost/effect/effect.h"
#include "tools/kavhost/effect/effect_library.h"

#include <chrono>
#include <cmath>
#include <gtest/gtest.h>
#include <optional>
#include <thread>

using namespace KAV::Host;
using namespace KAV::Tests;

namespace {

constexpr int RateHz = 48000;
constexpr std::size_t TestDelay = 64; ///< that the test effect really has; it reports 256
constexpr double Reported = 256.0 / RateHz;

/// A file of noise that plays through the test effect at a gain of 1; blocks are called for by hand.
class Player : public testing::Test {
protected:
    explicit Player(std::size_t frames = std::size_t{3} * RateHz) {
        audio = Noise(2, frames, 0.5f);
        audio.format.rateHz = RateHz;
        WriteWav(file, audio);
        reader.emplace(file);
        effect.Start();
        std::vector<float> in(512), silence(512);
        float* ins[] = {in.data(), in.data()};
        float* outs[] = {silence.data(), silence.data()};
        for (int i = 0; i < 40; ++i) { // it fades in
            std::ranges::fill(in, 0.0f);
            effect.Process(ins, outs, 512);
        }
        player.emplace(*reader, effect);
    }

    std::vector<float> Take(std::size_t frames) {
        std::vector<float> samples(frames * 2);
        player->Process(samples);
        return samples;
    }
    /// Frames of the file that the effect has delayed.
    void ExpectFile(
        const std::vector<float>& samples, std::size_t offset, std::size_t first, std::size_t count) {
        for (std::size_t i = 0; i < 2 * count; ++i)
            ASSERT_FLOAT_EQ(samples[2 * offset + i], audio.samples[2 * first + i]) << i;
    }
    /// Takes frames, one at a time unless more, until the reader has come so far.
    template<typename FACT>
    void Await(FACT fact, std::size_t frames = 1) {
        const auto guard = std::chrono::steady_clock::now() + std::chrono::seconds(30);
        while (!fact() && std::chrono::steady_clock::now() < guard) {
            Take(frames);
            std::this_thread::sleep_for(std::chrono::milliseconds(1));
        }
        EXPECT_TRUE(fact());
    }

    std::filesystem::path file = NewFolder() / "in.wav";
    SAudio audio;
    CEffectLibrary library{EffectFile("fader")};
    CEffect effect{library, {RateHz, 512}};
    std::optional<CAudioReader> reader;
    std::optional<CPlayer> player;
};

class ShortPlayer : public Player {
protected:
    ShortPlayer() : Player(6000) {}
};

} // namespace

TEST_F(Player, PlaysTheFileThroughTheEffectInBlocksOfAnySize) {
    std::this_thread::sleep_for(std::chrono::milliseconds(50)); // something has been read
    player->Play(true);
    // A block at a time until the file begins, in case the reader was late.
    std::vector<float> all;
    for (const std::size_t frames : {1u, 63u, 512u, 2000u, 777u}) {
        for (const float sample : Take(frames)) all.push_back(sample);
    }
    std::size_t begin = 0;
    while (begin < all.size() / 2 && all[2 * begin] == 0) ++begin;
    ASSERT_GE(begin, TestDelay);
    ExpectFile(all, begin, 0, all.size() / 2 - begin);
}

TEST_F(Player, SeeksToATimeAndSaysWhereItIs) {
    player->Seek(2);
    EXPECT_EQ(player->Seconds(), 2); // at once, for the next key
    player->Play(true);
    Await([&] { return player->Seconds() > 2; });
    EXPECT_LT(player->Seconds(), 3);
    const auto before = player->Seconds();
    Take(4800);
    EXPECT_NEAR(player->Seconds(), before + 0.1, 1e-9);
    player->Seek(-7);
    EXPECT_EQ(player->Seconds(), 0);
    player->Seek(1000);
    EXPECT_EQ(player->Seconds(), 3);
    EXPECT_EQ(player->Length(), 3);
}

TEST_F(Player, ShowsAPositionThatIsLaterByTheDelayThatTheEffectReports) {
    player->Seek(1);
    player->Play(true);
    Await([&] { return player->Seconds() > 1; });
    // Of one frame after the other, the first that moves it on is that after the delay.
    player->Seek(2);
    Take(480);
    const auto silent = player->Seconds();
    EXPECT_LE(silent, 2 + 0.01 - Reported + 1e-9);
}

TEST_F(ShortPlayer, StopsAtTheEnd) {
    player->Play(true);
    Await([&] { return !player->IsPlaying(); }, 60); // of 6000
    Take(512);
    EXPECT_EQ(player->Seconds(), player->Length());
    EXPECT_EQ(player->Length(), 6000.0 / RateHz);
    player->Play(true);
    Await([&] { return player->Seconds() > 0 && player->Seconds() < player->Length(); });
}

TEST_F(ShortPlayer, LoopsAtTheEnd) {
    player->Loop(true);
    player->Play(true);
    for (int i = 0; i < 100; ++i) {
        Take(500);
        std::this_thread::sleep_for(std::chrono::milliseconds(1));
    }
    EXPECT_TRUE(player->IsPlaying());
    EXPECT_LT(player->Seconds(), player->Length());
}

TEST_F(Player, LetsNothingIntoTheEffectWhileItIsHeld) {
    player->Play(true);
    Await([&] { return player->Seconds() > 0; });
    const auto before = player->Seconds();
    player->Pausing([&] {
        for (const float sample : Take(1000)) ASSERT_EQ(sample, 0);
        EXPECT_EQ(player->Seconds(), before);
        effect.Stop();
        effect.Start();
    });
    Take(1000);
    EXPECT_NE(player->Seconds(), before);
}

TEST_F(Player, WaitsUntilTheAudioHasLeftTheEffect) {
    constexpr std::int32_t slow = 4; // a parameter: each block takes 5 ms
    effect.SetParameter(slow, 1);
    std::atomic<bool> ends{false};
    std::thread audioThread([&] {
        std::vector<float> samples(1024);
        while (!ends) player->Process(samples);
    });
    player->Play(true);
    int moved = 0;
    for (int i = 0; i < 10; ++i) {
        std::this_thread::sleep_for(std::chrono::milliseconds(7));
        player->Pausing([&] {
            const auto before = player->Seconds();
            std::this_thread::sleep_for(std::chrono::milliseconds(20)); // a block that is inside would end
            if (player->Seconds() != before) ++moved;
            effect.Stop();
            effect.Start();
        });
    }
    ends = true;
    audioThread.join();
    EXPECT_EQ(moved, 0);
    EXPECT_GT(player->Seconds(), 0);
}

TEST_F(Player, AllocatesNothingInTheAudioCall) {
    player->Play(true);
    Await([&] { return player->Seconds() > 0; });
    std::vector<float> samples(3000);
    const auto ticks = Allocations();
    player->Process(samples);
    EXPECT_EQ(Allocations(), ticks);
}
