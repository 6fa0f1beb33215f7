// The editor in processes of their own, which end in every way, or lack a library.

#include "tests/editor/editor_fixture.h"
#include "tests/editor/linux/guest.h"
#include "tests/support/file_text.h"
#include "tests/support/scratch_home.h"

#include <filesystem>
#include <fstream>
#include <string>

namespace KAV::Tests {

namespace {

using EditorProcess = CEditorFixture;

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

#if !defined(KAV_SANITIZED) // a sanitizer has memory of its own
TEST_F(EditorProcess, TakesLittleMemoryAndGivesBackAllButThePicturesThatItKeeps) {
    constexpr std::ptrdiff_t mega = 1 << 20;
    const auto output = ScratchFolder() / "memory.txt";
    CGuest guest(windows.Parent(), "memory", output.string());
    EXPECT_TRUE(Until([&] { return windows.Editor() != 0 || guest.HasEnded(); }));
    ASSERT_TRUE(ShowsAPicture(windows.Editor()));
    guest.AskToEnd();
    ASSERT_TRUE(Until([&] { return guest.HasEnded(); }));
    EXPECT_EQ(guest.Result(), 0);
    std::ptrdiff_t open = 0;
    std::ptrdiff_t openOwn = 0;
    std::ptrdiff_t closed = 0;
    std::ptrdiff_t closedOwn = 0;
    ASSERT_TRUE(std::ifstream(output) >> open >> openOwn >> closed >> closedOwn);
    EXPECT_GT(openOwn, 8 * mega) << "a picture was shown";
    EXPECT_LE(open, 25 * mega);
    constexpr std::ptrdiff_t rounding = mega; // each kept picture has whole pages, and heaps grow in steps
    EXPECT_LE(closedOwn, 12 * mega + rounding);
    // The rest is the code of the system's libraries, which all processes share. The stored pictures have
    // left.
    EXPECT_LE(closed - closedOwn, 3 * mega);
}
#endif

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
