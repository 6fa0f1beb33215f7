// The audio thread neither allocates nor locks, whatever changes between two blocks.

#include "dsp/plugin_dsp.h"
#include "tests/support/system_call_counter.h"

#include <array>
#include <gtest/gtest.h>
#include <mutex>
#include <random>
#include <vector>

using namespace KAV;
using Engine = CPluginDSP<float, float, DSP::CPluginMC<float, float>>;

namespace {

void Expect(const Tests::CSystemCallCounter& counter) {
    EXPECT_EQ(counter.Allocations(), 0u);
    EXPECT_EQ(counter.Locks(), 0u);
}

} // namespace

TEST(SystemCallCounter, SeesWhatItIsMeantToSee) {
    std::mutex mutex;
    std::size_t allocations = 0;
    std::size_t locks = 0;
    {
        const Tests::CSystemCallCounter counter;
        int* volatile memory = new int(1); // volatile, or the compiler would remove the pair
        delete memory;
        mutex.lock();
        mutex.unlock();
        allocations = counter.Allocations();
        locks = counter.Locks();
    }
    EXPECT_GE(allocations, 2u);
    EXPECT_EQ(locks > 0, Tests::CSystemCallCounter::SeesLocks());
}

TEST(RealTime, ProcessTakesNoMemoryAndNoLockHoweverItIsSet) {
    Engine engine;
    std::mt19937 random(1);
    const auto chance = [&random](unsigned one, unsigned in) { return random() % in < one; };
    std::vector<std::vector<float>> audio(16, std::vector<float>(5000));
    Utils::CShared<bool> on{true};
    Utils::CShared<float> adjusting{0.0f};
    engine.SetAutoGainLinks({true, &on, &on, &adjusting});
    for (const float rate : {8000.0f, 44100.0f, 48000.0f, 96000.0f, 384000.0f}) {
        engine.SetSampleRate(rate);
        engine.SetBlockSize(512);
        for (int block = 0; block < 60; ++block) {
            auto& values = engine.parameters;
            for (auto& entry : values.channelInGroup) {
                for (auto& toggle : entry) toggle = chance(1, 2);
            }
            for (std::size_t g = 0; g < 4; ++g) {
                values.solo[g] = chance(1, 8);
                values.mute[g] = chance(1, 8);
                values.autoRelease[g] = chance(1, 2);
                values.limiter[g] = chance(3, 4);
                values.threshold[g].SetBase(static_cast<float>(random() % 100) / 100.0f);
                values.release[g].SetBase(static_cast<float>(random() % 100) / 100.0f);
                engine.routing[g].type = chance(1, 2) ? ERoutingType::MidSide : ERoutingType::None;
                for (int entry = 0; entry < 16; ++entry) {
                    engine.routing[g].SetPair(
                        entry, static_cast<int>(random() % 17) - 1, static_cast<int>(random() % 17) - 1);
                }
            }
            values.oversampling = static_cast<std::int32_t>(random() % 4);
            values.highQuality = chance(1, 2);
            engine.hostBypass = chance(1, 4);
            engine.groupsParallel = chance(1, 2);
            engine.simd = chance(1, 2);
            on = chance(3, 4);
            engine.autoGain.filter = static_cast<std::uint8_t>(random() % 2);
            engine.autoGain.rmsTime = static_cast<double>(random() % 12000) - 1000.0;
            engine.currentGroup = random() % 4;
            engine.Limiter(0).Latch();
            std::array<float*, 16> channels{};
            for (std::size_t c = 0; c < 16; ++c) {
                for (std::size_t i = 0; i < 700; ++i)
                    audio[c][i] = static_cast<float>(random() % 2000) / 1000.0f - 1.0f;
                channels[c] = audio[c].data();
            }
            const int count = static_cast<int>(random() % 16) + 1;
            const int frames = static_cast<int>(random() % 700) + 1; // some longer than announced
            const Tests::CSystemCallCounter counter;
            engine.Process(channels.data(), nullptr, count, frames);
            Expect(counter);
        }
    }
}

TEST(RealTime, FactorUpAtAnyRateFindsItsMemoryReserved) {
    for (const float rate :
        {8000.0f, 44100.0f, 48000.0f, 88200.0f, 96000.0f, 176400.0f, 192000.0f, 384000.0f, 1.6e6f}) {
        Engine engine;
        engine.SetSampleRate(rate);
        std::vector<float> left(64, 0.5f);
        std::vector<float> right(64, 0.5f);
        std::array<float*, 2> channels{left.data(), right.data()};
        for (const std::int32_t index : {0, 3, 1, 2}) {
            engine.parameters.channelInGroup[0][0] = true;
            engine.parameters.oversampling = index;
            const Tests::CSystemCallCounter counter;
            engine.Process(channels.data(), nullptr, 2, 64);
            Expect(counter);
        }
    }
}
