#include "tests/tree/image.h"

#include <algorithm>
#include <gtest/gtest.h>
#include <stdexcept>

using namespace KAV::Tests;

namespace {

using Lines = std::vector<std::string>;

const std::filesystem::path Stray = KAV_STRAY_PATH;

bool Contains(const Lines& lines, const std::string& line) {
    return std::find(lines.begin(), lines.end(), line) != lines.end();
}

SImage GoodImage(SImage::EFormat format) {
    SImage image;
    image.format = format;
    image.exports = {"MAIN", "VSTPluginMain", "main"};
    image.bindsToItself = image.staysLoaded = format == SImage::EFormat::Elf;
    return image;
}

} // namespace

TEST(ReadImage, FindsWhatALibraryExportsAndLoads) {
    const auto image = ReadImage(Stray);
    EXPECT_TRUE(Contains(image.exports, "VSTPluginMain"));
    EXPECT_TRUE(Contains(image.exports, "Stray"));
    EXPECT_FALSE(Contains(image.exports, "main"));
    if (image.format == SImage::EFormat::Elf) {
        EXPECT_TRUE(Contains(image.libraries, "libc.so.6"));
        EXPECT_TRUE(Contains(image.libraries, "libstdc++.so.6"));
        EXPECT_FALSE(image.bindsToItself);
        EXPECT_FALSE(image.staysLoaded);
    } else {
        EXPECT_EQ(image.exports, (Lines{"Stray", "VSTPluginMain"}));
        EXPECT_TRUE(Contains(image.libraries, "KERNEL32.dll"));
        EXPECT_TRUE(Contains(image.functions, "KERNEL32.dll VirtualProtect"))
            << "of the compiler's own start";
        EXPECT_EQ(image.oldestWindows, 602);
    }
}

TEST(ReadImage, RefusesAFileCutShort) {
    const auto file = ReadBytes(Stray);
    const auto whole = ReadImage(file);
    std::size_t refused = 0;
    for (std::size_t size = 0; size < std::min<std::size_t>(file.size(), 4096); ++size) {
        const std::vector<std::byte> part(file.begin(), file.begin() + static_cast<std::ptrdiff_t>(size));
        try {
            EXPECT_EQ(ReadImage(part).exports, whole.exports);
        } catch (const std::runtime_error&) {
            ++refused;
        }
    }
    EXPECT_GT(refused, 0u);
}

TEST(ReadImage, RefusesWhatIsNotALibrary) {
    EXPECT_THROW(ReadImage(std::vector<std::byte>(64)), std::runtime_error);
    EXPECT_THROW(ReadImage(Stray.parent_path() / "absent"), std::runtime_error);
}

TEST(Complaints, NameWhatIsWrongWithAStrayLibrary) {
    const auto image = ReadImage(Stray);
    const auto complaints = Complaints(image);
    EXPECT_TRUE(Contains(complaints, "exports Stray"));
    EXPECT_TRUE(Contains(complaints, "does not export MAIN"));
    EXPECT_TRUE(Contains(complaints, "does not export main"));
    EXPECT_FALSE(Contains(complaints, "does not export VSTPluginMain"));
    if (image.format == SImage::EFormat::Elf) {
        EXPECT_TRUE(Contains(complaints, "loads libstdc++.so.6"));
        EXPECT_FALSE(Contains(complaints, "loads libc.so.6"));
        EXPECT_TRUE(Contains(complaints, "takes its own names from the process"));
        EXPECT_TRUE(Contains(complaints, "can be unloaded"));
    } else {
        EXPECT_TRUE(Contains(complaints, "is for Windows after 7"));
    }
}

TEST(Complaints, AreNoneAboutThreeEntriesAndSystemLibraries) {
    auto elf = GoodImage(SImage::EFormat::Elf);
    elf.libraries = {"libm.so.6", "libc.so.6"};
    EXPECT_EQ(Complaints(elf), Lines{});
    auto pe = GoodImage(SImage::EFormat::Pe);
    pe.libraries = {"KERNEL32.dll", "msvcrt.dll"};
    EXPECT_EQ(Complaints(pe), Lines{});
}

TEST(Complaints, NameARunTimeLibraryOfTheCompiler) {
    auto image = GoodImage(SImage::EFormat::Pe);
    image.libraries = {"KERNEL32.dll", "libstdc++-6.dll"};
    EXPECT_EQ(Complaints(image), Lines{"loads libstdc++-6.dll"});
}

TEST(Complaints, NameWhatWindows7DoesNotHave) {
    auto image = GoodImage(SImage::EFormat::Pe);
    image.oldestWindows = 601;
    image.functions = {"KERNEL32.dll Sleep", "USER32.dll GetDpiForWindow", "msvcrt.dll malloc",
        "KERNEL32.dll (by number)", "GDI32.dll Sleep"};
    EXPECT_EQ(Complaints(image), (Lines{"takes USER32.dll GetDpiForWindow", "takes KERNEL32.dll (by number)",
                                     "takes GDI32.dll Sleep"}));
    image.functions.clear();
    image.oldestWindows = 602;
    EXPECT_EQ(Complaints(image), Lines{"is for Windows after 7"});
}
