// The desktop's programs are replaced by scripts, which record how they were called and answer as a test
// says.

#include "platform/file_dialog.h"

#include "platform/xdg/dialog_program.h"
#include "tests/support/dialog_script.h"

#include <cerrno>
#include <csignal>
#include <fcntl.h>
#include <future>
#include <gtest/gtest.h>
#include <optional>
#include <sys/wait.h>
#include <unistd.h>

using namespace KAV::Platform;
using namespace KAV::Tests;
namespace fs = std::filesystem;

namespace {

class FileDialog : public testing::Test {
protected:
    CDialogScripts scripts;
    SFileRequest request;
    std::promise<SFileAnswer> promise;
    std::future<SFileAnswer> answer = promise.get_future();
    std::optional<CFileDialog> dialog;

    void Start() {
        dialog.emplace(request, [this](const SFileAnswer& given) { promise.set_value(given); });
    }
    SFileAnswer Ask() {
        promise = {};
        answer = promise.get_future();
        Start();
        return answer.get();
    }
    /// The answer to a question that zenity answers by doing `rest`.
    SFileAnswer AskZenity(const std::string& rest) {
        scripts.Put("zenity", rest);
        return Ask();
    }
    ~FileDialog() override {
        dialog.reset();
        if (answer.valid()) answer.wait(); // the thread uses this object until then
    }
};

/// Or a zombie, unless it is one that only the system's first process can reap.
bool IsRunning(pid_t process) {
    const auto status = ReadText("/proc/" + std::to_string(process) + "/stat");
    const bool isOrphan = status.find(") Z 1 ") != std::string::npos;
    return kill(process, 0) == 0 && !isOrphan;
}

constexpr auto FileOfTheScript = "/a folder/\xC3\xA4 'b' \"c\".kvp";
constexpr auto PrintIt = "printf '%s\\n' \"/a folder/\xC3\xA4 'b' \\\"c\\\".kvp\"";

} // namespace

TEST_F(FileDialog, GivesThePathThatTheUserHasChosen) {
    const auto given = AskZenity(PrintIt);
    EXPECT_EQ(given.kind, EFileAnswer::Chosen);
    EXPECT_EQ(given.path, FileOfTheScript);
    scripts.Put("zenity", "exit 126");
    scripts.Put("kdialog", PrintIt);
    EXPECT_EQ(Ask().path, FileOfTheScript) << "kdialog";
}

TEST_F(FileDialog, TakesTheFirstProgramThatCanBeStarted) {
    scripts.Put("kdialog", "echo /by-kdialog");
    EXPECT_EQ(Ask().path, "/by-kdialog");
    EXPECT_EQ(AskZenity("echo /by-zenity").path, "/by-zenity");
    WriteText(scripts.Folder() / "zenity", "#!/nowhere/interpreter\n");
    chmod((scripts.Folder() / "zenity").c_str(), 0755);
    EXPECT_EQ(Ask().path, "/by-kdialog") << "it can't be executed";
    EXPECT_EQ(AskZenity("exit 127").path, "/by-kdialog") << "a library of it is missing";
}

TEST_F(FileDialog, SaysSoWhenThereIsNoProgram) {
    EXPECT_EQ(Ask().kind, EFileAnswer::NotAsked);
}

TEST_F(FileDialog, TriesOnlyWhatTheUserHasChosenInTheEnvironment) {
    scripts.Put("zenity", "echo /by-zenity");
    scripts.Put("kdialog", "echo /by-kdialog");
    setenv("KAV_FILE_DIALOG", "kdialog", 1);
    EXPECT_EQ(Ask().path, "/by-kdialog");
    setenv("KAV_FILE_DIALOG", "zenity", 1);
    EXPECT_EQ(Ask().path, "/by-zenity");
    setenv("KAV_FILE_DIALOG", "portal", 1);
    EXPECT_EQ(Ask().kind, EFileAnswer::NotAsked);
    setenv("KAV_FILE_DIALOG", "list", 1);
    EXPECT_EQ(Ask().kind, EFileAnswer::NotAsked);
    fs::remove(scripts.Folder() / "zenity");
    setenv("KAV_FILE_DIALOG", "zenity", 1);
    EXPECT_EQ(Ask().kind, EFileAnswer::NotAsked);
}

