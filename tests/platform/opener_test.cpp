// The desktop's opener is replaced by a script, which records how it was called.

#include "platform/opener.h"

#include "tests/support/file_text.h"
#include "tests/support/other_threads.h"
#include "tests/support/scratch_home.h"

#include <atomic>
#include <cerrno>
#include <chrono>
#include <csignal>
#include <cstdlib>
#include <fcntl.h>
#include <gtest/gtest.h>
#include <sched.h>
#include <sstream>
#include <sys/mman.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <thread>
#include <unistd.h>

using namespace KAV::Platform;
using namespace KAV::Tests;
namespace fs = std::filesystem;

namespace {

class COpenerScript final {
public:
    COpenerScript() {
        fs::remove(Said());
        const auto quoted = std::string("'").append(Said().string()).append("'");
        WriteText(_folder / "xdg-open",
            "#!/bin/sh\n"
            "{ echo \"count=$#\"; echo \"target=$1\"; echo \"descriptors=$(ls /proc/self/fd | wc -l)\"\n"
            "echo \"session=$(cut -d' ' -f6 /proc/self/stat)\"; echo \"process=$$\"\n"
            "grep -E '^(SigBlk|SigIgn)' /proc/self/status; env | grep '^LD_'\n"
            "} >" +
                quoted + ".new\nmv " + quoted + ".new " + quoted + "\n");
        chmod((_folder / "xdg-open").c_str(), 0755);
        const auto path = _folder.string() + ":" + std::getenv("PATH");
        setenv("PATH", path.c_str(), 1);
    }

    fs::path Said() const { return _folder / "said"; }

    /// Waits for its output; returns it as lines.
    std::string Wait() const {
        for (int i = 0; i < 6000 && !fs::exists(Said()); ++i)
            std::this_thread::sleep_for(std::chrono::milliseconds(10));
        return ReadText(Said());
    }

    static std::string Value(const std::string& said, const std::string& name) {
        std::istringstream lines(said);
        for (std::string line; std::getline(lines, line);) {
            if (line.starts_with(name)) return line.substr(name.size());
        }
        return "(no " + name + ")";
    }

private:
    fs::path _folder = ScratchFolder() / "opener with spaces";
};

/// A thread that writes to every page of its memory repeatedly, as an audio thread does with its buffers, and
/// counts its page faults.
class CWritingThread final {
public:
    static constexpr std::size_t Pages = 8192;

    CWritingThread() : _thread([this] { Write(); }) {}
    ~CWritingThread() {
        _running = false;
        _thread.join();
        munmap(_memory, Bytes);
    }
    CWritingThread(const CWritingThread&) = delete;
    CWritingThread& operator=(const CWritingThread&) = delete;

    /// Waits for a whole pass over the memory that begins after this call, and returns the faults up to then.
    long FaultsAfterAnotherPass() const {
        const int before = _passes;
        while (_passes < before + 2) std::this_thread::yield();
        return _faults;
    }

private:
    static constexpr std::size_t PageBytes = 4096;
    static constexpr std::size_t Bytes = Pages * PageBytes;

    void Write() {
        madvise(_memory, Bytes, MADV_NOHUGEPAGE);
        auto* const bytes = static_cast<volatile unsigned char*>(_memory);
        while (_running) {
            for (std::size_t page = 0; page < Pages; ++page)
                bytes[page * PageBytes] = static_cast<unsigned char>(page);
            rusage usage{};
            getrusage(RUSAGE_THREAD, &usage);
            _faults = usage.ru_minflt;
            ++_passes;
        }
    }

