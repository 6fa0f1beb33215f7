#include "utils/path.h"

#include <cstdlib>
#include <filesystem>
#include <gtest/gtest.h>
#include <string>

using namespace KAV::Utils;
using namespace std::string_literals;

namespace {

/// The rules one after another, each applied until it finds nothing more.
std::u16string NormalizeByTheRules(std::u16string path) {
    const bool network =
        path.size() > 1 && (path[0] == u'/' || path[0] == u'\\') && (path[1] == u'/' || path[1] == u'\\');
    const auto replaceAll = [&](std::u16string_view what) {
        for (std::size_t place = 0; (place = path.find(what)) != std::u16string::npos;)
            path.replace(place, what.size(), u"/");
    };
    for (char16_t& c : path) c = c == u'\\' ? u'/' : c;
    replaceAll(u"//");
    replaceAll(u"/./");
    if (network) path.insert(path.begin(), u'/');
    return path;
}

} // namespace

TEST(NormalizePath, LeavesSingleForwardSlashesOnly) {
    EXPECT_EQ(NormalizePath(u"C:\\Users\\\\me/./x//y\\.\\z"), u"C:/Users/me/x/y/z");
    EXPECT_EQ(NormalizePath(u"a/././b"), u"a/b");
    EXPECT_EQ(NormalizePath(u"a////b"), u"a/b");
    EXPECT_EQ(NormalizePath(u"a/.//b"), u"a/b");
    EXPECT_EQ(NormalizePath(u""), u"");
}

TEST(NormalizePath, KeepsBothSlashesOfANetworkPath) {
    EXPECT_EQ(NormalizePath(u"//server/share//x"), u"//server/share/x");
    EXPECT_EQ(NormalizePath(u"\\\\server\\share"), u"//server/share");
    EXPECT_EQ(NormalizePath(u"\\/server"), u"//server");
    EXPECT_EQ(NormalizePath(u"////server"), u"//server");
}

TEST(NormalizePath, RemovesNoOtherDots) {
    EXPECT_EQ(NormalizePath(u"./a"), u"./a");
    EXPECT_EQ(NormalizePath(u"a/."), u"a/.");
    EXPECT_EQ(NormalizePath(u"a/../b"), u"a/../b");
    EXPECT_EQ(NormalizePath(u"a/.b/c./d"), u"a/.b/c./d");
}

TEST(NormalizePath, DoesInOnePassWhatTheRulesSay) {
    // All texts of up to eight of the characters that matter.
    constexpr std::u16string_view Letters = u"/\\.a";
    for (std::size_t length = 0; length <= 8; ++length) {
        for (std::size_t number = 0; number < std::size_t{1} << (2 * length); ++number) {
            std::u16string path;
            for (std::size_t i = 0; i < length; ++i) path += Letters[number >> (2 * i) & 3];
            ASSERT_EQ(NormalizePath(path), NormalizeByTheRules(path));
        }
    }
}

TEST(GetFileName, IsWhatFollowsTheLastSlash) {
    EXPECT_EQ(GetFileName(u"C:\\x\\patch.kvp"), u"patch.kvp");
    EXPECT_EQ(GetFileName(u"x/y/"), u"");
    EXPECT_EQ(GetFileName(u"patch.kvp"), u"patch.kvp");
    EXPECT_EQ(GetFileName(u""), u"");
}

TEST(GetFolder, IsEverythingThroughTheLastSlash) {
    EXPECT_EQ(GetFolder(u"C:\\x\\patch.kvp"), u"C:/x/");
    EXPECT_EQ(GetFolder(u"x//y/"), u"x/y/");
    EXPECT_EQ(GetFolder(u"patch.kvp"), u"patch.kvp");
    EXPECT_EQ(GetFolder(u"//server/x"), u"//server/");
}

TEST(GetExtension, FollowsTheLastPointInLowerCase) {
    EXPECT_EQ(GetExtension(u"a.b.KVP"), u"kvp");
    EXPECT_EQ(GetExtension(u"none"), u"");
    EXPECT_EQ(GetExtension(u"ends."), u"");
    EXPECT_EQ(GetExtension(u".hidden"), u"hidden");
}

TEST(GetExtension, TakesThePointOfAFolderWhenTheFileHasNone) {
    EXPECT_EQ(GetExtension(u"/home/me/v1.2/patch"), u"2/patch");
}

TEST(StripExtension, CutsAtTheLastPoint) {
    EXPECT_EQ(StripExtension(u"a.b.kvp"), u"a.b");
    EXPECT_EQ(StripExtension(u"none"), u"none");
    EXPECT_EQ(StripExtension(u".kvp"), u"");
    EXPECT_EQ(StripExtension(u"/v1.2/patch"), u"/v1");
}

TEST(SystemPath, TakesTextOnly) {
    EXPECT_EQ(ToSystemPath(u"/a/\xE4 b"), std::filesystem::path(u8"/a/ä b"));
    EXPECT_TRUE(ToSystemPath(u"/a\0b"s).empty());
    EXPECT_TRUE(ToSystemPath(u"/a\xD800").empty());
    EXPECT_TRUE(ToSystemPath(u"").empty());
}

TEST(SystemFolders, EndWithASlash) {
    for (const auto& folder : {GetDocumentsFolder(), GetTemporaryFolder()}) {
        ASSERT_GT(folder.size(), 1u);
        EXPECT_EQ(folder.back(), u'/');
        EXPECT_NE(folder[folder.size() - 2], u'/');
        EXPECT_EQ(folder.find(u'\\'), std::u16string::npos);
    }
    EXPECT_FALSE(GetModulePath().empty());
}

TEST(GetDocumentsFolder, IsATestsOwnWhileItWants) {
    const auto before = GetDocumentsFolder();
    UseDocumentsFolder(u"/somewhere/else/");
    EXPECT_EQ(GetDocumentsFolder(), u"/somewhere/else/");
    UseDocumentsFolder(u"");
    EXPECT_EQ(GetDocumentsFolder(), u"");
    UseDocumentsFolder(std::nullopt);
    EXPECT_EQ(GetDocumentsFolder(), before);
}
