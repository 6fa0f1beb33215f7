// Features that only this system has: links, permissions, pipes, and processes that end in the middle of a
// call.

#include "platform/file_system.h"
#include "platform/whole_file.h"
#include "tests/support/faulty_files.h"
#include "tests/support/file_text.h"
#include "tests/support/other_process.h"
#include "tests/support/scratch_home.h"

#include <csignal>
#include <gtest/gtest.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>

using namespace KAV::Platform;
using namespace KAV::Tests;
namespace fs = std::filesystem;

namespace {

bool Replace(const fs::path& file, std::string_view text) {
    return ReplaceWholeFile(file, text.data(), text.size());
}

unsigned Mode(const fs::path& file) {
    struct stat status {};
    EXPECT_EQ(stat(file.c_str(), &status), 0);
    return status.st_mode & 0777u;
}

} // namespace

TEST(ReplaceWholeFile, SurvivesAProcessThatEndsInAnyCall) {
    const auto file = ScratchFolder() / "ended" / "file";
    for (int call = 1; call <= 9; ++call) {
        WriteText(file, "old content");
        InAnotherProcess([&] {
            CFaultyFiles files(call, CFaultyFiles::EFault::HalfFail);
            files.onFault = [] { _exit(7); };
            return Replace(file, "the new content") ? 0 : 1;
        });
        const auto content = ReadText(file);
        EXPECT_TRUE(content == "old content" || content == "the new content") << call << content;
    }
}

TEST(ReplaceWholeFile, KeepsTheOldFileOnAFullDisk) {
    const auto file = ScratchFolder() / "full" / "file";
    WriteText(file, "old content");
    const std::string large(1 << 20, 'n');
    const int status = InAnotherProcess([&] {
        std::signal(SIGXFSZ, SIG_IGN); // then writing fails instead
        rlimit limit{4096, 4096};
        setrlimit(RLIMIT_FSIZE, &limit);
        return Replace(file, large) ? 0 : 1;
    });
    EXPECT_EQ(status, 1);
    EXPECT_EQ(ReadText(file), "old content");
    EXPECT_EQ(CountEntries(file.parent_path()), 1u);
}

TEST(ReplaceWholeFile, KeepsALinkAndReplacesWhatItLeadsTo) {
    const auto folder = ScratchFolder() / "links";
    WriteText(folder / "elsewhere" / "file", "old");
    fs::create_symlink(folder / "elsewhere" / "file", folder / "link");
    EXPECT_TRUE(Replace(folder / "link", "new"));
    EXPECT_TRUE(fs::is_symlink(folder / "link"));
    EXPECT_EQ(ReadText(folder / "elsewhere" / "file"), "new");
}

TEST(ReplaceWholeFile, KeepsThePermissionsOfTheOldFile) {
    const auto file = ScratchFolder() / "private";
    WriteText(file, "old");
    chmod(file.c_str(), 0640);
    EXPECT_TRUE(Replace(file, "new"));
    EXPECT_EQ(Mode(file), 0640u);
}

TEST(ReplaceWholeFile, RefusesAFileThatTheUserHasWriteProtected) {
    const auto folder = ScratchFolder() / "protected";
    WriteText(folder / "file", "old");
    chmod(folder.c_str(), 0777);
    chmod((folder / "file").c_str(), 0444);
    EXPECT_EQ(AsNobody([&] { return Replace(folder / "file", "new") ? 0 : 1; }), 1);
    EXPECT_EQ(ReadText(folder / "file"), "old");
}

TEST(ReplaceWholeFile, FailsInAReadOnlyFolder) {
    const auto folder = ScratchFolder() / "readonly";
    WriteText(folder / "file", "old");
    chmod((folder / "file").c_str(), 0666);
    chmod(folder.c_str(), 0555);
    EXPECT_EQ(AsNobody([&] { return Replace(folder / "file", "new") ? 0 : 1; }), 1);
    EXPECT_EQ(AsNobody([&] { return Replace(folder / "other", "new") ? 0 : 1; }), 1);
    EXPECT_EQ(ReadText(folder / "file"), "old");
    EXPECT_EQ(CountEntries(folder), 1u);
}

TEST(WholeFile, NeitherWaitsForAPipeNorWritesToADevice) {
    const auto pipe = ScratchFolder() / "pipe";
    ASSERT_EQ(mkfifo(pipe.c_str(), 0600), 0);
    EXPECT_EQ(ReadWholeFile(pipe).data, nullptr);
    EXPECT_FALSE(Replace(pipe, "new"));
    EXPECT_FALSE(Replace("/dev/null", "new"));
    EXPECT_EQ(ReadWholeFile("/dev/zero").data, nullptr);
}

TEST(OpenAlone, RefusesLinksAndPipesAndFilesThatHaveASecondName) {
    const auto folder = ScratchFolder() / "alone";
    WriteText(folder / "victim", "precious");
    fs::create_symlink(folder / "victim", folder / "link");
    fs::create_hard_link(folder / "victim", folder / "second");
    ASSERT_EQ(mkfifo((folder / "pipe").c_str(), 0600), 0);
    for (const char* const name : {"link", "second", "pipe"})
        EXPECT_EQ(SystemFiles().OpenAlone(folder / name), IFileSystem::NoFile) << name;
    EXPECT_EQ(ReadText(folder / "victim"), "precious");
}

TEST(OpenAlone, RefusesAnotherUsersFile) {
    if (getuid() != 0) GTEST_SKIP() << "only root can create files of two users";
    const auto folder = ScratchFolder() / "planted";
    WriteText(folder / "file", "planted");
    ASSERT_EQ(chown((folder / "file").c_str(), 65534, 65534), 0);
    EXPECT_EQ(SystemFiles().OpenAlone(folder / "file"), IFileSystem::NoFile);
}

TEST(OpenAlone, MakesAFileThatOnlyThisUserReads) {
    const auto file = ScratchFolder() / "own";
    const auto handle = SystemFiles().OpenAlone(file);
    ASSERT_NE(handle, IFileSystem::NoFile);
    EXPECT_EQ(Mode(file), 0600u);
    EXPECT_EQ(
        InAnotherProcess([&] { return SystemFiles().OpenAlone(file) == IFileSystem::NoFile ? 0 : 1; }), 0);
    SystemFiles().Close(handle);
    EXPECT_EQ(
        InAnotherProcess([&] { return SystemFiles().OpenAlone(file) == IFileSystem::NoFile ? 0 : 1; }), 1);
}
