#pragma once

#include "pixels/pixel_memory.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <memory>

namespace KAV::Pixels {

class ISheet;

/// What the fourth byte of a pixel means.
enum class EAlpha {
    None,         ///< nothing: the picture is opaque
    Straight,     ///< the colours are those of an opaque pixel
    Premultiplied ///< the colours are multiplied by it already
};

/// A decoded picture in memory: 32-bit pixels in the order blue, green, red, alpha, rows from top to bottom.
struct SBitmap {
    std::int32_t width = 0;
    std::int32_t height = 0;
    std::int32_t stride = 0; ///< bytes from one row to the next, at least 4 * width
    EAlpha alpha = EAlpha::Straight;
    PixelBytes bytes; ///< height * stride of them
    /// If set, this is a stored picture that isn't decoded yet: `bytes` is empty, and the pixels are the
    /// sheet's (pixels/sheet.h).
    std::shared_ptr<const ISheet> sheet = nullptr;
};

/// A bitmap without gaps between its rows, transparent everywhere. Sizes below 0 count as 0.
inline SBitmap TransparentBitmap(std::int32_t width, std::int32_t height) {
    SBitmap bitmap;
    bitmap.width = std::max(width, 0);
    bitmap.height = std::max(height, 0);
    bitmap.stride = 4 * bitmap.width;
    bitmap.alpha = EAlpha::Premultiplied;
    bitmap.bytes.resize(static_cast<std::size_t>(bitmap.stride) * static_cast<std::size_t>(bitmap.height));
    return bitmap;
}

} // namespace KAV::Pixels
