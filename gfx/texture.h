#pragma once

#include <cstdint>

namespace KAV::GFX {

/// A picture that a renderer can draw. Its owner is the widget that holds it; cache and renderer fill it. As
/// it is made it is freed: it has no picture.
struct STexture {
    std::uint64_t piGDIP = 0; ///< the renderer's object: a pointer, or a name of OpenGL's; 0: no texture
    std::int32_t nW = 0;      ///< size of the picture in pixels
    std::int32_t nH = 0;
    float fU = 1.0f; ///< the part of the texture that the picture takes: below 1 if the texture is padded
    float fV = 1.0f;
    std::int32_t nColumns = 1; ///< the grid of a sprite, filled row by row; the last row may have empty cells
    std::int32_t nRows = 1;
    std::int32_t nFrames = 1;
    std::int32_t nUses = 0; ///< counted by the cache

    bool operator==(const STexture&) const = default;
};

/// A record without a picture.
constexpr STexture FreedTexture() noexcept {
    return {};
}

/// The side of a texture for a picture of that many pixels: the same, or for a renderer that asks for powers
/// of two the smallest one from 2 to 2^19 that isn't below it; 2^19 for a still longer side.
constexpr std::int32_t TextureSide(std::int32_t a_nPicture, bool a_bAnySize) noexcept {
    if (a_bAnySize) return a_nPicture;
    constexpr std::int32_t nLongest = 1 << 19;
    std::int32_t nSide = 2;
    while (nSide < a_nPicture && nSide < nLongest) nSide *= 2;
    return nSide;
}

} // namespace KAV::GFX
