#pragma once

#include "pixels/bitmap.h"

#include <cstdint>
#include <optional>
#include <span>

/// Pictures in PNG files, whatever their form: bits per channel, palette, grey, interlaced. Any
/// thread.
namespace KAV::Pixels {

struct SPngSize {
    std::int32_t width = 0;
    std::int32_t height = 0;

    bool operator==(const SPngSize&) const = default;
};

/// The size that a file's first bytes tell, without decoding it. None: it isn't a PNG file, or one that
/// ReadPng() refuses unseen: a side is longer than 16384 pixels, or the file is too short for so many pixels,
/// however well they were packed. So a damaged file never makes us reserve much more memory than its own
/// size warrants.
std::optional<SPngSize> PngSize(std::span<const std::uint8_t> file) noexcept;

/// The decoded picture, straight alpha. None: the file is damaged, PngSize() finds none, or the system's
/// library for it is missing. Throws std::bad_alloc.
std::optional<SBitmap> ReadPng(std::span<const std::uint8_t> file);

} // namespace KAV::Pixels
