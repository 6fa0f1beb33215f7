#include "gfx/picture_pixels.h"

#include "gfx/pixel_format.h"

#include <algorithm>
#include <cstddef>
#include <cstring>

namespace KAV::GFX {

namespace {

constexpr std::uint32_t Opaque = 0xFF000000U;
constexpr std::uint32_t MostAlpha = 255;

template<typename TChannel>
std::uint32_t WithChannels(std::uint32_t a_nPixel, TChannel a_piChannel) noexcept {
    std::uint32_t nPixel = a_nPixel & Opaque;
    for (unsigned nShift = 0; nShift < 24; nShift += 8)
        nPixel |= a_piChannel(a_nPixel >> nShift & 0xFFU) << nShift;
    return nPixel;
}

std::uint32_t Premultiplied(std::uint32_t a_nPixel) noexcept {
    const std::uint32_t nAlpha = a_nPixel >> 24U;
    if (nAlpha == MostAlpha) return a_nPixel;
    return WithChannels(a_nPixel,
        [nAlpha](std::uint32_t a_nValue) { return (a_nValue * nAlpha + MostAlpha / 2) / MostAlpha; });
}

std::uint32_t Straight(std::uint32_t a_nPixel) noexcept {
    const std::uint32_t nAlpha = a_nPixel >> 24U;
    if (nAlpha == MostAlpha || nAlpha == 0) return a_nPixel;
    return WithChannels(a_nPixel, [nAlpha](std::uint32_t a_nValue) {
        return std::min((a_nValue * MostAlpha + nAlpha / 2) / nAlpha, MostAlpha);
    });
}

/// How the pixels of a format become those of a texture.
struct SConversion {
    std::int32_t nBytes = 4; // of a pixel
    bool bOpaque = false;
    bool bMultiplies = false;
    bool bDivides = false;

    std::uint32_t Of(const std::uint8_t* a_pPixel) const noexcept {
        std::uint32_t nPixel = 0;
        std::memcpy(&nPixel, a_pPixel, static_cast<std::size_t>(nBytes));
        if (bOpaque) return nPixel | Opaque;
        if (bMultiplies) return Premultiplied(nPixel);
        return bDivides ? Straight(nPixel) : nPixel;
    }
};

SPicturePixels Convert(const std::uint8_t* a_pBits, std::int32_t a_nPitch, std::int32_t a_nW,
    std::int32_t a_nH, const SConversion& a_sConversion) {
    SPicturePixels sPixels{a_nW, a_nH, {}};
    sPixels.vnPixels.reserve(static_cast<std::size_t>(a_nW) * static_cast<std::size_t>(a_nH));
    for (std::int32_t y = 0; y < a_nH; ++y) {
        const auto* pPixel = a_pBits + std::ptrdiff_t{a_nPitch} * y;
        for (std::int32_t x = 0; x < a_nW; ++x, pPixel += a_sConversion.nBytes)
            sPixels.vnPixels.push_back(a_sConversion.Of(pPixel));
    }
    return sPixels;
}

} // namespace

SPicturePixels PixelsOf(const void* a_pBits, std::int32_t a_nPitch, std::int32_t a_nPixelFormat,
    std::int32_t a_nW, std::int32_t a_nH, ETextureAlpha a_nAlpha) {
    const bool bKnown = a_nPixelFormat == Rgb24 || a_nPixelFormat == Rgb32 || a_nPixelFormat == Argb32 ||
                        a_nPixelFormat == PremultipliedArgb32;
    SConversion sConversion;
    sConversion.nBytes = a_nPixelFormat == Rgb24 ? 3 : 4;
    sConversion.bOpaque = !HasAlpha(a_nPixelFormat);
    sConversion.bMultiplies = a_nPixelFormat == Argb32 && a_nAlpha == ETextureAlpha::Premultiplied;
    sConversion.bDivides = a_nPixelFormat == PremultipliedArgb32 && a_nAlpha == ETextureAlpha::Straight;
    if (!bKnown || a_pBits == nullptr || a_nW <= 0 || a_nH <= 0) return {};
    if (a_nPitch / sConversion.nBytes < a_nW) return {};
    return Convert(static_cast<const std::uint8_t*>(a_pBits), a_nPitch, a_nW, a_nH, sConversion);
}

SPicturePixels PixelsOf(const Pixels::SBitmap& a_piBitmap, ETextureAlpha a_nAlpha) {
    const std::int64_t nBytes = std::int64_t{a_piBitmap.stride} * a_piBitmap.height;
    if (static_cast<std::int64_t>(a_piBitmap.bytes.size()) < nBytes) return {};
    const auto format = [&] {
        switch (a_piBitmap.alpha) {
        case Pixels::EAlpha::None:
            return Rgb32;
        case Pixels::EAlpha::Straight:
            return Argb32;
        case Pixels::EAlpha::Premultiplied:
            break;
        }
        return PremultipliedArgb32;
    };
    return PixelsOf(
        a_piBitmap.bytes.data(), a_piBitmap.stride, format(), a_piBitmap.width, a_piBitmap.height, a_nAlpha);
}

} // namespace KAV::GFX
