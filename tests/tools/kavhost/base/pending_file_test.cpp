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
