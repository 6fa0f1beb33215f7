#include "tools/kavhost/effect/host_callback.h"

#include <gtest/gtest.h>

using namespace KAV;
using namespace KAV::Host;
using namespace KAV::VST;

namespace {

class CNotingHost final : public IEffectHost {
public:
    bool ResizeEditor(std::int32_t newWidth, std::int32_t newHeight) noexcept override {
        width = newWidth;
        height = newHeight;
        return newWidth < 1000;
    }
    void NoteIoChange() noexcept override { ++ioChanges; }
    const VstTimeInfo* Time() noexcept override { return &time; }

    VstTimeInfo time{};
    std::int32_t width = 0, height = 0;
    int ioChanges = 0;
};

class WindowedHost : public testing::Test {
protected:
    WindowedHost() { RememberEffect(&effect, {96000, 128}, &host); }
    ~WindowedHost() override { ForgetEffect(&effect); }

    std::intptr_t Ask(
        std::int32_t opcode, std::int32_t index = 0, std::intptr_t value = 0, const char* text = nullptr) {
        return Host::HostCallback(&effect, opcode, index, value, const_cast<char*>(text), 0);
    }

    AEffect effect{};
    CNotingHost host;
};

constexpr std::intptr_t User = 1, Realtime = 2, Offline = 4;

} // namespace

TEST_F(WindowedHost, TakesSizesAndSaysWhetherItCan) {
    EXPECT_EQ(Ask(audioMasterSizeWindow, 800, 600), 1);
    EXPECT_EQ(host.width, 800);
    EXPECT_EQ(host.height, 600);
    EXPECT_EQ(Ask(audioMasterSizeWindow, 1000, 600), 0);
}

TEST_F(WindowedHost, HasATransport) {
    EXPECT_EQ(Ask(audioMasterGetTime), reinterpret_cast<std::intptr_t>(&host.time));
}

TEST_F(WindowedHost, NotesThatTheDelayHasChanged) {
    EXPECT_EQ(Ask(audioMasterIOChanged), 1);
    EXPECT_EQ(host.ioChanges, 1);
}

TEST_F(WindowedHost, AcceptsEdits) {
    for (const auto opcode :
        {audioMasterBeginEdit, audioMasterAutomate, audioMasterEndEdit, audioMasterUpdateDisplay})
        EXPECT_EQ(Ask(opcode), 1) << opcode;
}

TEST_F(WindowedHost, SaysWhatItCanDo) {
    for (const auto* const feature :
        {"sizeWindow", "supplyIdle", "sendVstTimeInfo", "startStopProcess", "acceptIOChanges"})
        EXPECT_EQ(Ask(audioMasterCanDo, 0, 0, feature), 1) << feature;
    EXPECT_EQ(Ask(audioMasterCanDo, 0, 0, "offline"), 0);
    EXPECT_EQ(Ask(audioMasterCanDo, 0, 0, "shellCategory"), 0);
}

TEST_F(WindowedHost, KnowsWhichThreadIsThatOfTheAudio) {
    EXPECT_EQ(Ask(audioMasterGetCurrentProcessLevel), User);
    {
        const CProcessScope scope(&effect, {96000, 128}, &host);
        EXPECT_EQ(Ask(audioMasterGetCurrentProcessLevel), Realtime);
        EXPECT_EQ(Ask(audioMasterGetBlockSize), 128);
    }
    EXPECT_EQ(Ask(audioMasterGetCurrentProcessLevel), User);
}

TEST(HostWithoutAWindow, SaysSo) {
    AEffect effect{};
    RememberEffect(&effect, {96000, 128});
    const auto ask = [&](std::int32_t opcode, const char* text = nullptr) {
        return Host::HostCallback(&effect, opcode, 0, 0, const_cast<char*>(text), 0);
    };
    EXPECT_EQ(ask(audioMasterSizeWindow), 0);
    EXPECT_EQ(ask(audioMasterGetTime), 0);
    EXPECT_EQ(ask(audioMasterCanDo, "sizeWindow"), 0);
    EXPECT_EQ(ask(audioMasterCanDo, "offline"), 1);
    EXPECT_EQ(ask(audioMasterGetCurrentProcessLevel), Offline);
    EXPECT_EQ(ask(audioMasterIOChanged), 1);
    ForgetEffect(&effect);
}
