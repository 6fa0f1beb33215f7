// A long project: hours of audio while the user edits. Running sums are never recomputed, so time itself is a
// test.

#include "tests/dsp/engine_subject.h"

#include <array>
#include <cmath>
#include <cstdlib>
#include <gtest/gtest.h>
#include <limits>
#include <random>
#include <vector>

using namespace KAV;

namespace {

/// A minute in a normal run, an hour in a long one.
int Seconds() {
    return std::getenv("KAV_LONG") != nullptr ? 3600 : 60;
}

} // namespace

TEST(EngineEndurance, RandomEditsOverTheHoursLeaveTheSoundAtItsCeiling) {
    constexpr float Rate = 44100.0f;
    constexpr std::size_t Block = 441;
    Tests::CEngineSubject engine;
    engine.SetSampleRate(Rate);
    engine.SetBlockSize(Block);
    Reference::SSettings settings;
    std::mt19937 random(7);
    const auto position = [&random] { return static_cast<float>(random() % 1001) / 1000.0f; };
    std::vector<float> left(Block);
    std::vector<float> right(Block);
    std::array<float*, 2> channels{left.data(), right.data()};
    const auto play = [&](float level) {
        for (std::size_t i = 0; i < Block; ++i) {
            left[i] = level * (position() - 0.5f);
            right[i] = -left[i];
        }
        engine.Apply(settings);
        engine.Process(channels.data(), 2, Block);
    };
    for (int second = 0; second < Seconds(); ++second) {
        const auto group = random() % 4;
        settings.threshold[group] = position();
        settings.release[group] = position();
        settings.autoRelease[group] = random() % 2 != 0;
        settings.limiter[group] = random() % 8 != 0;
        settings.channelInGroup[random() % 2][group] = random() % 2 != 0;
        settings.groupsParallel = random() % 2 != 0;
        settings.hostBypass = random() % 16 == 0;
        settings.mainInput = position();
        for (int block = 0; block < 100; ++block) play(second % 10 == 9 ? 0.0f : 8.0f);
        for (const float y : left) ASSERT_TRUE(std::isfinite(y)) << second;
    }
    // One group at its ceiling: the errors of an hour of sums must not be audible.
    settings = Reference::SSettings{};
    settings.threshold[0] = 0.5f;
    for (int block = 0; block < 1000; ++block) play(2.0f);
    for (std::size_t i = 0; i < Block; ++i) ASSERT_LE(std::fabs(left[i]), 1.0f + 0.5f / (33.0f * 33.0f)) << i;
}

TEST(EngineEndurance, EditsOfEverythingLeaveAllStatesFiniteAndTheMetersOnTheirScale) {
    constexpr std::size_t Block = 441;
    Tests::CEngineSubject engine;
    engine.SetSampleRate(44100.0f);
    engine.SetBlockSize(Block);
    Reference::SSettings settings;
    std::mt19937 random(11);
    const auto chance = [&random](unsigned one, unsigned in) { return random() % in < one; };
    const auto position = [&random] { return static_cast<float>(random() % 1001) / 1000.0f; };
    std::array<std::vector<float>, 3> audio;
    for (int second = 0; second < Seconds(); ++second) {
        const auto group = random() % 4;
        settings.type[group] = chance(1, 2) ? 1 : 0;
        settings.map[group][random() % 16][random() % 2] = static_cast<int>(random() % 5) - 1;
        settings.channelInGroup[random() % 3][group] = chance(1, 2);
        settings.solo[group] = chance(1, 4);
        settings.mute[group] = chance(1, 4);
        settings.inputGain[group] = position();
        settings.threshold[group] = position();
        settings.autoRelease[group] = chance(1, 2);
        settings.oversampling = chance(1, 4) ? static_cast<int>(random() % 4) : 0;
        settings.highQuality = chance(1, 2);
        settings.simd = chance(1, 2);
        settings.editedGroup = static_cast<int>(random() % 4);
        settings.groupsParallel = chance(1, 2);
        settings.mainInput = position();
        const float level = chance(1, 10) ? 0.0f : 8.0f;
        for (int block = 0; block < 100; ++block) {
            std::array<float*, 3> channels{};
            for (std::size_t c = 0; c < channels.size(); ++c) {
                audio[c].resize(Block);
                for (float& x : audio[c]) x = level * (position() - 0.5f);
                channels[c] = audio[c].data();
            }
            // Occasionally a value that no file should contain.
            if (block == 50 && chance(1, 4)) audio[0][7] = std::numeric_limits<float>::infinity();
            if (block == 60 && chance(1, 4)) audio[1][7] = std::numeric_limits<float>::quiet_NaN();
            engine.SetLatch(static_cast<int>(group));
            engine.Apply(settings);
            engine.Process(channels.data(), 3, Block);
            for (int tag = -4; tag >= -55; --tag) {
                ASSERT_GE(engine.Meter(tag), 0.0f) << second;
                ASSERT_LE(engine.Meter(tag), 1.0f) << second;
            }
        }
        for (const auto& channel : audio) {
            for (const float y : channel) ASSERT_TRUE(std::isfinite(y)) << second;
        }
        for (int g = 0; g < 4; ++g) {
            ASSERT_GE(engine.ReportedGain(g), 0.0) << second;
            ASSERT_LE(engine.ReportedGain(g), 1.0 + 1e-9) << second;
        }
    }
}
