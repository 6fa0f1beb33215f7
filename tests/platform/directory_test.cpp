#include "platform/directory.h"

#include "tests/support/file_text.h"
#include "tests/support/scratch_home.h"

#include <algorithm>
#include <gtest/gtest.h>

using namespace KAV::Platform;
using namespace KAV::Tests;

TEST(ListDirectory, DistinguishesFilesFromFolders) {
    const auto folder = ScratchFolder() / "list";
    WriteText(folder / "file.kvp", "x");
    std::filesystem::create_directory(folder / "folder");
    auto entries = ListDirectory(folder);
    std::sort(entries.begin(), entries.end(), [](const auto& a, const auto& b) { return a.name < b.name; });
    ASSERT_EQ(entries.size(), 2u);
    EXPECT_EQ(entries[0].name, "file.kvp");
    EXPECT_FALSE(entries[0].isFolder);
    EXPECT_EQ(entries[1].name, "folder");
    EXPECT_TRUE(entries[1].isFolder);
}

TEST(ListDirectory, GivesNothingForAMissingFolderOrAFile) {
    WriteText(ScratchFolder() / "file", "x");
    EXPECT_TRUE(ListDirectory(ScratchFolder() / "missing").empty());
    EXPECT_TRUE(ListDirectory(ScratchFolder() / "file").empty());
    EXPECT_TRUE(ListDirectory({}).empty());
}
