#include "pixels/png_reader.h"

#include "panel/sprites.h"
#include "platform/png/png_library.h"
#include "platform/resource.h"
#include "tests/support/together.h"

#include <algorithm>
#include <array>
#include <gtest/gtest.h>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

using namespace KAV;
using Pixels::PngSize;
using Pixels::ReadPng;
using Pixels::SPngSize;

namespace {

using Bytes = std::vector<std::uint8_t>;

/// How a file is to be packed.
struct SForm {
    int width = 7;
    int height = 5;
    int colourType = PNG_COLOR_TYPE_RGB_ALPHA;
    int depth = 8;
    int interlace = PNG_INTERLACE_NONE;
};

[[noreturn]] void Complain(png_structp, png_const_charp message) {
    throw std::runtime_error(message);
}

void Append(png_structp png, png_bytep data, png_size_t size) {
    auto& file = *static_cast<Bytes*>(png_get_io_ptr(png));
    file.insert(file.end(), data, data + size);
}

/// The pixels of a file of red, green, blue and alpha, by the library's older interface.
Bytes Unpacked(std::span<const std::uint8_t> file) {
    png_structp png = png_create_read_struct(PNG_LIBPNG_VER_STRING, nullptr, Complain, nullptr);
    png_infop info = png_create_info_struct(png);
    png_set_read_fn(png, &file, [](png_structp self, png_bytep data, png_size_t size) {
        auto& left = *static_cast<std::span<const std::uint8_t>*>(png_get_io_ptr(self));
        if (size > left.size()) png_error(self, "cut");
        std::copy_n(left.begin(), size, data);
        left = left.subspan(size);
    });
    png_read_png(png, info, PNG_TRANSFORM_IDENTITY, nullptr);
    Bytes pixels;
    if (png_get_color_type(png, info) == PNG_COLOR_TYPE_RGB_ALPHA && png_get_bit_depth(png, info) == 8) {
        png_bytepp rows = png_get_rows(png, info);
        for (png_uint_32 y = 0; y < png_get_image_height(png, info); ++y)
            pixels.insert(pixels.end(), rows[y], rows[y] + png_get_rowbytes(png, info));
    }
    png_destroy_read_struct(&png, &info, nullptr);
    return pixels;
}

constexpr std::array<png_color, 4> Palette{
    png_color{10, 20, 30}, {40, 50, 60}, {70, 80, 90}, {200, 210, 220}};

/// A file with these rows, each packed as the form has it.
Bytes Packed(const SForm& form, std::vector<Bytes> rows) {
    Bytes file;
    png_structp png = png_create_write_struct(PNG_LIBPNG_VER_STRING, nullptr, Complain, nullptr);
    png_infop info = png_create_info_struct(png);
    png_set_write_fn(png, &file, Append, nullptr);
    png_set_IHDR(png, info, static_cast<png_uint_32>(form.width), static_cast<png_uint_32>(form.height),
        form.depth, form.colourType, form.interlace, PNG_COMPRESSION_TYPE_DEFAULT, PNG_FILTER_TYPE_DEFAULT);
    if (form.colourType == PNG_COLOR_TYPE_PALETTE) {
        const std::array<png_byte, 2> alphas{0, 99};
        png_set_PLTE(png, info, Palette.data(), Palette.size());
        png_set_tRNS(png, info, alphas.data(), alphas.size(), nullptr);
    }
    png_write_info(png, info);
    std::vector<png_bytep> places;
    for (auto& row : rows) places.push_back(row.data());
    png_write_image(png, places.data());
    png_write_end(png, info);
    png_destroy_write_struct(&png, &info);
    return file;
}

/// Rows of bytes that all differ a little.
std::vector<Bytes> Rows(const SForm& form, int rowBytes) {
    std::vector<Bytes> rows(static_cast<std::size_t>(form.height), Bytes(static_cast<std::size_t>(rowBytes)));
    unsigned value = 3;
    for (auto& row : rows) {
        for (auto& byte : row) byte = static_cast<std::uint8_t>(value += 41);
    }
    return rows;
}

std::array<int, 4> Pixel(const Pixels::SBitmap& bitmap, int x, int y) {
    const auto* const pixel = bitmap.bytes.data() + y * bitmap.stride + x * 4;
    return {pixel[0], pixel[1], pixel[2], pixel[3]};
}

/// Puts another number, and the checksum that belongs to it, into the head of a file.
void SetHead(Bytes& file, std::size_t place, std::uint32_t value) {
    for (std::size_t i = 0; i < 4; ++i) file[place + i] = static_cast<std::uint8_t>(value >> (24 - 8 * i));
    std::uint32_t sum = 0xFFFFFFFFU; // CRC-32 of the chunk's name and content
    for (std::size_t i = 12; i < 29; ++i) {
        sum ^= file[i];
        for (int bit = 0; bit < 8; ++bit) sum = (sum >> 1) ^ (0xEDB88320U & (0U - (sum & 1U)));
    }
    for (std::size_t i = 0; i < 4; ++i) file[29 + i] = static_cast<std::uint8_t>(~sum >> (24 - 8 * i));
}

constexpr std::size_t WidthPlace = 16;
constexpr std::size_t HeightPlace = 20;

} // namespace

