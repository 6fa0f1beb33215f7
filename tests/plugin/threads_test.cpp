// Values cross threads without a lock. Under ThreadSanitizer these tests show that each of them is an atomic
// word; without it they show that nothing is torn or lost.

#include "device/parameter_table.h"
#include "device_gui/fx_button.h"
#include "tests/support/recording_host.h"
#include "tests/support/together.h"

#include <array>
#include <atomic>
#include <cmath>
#include <gtest/gtest.h>
#include <string>
#include <thread>
#include <vector>

using namespace KAV;
using namespace KAV::Tests;

namespace {

constexpr int Blocks = 400;

/// A block of sound that one thread sends through an instance repeatedly.
class CSound final {
public:
    CSound(CHostedEffect& effect, std::size_t frames) : _effect(effect), _frames(frames) {}
    void operator()(int) {
        _channels.assign(2, std::vector<float>(_frames));
        for (auto& channel : _channels) {
            for (std::size_t i = 0; i < _frames; ++i) channel[i] = std::sin(static_cast<float>(i) * 0.2f);
        }
        _effect.Process(_channels);
        for (const float x : _channels[0]) EXPECT_TRUE(std::isfinite(x));
    }

private:
    CHostedEffect& _effect;
    std::size_t _frames;
    std::vector<std::vector<float>> _channels;
};

} // namespace

TEST(Threads, ParametersAreWrittenAndReadWhileAudioRuns) {
    CRecordingHost host;
    host.record = false;
    CHostedEffect effect(host.Callback());
    CDeviceDSP& device = effect.Device();
    device.AssignMacro(0, 33, 1.0f);
    CTogether threads;
    for (int writer = 0; writer < 3; ++writer) {
        threads.Add(
            [&effect, &device, writer, step = static_cast<std::uint32_t>(writer) * 7919u](int) mutable {
                step = step * 1664525u + 1013904223u;
                const auto index = static_cast<std::int32_t>((step >> 8) % 109u);
                const float value = static_cast<float>(step >> 16) / 65536.0f;
                if (index == 100)
                    return; // the factor has its own test, because it costs eight times the audio
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
                    device.GroupsParallel() = value > 0.5f;
                    device.Simd() = value > 0.3f;
                }
            });
    }
    threads.Add(CSound(effect, 128), Blocks);
    threads.Run();
}

TEST(Threads, RoutingIsSetWhileAudioRuns) {
    CHostedEffect effect(nullptr);
    CDeviceDSP& device = effect.Device();
    CTogether threads;
    threads.Add([&device](int step) {
        const std::array<std::string, 4> documents{"<type>mid/side</type><map>0,1|*|1,0</map>",
            "<map>2147483647,-1|*|-2147483648,1</map>", "", "<map>1,-1|*|0,-1</map>"};
        const auto& document = documents[static_cast<std::size_t>(step % 4)];
        device.SetRouting(document, step / 4 % 4);
        EXPECT_EQ(device.GetRouting(step / 4 % 4), document);
    });
    threads.Add(
        [&effect](int) {
            std::vector<std::vector<float>> channels(2, std::vector<float>(64, 0.25f));
            effect.Process(channels);
            for (const float x : channels[0]) EXPECT_LE(std::fabs(x), 1.0f);
        },
        Blocks);
    threads.Run();
}

TEST(Threads, OversamplingIsSwitchedWhileLatencyIsAsked) {
    CHostedEffect effect(nullptr);
    CTogether threads;
    threads.Add([&effect](int step) {
        effect.Device().SetParam(30, static_cast<float>(step % 4), 0);
        const int latency = effect.Device().GetLatency();
        EXPECT_TRUE(latency == 64 || latency == 128 || latency == 256 || latency == 512) << latency;
    });
    threads.Add(CSound(effect, 64), Blocks);
    threads.Run();
}

TEST(Threads, ProgramsAndGesturesAreChangedWhileOthersAsk) {
    CHostedEffect effect(nullptr);
    CDeviceDSP& device = effect.Device();
    CTogether threads;
    threads.Add([&device](int step) {
        device.SetProgram(step % 2 == 0 ? -1 : 0, step % 3 == 0);
        device.BeginEdit(33);
        device.EndEdit(33);
    });
    for (int host = 0; host < 2; ++host) {
        threads.Add([&effect, &device](int) {
            const auto program = effect.Dispatch(VST::effGetProgram);
            EXPECT_TRUE(program == 0 || program == -1) << program;
            device.SetProgramPlain(0);
            device.IsEdited(HostIndexOf(33));
        });
    }
    threads.Run();
    EXPECT_FALSE(device.IsEdited(HostIndexOf(33)));
}