TEST_F(FileDialog, ThatTheUserCancelsOrThatDiesIsCancelledAndNoOtherIsTried) {
    scripts.Put("kdialog", "echo /by-kdialog");
    for (const auto* const rest : {"exit 1", "exit 0", "exit 255", "kill -9 $$", "echo /half; kill -9 $$",
             "echo /timed-out; exit 5", "echo; exit 0"}) {
        const auto given = AskZenity(rest);
        EXPECT_EQ(given.kind, EFileAnswer::Cancelled) << rest;
        EXPECT_EQ(given.path, "") << rest;
    }
    EXPECT_FALSE(scripts.WasRun("kdialog"));
}

TEST_F(FileDialog, RefusesWhatIsNoPathOfOneFile) {
    for (const auto* const rest : {"echo relative.kvp", "echo -- -x", "echo 'smb://server/a.kvp'",
             "printf '/a\\n/b\\n'", "printf '/a\\nb.kvp\\n'", "printf '/a\\n\\n'", "printf '/a\\377.kvp\\n'",
             "echo '/a\\\\b.kvp'", "printf '/a\\0b\\n'", "printf '\\n/a\\n'", "echo /a/", "echo '/a\r'"}) {
        const auto given = AskZenity(rest);
        EXPECT_EQ(given.kind, EFileAnswer::Unusable) << rest;
        EXPECT_EQ(given.path, "") << rest;
    }
}

TEST_F(FileDialog, ReadsAPathWithoutTheEndOfItsLine) {
    EXPECT_EQ(AskZenity("printf /a/b.kvp").path, "/a/b.kvp");
}

TEST_F(FileDialog, ReadsAPathThatArrivesInPieces) {
    EXPECT_EQ(AskZenity("printf /a; /bin/sleep 0.1; echo /b.kvp").path, "/a/b.kvp");
}

TEST_F(FileDialog, EndsWithItsProgramWhateverThatHasStarted) {
    const auto other = scripts.Folder() / "other";
    EXPECT_EQ(AskZenity("/bin/sleep 1000 & echo $! >'" + other.string() + "'; echo /a.kvp").path, "/a.kvp")
        << "it holds the output";
    kill(std::atoi(ReadText(other).c_str()), SIGKILL);
    EXPECT_EQ(AskZenity("exec >&-; /bin/sleep 0.1; exit 1").kind, EFileAnswer::Cancelled)
        << "the output is closed before the end";
}

TEST_F(FileDialog, NeverTakesMoreThanAPath) {
    EXPECT_EQ(AskZenity("trap '' PIPE; a=/aaaaaaa; n=0; while [ $n -lt 14 ]; do a=$a$a; n=$((n+1)); done\n"
                        "echo $a; exit 0")
                  .kind,
        EFileAnswer::Unusable);
    EXPECT_NE(AskZenity("while echo /a; do :; done").kind, EFileAnswer::Chosen);
}

TEST_F(FileDialog, IsKilledAndReapedWhenItIsEnded) {
    const auto other = scripts.Folder() / "other";
    scripts.Put("zenity", "trap '' TERM HUP INT; /bin/sleep 1000 & echo $! >'" + other.string() + "'; wait");
    scripts.Put("kdialog", "echo /by-kdialog");
    Start();
    const auto process = scripts.Process("zenity");
    EXPECT_TRUE(IsRunning(process));
    ASSERT_TRUE(Eventually([&] { return ReadText(other).ends_with('\n'); }));
    dialog->End();
    EXPECT_EQ(answer.get().kind, EFileAnswer::Cancelled);
    EXPECT_FALSE(IsRunning(process)) << "there is no zombie either";
    EXPECT_TRUE(Eventually([&] { return !IsRunning(std::atoi(ReadText(other).c_str())); }))
        << "what it has started has ended, too";
    EXPECT_FALSE(scripts.WasRun("kdialog"));
}

