#pragma once

#include "artwork/layout.h"
#include "artwork/png_file.h"

#include <cstdint>
#include <filesystem>
#include <string>

namespace KAV::Artwork {

inline std::filesystem::path FileOf(const SSprite& sprite) {
    return std::filesystem::path(KAV_RESOURCES) / (std::string(sprite.stem) + ".png");
}

/// One frame of a decoded picture.
struct SCell {
    const SPixels& pixels;
    int x;
    int y;
    int width;
    int height;

    const std::uint8_t* At(int u, int v) const { return pixels.At(x + u, y + v); }
};

inline SCell CellOf(const SPixels& pixels, const SSprite& sprite, int index) {
    return {pixels, index % sprite.columns * sprite.FrameWidth(),
        index / sprite.columns * sprite.FrameHeight(), sprite.FrameWidth(), sprite.FrameHeight()};
}

/// Brightness of a cell as it is seen over a dark panel, 0..255.
inline double BrightnessAt(const SCell& cell, int u, int v) {
    const auto* p = cell.At(u, v);
    const double alpha = p[3] / 255.0;
    return (0.2126 * p[0] + 0.7152 * p[1] + 0.0722 * p[2]) * alpha + 48 * (1 - alpha);
}

inline void PrintTo(const SSprite& sprite, std::ostream* out) {
    *out << sprite.stem;
}

} // namespace KAV::Artwork