TEST(Threads, TheHostIsCalledByOneThreadAtATimeAndEveryEditBeginsAndEnds) {
    CRecordingHost host;
    host.record = false;
    CHostedEffect effect(host.Callback());
    std::atomic<int> inside = 0;
    std::atomic<int> together = 0;
    int open = 0; // open edits, as the host has seen them; no lock, because one thread at a time calls
    int begins = 0;
    host.answer = [&](VST::AEffect*, std::int32_t opcode, std::int32_t, void*, float) -> std::intptr_t {
        if (inside++ > 0) ++together;
        if (opcode == VST::audioMasterBeginEdit) {
            EXPECT_EQ(open++, 0);
            ++begins;
        }
        if (opcode == VST::audioMasterEndEdit) {
            EXPECT_EQ(--open, 0);
        }
        --inside;
        return 0;
    };
    CXXXGUI& gui = effect.Device().GUI();
    CTogether threads;
    int edits = 0;
    threads.Add([&](int step) {
        gui.BeginEdit(24);
        gui.SetParameter(24, static_cast<float>(step % 100) / 100.0f);
        gui.EndEdit(24);
        gui.ResizeTo(500 + step % 100, 400);
        effect.Dispatch(VST::effEditClose); // so that no end of an edit is still waiting
        ++edits;
    });
    threads.Add([&effect](int) { effect.Dispatch(VST::effEditIdle); });
    threads.Add([&effect](int step) {
        std::string chunk = "<patch_format>textual</patch_format>\r\n<param tag=\"33\" >0." +
                            std::to_string(step % 10) + "</param>\r\n";
        effect.Dispatch(VST::effSetChunk, 1, static_cast<std::intptr_t>(chunk.size() + 1), chunk.data());
    });
    threads.Run();
    effect.Dispatch(VST::effEditClose);
    EXPECT_EQ(together, 0);
    EXPECT_EQ(open, 0);
    EXPECT_EQ(begins, edits);
    host.answer = nullptr;
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

TEST(Threads, ChunksAndNamesAreSetWhileTheEditorAndAudioRun) {
    CHostedEffect effect(nullptr);
    CXXXGUI& gui = effect.Device().GUI();
    CTogether threads;
    for (int host = 0; host < 2; ++host) {
        threads.Add([&effect, host](int step) {
            const std::string other =
                "<patch_format>textual</patch_format>\r\n<patch_name>other</patch_name>\r\n"
                "<fx_names>x|*|y</fx_names><macro group=\"0\">33;1||24;0</macro>\r\n"
                "<param tag=\"24\" >0.75</param>\r\n<kav_input_routing><fx>0</fx>"
                "<map>1,-1</map><ch_names>Z</ch_names></kav_input_routing>";
            void* data = nullptr;
            // Only one thread asks for chunks, so that no other replaces what it copies; both set them.
            const auto size = host == 0 ? effect.Dispatch(VST::effGetChunk, step % 2, 0, &data) : 0;
            std::string chunk =
                size > 0 ? std::string(static_cast<const char*>(data), static_cast<std::size_t>(size))
                         : other;
            const auto length = static_cast<std::intptr_t>(chunk.size());
            EXPECT_EQ(effect.Dispatch(VST::effSetChunk, step % 3, length, chunk.data()), 1);
            std::string name = "name " + std::to_string(step);
            effect.Dispatch(VST::effSetProgramName, 0, 0, name.data());
            effect.Text(VST::effGetProgramName, 0, 24);
            effect.Text(VST::effGetProgramNameIndexed, 0, 24);
        });
    }
    gui.CreateGUIWindow(); // from here on only this thread may use the widgets
    gui.EnableHistory(true);
    threads.Add([&effect, &gui](int step) {
        gui.OnFrame(16);
        gui.SetParameter(33, static_cast<float>(step % 10) / 10.0f);
        gui.State().SwitchAB(static_cast<std::uint8_t>(step % 2));
        gui.State().CopyAB();
        if (step % 5 == 0) gui.Undo();
        for (auto* const button : gui.FindAll<CFxBtn>()) button->SetText(u"group");
        gui.FindAll<CFxBtn>()[static_cast<std::size_t>(step % 4)]->SetValue(1.0f, true);
        effect.Set(4, 0.5f);
    });
    threads.Add(CSound(effect, 64), Blocks);
    threads.Run();
    std::string sane = "<patch_format>textual</patch_format>\r\n<patch_name>sane</patch_name>";
    EXPECT_EQ(effect.Dispatch(VST::effSetChunk, 0, static_cast<std::intptr_t>(sane.size()), sane.data()), 1);
    EXPECT_EQ(effect.Text(VST::effGetProgramName, 0, 24), "sane");
}

TEST(Threads, InstancesLoadTheirStatesSideBySide) {
    std::vector<std::thread> threads;
    for (int i = 0; i < 2; ++i) {
        threads.emplace_back([i] {
            for (int round = 0; round < 5; ++round) {
                CHostedEffect effect(nullptr);
                std::string text = "<patch_format>textual</patch_format>\r\n<patch_name>" +
                                   std::to_string(i) + "</patch_name>\r\n<param tag=\"33\" >0." +
                                   std::to_string(i + 1) + "</param>";
                effect.Dispatch(VST::effSetChunk, 0, static_cast<std::intptr_t>(text.size()), text.data());
                EXPECT_EQ(effect.Text(VST::effGetProgramName, 0, 24), std::to_string(i));
                EXPECT_NEAR(effect.Get(4), 0.1 * (i + 1), 1e-6);
            }
        });
    }
    for (auto& thread : threads) thread.join();
}