TEST_F(FileDialog, IsEndedWithItsObject) {
    scripts.Put("zenity", "while :; do /bin/sleep 1000; done");
    Start();
    const auto process = scripts.Process("zenity");
    dialog.reset();
    EXPECT_EQ(answer.get().kind, EFileAnswer::Cancelled);
    EXPECT_FALSE(IsRunning(process));
}

TEST_F(FileDialog, IsCancelledWhenItIsEndedBeforeItHasBegun) {
    scripts.Put("zenity", "echo /a; while :; do /bin/sleep 1000; done");
    for (int n = 0; n < 20; ++n) {
        promise = {};
        answer = promise.get_future();
        Start();
        dialog->End();
        EXPECT_EQ(answer.get().kind, EFileAnswer::Cancelled);
    }
}

TEST_F(FileDialog, LeavesTheHostsChildrenToTheHost) {
    const pid_t child = fork();
    if (child == 0) _exit(7);
    ASSERT_GT(child, 0);
    siginfo_t info{};
    ASSERT_EQ(waitid(P_PID, static_cast<id_t>(child), &info, WEXITED | WNOWAIT), 0);
    EXPECT_EQ(AskZenity("echo /a.kvp").path, "/a.kvp");
    int status = 0;
    EXPECT_EQ(waitpid(child, &status, 0), child);
    EXPECT_EQ(WEXITSTATUS(status), 7);
}

TEST_F(FileDialog, AnswersInAHostThatIgnoresItsChildren) {
    const auto before = std::signal(SIGCHLD, SIG_IGN);
    EXPECT_EQ(AskZenity("echo /a.kvp").path, "/a.kvp");
    EXPECT_EQ(AskZenity("printf /half").kind, EFileAnswer::Cancelled) << "nothing says that it is complete";
    EXPECT_EQ(AskZenity("exit 1").kind, EFileAnswer::Cancelled);
    std::signal(SIGCHLD, before);
}

TEST_F(FileDialog, StartsProgramsWithoutTheHostsLibraries) {
    setenv("LD_LIBRARY_PATH", "/host", 1);
    setenv("LD_PRELOAD", "", 1);
    EXPECT_EQ(AskZenity("echo \"/${LD_LIBRARY_PATH-none}-${LD_PRELOAD-none}\"").path, "/none-none");
    unsetenv("LD_LIBRARY_PATH");
    unsetenv("LD_PRELOAD");
}

TEST_F(FileDialog, KeepsTheEnvironmentThatItWasAskedIn) {
    const auto wait =
        "while [ ! -e '" + (scripts.Folder() / "go").string() + "' ]; do /bin/sleep 0.01; done\n";
    scripts.Put("zenity", wait + "exit 127");
    scripts.Put("kdialog", "echo \"$PATH/$KAV_TEST\"");
    request.saves = true;
    const std::string path = std::getenv("PATH");
    const std::string home = std::getenv("HOME");
    setenv("KAV_TEST", "before", 1);
    Start();
    scripts.Process("zenity"); // from here on another program is found, started and told where home is
    setenv("PATH", "/nowhere", 1);
    setenv("HOME", "/nowhere", 1);
    setenv("KAV_TEST", "after", 1);
    WriteText(scripts.Folder() / "go", "");
    EXPECT_EQ(answer.get().path, path + "/before");
    EXPECT_EQ(scripts.Arguments("kdialog"), "--title\n\n--getsavefilename\n" + home + "/\n");
    setenv("PATH", path.c_str(), 1);
    setenv("HOME", home.c_str(), 1);
    unsetenv("KAV_TEST");
}

TEST_F(FileDialog, StartsProgramsWithNothingOfTheHostsOpen) {
    const int own = open("/dev/null", O_RDONLY); // NOLINT: the host lets its children have it
    // The fourth descriptor is that of the folder, which the shell reads.
    const auto given = AskZenity("cd /proc/self/fd; n=0; for a in *; do [ $a -lt 10 ] && n=$((n+1)); done; "
                                 "echo /$n-$(/bin/readlink 0)");
    close(own);
    EXPECT_EQ(given.path, "/4-/dev/null");
}

