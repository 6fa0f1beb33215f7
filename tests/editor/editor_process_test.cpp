// The editor in processes of their own, which end in every way, or lack a library.

#include "tests/editor/editor_fixture.h"

#include "tests/support/file_text.h"
#include "tests/support/scratch_home.h"

#include <csignal>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <spawn.h>
#include <string>
#include <sys/wait.h>
#include <unistd.h>

namespace KAV::Tests {

namespace {

using EditorProcess = CEditorFixture;

/// The guest program, which opens an editor in a window of the test.
class CGuest final {
public:
    CGuest(xcb_window_t parent, const std::string& mode) {
        const std::string window = std::to_string(parent);
        const char* const arguments[] = {
            KAV_EDITOR_GUEST, KAV_PLUGIN_PATH, window.c_str(), mode.c_str(), nullptr};
        EXPECT_EQ(posix_spawn(&_process, KAV_EDITOR_GUEST, nullptr, nullptr,
                      const_cast<char* const*>(arguments), environ),
            0);
    }
    ~CGuest() {
        if (!_hasEnded) Kill();
    }
    CGuest(const CGuest&) = delete;
    CGuest& operator=(const CGuest&) = delete;

    bool HasEnded() {
        if (!_hasEnded) _hasEnded = waitpid(_process, &_status, WNOHANG) == _process;
        return _hasEnded;
    }
    void AskToEnd() { kill(_process, SIGTERM); }
    void Kill() {
        kill(_process, SIGKILL);
        _hasEnded = waitpid(_process, &_status, 0) == _process;
    }
    /// What it returned once it has ended; below 0: the signal that ended it.
    int Result() const { return WIFEXITED(_status) ? WEXITSTATUS(_status) : -WTERMSIG(_status); }

private:
    pid_t _process = -1;
    int _status = 0;
    bool _hasEnded = false;
};

/// Sets a variable of the environment for its lifetime.
class CVariable final {
public:
    CVariable(const char* name, const std::string& value) : _name(name) {
        const char* const before = std::getenv(name);
        _wasSet = before != nullptr;
        if (_wasSet) _before = before;
        setenv(name, value.c_str(), 1);
    }
    ~CVariable() {
        if (_wasSet) {
            setenv(_name, _before.c_str(), 1);
        } else {
            unsetenv(_name);
        }
    }
    CVariable(const CVariable&) = delete;
    CVariable& operator=(const CVariable&) = delete;

private:
    const char* _name;
    std::string _before;
    bool _wasSet = false;
};

/// Everything in the files of a folder.
std::string TextsIn(const std::filesystem::path& folder) {
    std::string all;
    for (const auto& entry : std::filesystem::recursive_directory_iterator(folder)) {
        if (entry.is_regular_file()) all += ReadText(entry.path());
    }
    return all;
}

} // namespace

TEST_F(EditorProcess, EndsWithAnEditorThatDraws) {
    CGuest guest(windows.Parent(), "exit");
    EXPECT_TRUE(Until([&] { return windows.Editor() != 0 || guest.HasEnded(); }));
    ASSERT_TRUE(ShowsAPicture(windows.Editor()));
    guest.AskToEnd();
    ASSERT_TRUE(Until([&] { return guest.HasEnded(); }));
    EXPECT_EQ(guest.Result(), 0);
    EXPECT_TRUE(Until([&] { return windows.Editor() == 0; }));
}

TEST_F(EditorProcess, EndsAfterUnloadingTheLibraryOfAnOpenEditor) {
    CGuest guest(windows.Parent(), "dlclose");
    EXPECT_TRUE(Until([&] { return windows.Editor() != 0 || guest.HasEnded(); }));
    ASSERT_TRUE(ShowsAPicture(windows.Editor()));
    guest.AskToEnd();
    ASSERT_TRUE(Until([&] { return guest.HasEnded(); }));
    EXPECT_EQ(guest.Result(), 0);
}

TEST_F(EditorProcess, MayBeKilledWhileAnotherOneHasAnEditor) {
    CEditorHost host(library);
    const auto ours = OpenEditor(host);
    const auto other = windows.MakeWindow(windows.Root(), 0, 0, 800, 600, true);
    windows.Show(other, true);
    CGuest guest(other, "exit");
    ASSERT_TRUE(Until([&] { return !windows.Children(other).empty(); }));
    EXPECT_TRUE(ShowsAPicture(windows.Children(other)[0]));
    guest.Kill();
    EXPECT_TRUE(Until([&] { return windows.Children(other).empty(); }));
    windows.Show(other, false); // it covers ours
    EXPECT_TRUE(ShowsAPicture(ours));
    Drag(MiddleOf("Main Input Gain"), 0, -40);
    windows.Release(1);
    EXPECT_TRUE(Until([&] { return host.Count(VST::audioMasterEndEdit) == 1; }));
}

TEST_F(EditorProcess, LogsWhichLibraryIsMissing) {
    constexpr int didNotOpen = 3;
    for (const std::string name : {"libfreetype.so.6", "libpng16.so.16", "libpixman-1.so.0"}) {
        const auto folder = ScratchFolder() / name;
        const auto temporary = folder / "tmp";
        std::filesystem::create_directories(temporary);
        std::ofstream{folder / name}; // too short for a library
        const CVariable libraries("LD_LIBRARY_PATH", folder.string());
        const CVariable logs("TMPDIR", temporary.string());
        CGuest guest(windows.Parent(), "glance");
        ASSERT_TRUE(Until([&] { return guest.HasEnded(); }));
        EXPECT_EQ(guest.Result(), didNotOpen) << name;
        const auto log = TextsIn(temporary);
        EXPECT_NE(log.find(name), std::string::npos) << name << ": " << log;
        EXPECT_TRUE(Until([&] { return windows.Editor() == 0; }));
    }
}

} // namespace KAV::Tests
