#include "tests/support/faulty_files.h"
#include "tests/support/file_text.h"
#include "tests/support/other_process.h"
#include "utils/path.h"
#include "utils/session_log.h"

#include <cstdlib>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

using namespace KAV::Utils;
using namespace KAV::Tests;
namespace fs = std::filesystem;

namespace {

fs::path File() {
    return ToSystemPath(LogPath());
}

} // namespace

TEST(SessionLog, IsReadableByThisUserAlone) {
    LogLine(u"x");
    struct stat status {};
    ASSERT_EQ(stat(File().c_str(), &status), 0);
    EXPECT_EQ(status.st_mode & 0777u, 0600u);
}

TEST(SessionLog, NeverFollowsALinkThatSomebodyHasPlanted) {
    const auto victim = File().parent_path() / "victim";
    WriteText(victim, "precious");
    fs::create_symlink(victim, File());
    LogLine(u"x");
    EXPECT_EQ(ReadText(victim), "precious");
    EXPECT_EQ(PreviousLog(), u"");
}

TEST(SessionLog, TakesNoUnsentLogThroughALinkThatSomebodyHasPlanted) {
    const auto victim = File().parent_path() / "victim";
    const auto unsent = ToSystemPath(UnsentLogPath());
    WriteText(victim, "precious");
    WriteText(File(), "SessionStart=1\r\n");
    fs::create_symlink(victim, unsent);
    LogLine(u"x");
    EXPECT_EQ(UnsentLog(), u"SessionStart=1\r\n");
    EXPECT_EQ(ReadText(victim), "precious");
    DropUnsentLog();
    EXPECT_EQ(ReadText(victim), "precious");
}

TEST(SessionLog, KeepsUnsentLogsReadableByThisUserAlone) {
    WriteText(File(), "SessionStart=1\r\n");
    LogLine(u"x");
    struct stat status {};
    ASSERT_EQ(stat(ToSystemPath(UnsentLogPath()).c_str(), &status), 0);
    EXPECT_EQ(status.st_mode & 0777u, 0600u);
}

TEST(SessionLog, IsUnsentUntilSomeProcessDropsIt) {
    InAnotherProcess([]() -> int {
        LogLine(u"Error=crash");
        abort();
    });
    for (const auto* const line : {u"Error=1", u"Error=2", u"Error=3"}) {
        InAnotherProcess([line] {
            LogLine(line);
            return 0;
        });
    }
    LogLine(u"x");
    auto unsent = UnsentLog();
    for (const auto* const line : {u"Error=crash\r\n", u"Error=1\r\n", u"Error=2\r\n", u"Error=3\r\n"}) {
        const auto at = unsent.find(line);
        ASSERT_NE(at, std::u16string::npos);
        unsent.erase(0, at + 1);
        EXPECT_EQ(unsent.find(line), std::u16string::npos) << "twice";
    }
}

TEST(SessionLog, IsNotLostWhereverTheNextProcessStops) {
    const std::string log = "DateTime=1\r\nError=crash\r\n";
    int stopped = 0;
    for (int call = 1; call <= 30; ++call) {
        const auto unsent = ToSystemPath(UnsentLogPath());
        fs::remove(unsent);
        WriteText(File(), log);
        const int status = InAnotherProcess([&] {
            const CFaultyFiles files(call, CFaultyFiles::EFault::Stop);
            LogLine(u"x");
            return files.Happened() ? 0 : 3;
        });
        ASSERT_TRUE(status == 0 || status == 3) << "call " << call;
        stopped += status == 0 ? 1 : 0;
        const int found = InAnotherProcess([&] {
            LogLine(u"x");
            const auto text = UnsentLog();
            const auto at = text.find(u"Error=crash");
            if (at == std::u16string::npos) return 1;
            return text.find(u"Error=crash", at + 1) == std::u16string::npos ? 0 : 2;
        });
        EXPECT_EQ(found, 0) << "call " << call << (found == 1 ? ": lost" : ": twice");
    }
    EXPECT_GT(stopped, 5);
}

TEST(SessionLog, IsNotWrittenIntoAReadOnlyFolderAndHasNoPreviousLogThere) {
    WriteText(File(), "SessionStart=1\r\n");
    chmod(File().c_str(), 0444);
    chmod(File().parent_path().c_str(), 0555);
    const int status = AsNobody([] {
        LogLine(u"x");
        return PreviousLog().empty() ? 0 : 1;
    });
    chmod(File().parent_path().c_str(), 0700);
    EXPECT_EQ(status, 0);
    EXPECT_EQ(ReadText(File()), "SessionStart=1\r\n");
}

TEST(SessionLog, OfACrashIsTheNextSessionsPreviousLog) {
    InAnotherProcess([]() -> int {
        LogSessionStart();
        abort();
    });
    LogLine(u"x");
    EXPECT_NE(PreviousLog().find(u"SessionStart="), std::u16string::npos);
    EXPECT_EQ(PreviousLog().find(u"SessionEnd="), std::u16string::npos);
}

TEST(SessionLog, IsTakenByTheFirstOfTwoProcesses) {
    // The other process starts before this one's first line, and writes after it.
    int go[2] = {-1, -1};
    ASSERT_EQ(pipe(go), 0);
    const pid_t child = fork();
    if (child == 0) {
        char byte = 0;
        if (read(go[0], &byte, 1) != 1) _exit(2);
        LogLine(u"second");
        _exit(PreviousLog().empty() ? 0 : 1);
    }
    LogLine(u"first");
    ASSERT_EQ(write(go[1], "x", 1), 1);
    int status = 0;
    waitpid(child, &status, 0);
    EXPECT_EQ(status, 0);
    LogLine(u"still mine");
    const auto text = ReadText(File());
    EXPECT_NE(text.find("first\r\nstill mine\r\n"), std::string::npos) << text;
    EXPECT_EQ(text.find("second"), std::string::npos);
}

TEST(SessionLog, IsNoErrorWhicheverCallFails) {
    const auto file = File();
    const std::u16string old = u"SessionStart=1\r\n";
    int happened = 0;
    for (int call = 1; call <= 30; ++call) {
        WriteText(file, "SessionStart=1\r\n");
        const int status = InAnotherProcess([&] {
            const CFaultyFiles files(call, CFaultyFiles::EFault::HalfFail);
            LogSessionStart();
            LogSessionEnd();
            const auto previous = PreviousLog();
            if (!previous.empty() && !old.starts_with(previous)) return 1;
            return files.Happened() ? 0 : 3;
        });
        EXPECT_TRUE(status == 0 || status == 3) << "call " << call;
        happened += status == 0 ? 1 : 0;
    }
    EXPECT_GT(happened, 20);
}

TEST(SessionLog, HasNoPathWithoutText) {
    setenv("TMPDIR", "/tmp/\xFF", 1);
    EXPECT_EQ(LogPath(), u"");
    LogLine(u"x");
    EXPECT_EQ(PreviousLog(), u"");
}
