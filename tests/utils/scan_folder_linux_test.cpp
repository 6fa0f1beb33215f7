#include "tests/support/file_text.h"
#include "tests/support/other_process.h"
#include "tests/support/scratch_home.h"
#include "utils/path.h"
#include "utils/scan_folder.h"

#include <gtest/gtest.h>
#include <sys/stat.h>

using namespace KAV::Utils;
using namespace KAV::Tests;
namespace fs = std::filesystem;

using Names = std::vector<std::u16string>;

TEST(ScanFolder, LeavesOutNamesThatAreNotText) {
    const auto folder = ScratchFolder() / "latin";
    WriteText(folder / "caf\xE9.kvp", "x");
    WriteText(folder / "good.kvp", "x");
    EXPECT_EQ(ScanFolder(FromSystemPath(folder), u"kvp"), Names{u"good"});
    EXPECT_EQ(ScanFolder(FromSystemPath(folder), u""), Names{u"good"});
}

TEST(ScanFolder, FollowsLinksAndLeavesOutThoseToNothing) {
    const auto folder = ScratchFolder() / "links";
    WriteText(folder / "real.kvp", "x");
    fs::create_symlink("real.kvp", folder / "link.kvp");
    fs::create_symlink("gone.kvp", folder / "dangling.kvp");
    fs::create_symlink("loop.kvp", folder / "loop.kvp");
    fs::create_symlink("/", folder / "folder.kvp");
    EXPECT_EQ(ScanFolder(FromSystemPath(folder), u"kvp"), (Names{u"link", u"real"}));
    EXPECT_EQ(ScanFolder(FromSystemPath(folder), u"{dir}"), Names{u"folder"});
}

TEST(ScanFolder, IsEmptyForAFolderThatMayNotBeRead) {
    const auto folder = ScratchFolder() / "closed";
    WriteText(folder / "secret.kvp", "x");
    chmod(folder.c_str(), 0);
    EXPECT_EQ(AsNobody([&] { return ScanFolder(FromSystemPath(folder), u"").empty() ? 0 : 1; }), 0);
    chmod(folder.c_str(), 0700);
}

TEST(ScanFolder, ListsTenThousandFiles) {
    const auto folder = ScratchFolder() / "many";
    fs::create_directories(folder);
    for (int i = 0; i < 10000; ++i) WriteText(folder / (std::to_string(100000 + i) + ".kvp"), "");
    const auto names = ScanFolder(FromSystemPath(folder), u"kvp");
    ASSERT_EQ(names.size(), 10000u);
    EXPECT_EQ(names.front(), u"100000");
    EXPECT_EQ(names.back(), u"109999");
}