TEST_F(FileDialog, WorksInAHostWithoutStandardStreams) {
    const int in = dup(0);
    const int out = dup(1);
    close(0);
    close(1);
    const auto given = AskZenity("echo /a.kvp");
    dup2(in, 0);
    dup2(out, 1);
    close(in);
    close(out);
    EXPECT_EQ(given.path, "/a.kvp");
}

TEST_F(FileDialog, TellsZenityWhatMayBeChosen) {
    const auto folder = scripts.Folder() / "-start";
    fs::create_directories(folder);
    request.title = "-Open 'it'";
    request.folder = folder.string() + "/";
    request.name = "ignored";
    request.hostWindow = 0x1A2B;
    request.filters = {{"Preset File", {"*.fxp", "*.kvp"}}, {"A|B", {"*"}}};
    AskZenity("exit 1");
    EXPECT_EQ(scripts.Arguments("zenity"),
        "--file-selection\n--title=-Open 'it'\n--modal\n--attach=6699\n--filename=" + folder.string() +
            "/\n--file-filter=Preset File | *.fxp *.FXP *.kvp *.KVP\n--file-filter=A/B | *\n");
}

TEST_F(FileDialog, LetsZenityAskBeforeAFileIsReplaced) {
    request.saves = true;
    request.title = "Save";
    request.folder = scripts.Folder().string();
    request.name = "-n \"q\".kvp";
    AskZenity("exit 1");
    EXPECT_EQ(scripts.Arguments("zenity"),
        "--file-selection\n--title=Save\n--save\n--confirm-overwrite\n--filename=" +
            scripts.Folder().string() + "/-n \"q\".kvp\n");
    request.folder = scripts.Folder().string() + "/missing";
    request.name = "a/b\\c\nd";
    AskZenity("exit 1");
    EXPECT_NE(scripts.Arguments("zenity").find("--filename=a_b_c_d\n"), std::string::npos)
        << "zenity's own folder, and a name that is one";
    request.name = "..";
    AskZenity("exit 1");
    EXPECT_EQ(scripts.Arguments("zenity").find("--filename"), std::string::npos);
}

TEST_F(FileDialog, TellsKdialogWhatMayBeChosen) {
    request.title = "Open";
    request.folder = scripts.Folder().string();
    request.hostWindow = 0x1A2B;
    request.filters = {{"Preset File", {"*.fxp", "*.kvp"}}, {"KAV Preset File", {"*.kvp"}}};
    scripts.Put("kdialog", "exit 1");
    Ask();
    EXPECT_EQ(scripts.Arguments("kdialog"),
        "--title\nOpen\n--attach\n6699\n--getopenfilename\n" + scripts.Folder().string() +
            "/\nPreset File (*.fxp *.FXP *.kvp *.KVP)\nKAV Preset File (*.kvp *.KVP)\n");
    request = {};
    request.saves = true;
    request.title = "Save";
    request.name = "-n.kvp";
    Ask();
    EXPECT_EQ(scripts.Arguments("kdialog"),
        std::string("--title\nSave\n--getsavefilename\n") + std::getenv("HOME") + "/-n.kvp\n");
}

TEST(DialogControl, KillsAProgramThatStartsAfterTheEndAndNoneThatIsForgotten) {
    const auto start = [] {
        const pid_t program = fork();
        if (program == 0) {
            for (;;) pause();
        }
        setpgid(program, program); // as a program of the desktop, it leads a group
        return program;
    };
    const pid_t late = start();
    const pid_t forgotten = start();
    CDialogControl ended;
    ended.End();
    ended.SetProgram(late);
    CDialogControl other;
    other.SetProgram(forgotten);
    other.ForgetProgram();
    other.End();
    int status = 0;
    EXPECT_TRUE(Eventually([&] { return waitpid(late, &status, WNOHANG) == late; }));
    EXPECT_TRUE(WIFSIGNALED(status));
    EXPECT_EQ(waitpid(forgotten, &status, WNOHANG), 0);
    kill(forgotten, SIGKILL);
    waitpid(forgotten, nullptr, 0);
}
