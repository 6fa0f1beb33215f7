#include "tests/artwork/decoded.h"
#include "tests/support/scratch_home.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <filesystem>
#include <fstream>
#include <gtest/gtest.h>
#include <string>
#include <vector>

using namespace KAV::Artwork;

namespace {

const std::filesystem::path Resources = KAV_RESOURCES;

int StrongestAlphaAtEdges(const SCell& cell) {
    int strongest = 0;
    for (int u = 0; u < cell.width; ++u)
        strongest = std::max({strongest, int{cell.At(u, 0)[3]}, int{cell.At(u, cell.height - 1)[3]}});
    for (int v = 0; v < cell.height; ++v)
        strongest = std::max({strongest, int{cell.At(0, v)[3]}, int{cell.At(cell.width - 1, v)[3]}});
    return strongest;
}

/// The pattern of light and dark edges, which a change of brightness doesn't affect: where neighbours differ
/// by more than a tenth of the cell's own range.
std::vector<bool> EdgesOf(const SCell& cell) {
    double low = 255;
    double high = 0;
    for (int v = 0; v < cell.height; ++v) {
        for (int u = 0; u < cell.width; ++u) {
            low = std::min(low, BrightnessAt(cell, u, v));
            high = std::max(high, BrightnessAt(cell, u, v));
        }
    }
    const double step = (high - low) / 10;
    std::vector<bool> edges;
    for (int v = 0; v + 1 < cell.height; ++v) {
        for (int u = 0; u + 1 < cell.width; ++u) {
            const double here = BrightnessAt(cell, u, v);
            edges.push_back(std::abs(BrightnessAt(cell, u + 1, v) - here) > step ||
                            std::abs(BrightnessAt(cell, u, v + 1) - here) > step);
        }
    }
    return edges;
}

class Picture : public testing::TestWithParam<SSprite> {};

/// Two frames that a user has to be able to distinguish.
struct SStates {
    const char* sprite;
    int one;
    int other;
};

void PrintTo(const SStates& states, std::ostream* out) {
    *out << states.sprite << ' ' << states.one << ' ' << states.other;
}

class States : public testing::TestWithParam<SStates> {};

} // namespace

TEST_P(Picture, HasItsSizeAndAGridThatDividesIt) {
    const SSprite& sprite = GetParam();
    const SPixels pixels = ReadPng(FileOf(sprite));
    EXPECT_EQ(pixels.width, sprite.width);
    EXPECT_EQ(pixels.height, sprite.height);
    EXPECT_EQ(sprite.width % sprite.columns, 0);
    EXPECT_EQ(sprite.height % sprite.Rows(), 0);
}

TEST_P(Picture, IsSmallerThanTwoMegabytes) {
    EXPECT_LT(std::filesystem::file_size(FileOf(GetParam())), 2'000'000u);
}

TEST_P(Picture, ShowsSomethingInEveryFrame) {
    const SSprite& sprite = GetParam();
    const SPixels pixels = ReadPng(FileOf(sprite));
    for (int index = 0; index < sprite.frames; ++index) {
        const SCell cell = CellOf(pixels, sprite, index);
        int visible = 0;
        for (int v = 0; v < cell.height; ++v) {
            for (int u = 0; u < cell.width; ++u) visible += cell.At(u, v)[3] > 200;
        }
        // The thinnest of them, three strokes in a corner, covers a twelfth.
        EXPECT_GT(visible, cell.width * cell.height / 40) << "frame " << index;
    }
}

TEST_P(Picture, LeavesTheRimOfItsFramesClearOrFillsIt) {
    const SSprite& sprite = GetParam();
    const SPixels pixels = ReadPng(FileOf(sprite));
    for (int index = 0; index < sprite.frames; ++index) {
        const SCell cell = CellOf(pixels, sprite, index);
        if (sprite.mayTouchEdges) {
            EXPECT_EQ(cell.At(0, 0)[3], 255);
        } else {
            EXPECT_EQ(StrongestAlphaAtEdges(cell), 0) << "frame " << index;
        }
    }
}

TEST_P(Picture, IsBlackWhereItIsClear) {
    const SPixels pixels = ReadPng(FileOf(GetParam()));
    for (std::size_t i = 0; i < pixels.rgba.size(); i += 4) {
        if (pixels.rgba[i + 3] != 0) continue;
        ASSERT_EQ(pixels.rgba[i] + pixels.rgba[i + 1] + pixels.rgba[i + 2], 0) << "pixel " << i / 4;
    }
}

TEST_P(Picture, IsEmptyAfterItsLastFrame) {
    const SSprite& sprite = GetParam();
    const SPixels pixels = ReadPng(FileOf(sprite));
    for (int index = sprite.frames; index < sprite.columns * sprite.Rows(); ++index) {
        const SCell cell = CellOf(pixels, sprite, index);
        for (int v = 0; v < cell.height; ++v) {
            for (int u = 0; u < cell.width; ++u) ASSERT_EQ(cell.At(u, v)[3], 0);
        }
    }
}

INSTANTIATE_TEST_SUITE_P(All, Picture, testing::ValuesIn(Sprites.begin(), Sprites.end()),
    [](const auto& one) { return std::string(one.param.stem); });

TEST(ReadPng, RefusesWhatIsNotAPictureOrOnlyHalfOfOne) {
    const auto folder = KAV::Tests::ScratchFolder();
    const auto whole = FileOf(SpriteOf("hint"));
    std::filesystem::copy_file(whole, folder / "half.png");
    std::filesystem::resize_file(folder / "half.png", std::filesystem::file_size(whole) / 2);
    std::ofstream(folder / "text.png", std::ios::binary) << "no picture";
    EXPECT_THROW(ReadPng(folder / "half.png"), std::runtime_error);
    EXPECT_THROW(ReadPng(folder / "text.png"), std::runtime_error);
    EXPECT_THROW(ReadPng(folder / "absent.png"), std::runtime_error);
}