TEST(PngReader, DecodesEveryStoredPictureAsTheReferenceDoes) {
    for (const auto& sprite : Panel::Sprites) {
        SCOPED_TRACE(sprite.stem);
        const auto file = Platform::Resource(Panel::ResourceNameOf(sprite));
        const auto reference = Unpacked(file);
        EXPECT_EQ(PngSize(file), (SPngSize{sprite.width, sprite.height}));
        const auto bitmap = ReadPng(file);
        ASSERT_TRUE(bitmap);
        ASSERT_EQ(bitmap->width, sprite.width);
        ASSERT_EQ(bitmap->height, sprite.height);
        ASSERT_EQ(bitmap->stride, 4 * bitmap->width);
        EXPECT_EQ(bitmap->alpha, Pixels::EAlpha::Straight);
        EXPECT_EQ(bitmap->sheet, nullptr);
        ASSERT_EQ(bitmap->bytes.size(), reference.size());
        std::size_t wrong = 0;
        for (std::size_t i = 0; i < reference.size(); i += 4) {
            const auto* const is = bitmap->bytes.data() + i;
            const auto* const right = reference.data() + i;
            wrong += static_cast<std::size_t>(
                is[0] != right[2] || is[1] != right[1] || is[2] != right[0] || is[3] != right[3]);
        }
        EXPECT_EQ(wrong, 0u);
    }
}

TEST(PngReader, DecodesColoursWithAndWithoutAlpha) {
    for (const int interlace : {PNG_INTERLACE_NONE, PNG_INTERLACE_ADAM7}) {
        for (const bool alpha : {false, true}) {
            const SForm form{7, 5, alpha ? PNG_COLOR_TYPE_RGB_ALPHA : PNG_COLOR_TYPE_RGB, 8, interlace};
            const std::size_t channels = alpha ? 4 : 3;
            const auto rows = Rows(form, 7 * static_cast<int>(channels));
            const auto bitmap = ReadPng(Packed(form, rows));
            ASSERT_TRUE(bitmap);
            for (int y = 0; y < 5; ++y) {
                for (int x = 0; x < 7; ++x) {
                    const auto* const rgb =
                        rows[static_cast<std::size_t>(y)].data() + channels * static_cast<std::size_t>(x);
                    EXPECT_EQ(Pixel(*bitmap, x, y),
                        (std::array<int, 4>{rgb[2], rgb[1], rgb[0], alpha ? rgb[3] : 255}));
                }
            }
        }
    }
}

TEST(PngReader, DecodesGreyPalettesAndSixteenBits) {
    const SForm grey{7, 5, PNG_COLOR_TYPE_GRAY};
    const auto greyRows = Rows(grey, 7);
    const auto ofGrey = ReadPng(Packed(grey, greyRows));
    ASSERT_TRUE(ofGrey);
    const int value = greyRows[2][3];
    EXPECT_EQ(Pixel(*ofGrey, 3, 2), (std::array<int, 4>{value, value, value, 255}));

    const SForm palette{4, 1, PNG_COLOR_TYPE_PALETTE, 2};
    const auto ofPalette = ReadPng(Packed(palette, {{0b00011011}}));
    ASSERT_TRUE(ofPalette);
    EXPECT_EQ(Pixel(*ofPalette, 0, 0)[3], 0);
    EXPECT_EQ(Pixel(*ofPalette, 1, 0), (std::array<int, 4>{60, 50, 40, 99}));
    EXPECT_EQ(Pixel(*ofPalette, 3, 0), (std::array<int, 4>{220, 210, 200, 255}));

    const SForm deep{1, 1, PNG_COLOR_TYPE_RGB, 16};
    const auto ofDeep = ReadPng(Packed(deep, {{100, 100, 150, 150, 200, 200}}));
    ASSERT_TRUE(ofDeep);
    EXPECT_EQ(Pixel(*ofDeep, 0, 0), (std::array<int, 4>{200, 150, 100, 255}));

    const SForm dots{9, 2, PNG_COLOR_TYPE_GRAY, 1};
    const auto ofDots = ReadPng(Packed(dots, {{0b10000000, 0}, {0, 0b10000000}}));
    ASSERT_TRUE(ofDots);
    EXPECT_EQ(Pixel(*ofDots, 0, 0), (std::array<int, 4>{255, 255, 255, 255}));
    EXPECT_EQ(Pixel(*ofDots, 8, 1), (std::array<int, 4>{255, 255, 255, 255}));
    EXPECT_EQ(Pixel(*ofDots, 1, 0), (std::array<int, 4>{0, 0, 0, 255}));
}

