// The desktop's opener is a script of the test's own, which writes down how it was called.

#include "platform/opener.h"

#include "tests/support/file_text.h"
#include "tests/support/scratch_home.h"

#include <chrono>
#include <csignal>
#include <cstdlib>
#include <fcntl.h>
#include <gtest/gtest.h>
#include <sched.h>
#include <sstream>
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
        const auto quoted = std::string("'").append(Said().string()).append("'");
        WriteText(_folder / "xdg-open",
            "#!/bin/sh\n"
            "{ echo \"count=$#\"; echo \"target=$1\"; echo \"descriptors=$(ls /proc/self/fd | wc -l)\"\n"
            "echo \"session=$(cut -d' ' -f6 /proc/self/stat)\"; echo \"parent=$PPID\"\n"
            "grep -E '^(SigBlk|SigIgn)' /proc/self/status; env | grep '^LD_'\n"
            "} >" +
                quoted + ".new\nmv " + quoted + ".new " + quoted + "\n");
        chmod((_folder / "xdg-open").c_str(), 0755);
        const auto path = _folder.string() + ":" + std::getenv("PATH");
        setenv("PATH", path.c_str(), 1);
    }

    fs::path Said() const { return _folder / "said"; }

    /// What it wrote, waited for; as lines.
    std::string Wait() const {
        for (int i = 0; i < 500 && !fs::exists(Said()); ++i)
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

} // namespace

TEST(OpenWithDesktop, PassesTheTargetAsOneArgumentThatNobodyInterprets) {
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
    EXPECT_EQ(script.Value(said, "descriptors="), "4"); // the standard ones, and the folder that is listed
    EXPECT_STREQ(std::getenv("LD_LIBRARY_PATH"), "/opt/host/lib");
}

TEST(OpenWithDesktop, DetachesTheProgramAndLeavesNoZombie) {
    const COpenerScript script;
    ASSERT_TRUE(OpenWithDesktop("/tmp", "", EOpen::Ordinary));
    const auto said = script.Wait();
    ASSERT_NE(said.find("session="), std::string::npos);
    EXPECT_NE(script.Value(said, "session="), std::to_string(getsid(0)));
    EXPECT_NE(script.Value(said, "parent="), std::to_string(getpid()));
    errno = 0;
    EXPECT_EQ(waitpid(-1, nullptr, WNOHANG), -1); // no child of ours is left
    EXPECT_EQ(errno, ECHILD);
}

TEST(OpenWithDesktop, WorksInAHostThatIgnoresItsChildren) {
    const COpenerScript script;
    std::signal(SIGCHLD, SIG_IGN);
    EXPECT_TRUE(OpenWithDesktop("/tmp", "", EOpen::Ordinary));
    EXPECT_EQ(script.Value(script.Wait(), "target="), "/tmp");
}

TEST(OpenWithDesktop, WorksInAHostThatHasClosedItsStandardStreams) {
    const COpenerScript script;
    const int error = fcntl(2, F_DUPFD_CLOEXEC, 10); // the test's own words go there
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
