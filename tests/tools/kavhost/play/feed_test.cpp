#include "tools/kavhost/play/feed.h"

#include "tests/support/counted_allocations.h"
#include "tools/kavhost/play/block_queue.h"
#include "tools/kavhost/play/play_controls.h"

#include <algorithm>
#include <cmath>
#include <gtest/gtest.h>
#include <vector>

using namespace KAV::Host;
using namespace KAV::Tests;

namespace {

constexpr std::size_t Channels = 2;
constexpr std::size_t BlockFrames = 100;
constexpr std::uint64_t Fade = 256; ///< frames from silence to full gain

/// A file whose samples are their own places, from 1 on: left as they are, right negative. It is read by
/// hand.
class Feed : public testing::Test {
protected:
    /// Reads blocks from a place on, for the present request, until the queue is full.
    void ReadFrom(std::uint64_t place, std::size_t most = 1000) {
        for (; most > 0; --most) {
            auto* const block = queue.Back();
            if (block == nullptr) return;
            block->request = controls.request;
            block->first = place;
            block->frames = static_cast<std::size_t>(std::min<std::uint64_t>(BlockFrames, length - place));
            block->endsFile = block->frames < BlockFrames;
            for (std::size_t i = 0; i < block->frames; ++i) {
                block->samples[2 * i] = ValueAt(place + i);
                block->samples[2 * i + 1] = -ValueAt(place + i);
            }
            place = block->endsFile ? 0 : place + block->frames;
            queue.Push();
        }
    }
    static float ValueAt(std::uint64_t place) { return static_cast<float>(place + 1); }

    /// The left channel of the next frames; the right one is checked.
    std::vector<float> Take(std::size_t frames) {
        std::vector<float> interleaved(frames * Channels, 99.0f);
        feed.Fill(interleaved);
        std::vector<float> left;
        for (std::size_t i = 0; i < frames; ++i) {
            left.push_back(interleaved[2 * i]);
            EXPECT_EQ(interleaved[2 * i + 1], -left.back());
        }
        return left;
    }
    static std::vector<float> Values(std::uint64_t first, std::size_t frames) {
        std::vector<float> values;
        for (std::size_t i = 0; i < frames; ++i) values.push_back(ValueAt(first + i));
        return values;
    }
    static std::vector<float> Silence(std::size_t frames) { return std::vector<float>(frames); }

    static constexpr std::uint64_t length = 1550; // not a multiple of a block
    SPlayControls controls{length};
    CBlockQueue queue{40, BlockFrames, Channels};
    CFeed feed{queue, controls, Channels};
};

} // namespace

TEST_F(Feed, IsSilentUntilItPlaysAndThenHasTheFileFromItsFirstSample) {
    ReadFrom(0);
    EXPECT_EQ(Take(70), Silence(70));
    controls.plays = true;
    EXPECT_EQ(Take(333), Values(0, 333));
    EXPECT_EQ(Take(333), Values(333, 333));
}

TEST_F(Feed, FadesOutWhenItPausesAndInWhenItGoesOnWithoutLosingAFrame) {
    ReadFrom(0);
    controls.plays = true;
    Take(500);
    controls.plays = false;
    const auto out = Take(400);
    for (std::uint64_t i = 0; i < Fade; ++i) {
        const float gain = 1 - static_cast<float>(i) / Fade;
        ASSERT_NEAR(out[i], ValueAt(500 + i) * gain, 0.01) << i;
    }
    for (std::size_t i = Fade; i < out.size(); ++i) ASSERT_EQ(out[i], 0) << i;
    controls.plays = true;
    const auto in = Take(400);
    for (std::uint64_t i = 0; i < Fade; ++i) {
        const float gain = static_cast<float>(i) / Fade;
        ASSERT_NEAR(in[i], ValueAt(500 + Fade + i) * gain, 0.01) << i;
    }
    EXPECT_EQ(in.back(), ValueAt(500 + Fade + 399));
}

