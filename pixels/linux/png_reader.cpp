#include "pixels/png_reader.h"

#include "platform/png/png_library.h"

#include <algorithm>
#include <array>
#include <cstddef>

namespace KAV::Pixels {

namespace {

constexpr std::uint32_t MaxStoredSide = 16384;
constexpr std::uint64_t MaxPacking = 1032; // bytes that one byte of a deflated stream yields at most

/// What every file begins with: the signature, then the chunk IHDR.
constexpr std::array<std::uint8_t, 16> Beginning{
    0x89, 'P', 'N', 'G', 0x0D, 0x0A, 0x1A, 0x0A, 0, 0, 0, 13, 'I', 'H', 'D', 'R'};
constexpr std::size_t HeadBytes = Beginning.size() + 13;

std::uint32_t BigEndian(std::span<const std::uint8_t> bytes) noexcept {
    return std::uint32_t{bytes[0]} << 24 | std::uint32_t{bytes[1]} << 16 | std::uint32_t{bytes[2]} << 8 |
           bytes[3];
}

/// By the colour type of the head; 0 if there is no such type.
std::uint32_t Channels(std::uint8_t colourType) noexcept {
    switch (colourType) {
    case PNG_COLOR_TYPE_GRAY:
    case PNG_COLOR_TYPE_PALETTE:
        return 1;
    case PNG_COLOR_TYPE_GRAY_ALPHA:
        return 2;
    case PNG_COLOR_TYPE_RGB:
        return 3;
    case PNG_COLOR_TYPE_RGB_ALPHA:
        return 4;
    default:
        return 0;
    }
}

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

std::optional<SPngSize> PngSize(std::span<const std::uint8_t> file) noexcept {
    if (file.size() < HeadBytes || !std::equal(Beginning.begin(), Beginning.end(), file.begin()))
        return std::nullopt;
    const auto head = file.subspan(Beginning.size());
    const std::uint32_t width = BigEndian(head);
    const std::uint32_t height = BigEndian(head.subspan(4));
    const std::uint64_t pixelBits = std::uint64_t{head[8]} * Channels(head[9]);
    if (width == 0 || height == 0 || width > MaxStoredSide || height > MaxStoredSide || pixelBits == 0)
        return std::nullopt;
    const std::uint64_t bytes = (width * pixelBits + 7) / 8 * height;
    if (bytes > MaxPacking * file.size()) return std::nullopt;
    return SPngSize{static_cast<std::int32_t>(width), static_cast<std::int32_t>(height)};
}

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
