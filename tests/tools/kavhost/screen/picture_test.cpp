#include "tools/kavhost/screen/picture.h"

#include "tools/kavhost/base/errors.h"

#include <gtest/gtest.h>
#include <png.h>
#include <sstream>

using namespace KAV::Host;

namespace {

SPicture Colourful(std::int32_t width, std::int32_t height) {
    SPicture picture{width, height, {}};
    for (std::int32_t i = 0; i < width * height; ++i)
        picture.pixels.push_back(static_cast<std::uint32_t>(i * 0x010305 + 0x204060) & 0xFFFFFF);
    return picture;
}

} // namespace

TEST(Picture, IsPlainWhenAllItsPixelsAreTheSame) {
    SPicture picture{3, 2, std::vector<std::uint32_t>(6, 0x123456)};
    EXPECT_TRUE(IsPlain(picture));
    picture.pixels.back() = 0x123457;
    EXPECT_FALSE(IsPlain(picture));
}

TEST(Picture, IsTheSameInAPng) {
    const auto picture = Colourful(37, 11); // rows that no alignment fits
    std::ostringstream stream;
    WritePng(picture, stream);
    const auto bytes = stream.str();
    png_image image{};
    image.version = PNG_IMAGE_VERSION;
    ASSERT_NE(png_image_begin_read_from_memory(&image, bytes.data(), bytes.size()), 0);
    image.format = PNG_FORMAT_RGB;
    ASSERT_EQ(image.width, 37u);
    ASSERT_EQ(image.height, 11u);
    std::vector<unsigned char> colours(PNG_IMAGE_SIZE(image));
    ASSERT_NE(png_image_finish_read(&image, nullptr, colours.data(), 0, nullptr), 0);
    for (std::size_t i = 0; i < picture.pixels.size(); ++i) {
        const auto pixel =
            static_cast<std::uint32_t>(colours[3 * i] << 16 | colours[3 * i + 1] << 8 | colours[3 * i + 2]);
        ASSERT_EQ(pixel, picture.pixels[i]) << i;
    }
}

TEST(Picture, LeavesAStreamThatFailsBad) {
    std::ostringstream stream;
    stream.setstate(std::ios::badbit);
    WritePng(Colourful(3, 3), stream); // whoever owns the stream says why
    EXPECT_FALSE(stream.good());
}
