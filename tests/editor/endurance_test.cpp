// A user with no plan at an open editor while sound runs, for a minute or ten: what must hold all the time.

#include "device_gui/editor_system.h"
#include "tests/support/dialog_script.h"
#include "tests/support/own_settings.h"
#include "tests/support/process_memory.h"
#include "tests/support/state_fixture.h"
#include "tests/support/system_call_counter.h"
#include "tests/support/x_test_host.h"

#include <algorithm>
#include <array>
#include <atomic>
#include <chrono>
#include <cmath>
#include <csignal>
#include <cstddef>
#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <linux/filter.h>
#include <linux/seccomp.h>
#include <random>
#include <sys/prctl.h>
#include <sys/syscall.h>
#include <thread>
#include <unistd.h>
#include <xkbcommon/xkbcommon-keysyms.h>

namespace KAV::Tests {

namespace {

using Clock = std::chrono::steady_clock;

std::atomic<int> systemCalls = 0; // that the audio thread has tried
std::atomic<int> lastSystemCall = -1;

/// From here on this thread makes no system call but those with which the test waits, looks at the clock and
/// ends it. Any other one is counted instead of being made. False where the kernel doesn't offer that.
bool CountSystemCallsOfThisThread() {
    struct sigaction action {};
    action.sa_flags = SA_SIGINFO;
    action.sa_sigaction = [](int, siginfo_t* info, void*) {
        lastSystemCall = info->si_syscall;
        ++systemCalls;
    };
    sigset_t trapped;
    sigemptyset(&trapped);
    sigaddset(&trapped, SIGSYS);
    if (sigaction(SIGSYS, &action, nullptr) != 0 || pthread_sigmask(SIG_UNBLOCK, &trapped, nullptr) != 0)
        return false;
    constexpr std::array allowed{SYS_getrusage, SYS_clock_gettime, SYS_exit, SYS_exit_group, SYS_munmap,
        SYS_madvise, SYS_futex, SYS_rt_sigprocmask, SYS_rt_sigreturn};
    std::vector<sock_filter> lines{BPF_STMT(BPF_LD | BPF_W | BPF_ABS, offsetof(seccomp_data, nr))};
    for (const auto number : allowed) {
        lines.push_back(BPF_JUMP(BPF_JMP | BPF_JEQ | BPF_K, static_cast<std::uint32_t>(number), 0, 1));
        lines.push_back(BPF_STMT(BPF_RET | BPF_K, SECCOMP_RET_ALLOW));
    }
    // The test's own waiting has a clock that nothing else uses.
    lines.push_back(BPF_JUMP(BPF_JMP | BPF_JEQ | BPF_K, SYS_clock_nanosleep, 0, 3));
    lines.push_back(BPF_STMT(BPF_LD | BPF_W | BPF_ABS, offsetof(seccomp_data, args)));
    lines.push_back(BPF_JUMP(BPF_JMP | BPF_JEQ | BPF_K, CLOCK_TAI, 0, 1));
    lines.push_back(BPF_STMT(BPF_RET | BPF_K, SECCOMP_RET_ALLOW));
    lines.push_back(BPF_STMT(BPF_RET | BPF_K, SECCOMP_RET_TRAP));
    sock_fprog program{static_cast<std::uint16_t>(lines.size()), lines.data()};
    return prctl(PR_SET_NO_NEW_PRIVS, 1, 0, 0, 0) == 0 &&
           prctl(PR_SET_SECCOMP, SECCOMP_MODE_FILTER, &program) == 0;
}

/// A host's audio thread: a block of music every 2.7 ms.
class CAudio final {
public:
    static constexpr std::size_t Frames = 128;

    explicit CAudio(CHostedEffect& effect) : _effect(effect), _thread([this] { Run(); }) {}
    ~CAudio() { Stop(); }
    CAudio(const CAudio&) = delete;
    CAudio& operator=(const CAudio&) = delete;
    void Stop() {
        _ends = true;
        if (_thread.joinable()) _thread.join();
    }

