#pragma once

#include <cstdint>

/// What a renderer is asked to draw. Coordinates are window pixels from the top left corner, y downwards. A
/// colour is 0xAARRGGBB.
namespace KAV::GFX {

inline constexpr std::uint32_t White = 0xFFFFFFFF;

/// A draw in a colour with alpha 0 does nothing at all.
constexpr bool IsTransparent(std::uint32_t a_nColor) noexcept {
    return a_nColor >> 24U == 0;
}

struct SRect {
    float fL = 0.0f;
    float fT = 0.0f;
    float fW = 0.0f;
    float fH = 0.0f;

    bool operator==(const SRect&) const = default;
};

/// A part of a picture: 0..1 is the whole of it.
struct STexturePart {
    float fU1 = 0.0f; ///< left
    float fU2 = 1.0f; ///< right
    float fV1 = 0.0f; ///< top
    float fV2 = 1.0f; ///< bottom

    bool operator==(const STexturePart&) const = default;
};

/// How a draw is moved, turned and scaled about the centre of its rectangle (gfx/transform.h).
struct STransform {
    float fSX = 1.0f; ///< scale
    float fSY = 1.0f;
    float fSZ = 1.0f;
    float fRX = 0.0f; ///< rotation in degrees
    float fRY = 0.0f;
    float fRZ = 0.0f;
    float fMX = 0.0f; ///< shift in pixels
    float fMY = 0.0f;
    float fMZ = 0.0f;

    bool operator==(const STransform&) const = default;
    /// It leaves every point where it is, and the draw needs no matrix.
    bool IsNeutral() const noexcept { return *this == STransform{}; }
};

/// One picture in a rectangle.
struct SDraw {
    SRect sTo;
    STexturePart sFrom;
    std::uint32_t nColor = White; ///< multiplies the picture channel by channel; White leaves it as it is
    STransform sTransform;

    bool IsNeutral() const noexcept { return sTransform.IsNeutral(); }
};

/// One picture in a rectangle of any size: its corners keep their size, and what lies between them is
/// stretched.
struct SDraw9 {
    SRect sTo;
    std::int32_t nMrgL = 0; ///< margins in pixels of the texture
    std::int32_t nMrgT = 0;
    std::int32_t nMrgR = 0;
    std::int32_t nMrgB = 0;
    std::uint32_t nColor = White;
    float fValue = 0.0f; ///< the frame of a sprite: 0 the first, 1 the last
    STransform sTransform;

    bool IsNeutral() const noexcept { return sTransform.IsNeutral(); }
};

/// One point of DrawLines(); the record that Direct3D and arrays of vertices take.
struct SPoint {
    float fX = 0.0f;
    float fY = 0.0f;
    float fZ = 0.0f; ///< means something to Direct3D only
    std::uint32_t nColor = White;

    bool operator==(const SPoint&) const = default;
};

} // namespace KAV::GFX
