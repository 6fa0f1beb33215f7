#pragma once

#include "gfx/picture_pixels.h"
#include "gfx/pieces.h"
#include "pixels/sheet.h"
#include "platform/winapi/com_object.h"
#include "platform/winapi/direct2d_library.h"

#include <array>
#include <cstdint>
#include <memory>

namespace KAV::GFX::D2D {

template<typename TObject>
using CObject = Platform::CComObject<TObject, Platform::SDirect2D>;

inline constexpr float Dpi = 96.0f; ///< at which the system's units are pixels

/// Pixels that the target draws from.
struct SImage {
    CObject<ID2D1Bitmap1> iBitmap;
    std::int32_t nW = 0;
    std::int32_t nH = 0;
    /// Where the system has no effect that tints: what the bitmaps below are made of when a draw first needs
    /// them. Drawn one after another, each as opaque as its channel is bright, they add up to the tinted
    /// picture: one with the alpha alone, which dims what lies below, and one for each colour without alpha,
    /// which only adds light.
    SPicturePixels sPixels;
    std::array<CObject<ID2D1Bitmap1>, 4> viChannels; // alpha, red, green, blue
};

/// The picture of a texture: pixels as they were handed over, or a stored sheet of sprites. What is drawn
/// most are cells of a sheet at their size in the window; these are scaled once, by the same code as for
/// every other renderer.
struct SPicture {
    std::shared_ptr<const Pixels::ISheet> piSheet;
    SImage sWhole; ///< empty until it is needed, if there is a sheet
    SImage sCells; ///< at the size that was asked for last
    std::int32_t nCellW = 0;
    std::int32_t nCellH = 0;
};

} // namespace KAV::GFX::D2D
