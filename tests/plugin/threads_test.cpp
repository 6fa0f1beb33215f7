// Values cross threads without a lock. Under ThreadSanitizer these tests show that each crossing is an atomic
// word; without it they show that nothing is torn or lost.

#include "tests/support/recording_host.h"

#include <array>
#include <atomic>
#include <cmath>
#include <gtest/gtest.h>
#include <string>
#include <thread>

using namespace KAV;
using namespace KAV::Tests;

namespace {

constexpr int Blocks = 400;

} // namespace

TEST(Threads, ParametersAreWrittenAndReadWhileAudioRuns) {
    CRecordingHost host;
    host.record = false;
    CHostedEffect effect(host.Callback());
    CDeviceDSP& device = effect.Device();
    device.AssignMacro(0, 33, 1.0f);
    std::atomic<bool> running{true};

    std::vector<std::thread> writers;
    for (int writer = 0; writer < 3; ++writer) {
        writers.emplace_back([&effect, &device, &running, writer] {
            std::uint32_t step = static_cast<std::uint32_t>(writer) * 7919u;
            while (running) {
                step = step * 1664525u + 1013904223u;
                const auto index = static_cast<std::int32_t>((step >> 8) % 109u);
                const float value = static_cast<float>(step >> 16) / 65536.0f;
                if (index == 100) continue; // the factor is a test of its own: it costs eight times the audio
                switch (writer) {
                case 0:
                    effect.Set(index, value);
                    break;
                case 1:
                    device.SetParam(HostParamTable()[static_cast<std::size_t>(index)], value, NotifyHost);
                    break;
                default:
                    device.SetCurrentGroup(static_cast<int>(step >> 30));
                    effect.Display(index);
                    EXPECT_GE(device.GetParam(33, 0), 0.0f);
                    EXPECT_LE(device.GetParam(33, 0), 1.0f);
                    device.AssignMacro(0, 32 + index % 6, value);
                    device.GetLatency();
                    for (std::int32_t meter = -4; meter >= -55; --meter) {
                        EXPECT_GE(device.GetParam(meter, 0), 0.0f);
                        EXPECT_LE(device.GetParam(meter, 0), 1.0f);
                    }
                    device.RequestReportedGain(0);
                    device.GetReportedGain(0);
                    device.SetHostBypass(value > 0.9f);
                    device.SetGroupsParallel(value > 0.5f);
                    device.SetSimd(value > 0.3f);
                }
            }
        });
    }
    std::thread audio([&effect, &running] {
        std::vector<std::vector<float>> channels(2, std::vector<float>(128));
        for (int block = 0; block < Blocks; ++block) {
            for (auto& channel : channels) {
                for (std::size_t i = 0; i < channel.size(); ++i)
                    channel[i] = std::sin(static_cast<float>(i) * 0.2f);
            }
            effect.Process(channels);
            for (const float x : channels[0]) EXPECT_TRUE(std::isfinite(x));
        }
        running = false;
    });
    audio.join();
    for (auto& writer : writers) writer.join();
}

TEST(Threads, RoutingIsSetWhileAudioRuns) {
    CHostedEffect effect(nullptr);
    CDeviceDSP& device = effect.Device();
    std::atomic<bool> running{true};
    std::thread editor([&] {
        const std::array<std::string, 4> documents{"<type>mid/side</type><map>0,1|*|1,0</map>",
            "<map>2147483647,-1|*|-2147483648,1</map>", "", "<map>1,-1|*|0,-1</map>"};
        for (std::size_t step = 0; running; ++step) {
            device.SetRouting(documents[step % 4], static_cast<int>(step / 4 % 4));
            EXPECT_EQ(device.GetRouting(static_cast<int>(step / 4 % 4)), documents[step % 4]);
        }
    });
    for (int block = 0; block < Blocks; ++block) {
        std::vector<std::vector<float>> channels(2, std::vector<float>(64, 0.25f));
        effect.Process(channels);
        for (const float x : channels[0]) EXPECT_LE(std::fabs(x), 1.0f);
    }
    running = false;
    editor.join();
}

TEST(Threads, OversamplingIsSwitchedWhileLatencyIsAsked) {
    CHostedEffect effect(nullptr);
    std::atomic<bool> running{true};
    std::thread editor([&] {
        int index = 0;
        while (running) {
            effect.Device().SetParam(30, static_cast<float>(index++ % 4), 0);
            const int latency = effect.Device().GetLatency();
            EXPECT_TRUE(latency == 64 || latency == 128 || latency == 256 || latency == 512) << latency;
        }
    });
    std::vector<std::vector<float>> channels(2, std::vector<float>(64, 0.25f));
    for (int block = 0; block < Blocks; ++block) effect.Process(channels);
    running = false;
    editor.join();
}

TEST(Threads, InstancesOnDifferentThreadsDoNotMeet) {
    std::vector<std::thread> threads;
    for (int i = 0; i < 3; ++i) {
        threads.emplace_back([] {
            for (int round = 0; round < 10; ++round) {
                CHostedEffect effect(nullptr);
                std::vector<std::vector<float>> channels(2, std::vector<float>(256, 0.25f));
                effect.Process(channels);
            }
        });
    }
    for (auto& thread : threads) thread.join();
}
