#include "artwork/png_file.h"

#include <cstdio>
#include <memory>
#include <png.h>
#include <stdexcept>

namespace KAV::Artwork {

namespace {

struct SClose {
    void operator()(std::FILE* file) const { std::fclose(file); }
};
using File = std::unique_ptr<std::FILE, SClose>;

[[noreturn]] void Fail(const std::filesystem::path& file, const std::string& what) {
    throw std::runtime_error(file.string() + ": " + what);
}

/// The library's own error path is a long jump; an exception unwinds what this file owns.
[[noreturn]] void Complain(png_structp, png_const_charp message) {
    throw std::runtime_error(message);
}

void Ignore(png_structp, png_const_charp) {}

struct SReader {
    png_structp png = png_create_read_struct(PNG_LIBPNG_VER_STRING, nullptr, Complain, Ignore);
    png_infop info = png_create_info_struct(png);
    SReader() = default;
    SReader(const SReader&) = delete;
    SReader& operator=(const SReader&) = delete;
    ~SReader() { png_destroy_read_struct(&png, &info, nullptr); }
};

struct SWriter {
    png_structp png = png_create_write_struct(PNG_LIBPNG_VER_STRING, nullptr, Complain, Ignore);
    png_infop info = png_create_info_struct(png);
    SWriter() = default;
    SWriter(const SWriter&) = delete;
    SWriter& operator=(const SWriter&) = delete;
    ~SWriter() { png_destroy_write_struct(&png, &info); }
};

} // namespace

SPixels ReadPng(const std::filesystem::path& name) try {
    const File file(std::fopen(name.c_str(), "rb"));
    if (!file) Fail(name, "cannot be opened");
    SReader reader;
    png_init_io(reader.png, file.get());
    png_read_info(reader.png, reader.info);
    if (png_get_color_type(reader.png, reader.info) != PNG_COLOR_TYPE_RGB_ALPHA ||
        png_get_bit_depth(reader.png, reader.info) != 8)
        Fail(name, "is not of 32 bits per pixel");
    SPixels pixels{static_cast<int>(png_get_image_width(reader.png, reader.info)),
        static_cast<int>(png_get_image_height(reader.png, reader.info)), {}};
    pixels.rgba.resize(static_cast<std::size_t>(pixels.width) * static_cast<std::size_t>(pixels.height) * 4);
    const int passes = png_set_interlace_handling(reader.png);
    for (int pass = 0; pass < passes; ++pass) {
        for (int y = 0; y < pixels.height; ++y) png_read_row(reader.png, pixels.At(0, y), nullptr);
    }
    png_read_end(reader.png, nullptr);
    return pixels;
} catch (const std::runtime_error& error) {
    Fail(name, error.what());
}

void WritePng(const std::filesystem::path& name, const SPixels& pixels) try {
    const File file(std::fopen(name.c_str(), "wb"));
    if (!file) Fail(name, "cannot be written");
    SWriter writer;
    png_init_io(writer.png, file.get());
    png_set_compression_level(writer.png, 9);
    png_set_IHDR(writer.png, writer.info, static_cast<png_uint_32>(pixels.width),
        static_cast<png_uint_32>(pixels.height), 8, PNG_COLOR_TYPE_RGB_ALPHA, PNG_INTERLACE_NONE,
        PNG_COMPRESSION_TYPE_DEFAULT, PNG_FILTER_TYPE_DEFAULT);
    png_write_info(writer.png, writer.info);
    for (int y = 0; y < pixels.height; ++y) png_write_row(writer.png, pixels.At(0, y));
    png_write_end(writer.png, nullptr);
    if (std::fflush(file.get()) != 0) Fail(name, "cannot be written");
} catch (const std::runtime_error& error) {
    Fail(name, error.what());
}

} // namespace KAV::Artwork