    // When it has stopped
    std::size_t allocations = 0;
    std::size_t locks = 0;
    std::size_t faults = 0; ///< page faults after the first block
    bool seesFaults = true;
    bool seesSystemCalls = false;
    bool isFinite = true;
    std::vector<float> times; ///< of blocks, in microseconds

private:
    void Run() {
        std::array<std::vector<float>, 2> sound{std::vector<float>(Frames), std::vector<float>(Frames)};
        std::array<float*, 2> channels{sound[0].data(), sound[1].data()};
        times.reserve(1'000'000);
        std::fill_n(times.data(), times.capacity(), 0.0f); // so that its pages are there
        std::uint32_t noise = 1;
        timespec next{};
        clock_gettime(CLOCK_TAI, &next);
        seesSystemCalls = SeesSystemCalls() && CountSystemCallsOfThisThread();
        for (std::size_t block = 0; !_ends; ++block) {
            for (std::size_t i = 0; i < Frames; ++i) {
                noise = noise * 1664525u + 1013904223u;
                // Ten seconds of sound, and six of silence.
                const float level = block % 6000 < 3750 ? 2.0f : 0.0f;
                sound[0][i] = level * (static_cast<float>(noise >> 8) / 8388608.0f - 1.0f);
                sound[1][i] = -sound[0][i];
            }
            const auto before = PageFaultsOfThisThread();
            const auto begin = Clock::now();
            {
                const CSystemCallCounter counter;
                _effect.Record().processReplacing(
                    &_effect.Record(), channels.data(), channels.data(), static_cast<std::int32_t>(Frames));
                allocations += counter.Allocations();
                locks += counter.Locks();
            }
            if (times.size() < times.capacity())
                times.push_back(std::chrono::duration<float, std::micro>(Clock::now() - begin).count());
            const auto after = PageFaultsOfThisThread();
            seesFaults = seesFaults && before && after;
            if (seesFaults && block > 0) faults += *after - *before;
            for (const float x : sound[0]) isFinite = isFinite && std::isfinite(x);
            constexpr long blockNs = 2'666'667;
            next.tv_nsec += blockNs;
            if (next.tv_nsec >= 1'000'000'000) {
                next.tv_nsec -= 1'000'000'000;
                ++next.tv_sec;
            }
            syscall(SYS_clock_nanosleep, CLOCK_TAI, TIMER_ABSTIME, &next, nullptr);
        }
    }
    /// A sanitizer makes calls of its own.
    static bool SeesSystemCalls() { return CSystemCallCounter::SeesLocks(); }

    CHostedEffect& _effect;
    std::atomic<bool> _ends = false;
    std::thread _thread; // last
};

std::chrono::seconds Length() {
    return std::chrono::seconds(std::getenv("KAV_LONG") != nullptr ? 600 : 60);
}

class Endurance : public testing::Test {
protected:
    static constexpr std::size_t Indexes = 128;

    CXTestHost windows{CXTestHost::SOptions{.width = 900, .height = 700}};
    CDialogScripts scripts; // after the display, whose server is one of the user's programs
    CUserDocuments documents;
    COwnSettings settings;
    CRecordingHost host;
    std::array<std::atomic<int>, Indexes> begun{}; // edits
    std::atomic<int> wrong = 0;                    // begun twice, or ended without having begun
    std::atomic<int> edits = 0;
    std::unique_ptr<CHostedEffect> effect;
    std::mt19937 random{20261122};

    void SetUp() override {
        scripts.Put("zenity", "exit 1"); // the user cancels every dialog
        host.record = false;
        host.answer = [this](VST::AEffect*, std::int32_t opcode, std::int32_t index, void*, float) {
            Hear(opcode, index);
            return std::intptr_t{0};
        };
        effect = std::make_unique<CHostedEffect>(host.Callback(), Utils::SMakerService{}, MakeEditorSystem());
        effect->Dispatch(VST::effSetSampleRate, 0, 0, nullptr, 48000.0f);
        effect->Dispatch(VST::effSetBlockSize, 0, CAudio::Frames);
        effect->Dispatch(VST::effMainsChanged, 0, 1);
    }
    void TearDown() override { effect.reset(); }

    void Hear(std::int32_t opcode, std::int32_t index) {
        const int step = opcode == VST::audioMasterBeginEdit ? 1 : opcode == VST::audioMasterEndEdit ? -1 : 0;
        if (step == 0) return;
        const int open = begun.at(static_cast<std::size_t>(index)) += step;
        if (open < 0 || open > 1) ++wrong;
        if (step > 0) ++edits;
    }
    int Below(int end) { return static_cast<int>(random() % static_cast<unsigned>(end)); }

