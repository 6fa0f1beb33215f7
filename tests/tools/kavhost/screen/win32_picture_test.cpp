#include "pixels/png_reader.h"
#include "tools/kavhost/screen/picture.h"

#include <gtest/gtest.h>
#include <sstream>

using namespace KAV;
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
    const auto picture = Colourful(37, 11);
    std::ostringstream stream;
    WritePng(picture, stream);
    const auto bytes = stream.str();
    const auto read = Pixels::ReadPng({reinterpret_cast<const std::uint8_t*>(bytes.data()), bytes.size()});
    ASSERT_TRUE(read);
    ASSERT_EQ(read->width, 37);
    ASSERT_EQ(read->height, 11);
    for (std::int32_t y = 0; y < 11; ++y) {
        for (std::int32_t x = 0; x < 37; ++x) {
            const auto* const pixel =
                read->bytes.data() + y * read->stride + 4 * x; // blue, green, red, alpha
            const auto colour = static_cast<std::uint32_t>(pixel[2] << 16 | pixel[1] << 8 | pixel[0]);
            ASSERT_EQ(colour, picture.pixels[static_cast<std::size_t>(y * 37 + x)]) << x << "," << y;
            ASSERT_EQ(pixel[3], 0xFF);
        }
    }
}

TEST(Picture, LeavesAStreamThatFailsBad) {
    std::ostringstream stream;
    stream.setstate(std::ios::badbit);
    WritePng(Colourful(3, 3), stream); // whoever owns the stream says why
    EXPECT_FALSE(stream.good());
}
