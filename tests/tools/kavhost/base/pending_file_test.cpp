#include "tools/kavhost/base/pending_file.h"

#include "tests/tools/kavhost/support.h"
#include "tools/kavhost/base/errors.h"

#include <fstream>
#include <gtest/gtest.h>
#include <sstream>

using namespace KAV::Host;
using namespace KAV::Tests;

namespace {

std::string Content(const std::filesystem::path& file) {
    std::ostringstream text;
    text << std::ifstream(file, std::ios::binary).rdbuf();
    return text.str();
}

} // namespace

TEST(PendingFile, AppearsUnderItsNameWhenItIsComplete) {
    const auto folder = NewFolder();
    {
        CPendingFile file(folder / "out");
        file.Stream() << "text";
        ASSERT_EQ(FilesIn(folder).size(), 1u);
        EXPECT_NE(FilesIn(folder)[0], "out");
        file.Commit();
    }
    EXPECT_EQ(FilesIn(folder), std::vector<std::string>{"out"});
    EXPECT_EQ(Content(folder / "out"), "text");
}

TEST(PendingFile, LeavesNothingBehindWhenItIsNotComplete) {
    const auto folder = NewFolder();
    {
        CPendingFile file(folder / "out");
        file.Stream() << "text";
    }
    EXPECT_TRUE(FilesIn(folder).empty());
}

TEST(PendingFile, KeepsTheOldFileUntilItIsComplete) {
    const auto folder = NewFolder();
    std::ofstream(folder / "out") << "old";
    {
        CPendingFile file(folder / "out");
        file.Stream() << "half";
    }
    EXPECT_EQ(Content(folder / "out"), "old");
    CPendingFile file(folder / "out");
    file.Stream() << "new";
    file.Commit();
    EXPECT_EQ(Content(folder / "out"), "new");
    EXPECT_EQ(FilesIn(folder), std::vector<std::string>{"out"});
}

TEST(PendingFile, FailsWhereNoFileCanBe) {
    const auto folder = NewFolder();
    EXPECT_THROW(CPendingFile(folder / "missing" / "out"), CFailure);
    EXPECT_THROW(CPendingFile{folder}, CFailure); // a folder isn't a plain file
}

TEST(PendingFile, RemembersThatAWriteFailed) {
    const auto folder = NewFolder();
    {
        CPendingFile file(folder / "out");
        file.Stream().setstate(std::ios::badbit);
        EXPECT_THROW(file.Check(), CFailure);
        EXPECT_THROW(file.Commit(), CFailure);
    }
    EXPECT_TRUE(FilesIn(folder).empty());
}

TEST(PendingFile, KeepsAFileThatAppearedMeanwhileIfItIsToStay) {
    const auto folder = NewFolder();
    CPendingFile file(folder / "out");
    file.Stream() << "new";
    std::ofstream(folder / "out") << "theirs";
    EXPECT_THROW(file.Commit(EExisting::Kept), CFailure);
    EXPECT_EQ(Content(folder / "out"), "theirs");
}

TEST(PendingFile, AppearsWhereNoFileIsToBeReplaced) {
    const auto folder = NewFolder();
    CPendingFile file(folder / "out");
    file.Stream() << "new";
    file.Commit(EExisting::Kept);
    EXPECT_EQ(Content(folder / "out"), "new");
    EXPECT_EQ(FilesIn(folder), std::vector<std::string>{"out"});
}

TEST(PendingFile, ReplacesNothingThatIsWriteProtected) {
    const auto folder = NewFolder();
    std::ofstream(folder / "out") << "old";
    namespace fs = std::filesystem;
    fs::permissions(folder / "out", fs::perms::owner_write | fs::perms::group_write | fs::perms::others_write,
        fs::perm_options::remove);
    EXPECT_THROW(CPendingFile(folder / "out"), CFailure); // an administrator, too
    EXPECT_EQ(Content(folder / "out"), "old");
    EXPECT_EQ(FilesIn(folder), std::vector<std::string>{"out"});
    fs::permissions(folder / "out", fs::perms::owner_write, fs::perm_options::add);
}

TEST(PendingFile, TakesTheLongestNames) {
    const auto folder = NewFolder();
    const std::string name(255, 'n');
    CPendingFile file(folder / name);
    file.Stream() << "text";
    file.Commit();
    EXPECT_EQ(FilesIn(folder), std::vector<std::string>{name});
}

TEST(PendingFile, IsNotTakenForAbandonedWhileItIsWritten) {
    const auto folder = NewFolder();
    CPendingFile file(folder / "out");
    file.Stream() << "text";
    RemoveAbandonedBeside(folder / "other");
    EXPECT_TRUE(std::filesystem::exists(file.Temporary()));
    file.Commit();
    EXPECT_EQ(Content(folder / "out"), "text");
}

TEST(PendingFile, RemovesWhatAKilledRunHasLeftAndNothingElse) {
    const auto folder = NewFolder();
    std::filesystem::path abandoned;
    {
        CPendingFile file(folder / "out");
        abandoned = file.Temporary();
    }
    std::ofstream(abandoned) << "half"; // as the run would have left it, without its lock
    for (const char* other :
        {".kavhost", ".kavhost-notes.tmp.txt", ".kavhost-x.tm", "kavhost-1.tmp", "a.tmp"})
        std::ofstream(folder / other) << "a user's";
    const auto all = FilesIn(folder);
    RemoveAbandonedBeside(folder / "out");
    EXPECT_FALSE(std::filesystem::exists(abandoned));
    EXPECT_EQ(FilesIn(folder).size(), all.size() - 1);
}
