#include "utils/scan_folder.h"

#include "tests/support/file_text.h"
#include "tests/support/scratch_home.h"
#include "utils/path.h"

#include <gtest/gtest.h>

using namespace KAV::Utils;
using namespace KAV::Tests;
namespace fs = std::filesystem;

namespace {

using Names = std::vector<std::u16string>;

/// A folder with entries of every kind.
fs::path Folder() {
    const auto folder = ScratchFolder() / "scan";
    for (const char* const file :
        {"b.kvp", "a.KVP", "Z.kvp", "old.fxp", "two.parts.kvp", "readme.txt", "plain", "ab.kvp"})
        WriteText(folder / file, "x");
    WriteText(folder / fs::path(u8"über.kvp"), "x");
    fs::create_directories(folder / "sub.kvp");
    fs::create_directories(folder / "more");
    return folder;
}

Names Scan(const fs::path& folder, std::u16string_view filter) {
    return ScanFolder(FromSystemPath(folder), filter);
}

} // namespace

TEST(ScanFolder, TakesTheFilesOfAnExtensionSortedByCodeUnits) {
    EXPECT_EQ(Scan(Folder(), u"kvp"), (Names{u"Z", u"a", u"ab", u"b", u"two.parts",
                                          u"\xFC"
                                          u"ber"}));
}

TEST(ScanFolder, TakesSeveralExtensions) {
    EXPECT_EQ(Scan(Folder(), u"fxp;txt"), (Names{u"old", u"readme"}));
}

TEST(ScanFolder, ComparesExtensionsExactly) {
    EXPECT_EQ(Scan(Folder(), u"KVP"), Names{});
    EXPECT_EQ(Scan(Folder(), u"kv"), Names{});
    EXPECT_EQ(Scan(Folder(), u"kvpx"), Names{});
    EXPECT_EQ(Scan(Folder(), u";"), (Names{u"plain"})); // two empty parts: files without an extension
}

TEST(ScanFolder, TakesFoldersWhenAsked) {
    EXPECT_EQ(Scan(Folder(), u"{dir}"), (Names{u"more", u"sub"}));
    EXPECT_EQ(Scan(Folder(), u"fxp;{dir}"), (Names{u"more", u"old", u"sub"}));
}

TEST(ScanFolder, TakesEverythingWithoutAFilter) {
    EXPECT_EQ(Scan(Folder(), u""),
        (Names{u"Z", u"a", u"ab", u"b", u"more", u"old", u"plain", u"readme", u"sub", u"two.parts",
            u"\xFC"
            u"ber"}));
}

TEST(ScanFolder, IsEmptyForAnEmptyNameAnEmptyFolderOrNone) {
    fs::create_directories(ScratchFolder() / "nothing");
    EXPECT_EQ(ScanFolder(u"", u""), Names{});
    EXPECT_EQ(Scan(ScratchFolder() / "nothing", u""), Names{});
    EXPECT_EQ(Scan(ScratchFolder() / "missing", u""), Names{});
    EXPECT_EQ(ScanFolder(u"/\xD800", u""), Names{});
}

TEST(ScanFolder, TakesPathsWithAndWithoutASlashAndWithBackslashes) {
    const auto folder = FromSystemPath(Folder());
    EXPECT_EQ(ScanFolder(folder + u"/", u"fxp"), Names{u"old"});
    EXPECT_EQ(ScanFolder(folder + u"\\\\", u"fxp"), Names{u"old"});
}
