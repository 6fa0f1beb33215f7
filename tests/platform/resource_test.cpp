#include "platform/resource.h"

#include "tests/support/file_text.h"

#include <cstdint>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <gtest/gtest.h>
#include <string>
#include <utility>
#include <vector>

using namespace KAV;

namespace {

/// Memory of the mapping that these bytes lie in.
std::size_t ResidentAround(std::span<const std::uint8_t> bytes) {
    const auto place = reinterpret_cast<std::uintptr_t>(bytes.data());
    std::ifstream mappings("/proc/self/smaps");
    bool isIt = false;
    for (std::string line; std::getline(mappings, line);) {
        std::uintptr_t begin = 0;
        std::uintptr_t end = 0;
        std::size_t kilobytes = 0;
        if (std::sscanf(line.c_str(), "%zx-%zx ", &begin, &end) == 2) isIt = begin <= place && place < end;
        if (isIt && std::sscanf(line.c_str(), "Rss: %zu", &kilobytes) == 1) return kilobytes * 1024;
    }
    ADD_FAILURE() << "no mapping";
    return 0;
}

std::string Text(std::span<const std::uint8_t> bytes) {
    return {bytes.begin(), bytes.end()};
}

/// File and stored name, as the manifest pairs them.
std::vector<std::pair<std::string, std::string>> Manifest() {
    std::vector<std::pair<std::string, std::string>> rows;
    std::ifstream manifest(std::filesystem::path(KAV_RESOURCES) / "manifest.txt");
    for (std::string line; std::getline(manifest, line);) {
        if (line.starts_with('#')) continue;
        const auto blank = line.find(' ');
        rows.emplace_back(line.substr(0, blank), line.substr(blank + 1));
    }
    return rows;
}

std::string Lower(std::string text) {
    for (char& c : text) c = static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
    return text;
}

} // namespace

TEST(Resource, HoldsEveryPictureOfTheManifestByteForByte) {
    const auto rows = Manifest();
    ASSERT_EQ(rows.size(), 35u);
    for (const auto& [file, name] : rows) {
        const auto stored = Tests::ReadText(std::filesystem::path(KAV_RESOURCES) / file);
        ASSERT_FALSE(stored.empty()) << file;
        EXPECT_TRUE(Text(Platform::Resource(name)) == stored) << name;
    }
}

TEST(Resource, LeavesMemoryUntilItIsReadAgain) {
    const auto font = Platform::Resource("DEJAVUSANSCONDENSED.TTF");
    const auto before = Text(font);
    const auto resident = ResidentAround(font);
    const std::size_t most = 16 * 4096; // what this test itself reads meanwhile, and the pages at the ends
    const auto leaves = [&] { return resident - ResidentAround(font) + most >= font.size(); };
    Platform::RestResource(font.subspan(0, 1)); // no whole page
    EXPECT_FALSE(leaves());
    Platform::RestResource(font);
    EXPECT_TRUE(leaves());
    EXPECT_TRUE(Text(font) == before);
    EXPECT_FALSE(leaves());
    Platform::RestResources();
    EXPECT_TRUE(leaves());
    EXPECT_TRUE(Text(font) == before);
    Platform::RestResource({});
}

TEST(Resource, IgnoresTheCaseOfLetters) {
    for (const auto& [file, name] : Manifest()) {
        ASSERT_FALSE(Platform::Resource(name).empty()) << name;
        EXPECT_EQ(Platform::Resource(Lower(name)).data(), Platform::Resource(name).data()) << name;
    }
    EXPECT_EQ(Platform::Resource("Hint##Sz-1x-1pxSb0.png").data(),
        Platform::Resource("HINT##SZ-1X-1PXSB0.PNG").data());
}

TEST(Resource, HoldsTheTypefaceInFourStyles) {
    for (const char* const name : {"DEJAVUSANSCONDENSED.TTF", "DEJAVUSANSCONDENSED-BOLD.TTF",
             "DEJAVUSANSCONDENSED-OBLIQUE.TTF", "DEJAVUSANSCONDENSED-BOLDOBLIQUE.TTF"}) {
        const auto font = Platform::Resource(name);
        ASSERT_GT(font.size(), 100000u) << name;
        EXPECT_EQ(Text(font.first(4)), std::string("\0\1\0\0", 4)) << name;
    }
    EXPECT_NE(Platform::Resource("DEJAVUSANSCONDENSED.TTF").data(),
        Platform::Resource("DEJAVUSANSCONDENSED-BOLD.TTF").data());
}

TEST(Resource, KnowsWholeNamesOnly) {
    EXPECT_TRUE(Platform::Resource("").empty());
    EXPECT_TRUE(Platform::Resource("HINT").empty());
    EXPECT_TRUE(Platform::Resource("HINT##SZ-1X-1PXSB0.PN").empty());
    EXPECT_TRUE(Platform::Resource("HINT##SZ-1X-1PXSB0.PNG ").empty());
    EXPECT_TRUE(Platform::Resource("hint.png").empty());
}
