#include "utils/location.h"

#include "tests/support/file_text.h"
#include "tests/support/scratch_home.h"
#include "utils/path.h"

#include <cstring>
#include <gtest/gtest.h>
#include <string>

using namespace KAV::Utils;
using namespace KAV::Tests;
using namespace std::string_literals;

namespace {

const std::u16string Root = u"HKEY_CURRENT_USER/Software/Kavelin/Test/";

std::string Read(std::u16string_view location) {
    std::size_t size = 77;
    const auto data = ReadUniversal(location, size);
    if (data == nullptr) return size == 0 ? "(nothing)" : "(nothing, but a size)";
    EXPECT_EQ(data[size], 0);
    EXPECT_EQ(data[size + 1], 0);
    return {data.get(), size};
}

std::size_t Write(std::u16string_view location, std::string_view text) {
    return WriteUniversal(location, text.data(), text.size());
}

std::u16string File(const char* name) {
    return FromSystemPath(ScratchFolder() / name);
}

} // namespace

TEST(Universal, AnEmptyLocationIsNothing) {
    EXPECT_EQ(Read(u""), "(nothing)");
    EXPECT_EQ(Write(u"", "text"), 0u);
    EXPECT_FALSE(ExistsUniversal(u""));
}

TEST(Universal, FilesAreReadAndReplacedWhole) {
    EXPECT_EQ(Write(File("f"), "a longer text"), 13u);
    EXPECT_EQ(Read(File("f")), "a longer text");
    EXPECT_EQ(Write(File("f"), "b\0c"s), 3u);
    EXPECT_EQ(Read(File("f")), "b\0c"s);
    EXPECT_TRUE(ExistsUniversal(File("f")));
}

TEST(Universal, AFileOfNoBytesReadsAsAMissingOne) {
    WriteText(ScratchFolder() / "empty", "");
    EXPECT_EQ(Read(File("empty")), "(nothing)");
    EXPECT_EQ(Read(File("missing")), "(nothing)");
    EXPECT_TRUE(ExistsUniversal(File("empty")));
    EXPECT_FALSE(ExistsUniversal(File("missing")));
}

TEST(Universal, AFileThatIsTooLargeIsNullWithItsSize) {
    WriteText(ScratchFolder() / "large", "four");
    std::size_t size = 0;
    EXPECT_NE(ReadUniversal(File("large"), size, {}, 4), nullptr);
    EXPECT_EQ(ReadUniversal(File("large"), size, {}, 3), nullptr);
    EXPECT_EQ(size, 4u);
}

TEST(Universal, AFolderExistsButIsNotRead) {
    EXPECT_TRUE(ExistsUniversal(FromSystemPath(ScratchFolder())));
    EXPECT_EQ(Read(FromSystemPath(ScratchFolder())), "(nothing)");
    EXPECT_EQ(Write(FromSystemPath(ScratchFolder()), "x"), 0u);
}

TEST(Universal, WritesNeitherNullNorNothing) {
    EXPECT_EQ(WriteUniversal(File("f"), nullptr, 5), 0u);
    EXPECT_EQ(WriteUniversal(File("f"), "text", 0), 0u);
    EXPECT_FALSE(ExistsUniversal(File("f")));
    EXPECT_EQ(WriteUniversal(Root + u"x", nullptr, 5), 0u);
    EXPECT_EQ(WriteUniversal(Root + u"x", "text", 0), 0u);
    EXPECT_FALSE(ExistsUniversal(Root + u"x"));
}

TEST(Universal, IllFormedLocationsAreNothing) {
    for (const auto& location :
        {u"/tmp/\xD800"s, Root + u"\xDC00", u"clipboard:\xD800"s, u"/tmp/a\0b"s, Root + u"a\0b"s}) {
        EXPECT_EQ(Read(location), "(nothing)");
        EXPECT_EQ(Write(location, "x"), 0u);
        EXPECT_FALSE(ExistsUniversal(location));
    }
}

TEST(Universal, SettingsKeepTheirBytes) {
    const auto width = Root + u"Universal/Width";
    EXPECT_EQ(Write(width, "\xE8\x03\0\0"s), 4u);
    EXPECT_EQ(Read(width), "\xE8\x03\0\0"s);
    EXPECT_TRUE(ExistsUniversal(width));
    EXPECT_FALSE(ExistsUniversal(Root + u"Universal/Height"));
    EXPECT_EQ(Read(Root + u"Universal/Height"), "(nothing)");
}

TEST(Universal, ASettingNeedsARootAKeyAndAName) {
    for (const char16_t* const location : {u"HKEY_CURRENT_USER", u"HKEY_CURRENT_USER/Width", u"HKEY_"}) {
        EXPECT_EQ(Read(location), "(nothing)");
        EXPECT_EQ(Write(location, "x"), 0u);
        EXPECT_FALSE(ExistsUniversal(location));
    }
}

TEST(Universal, AnUnknownRootFails) {
    for (const char16_t* const location : {u"HKEY_NONSENSE/Software/Width",
             u"HKEY_CURRENT_USERS/Software/Width", u"HKEY_PERFORMANCE_DATA/a/b"}) {
        EXPECT_EQ(Read(location), "(nothing)");
        EXPECT_EQ(Write(location, "x"), 0u);
        EXPECT_FALSE(ExistsUniversal(location));
    }
}

TEST(Universal, PrefixesAreComparedLetterByLetter) {
    EXPECT_EQ(Write(File("hkey_file"), "a file"), 6u);
    EXPECT_EQ(Read(File("hkey_file")), "a file");
    std::filesystem::current_path(ScratchFolder());
    EXPECT_EQ(Write(u"HTTP file", "x"), 1u);
    EXPECT_EQ(Write(u"http file", "x"), 0u);  // the web, because of its prefix
    EXPECT_EQ(Write(u"hkey_x/y/z", "x"), 0u); // a file in a folder that doesn't exist
}

TEST(Universal, TheWebIsNoPlaceToWrite) {
    EXPECT_EQ(Write(u"http://localhost/x", "x"), 0u);
    EXPECT_EQ(Write(u"https://localhost/x", "x"), 0u);
    EXPECT_FALSE(ExistsUniversal(u"http://localhost/x"));
}

TEST(Universal, TheWebIsReadByWhoeverOffers) {
    SetWebReader(nullptr);
    EXPECT_EQ(Read(u"http://localhost/x"), "(nothing)");
    static std::u16string asked;
    SetWebReader([](std::u16string_view url, std::size_t& size, std::u16string_view postData) {
        asked = std::u16string(url) + u" < " + std::u16string(postData);
        std::unique_ptr<char[]> answer(new char[5]{'y', 'e', 's', 0, 0});
        size = 3;
        return answer;
    });
    std::size_t size = 0;
    const auto answer = ReadUniversal(u"http://localhost/x", size, u"a=b");
    SetWebReader(nullptr);
    ASSERT_NE(answer, nullptr);
    EXPECT_EQ(std::string(answer.get(), size), "yes");
    EXPECT_EQ(asked, u"http://localhost/x < a=b");
}

TEST(Universal, AWebReaderThatThrowsIsAFailedRead) {
    SetWebReader([](std::u16string_view, std::size_t& size, std::u16string_view) -> std::unique_ptr<char[]> {
        size = 9;
        throw 1;
    });
    EXPECT_EQ(Read(u"https://localhost/"), "(nothing)");
    SetWebReader(nullptr);
}
