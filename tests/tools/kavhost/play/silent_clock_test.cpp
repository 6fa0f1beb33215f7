#include "tools/kavhost/play/audio_output.h"

#include <atomic>
#include <chrono>
#include <gtest/gtest.h>
#include <thread>

using namespace KAV::Host;

namespace {

template<typename FACT>
bool Await(FACT fact) {
    const auto guard = std::chrono::steady_clock::now() + std::chrono::seconds(30);
    while (!fact()) {
        if (std::chrono::steady_clock::now() > guard) return false;
        std::this_thread::sleep_for(std::chrono::milliseconds(2));
    }
    return true;
}

} // namespace

TEST(SilentClock, CallsForAsManyFramesAsTheRateHas) {
    // 44,100 Hz by 100 periods leaves no rest, 22,050 Hz does.
    std::atomic<std::size_t> calls{0}, frames{0};
    std::size_t inHundred = 0;
    const AudioSource source = [&](std::span<float> samples) {
        frames += samples.size() / 3;
        if (++calls == 100) inHundred = frames;
    };
    {
        const auto output = OpenSilentClock(22050, 3, source);
        EXPECT_TRUE(Await([&] { return calls >= 101; }));
    }
    EXPECT_EQ(inHundred, 22050u);
    const auto ended = calls.load();
    std::this_thread::sleep_for(std::chrono::milliseconds(30));
    EXPECT_EQ(calls, ended);
}
