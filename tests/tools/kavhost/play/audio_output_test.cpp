#include "tools/kavhost/play/audio_output.h"

#include "tests/tools/kavhost/support.h"

#include <atomic>
#include <chrono>
#include <cstdlib>
#include <gtest/gtest.h>
#include <thread>

using namespace KAV::Host;
using namespace KAV::Tests;

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

TEST(AudioDevice, GetsWhatTheSourceFills) {
    // A device of the library's own that writes to a file.
    const auto file = NewFolder() / "sound";
    setenv("SDL_AUDIODRIVER", "disk", 1);
    setenv("SDL_DISKAUDIOFILE", file.c_str(), 1);
    std::atomic<std::size_t> place{0};
    const AudioSource source = [&](std::span<float> samples) {
        for (float& sample : samples) sample = static_cast<float>(++place) / 1e6f;
    };
    std::string reason;
    {
        const auto device = OpenAudioDevice(48000, 2, source, reason);
        ASSERT_NE(device, nullptr) << reason;
        EXPECT_TRUE(Await([&] { return place > 5000; }));
    }
    const auto bytes = BytesOf(file);
    const auto* const samples = reinterpret_cast<const float*>(bytes.data());
    const auto count = bytes.size() / sizeof(float);
    std::size_t silent = 0; // until the source is asked for the first time
    while (silent < count && samples[silent] == 0.0f) ++silent;
    ASSERT_GE(count - silent, 4000u);
    for (std::size_t i = 0; i < 4000; ++i)
        ASSERT_FLOAT_EQ(samples[silent + i], static_cast<float>(i + 1) / 1e6f);
}

TEST(AudioDevice, GetsFilesOfAnyNumberOfChannels) {
    setenv("SDL_AUDIODRIVER", "dummy", 1);
    for (int channels = 1; channels <= 16; ++channels) {
        std::atomic<std::size_t> calls{0};
        std::atomic<bool> areWhole{true};
        const AudioSource source = [&](std::span<float> samples) {
            if (samples.size() % static_cast<std::size_t>(channels) != 0) areWhole = false;
            ++calls;
        };
        std::string reason;
        const auto device = OpenAudioDevice(44100, channels, source, reason);
        ASSERT_NE(device, nullptr) << channels << " channels: " << reason;
        EXPECT_TRUE(Await([&] { return calls > 1; }));
        EXPECT_TRUE(areWhole) << channels;
    }
}

TEST(AudioDevice, ThatDoesNotExistIsNoneWithAReason) {
    setenv("SDL_AUDIODRIVER", "no-such-driver", 1);
    std::string reason;
    EXPECT_EQ(OpenAudioDevice(
                  48000, 2, [](std::span<float>) {}, reason),
        nullptr);
    EXPECT_NE(reason, "");
}