TEST_F(Feed, StopsAtTheEndAndBeginsAgainWhenItIsPlayedAgain) {
    ReadFrom(0);
    controls.plays = true;
    auto all = Take(length + 50);
    EXPECT_EQ(std::vector<float>(all.begin(), all.begin() + length), Values(0, length));
    EXPECT_EQ(std::vector<float>(all.begin() + length, all.end()), Silence(50));
    EXPECT_FALSE(controls.plays);
    EXPECT_EQ(feed.Heard(0), length);
    EXPECT_EQ(Take(50), Silence(50));
    controls.plays = true;
    EXPECT_EQ(Take(50), Values(0, 50));
}

TEST_F(Feed, LoopsWithoutAGap) {
    ReadFrom(0);
    controls.plays = controls.loops = true;
    Take(length - 20);
    auto expected = Values(length - 20, 20);
    for (const float value : Values(0, 30)) expected.push_back(value);
    EXPECT_EQ(Take(50), expected);
    EXPECT_TRUE(controls.plays);
}

TEST_F(Feed, PassesAnEndThatLiesOnTheLastFrameOfABlock) {
    auto* block = queue.Back();
    block->frames = BlockFrames;
    std::fill_n(block->samples, BlockFrames * Channels, 0.0f);
    queue.Push();
    block = queue.Back(); // what a reader finds out only then
    block->first = BlockFrames;
    block->frames = 0;
    block->endsFile = true;
    queue.Push();
    ReadFrom(0);
    controls.plays = controls.loops = true;
    Take(BlockFrames);
    EXPECT_EQ(Take(10), Values(0, 10));
}

TEST_F(Feed, JumpsAfterItHasFadedOutAndForgetsWhatWasReadBefore) {
    ReadFrom(0, 20);
    controls.plays = true;
    Take(300);
    controls.Seek(1000);
    ReadFrom(1000);
    const auto taken = Take(Fade + 300);
    EXPECT_NEAR(taken[Fade - 1], ValueAt(300 + Fade - 1) / Fade, 0.01);
    // From the new place it fades in.
    for (std::size_t i = 0; i < 10; ++i)
        ASSERT_NEAR(taken[Fade + i], ValueAt(1000 + i) * static_cast<float>(i) / Fade, 0.01) << i;
    EXPECT_EQ(taken.back(), ValueAt(1299));
}

TEST_F(Feed, JumpsAtOnceWhileItIsSilentAndStaysSilent) {
    ReadFrom(0, 20);
    controls.Seek(700);
    ReadFrom(700);
    EXPECT_EQ(Take(20), Silence(20));
    EXPECT_EQ(feed.Heard(0), 700u);
    EXPECT_EQ(feed.Heard(64), 700u);
    controls.plays = true;
    Take(Fade);
    EXPECT_EQ(Take(10), Values(700 + Fade, 10));
}

TEST_F(Feed, IsSilentWhileNothingIsReadAndFadesInAfterwards) {
    ReadFrom(0, 2);
    controls.plays = true;
    const auto taken = Take(300);
    EXPECT_EQ(std::vector<float>(taken.begin(), taken.begin() + 200), Values(0, 200));
    EXPECT_EQ(std::vector<float>(taken.begin() + 200, taken.end()), Silence(100));
    EXPECT_TRUE(controls.plays);
    ReadFrom(200);
    EXPECT_EQ(Take(1)[0], 0); // the fade's first step
    Take(Fade);
    EXPECT_EQ(Take(10), Values(200 + 1 + Fade, 10));
}

TEST_F(Feed, JumpsThoughNothingWasReadYet) {
    controls.plays = true;
    controls.Seek(500);
    EXPECT_EQ(Take(30), Silence(30));
    EXPECT_EQ(feed.Heard(64), 500u);
    ReadFrom(500);
    Take(Fade);
    EXPECT_EQ(Take(10), Values(500 + Fade, 10));
}

