#pragma once

#include <cstdint>

/// Formats of pixels in memory, by the numbers that GDI+ gives them. Pixels are bytes in the order blue,
/// green, red, alpha.
namespace KAV::GFX {

inline constexpr std::int32_t Rgb24 = 0x21808;
inline constexpr std::int32_t Rgb32 = 0x22009; ///< the fourth byte means nothing
inline constexpr std::int32_t Argb32 = 0x26200A;
inline constexpr std::int32_t PremultipliedArgb32 = 0xE200B;

constexpr bool HasAlpha(std::int32_t a_nPixelFormat) noexcept {
    return (a_nPixelFormat & 0x40000) != 0;
}

} // namespace KAV::GFX
