#include "pixels/png_reader.h"

#include "platform/png/png_library.h"

#include <cstddef>

namespace KAV::Pixels {

namespace {

/// Frees what the library keeps for an image, at every way out.
struct SImage {
    const Platform::SPng& png;
    png_image record{};

    explicit SImage(const Platform::SPng& library) noexcept : png(library) {
        record.version = PNG_IMAGE_VERSION;
    }
    ~SImage() { png.image_free(&record); }
    SImage(const SImage&) = delete;
    SImage& operator=(const SImage&) = delete;

    /// Its warnings, as of a wrong checksum beside the pixels, leave a whole picture.
    bool Failed() const noexcept { return PNG_IMAGE_FAILED(record); }
};

} // namespace

std::optional<SBitmap> ReadPng(std::span<const std::uint8_t> file) {
    const auto* const png = Platform::Png();
    const auto size = PngSize(file);
    if (png == nullptr || !size) return std::nullopt;
    SBitmap bitmap;
    bitmap.width = size->width;
    bitmap.height = size->height;
    bitmap.stride = 4 * size->width;
    SImage image(*png);
    if (png->image_begin_read_from_memory(&image.record, file.data(), file.size()) == 0 || image.Failed())
        return std::nullopt;
    image.record.format = PNG_FORMAT_BGRA;
    image.record.flags |= PNG_IMAGE_FLAG_16BIT_sRGB; // otherwise 16 bits count as linear light
    // Only now: most damaged files are refused before.
    bitmap.bytes.resize(static_cast<std::size_t>(bitmap.stride) * static_cast<std::size_t>(bitmap.height));
    if (png->image_finish_read(&image.record, nullptr, bitmap.bytes.data(), bitmap.stride, nullptr) == 0 ||
        image.Failed())
        return std::nullopt;
    return bitmap;
}

} // namespace KAV::Pixels
