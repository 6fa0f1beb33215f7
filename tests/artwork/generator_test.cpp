#include "artwork/icon.h"
#include "artwork/installer.h"
#include "artwork/pictures.h"
#include "artwork/windows_picture.h"
#include "tests/artwork/decoded.h"
#include "tests/support/file_text.h"

#include <cstdlib>
#include <filesystem>
#include <gtest/gtest.h>
#include <string>

using namespace KAV::Artwork;

namespace {

/// The knobs and the body take most of the time; the short run leaves them out.
bool IsQuick(const SSprite& sprite) {
    return sprite.width * sprite.height < 200'000;
}

/// The largest difference of one channel, and where it is. Invisible differences don't count: the colour of a
/// pixel without alpha.
int LargestDifference(const SPixels& a, const SPixels& b) {
    int largest = 0;
    for (std::size_t i = 0; i < a.rgba.size(); ++i)
        largest = std::max(largest, std::abs(static_cast<int>(a.rgba[i]) - static_cast<int>(b.rgba[i])));
    return largest;
}

/// Equal but for rounding: the files contain pixels as they are.
void ExpectCommitted(const std::string& drawn, const std::string& name) {
    const std::string committed = KAV::Tests::ReadText(std::filesystem::path(KAV_INSTALLER) / name);
    ASSERT_EQ(drawn.size(), committed.size());
    int largest = 0;
    for (std::size_t i = 0; i < drawn.size(); ++i)
        largest = std::max(largest,
            std::abs(static_cast<unsigned char>(drawn[i]) - static_cast<unsigned char>(committed[i])));
    EXPECT_LE(largest, 1);
}

class GeneratedPicture : public testing::TestWithParam<SSprite> {};

} // namespace

TEST_P(GeneratedPicture, EqualsTheCommittedOne) {
    const SSprite& sprite = GetParam();
    if (!IsQuick(sprite) && std::getenv("KAV_LONG") == nullptr) {
        SUCCEED() << "drawn by the long run";
        return;
    }
    const SPixels committed = ReadPng(FileOf(sprite));
    const SPixels drawn = Paint(sprite);
    ASSERT_EQ(drawn.width, committed.width);
    ASSERT_EQ(drawn.height, committed.height);
    EXPECT_LE(LargestDifference(drawn, committed), 1);
}

TEST(Icon, EqualsTheCommittedOnesInEverySize) {
    for (const int side : IconSides) {
        const SPixels committed = ReadPng(KAV_ICONS "/" + std::to_string(side) + ".png");
        const SPixels drawn = DrawIcon(side).Quantised();
        ASSERT_EQ(committed.width, side);
        ASSERT_EQ(committed.height, side);
        EXPECT_LE(LargestDifference(drawn, committed), 1) << side;
    }
}

INSTANTIATE_TEST_SUITE_P(All, GeneratedPicture, testing::ValuesIn(Sprites.begin(), Sprites.end()),
    [](const auto& one) { return std::string(one.param.stem); });

TEST(InstallerPictures, EqualTheCommittedOnes) {
    ExpectCommitted(IcoOf(PaintInstallerIcon()), "installer.ico");
    ExpectCommitted(BmpOf(PaintInstallerHeader()), "header.bmp");
    ExpectCommitted(BmpOf(PaintInstallerSide()), "side.bmp");
}