    void* _memory = mmap(nullptr, Bytes, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
    std::atomic<bool> _running{true};
    std::atomic<int> _passes{0};
    std::atomic<long> _faults{0};
    std::thread _thread;
};

/// Waits, at most a minute, until no process has that number any more, not even a zombie.
void AwaitEnd(pid_t process) {
    for (int i = 0; i < 6000 && kill(process, 0) == 0; ++i)
        std::this_thread::sleep_for(std::chrono::milliseconds(10));
}

/// Whether all children of this process disappear within a minute. Reaps none of them itself.
bool HasNoChildInTheEnd() {
    for (int i = 0; i < 6000; ++i) {
        siginfo_t child{};
        if (waitid(P_ALL, 0, &child, WEXITED | WNOHANG | WNOWAIT) != 0) return errno == ECHILD;
        std::this_thread::sleep_for(std::chrono::milliseconds(10));
    }
    return false;
}

} // namespace

TEST(OpenWithDesktop, PassesTheTargetAsOneUninterpretedArgument) {
    const COpenerScript script;
    const auto* const target = "/tmp/a b; touch $HOME/pwned & 'q' \"d\" `x` \xC3\xA4.kvp";
    ASSERT_TRUE(OpenWithDesktop(target, "", EOpen::Ordinary));
    const auto said = script.Wait();
    EXPECT_EQ(script.Value(said, "count="), "1");
    EXPECT_EQ(script.Value(said, "target="), target);
    EXPECT_FALSE(fs::exists(fs::path(std::getenv("HOME")) / "pwned"));
}

TEST(OpenWithDesktop, NeverPassesAnOption) {
    const COpenerScript script;
    ASSERT_TRUE(OpenWithDesktop("--version", "", EOpen::Ordinary));
    EXPECT_EQ(script.Value(script.Wait(), "target="), "./--version");
}

TEST(OpenWithDesktop, LeavesNothingOfTheHostToTheProgram) {
    const COpenerScript script;
    setenv("LD_LIBRARY_PATH", "/opt/host/lib", 1);
    setenv("LD_KAV_TEST", "1", 1);
    std::signal(SIGPIPE, SIG_IGN);
    sigset_t set;
    sigemptyset(&set);
    sigaddset(&set, SIGTERM);
    pthread_sigmask(SIG_BLOCK, &set, nullptr);
    const int leak = open("/dev/null", O_RDONLY); // NOLINT: on purpose without close-on-exec
    const int high = fcntl(leak, F_DUPFD, 200);

    ASSERT_TRUE(OpenWithDesktop("/tmp", "", EOpen::Ordinary));
    const auto said = script.Wait();
    close(leak);
    close(high);
    EXPECT_EQ(said.find("LD_"), std::string::npos) << said;
    EXPECT_EQ(script.Value(said, "SigBlk:\t"), "0000000000000000");
    EXPECT_EQ(script.Value(said, "SigIgn:\t"), "0000000000000000");
    EXPECT_EQ(
        script.Value(said, "descriptors="), "4"); // the standard ones, and the folder that is being listed
    EXPECT_STREQ(std::getenv("LD_LIBRARY_PATH"), "/opt/host/lib");
}

TEST(OpenWithDesktop, GivesTheProgramASessionOfItsOwnAndLeavesNoZombie) {
    const COpenerScript script;
    ASSERT_TRUE(OpenWithDesktop("/tmp", "", EOpen::Ordinary));
    const auto said = script.Wait();
    ASSERT_NE(said.find("session="), std::string::npos);
    EXPECT_NE(script.Value(said, "session="), std::to_string(getsid(0)));
    EXPECT_TRUE(HasNoChildInTheEnd());
}

TEST(OpenWithDesktop, LeavesTheHostsOwnChildrenToTheHost) {
    const COpenerScript script;
    const pid_t child = fork();
    if (child == 0) _exit(7);
    siginfo_t ended{};
    ASSERT_EQ(waitid(P_PID, static_cast<id_t>(child), &ended, WEXITED | WNOWAIT), 0);
    ASSERT_TRUE(OpenWithDesktop("/tmp", "", EOpen::Ordinary));
    const auto said = script.Wait();
    AwaitEnd(std::stoi(script.Value(said, "process=")));
    int status = 0;
    ASSERT_EQ(waitpid(child, &status, 0), child);
    EXPECT_EQ(WEXITSTATUS(status), 7);
    EXPECT_TRUE(HasNoChildInTheEnd());
}

TEST(OpenWithDesktop, CostsOtherThreadsNoPageFaults) {
    const COpenerScript script;
    const CWritingThread audio;
    const long before = audio.FaultsAfterAnotherPass();
    ASSERT_TRUE(OpenWithDesktop("/tmp", "", EOpen::Ordinary));
    // A copy of the process would write-protect every page, so that the next write to each of them faults.
    EXPECT_LT(audio.FaultsAfterAnotherPass() - before, static_cast<long>(CWritingThread::Pages / 2));
    script.Wait();
}

TEST(OpenWithDesktop, WaitsForTheProgramOnAThreadThatTakesNoSignals) {
    const auto folder = ScratchFolder() / "slow";
    const auto end = (folder / "end").string();
    WriteText(folder / "xdg-open", "#!/bin/sh\nwhile [ ! -e '" + end + "' ]; do sleep 0.05; done\n");
    chmod((folder / "xdg-open").c_str(), 0755);
    setenv("PATH", (folder.string() + ":" + std::getenv("PATH")).c_str(), 1);
    const auto before = Threads();
    ASSERT_TRUE(OpenWithDesktop("/tmp", "", EOpen::Ordinary)); // it doesn't wait for the program to end
    const auto started = AwaitNewThreads(before, 1);
    ASSERT_EQ(started.size(), 1u);
    EXPECT_TRUE(BlocksAllSignals(*started.begin()));
    WriteText(end, "now");
    EXPECT_TRUE(HasNoChildInTheEnd());
}

TEST(OpenWithDesktop, WorksInAHostThatIgnoresItsChildren) {
    const COpenerScript script;
    std::signal(SIGCHLD, SIG_IGN);
    EXPECT_TRUE(OpenWithDesktop("/tmp", "", EOpen::Ordinary));
    EXPECT_EQ(script.Value(script.Wait(), "target="), "/tmp");
}

TEST(OpenWithDesktop, WorksInAHostThatHasClosedItsStandardStreams) {
    const COpenerScript script;
    const int error = fcntl(2, F_DUPFD_CLOEXEC, 10); // keeps the test's own output
    const int output = fcntl(1, F_DUPFD_CLOEXEC, 10);
    for (int standard = 0; standard < 3; ++standard) close(standard);
    const bool started = OpenWithDesktop("/tmp", "", EOpen::Ordinary);
    dup2(output, 1);
    dup2(error, 2);
    EXPECT_TRUE(started);
    EXPECT_EQ(script.Value(script.Wait(), "target="), "/tmp");
}

TEST(OpenWithDesktop, FailsWithoutAnOpenerOrWithoutATarget) {
    setenv("PATH", "relative:", 1);
    EXPECT_FALSE(OpenWithDesktop("/tmp", "", EOpen::Ordinary));
    const auto folder = ScratchFolder() / "broken";
    WriteText(folder / "xdg-open", "#!/no/such/interpreter\n");
    chmod((folder / "xdg-open").c_str(), 0755);
    setenv("PATH", folder.c_str(), 1);
    EXPECT_FALSE(OpenWithDesktop("/tmp", "", EOpen::Ordinary));
    EXPECT_FALSE(OpenWithDesktop("", "", EOpen::Ordinary));
}