    void Open() {
        ASSERT_EQ(effect->Dispatch(VST::effEditOpen, 0, 0,
                      reinterpret_cast<void*>(static_cast<std::uintptr_t>(windows.Parent()))),
            1);
    }
    /// One thing that a user does.
    void Act() {
        const int x = Below(754);
        const int y = Below(553);
        windows.MoveTo(x, y);
        switch (Below(12)) {
        case 0:
            windows.Click(Below(2) == 0 ? 4 : 5);
            break;
        case 1:
            windows.Click(3); // a box to type in, perhaps
            for (const auto key : {XKB_KEY_minus, XKB_KEY_3, XKB_KEY_Return})
                windows.Type(static_cast<std::uint32_t>(key));
            break;
        case 2:
            windows.Click(1);
            windows.Click(1);
            break;
        case 3:
            windows.Key(XKB_KEY_Control_L, true);
            windows.Type(Below(3) == 0 ? XKB_KEY_y : XKB_KEY_z);
            windows.Key(XKB_KEY_Control_L, false);
            break;
        case 4: // opens a menu, perhaps, and chooses an entry of it
            windows.Click(1);
            for (int n = Below(12); n > 0; --n) windows.Type(Below(5) == 0 ? XKB_KEY_Right : XKB_KEY_Down);
            windows.Type(Below(2) == 0 ? XKB_KEY_Return : XKB_KEY_Escape);
            windows.Type(XKB_KEY_Escape);
            break;
        case 5:
            windows.Key(XKB_KEY_Shift_L, true);
            windows.Click(1);
            windows.Key(XKB_KEY_Shift_L, false);
            break;
        default: // a drag; at the right edge one of the size
            windows.Press(1);
            for (int n = 1; n < 6; ++n) windows.MoveTo(x + n * (Below(21) - 10), y + n * (Below(41) - 20));
            windows.Release(1);
        }
    }
    void Idle() {
        effect->Dispatch(VST::effEditIdle);
        VST::ERect* size = nullptr;
        effect->Dispatch(VST::effEditGetRect, 0, 0, &size);
    }
    void SaveAndRestore() {
        void* data = nullptr;
        const auto size = effect->Dispatch(VST::effGetChunk, 0, 0, &data);
        std::string chunk(static_cast<const char*>(data), static_cast<std::size_t>(size));
        if (Below(4) == 0) effect->Dispatch(VST::effSetChunk, 0, size, chunk.data());
    }
    /// The host's main thread and the user, one after the other, until `end`.
    void UseUntil(Clock::time_point end) {
        for (int round = 1; Clock::now() < end; ++round) {
            Act();
            Idle();
            std::this_thread::sleep_for(std::chrono::milliseconds(16));
            if (round % 50 == 0) SaveAndRestore();
            if (round % 70 == 0) effect->Set(Below(100), static_cast<float>(Below(11)) / 10.0f);
            if (round % 200 == 0) {
                windows.Show(windows.Top(), false);
                Idle();
                windows.Show(windows.Top(), true);
            }
            if (round % 300 == 0) {
                effect->Dispatch(VST::effEditClose);
                Open();
            }
        }
    }
};

/// Middle and extremes, for people.
void Report(std::vector<float> times) {
    if (times.empty()) return;
    std::sort(times.begin(), times.end());
    const auto at = [&](double share) {
        return static_cast<double>(
            times[static_cast<std::size_t>(share * static_cast<double>(times.size() - 1))]);
    };
    std::printf("%zu blocks of %zu frames took %.1f us in the middle, %.1f us at 99.9 %%, %.1f us at most\n",
        times.size(), CAudio::Frames, at(0.5), at(0.999), at(1.0));
}

} // namespace

TEST_F(Endurance, SoundRunsUndisturbedWhateverTheUserDoes) {
    Open();
    std::size_t early = 0;
    {
        CAudio audio(*effect);
        const auto begin = Clock::now();
        UseUntil(begin + Length() / 3); // everything has been used once
        early = ResidentBytes();
        UseUntil(begin + Length());
        audio.Stop();
        EXPECT_EQ(audio.allocations, 0u);
        EXPECT_EQ(audio.locks, 0u);
        EXPECT_TRUE(!audio.seesFaults || audio.faults == 0) << audio.faults;
        EXPECT_EQ(systemCalls, 0) << "the last one is " << lastSystemCall;
        EXPECT_TRUE(audio.isFinite);
        EXPECT_TRUE(audio.seesSystemCalls || !CSystemCallCounter::SeesLocks());
        EXPECT_GT(audio.times.size(), 100u);
        Report(audio.times);
    }
    const auto late = ResidentBytes();
    effect->Dispatch(VST::effEditClose);
    std::printf("%d edits; %.1f MB, and %.1f MB at the end\n", edits.load(), static_cast<double>(early) / 1e6,
        static_cast<double>(late) / 1e6);
    EXPECT_GT(edits, 10);
    EXPECT_EQ(wrong, 0);
    for (std::size_t index = 0; index < Indexes; ++index) EXPECT_EQ(begun[index], 0) << index;
    if (CSystemCallCounter::SeesLocks()) { // a sanitizer keeps what is freed
        EXPECT_LT(late, early + 16'000'000u);
    }
}

} // namespace KAV::Tests