TEST(WritePng, KeepsEveryPixel) {
    SPixels pixels{3, 2, {}};
    for (int i = 0; i < 24; ++i) pixels.rgba.push_back(static_cast<std::uint8_t>(i * 11));
    const auto file = KAV::Tests::ScratchFolder() / "pixels.png";
    WritePng(file, pixels);
    const SPixels read = ReadPng(file);
    EXPECT_EQ(read.width, 3);
    EXPECT_EQ(read.height, 2);
    EXPECT_EQ(read.rgba, pixels.rgba);
}

TEST(Pictures, AreThirtyFiveOfLessThanTenMegabytesTogether) {
    std::uintmax_t size = 0;
    for (const auto& sprite : Sprites) size += std::filesystem::file_size(FileOf(sprite));
    EXPECT_EQ(Sprites.size(), 35u);
    EXPECT_LT(size, 10'000'000u);
}

TEST(Pictures, AreAllInTheManifestAndTheFolderHoldsNothingElse) {
    std::vector<std::string> expected;
    for (const auto& sprite : Sprites)
        expected.push_back(std::string(sprite.stem) + ".png " + ResourceNameOf(sprite));
    std::vector<std::string> found;
    std::ifstream manifest(Resources / "manifest.txt");
    for (std::string line; std::getline(manifest, line);) {
        if (!line.starts_with("#")) found.push_back(line);
    }
    EXPECT_EQ(found, expected);
    std::size_t pictures = 0;
    std::vector<std::string> others;
    for (const auto& file : std::filesystem::directory_iterator(Resources)) {
        if (file.path().extension() == ".png") {
            ++pictures;
        } else {
            others.push_back(file.path().filename().string());
        }
    }
    std::sort(others.begin(), others.end());
    EXPECT_EQ(pictures, expected.size());
    EXPECT_EQ(others, (std::vector<std::string>{"CMakeLists.txt", "library.manifest", "manifest.txt",
                          "resources.S.in", "resources.rc.in"}));
}

/// The grid in a resource's name, "((FRAMESxCOLUMNS))" or "((FRAMES))", is that of the layout.
TEST(Pictures, AreNamedAfterTheirGrid) {
    for (const auto& sprite : Sprites) {
        std::string grid;
        if (sprite.columns > 1)
            grid = "((" + std::to_string(sprite.frames) + "X" + std::to_string(sprite.columns) + "))";
        else if (sprite.frames > 1)
            grid = "((" + std::to_string(sprite.frames) + "))";
        std::string stem(sprite.stem);
        std::transform(stem.begin(), stem.end(), stem.begin(),
            [](char c) { return static_cast<char>(std::toupper(c)); });
        EXPECT_EQ(ResourceNameOf(sprite), stem + grid + "##SZ-1X-1PXSB0.PNG");
    }
}

TEST_P(States, DifferInLuminanceAndShape) {
    const auto& [name, one, other] = GetParam();
    const SSprite& sprite = SpriteOf(name);
    const SPixels pixels = ReadPng(FileOf(sprite));
    const SCell a = CellOf(pixels, sprite, one);
    const SCell b = CellOf(pixels, sprite, other);
    double difference = 0;
    for (int v = 0; v < a.height; ++v) {
        for (int u = 0; u < a.width; ++u)
            difference += std::abs(BrightnessAt(a, u, v) - BrightnessAt(b, u, v));
    }
    EXPECT_GT(difference / (a.width * a.height), 2.5) << "of 255, on average";

    const auto edgesA = EdgesOf(a);
    const auto edgesB = EdgesOf(b);
    int either = 0;
    int differ = 0;
    for (std::size_t i = 0; i < edgesA.size(); ++i) {
        either += edgesA[i] || edgesB[i];
        differ += edgesA[i] != edgesB[i];
    }
    EXPECT_GT(differ, either / 5) << "of " << either << " edges";
}

INSTANTIATE_TEST_SUITE_P(All, States,
    testing::Values(SStates{"buttonar", 0, 1}, SStates{"buttonin", 0, 1}, SStates{"hq", 0, 1},
        SStates{"lamp_2", 0, 1}, SStates{"switchgpu2", 0, 1}, SStates{"switchgpu2", 1, 2},
        SStates{"switchgpu2", 0, 2}, SStates{"switchsimd", 0, 1}, SStates{"toolbtna", 0, 1},
        SStates{"toolbtna", 0, 2}, SStates{"toolbtna", 1, 3}, SStates{"toolbtna", 2, 3},
        SStates{"toolbtnabcopy", 0, 1}, SStates{"toolbtnabout", 0, 1}, SStates{"toolbtncopy", 0, 1},
        SStates{"toolbtndown", 0, 1}, SStates{"toolbtnedit", 0, 1}, SStates{"toolbtnload", 0, 1},
        SStates{"toolbtnmacro", 0, 1}, SStates{"toolbtnnext", 0, 1}, SStates{"toolbtnprev", 0, 1},
        SStates{"toolbtnredo", 0, 1}, SStates{"toolbtnredo", 0, 2}, SStates{"toolbtnredo", 1, 2},
        SStates{"toolbtnrtg", 0, 1}, SStates{"toolbtnsave", 0, 1}, SStates{"toolbtnundo", 0, 1},
        SStates{"toolbtnundo", 0, 2}, SStates{"toolbtnundo", 1, 2}),
    [](const auto& one) {
        return std::string(one.param.sprite) + "_" + std::to_string(one.param.one) + "_" +
               std::to_string(one.param.other);
    });
