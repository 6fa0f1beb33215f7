#include "panel/sprites.h"

#include <array>
#include <filesystem>
#include <fstream>
#include <gtest/gtest.h>
#include <set>
#include <stdexcept>
#include <string>

using namespace KAV::Panel;

namespace {

struct SSize {
    int width = 0;
    int height = 0;
};

/// The size in a PNG file's first chunk: two words of four bytes, highest byte first, from byte 16 on.
SSize SizeInFile(const std::filesystem::path& file) {
    std::array<unsigned char, 24> head{};
    std::ifstream stream(file, std::ios::binary);
    stream.read(reinterpret_cast<char*>(head.data()), head.size());
    if (!stream) return {};
    const auto word = [&head](std::size_t at) {
        return head[at] << 24 | head[at + 1] << 16 | head[at + 2] << 8 | head[at + 3];
    };
    return {word(16), word(20)};
}

} // namespace

TEST(Sprites, FillTheirStoredPicturesWithTheirGrid) {
    for (const auto& sprite : Sprites) {
        SCOPED_TRACE(sprite.stem);
        const auto size =
            SizeInFile(std::filesystem::path(KAV_RESOURCES) / (std::string(sprite.stem) + ".png"));
        EXPECT_EQ(sprite.columns * sprite.FrameWidth(), size.width);
        EXPECT_EQ(sprite.Rows() * sprite.FrameHeight(), size.height);
        EXPECT_EQ(sprite.width, size.width);
        EXPECT_EQ(sprite.height, size.height);
        EXPECT_LE(sprite.columns, sprite.frames);
        EXPECT_LT((sprite.Rows() - 1) * sprite.columns, sprite.frames) << "no row is empty";
    }
}

TEST(Sprites, CarryTheirGridInTheNameThatWidgetsAskFor) {
    for (const auto& sprite : Sprites) {
        std::string grid;
        if (sprite.frames > 1) {
            grid = "((" + std::to_string(sprite.frames);
            if (sprite.columns > 1) grid += "x" + std::to_string(sprite.columns);
            grid += "))";
        }
        EXPECT_TRUE(sprite.image.ends_with(grid + "##Sz-1x-1pxSb0.png")) << sprite.image;
        EXPECT_EQ(sprite.image.size(), sprite.stem.size() + grid.size() + 18) << sprite.image;
    }
}

TEST(Sprites, HaveNamesOfTheirOwn) {
    std::set<std::string_view> stems;
    std::set<std::string> resources;
    for (const auto& sprite : Sprites) {
        EXPECT_TRUE(stems.insert(sprite.stem).second) << sprite.stem;
        EXPECT_TRUE(resources.insert(ResourceNameOf(sprite)).second) << sprite.image;
        EXPECT_EQ(&SpriteOf(sprite.stem), &sprite);
    }
    EXPECT_EQ(stems.size(), 35u);
    EXPECT_THROW(SpriteOf("Fader"), std::out_of_range);
}

TEST(Sprites, AreCarriedByTheLibraryInUpperCase) {
    EXPECT_EQ(ResourceNameOf(SpriteOf("fader")), "FADER((63X20))##SZ-1X-1PXSB0.PNG");
    EXPECT_EQ(ResourceNameOf(SpriteOf("lamp_2")), "LAMP_2((2))##SZ-1X-1PXSB0.PNG");
}