TEST(PngReader, RefusesWhatIsNoPng) {
    const Bytes words{'n', 'o', ' ', 'p', 'i', 'c', 't', 'u', 'r', 'e'};
    const Bytes jpeg{0xFF, 0xD8, 0xFF, 0xE0, 0, 16, 'J', 'F', 'I', 'F', 0, 1, 1, 0, 0, 1, 0, 1, 0, 0, 0xFF,
        0xD9, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0};
    for (const Bytes& file : {Bytes(), words, jpeg, Bytes(1000, 0), Bytes(1000, 0x89)}) {
        EXPECT_FALSE(PngSize(file));
        EXPECT_FALSE(ReadPng(file));
    }
}

TEST(PngReader, RefusesAFileThatWasCutAnywhere) {
    const SForm form;
    const Bytes file = Packed(form, Rows(form, 28));
    ASSERT_TRUE(ReadPng(file));
    for (std::size_t length = 0; length + 16 < file.size();
         ++length) // the checksum and the end mark may be missing
        EXPECT_FALSE(ReadPng(std::span(file).first(length))) << length << " of " << file.size();
}

TEST(PngReader, SurvivesEveryDamagedByte) {
    for (const SForm& form : {SForm{}, SForm{9, 6, PNG_COLOR_TYPE_RGB, 8, PNG_INTERLACE_ADAM7},
             SForm{8, 3, PNG_COLOR_TYPE_PALETTE, 2}}) {
        const Bytes whole = Packed(form, Rows(form, 36));
        for (std::size_t i = 0; i < whole.size(); ++i) {
            for (const unsigned change : {0xFFU, 0x01U, 0x80U}) {
                Bytes file = whole;
                file[i] = static_cast<std::uint8_t>(file[i] ^ change);
                const auto size = PngSize(file);
                const auto bitmap = ReadPng(file);
                if (!bitmap) continue;
                ASSERT_TRUE(size);
                EXPECT_EQ(bitmap->width, size->width);
                EXPECT_EQ(bitmap->height, size->height);
                EXPECT_EQ(bitmap->bytes.size(), static_cast<std::size_t>(bitmap->stride * bitmap->height));
            }
        }
    }
}

TEST(PngReader, RefusesSidesBeyondSixteenThousand) {
    const SForm form{4, 4, PNG_COLOR_TYPE_GRAY, 1};
    Bytes file = Packed(form, Rows(form, 1));
    file.resize(100000); // long enough for so many pixels
    SetHead(file, WidthPlace, 16384);
    EXPECT_EQ(PngSize(file), (SPngSize{16384, 4}));
    EXPECT_FALSE(ReadPng(file)); // its pixels are those of a smaller one
    for (const std::uint32_t side : {0U, 16385U, 0x7FFFFFFFU, 0x80000000U, 0xFFFFFFFFU}) {
        for (const auto place : {WidthPlace, HeightPlace}) {
            Bytes lying = file;
            SetHead(lying, place, side);
            EXPECT_FALSE(PngSize(lying)) << side;
            EXPECT_FALSE(ReadPng(lying)) << side;
        }
    }
}

TEST(PngReader, BelievesNoHeadThatTheFileIsTooShortFor) {
    const SForm form{16, 16};
    Bytes file = Packed(form, std::vector<Bytes>(16, Bytes(64, 0)));
    ASSERT_EQ(PngSize(file), (SPngSize{16, 16}));
    SetHead(file, WidthPlace, 16384);
    SetHead(file, HeightPlace, 16384); // a gigabyte
    EXPECT_FALSE(PngSize(file));
    EXPECT_FALSE(ReadPng(file));
    // Deflated zeros, the tightest that there is, are believed.
    const SForm large{1000, 1000};
    const Bytes tight = Packed(large, std::vector<Bytes>(1000, Bytes(4000, 0)));
    EXPECT_EQ(PngSize(tight), (SPngSize{1000, 1000}));
    EXPECT_TRUE(ReadPng(tight));
}

TEST(PngReader, WorksOnSeveralThreadsAtOnce) {
    const auto& sprite = Panel::SpriteOf("toolbtna");
    const auto file = Platform::Resource(Panel::ResourceNameOf(sprite));
    const auto expected = ReadPng(file);
    ASSERT_TRUE(expected);
    Tests::CTogether together;
    for (int i = 0; i < 3; ++i) {
        together.Add([&](int) {
            const auto bitmap = ReadPng(file);
            ASSERT_TRUE(bitmap);
            EXPECT_TRUE(bitmap->bytes == expected->bytes);
        });
    }
    together.Run();
}

TEST(PngLibrary, IsTheSameForTheLifeOfTheProcess) {
    ASSERT_NE(Platform::Png(), nullptr);
    EXPECT_EQ(Platform::Png(), Platform::Png());
}
