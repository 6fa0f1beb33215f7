#pragma once

#include "pixels/bitmap.h"

#include <cstdint>
#include <vector>

/// Pixels as textures of graphics hardware take them: 0xAARRGGBB, without gaps between the rows.
namespace KAV::GFX {

enum class ETextureAlpha { Straight, Premultiplied };

struct SPicturePixels {
    std::int32_t nW = 0;
    std::int32_t nH = 0;
    std::vector<std::uint32_t> vnPixels;

    bool IsEmpty() const noexcept { return vnPixels.empty(); }
};

/// Of pixels of a format (gfx/pixel_format.h) whose rows are `a_nPitch` bytes apart. Empty without any
/// pixels, or for a format or pitch that they can't have.
SPicturePixels PixelsOf(const void* a_pBits, std::int32_t a_nPitch, std::int32_t a_nPixelFormat,
    std::int32_t a_nW, std::int32_t a_nH, ETextureAlpha a_nAlpha);
/// Of a decoded bitmap. Empty if it has fewer bytes than its size says.
SPicturePixels PixelsOf(const Pixels::SBitmap& a_piBitmap, ETextureAlpha a_nAlpha);

} // namespace KAV::GFX