TEST_F(Feed, FollowsTheLastOfManyRequestsHoweverManyThereWere) {
    for (std::uint64_t i = 0; i < 70'000; ++i) {
        controls.Seek(i % 1000);
        if (i % 16 == 0) ReadFrom(i % 1000, 1);
        Take(1);
    }
    controls.Seek(0);
    controls.plays = true;
    ReadFrom(0);
    while (queue.Back() != nullptr) ReadFrom(0);
    EXPECT_EQ(Take(10), Values(0, 10));
}

TEST_F(Feed, KeepsABlockForALaterRequestWhileItFadesOut) {
    ReadFrom(0, 3);
    controls.plays = true;
    Take(250);
    controls.Seek(600);
    ReadFrom(600); // the fade has 50 frames only
    const auto taken = Take(50 + 10);
    EXPECT_NEAR(taken[50 + 9], ValueAt(609) * 9 / Fade, 0.01);
}

TEST_F(Feed, KnowsALaterRequestWhenTheirNumbersBeginAgain) {
    while (SPlayControls::NumberOf(controls.request) != 0xFFFF) {
        controls.Seek(0);
        Take(1);
    }
    ReadFrom(0, 3);
    controls.plays = true;
    Take(250);
    controls.Seek(600);
    EXPECT_EQ(SPlayControls::NumberOf(controls.request), 0u);
    ReadFrom(600);
    const auto taken = Take(50 + 10);
    EXPECT_NEAR(taken[50 + 9], ValueAt(609) * 9 / Fade, 0.01);
}

TEST_F(Feed, IsHeardLaterByTheDelayOfTheEffect) {
    constexpr std::uint64_t delay = 64;
    ReadFrom(0);
    controls.plays = true;
    Take(10);
    EXPECT_EQ(feed.Heard(delay), 0u); // nothing of the file has come through
    Take(90);
    EXPECT_EQ(feed.Heard(delay), 100 - delay);
    EXPECT_EQ(feed.Heard(0), 100u);
    controls.plays = false;
    Take(Fade); // still from the file
    EXPECT_EQ(feed.Heard(delay), 100 + Fade - delay);
    Take(40); // silence brings out what the effect still has
    EXPECT_EQ(feed.Heard(delay), 100 + Fade - delay + 40);
    Take(1000);
    EXPECT_EQ(feed.Heard(delay), 100 + Fade);
    controls.plays = true;
    Take(10); // which the effect still holds back
    EXPECT_EQ(feed.Heard(delay), 100 + Fade);
    Take(delay);
    EXPECT_EQ(feed.Heard(delay), 100 + Fade + 10);
}

TEST_F(Feed, IsHeardToTheEndBeforeALoopBeginsAnew) {
    constexpr std::uint64_t delay = 64;
    ReadFrom(0);
    controls.plays = controls.loops = true;
    Take(length + 10);
    EXPECT_EQ(feed.Heard(delay), length - delay + 10);
    Take(delay);
    EXPECT_EQ(feed.Heard(delay), 10u);
}

TEST_F(Feed, IsHeardToTheEndWhenItStopsThere) {
    ReadFrom(0);
    controls.plays = true;
    Take(length);
    EXPECT_EQ(feed.Heard(64), length - 64);
    Take(64);
    EXPECT_EQ(feed.Heard(64), length);
    Take(1000);
    EXPECT_EQ(feed.Heard(64), length);
}

TEST_F(Feed, AllocatesNothing) {
    ReadFrom(0);
    controls.plays = controls.loops = true;
    std::vector<float> interleaved(500 * Channels);
    const auto before = Allocations();
    feed.Fill(interleaved);
    controls.Seek(40);
    feed.Fill(interleaved);
    controls.plays = false;
    feed.Fill(interleaved);
    EXPECT_EQ(Allocations(), before);
}
