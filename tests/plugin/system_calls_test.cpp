// The audio thread makes no system calls. Blocks run in a process that the kernel ends at the first one,
// while a host automates everything.

#include "tests/support/other_process.h"
#include "tests/support/recording_host.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <gtest/gtest.h>
#include <linux/filter.h>
#include <linux/seccomp.h>
#include <sys/prctl.h>
#include <sys/syscall.h>
#include <unistd.h>

using namespace KAV;
using namespace KAV::Tests;

namespace {

constexpr std::size_t Channels = 16;
constexpr std::size_t Announced = 128;
constexpr std::size_t Longest = 300; // frames; more than was announced
constexpr std::int32_t Parameters = 109;
constexpr std::int32_t OversamplingIndex = 100;

/// From here on, any system call except the one that ends a process kills it.
bool ForbidSystemCalls() {
    std::array<sock_filter, 4> lines{{
        BPF_STMT(BPF_LD | BPF_W | BPF_ABS, offsetof(seccomp_data, nr)),
        BPF_JUMP(BPF_JMP | BPF_JEQ | BPF_K, SYS_exit_group, 0, 1),
        BPF_STMT(BPF_RET | BPF_K, SECCOMP_RET_ALLOW),
        BPF_STMT(BPF_RET | BPF_K, SECCOMP_RET_KILL_PROCESS),
    }};
    sock_fprog program{lines.size(), lines.data()};
    return prctl(PR_SET_NO_NEW_PRIVS, 1, 0, 0, 0) == 0 &&
           prctl(PR_SET_SECCOMP, SECCOMP_MODE_FILTER, &program) == 0;
}

/// Pseudo-random numbers that need only their own memory.
class CDice final {
public:
    std::uint32_t Throw(std::uint32_t sides) noexcept {
        _state = _state * 1664525u + 1013904223u;
        return (_state >> 8) % sides;
    }
    float Position() noexcept { return static_cast<float>(Throw(1001)) / 1000.0f; }

private:
    std::uint32_t _state = 1;
};

/// Everything that a block needs, allocated before the ban.
struct SHost {
    CHostedEffect effect{nullptr};
    std::vector<std::vector<float>> audio{Channels, std::vector<float>(Longest)};
    std::array<float*, Channels> channels{};
    CDice dice;

    SHost() {
        effect.SetChannels(Channels, Channels);
        effect.Dispatch(VST::effSetSampleRate, 0, 0, nullptr, 96000.0f);
        effect.Dispatch(VST::effSetBlockSize, 0, Announced);
        effect.Dispatch(VST::effMainsChanged, 0, 1);
        std::ranges::transform(audio, channels.begin(), [](auto& channel) { return channel.data(); });
        RunBlock(Announced);
    }
    void RunBlock(std::size_t frames) noexcept {
        for (auto& channel : audio) {
            for (std::size_t i = 0; i < frames; ++i) channel[i] = 4.0f * dice.Position() - 2.0f;
        }
        effect.Record().processReplacing(
            &effect.Record(), channels.data(), channels.data(), static_cast<std::int32_t>(frames));
    }
    void AutomateEverything() noexcept {
        for (std::int32_t index = 0; index < Parameters; ++index) effect.Set(index, dice.Position());
    }
};

} // namespace

TEST(SystemCalls, EndAProcessThatMayMakeNone) {
    EXPECT_EQ(InAnotherProcess([] { return ForbidSystemCalls() ? 0 : 1; }), 0);
    EXPECT_EQ(InAnotherProcess([] { return ForbidSystemCalls() && getppid() > 0 ? 0 : 1; }), -1);
}

TEST(SystemCalls, AreMadeByNoBlockHoweverTheHostAutomates) {
    const int status = InAnotherProcess([] {
        SHost host;
        if (!ForbidSystemCalls()) return 1;
        for (int block = 0; block < 100; ++block) {
            host.AutomateEverything();
            host.RunBlock(1 + host.dice.Throw(Longest));
        }
        _exit(std::isfinite(host.audio[0][0]) ? 0 : 2); // the instance's destructor would call the system
    });
    EXPECT_EQ(status, 0);
}

TEST(SystemCalls, AreMadeByNoBlockAtAnyOversampling) {
    const int status = InAnotherProcess([] {
        SHost host;
        if (!ForbidSystemCalls()) return 1;
        for (const float factor : {0.0f, 1.0f, 0.34f, 0.67f, 0.0f}) {
            host.effect.Set(OversamplingIndex, factor);
            for (int block = 0; block < 20; ++block) host.RunBlock(Announced);
        }
        _exit(0);
    });
    EXPECT_EQ(status, 0);
}
