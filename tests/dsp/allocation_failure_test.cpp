// Memory runs out while a host changes the rate or the block size: the engine continues as before.

#include "dsp/plugin_dsp.h"
#include "tests/support/failing_allocations.h"

#include <array>
#include <functional>
#include <gtest/gtest.h>
#include <new>
#include <vector>

using namespace KAV;

namespace {

using Engine = CPluginDSP<float, float, DSP::CPluginMC<float, float>>;
using Audio = std::vector<std::vector<float>>;

constexpr std::size_t Block = 256;

/// Settings that use every buffer: three channels of two parallel groups, oversampled, automatic gain on.
struct SSubject {
    Engine engine;
    Utils::CShared<bool> on{true};
    std::uint32_t noise = 1;

    explicit SSubject(bool automaticGain) {
        auto& values = engine.parameters;
        for (std::size_t group = 0; group < 2; ++group) {
            for (int entry = 0; entry < 3; ++entry) {
                engine.routing[group].SetPair(entry, entry, -1);
                values.channelInGroup[static_cast<std::size_t>(entry)][group] = true;
            }
            values.inputGain[group].SetBase(1.0f);
            values.threshold[group].SetBase(0.7f);
            values.ceiling[group].SetBase(0.9f);
            values.limiter[group] = true;
        }
        values.mainInputGain.SetBase(0.6f);
        values.mainOutputGain.SetBase(0.4f);
        values.oversampling = 3;
        engine.groupsParallel = true;
        engine.SetSampleRate(48000.0f);
        engine.SetBlockSize(static_cast<int>(Block));
        engine.autoGain.rmsTime = 20.0;
        Run(3); // otherwise automatic gain would measure the delay's silence and stay at its limit
        if (automaticGain) engine.SetAutoGainLinks({.enable = true, .on = &on, .automatic = &on});
        Run(3);
    }

    /// The output of some more blocks; bypass is switched on and off meanwhile.
    Audio Run(int blocks) {
        Audio result;
        for (int block = 0; block < blocks; ++block) {
            engine.hostBypass = block % 3 == 1;
            Audio audio(3, std::vector<float>(Block));
            std::array<float*, 3> channels{};
            for (std::size_t c = 0; c < channels.size(); ++c) {
                for (float& x : audio[c]) {
                    noise = noise * 1664525u + 1013904223u;
                    x = static_cast<float>(noise >> 8) / 8388608.0f - 1.0f;
                }
                channels[c] = audio[c].data();
            }
            engine.Process(channels.data(), nullptr, 3, static_cast<int>(Block));
            result.insert(result.end(), audio.begin(), audio.end());
        }
        return result;
    }
};

/// Lets each allocation of the change fail in turn, each time in a new engine. After a failure the engine
/// behaves as if the change had never been tried; after a success, as if nothing had failed.
void ExpectFailuresLeaveTheOldState(bool automaticGain, const std::function<void(SSubject&)>& change) {
    SSubject expected(automaticGain);
    const int oldLatency = expected.engine.Latency();
    const Audio before = expected.Run(4);
    change(expected);
    const int newLatency = expected.engine.Latency();
    const Audio after = expected.Run(4);
    for (std::size_t nth = 1;; ++nth) {
        ASSERT_LT(nth, 10000u) << "the change never succeeds";
        SSubject subject(automaticGain);
        bool failed = false;
        try {
            const Tests::CFailingAllocation failing(nth);
            change(subject);
        } catch (const std::bad_alloc&) {
            failed = true;
        }
        if (!failed) {
            if (Tests::CFailingAllocation::ReachesAll()) {
                EXPECT_GT(nth, 1u) << "the change allocates nothing";
            }
            return;
        }
        ASSERT_EQ(subject.engine.Latency(), oldLatency) << "after allocation " << nth;
        ASSERT_EQ(subject.Run(4), before) << "after allocation " << nth;
        change(subject);
        ASSERT_EQ(subject.engine.Latency(), newLatency) << "after allocation " << nth;
        ASSERT_EQ(subject.Run(4), after) << "after allocation " << nth;
    }
}

} // namespace

TEST(AllocationFailure, CounterFailsTheNthAllocationAndNoOther) {
    int* volatile memory = nullptr; // volatile, or the compiler would remove the pair
    const Tests::CFailingAllocation failing(2);
    EXPECT_NO_THROW(memory = new int(1));
    delete memory;
    memory = nullptr;
    EXPECT_THROW(memory = new int(1), std::bad_alloc);
    EXPECT_NO_THROW(memory = new int(1));
    delete memory;
}

TEST(AllocationFailure, InAChangeOfRateLeavesTheOldState) {
    for (const bool automaticGain : {false, true}) {
        ExpectFailuresLeaveTheOldState(
            automaticGain, [](SSubject& subject) { subject.engine.SetSampleRate(192000.0f); });
    }
}

TEST(AllocationFailure, InAChangeOfBlockSizeLeavesTheOldState) {
    for (const bool automaticGain : {false, true}) {
        for (const int frames : {4096, 64, static_cast<int>(Block)}) {
            SCOPED_TRACE(frames);
            ExpectFailuresLeaveTheOldState(
                automaticGain, [frames](SSubject& subject) { subject.engine.SetBlockSize(frames); });
        }
    }
}

TEST(AllocationFailure, WhileAutomaticGainIsEnabledLeavesItOff) {
    ExpectFailuresLeaveTheOldState(false, [](SSubject& subject) {
        subject.engine.SetAutoGainLinks({.enable = true, .on = &subject.on, .automatic = &subject.on});
    });
}
