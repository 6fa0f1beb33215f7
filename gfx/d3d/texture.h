#pragma once

#include "gfx/picture_pixels.h"
#include "gfx/pieces.h"
#include "pixels/sheet.h"
#include "platform/winapi/com_object.h"
#include "platform/winapi/direct3d_library.h"

#include <cstdint>
#include <memory>

namespace KAV::GFX::D3D {

template<typename TObject>
using CObject = Platform::CComObject<TObject, Platform::SDirect3D>;

/// Pixels that the device draws from.
struct SImage {
    CObject<IDirect3DTexture9> iTexture;
    std::int32_t nW = 0; ///< of the picture
    std::int32_t nH = 0;
    std::int32_t nTexW = 0; ///< of the texture, whose upper left part the picture is
    std::int32_t nTexH = 0;
};

/// The picture of a texture: pixels as they were handed over, or a stored sheet of sprites. What is drawn
/// most are cells of a sheet at their size in the window; these are scaled once, by the same code as for
/// every other renderer, since the device would drop pixels where it makes a picture much smaller.
struct SPicture {
    std::shared_ptr<const Pixels::ISheet> piSheet;
    SImage sWhole; ///< empty until it is needed, if there is a sheet
    SImage sCells; ///< at the size that was asked for last
    std::int32_t nCellW = 0;
    std::int32_t nCellH = 0;
};

} // namespace KAV::GFX::D3D
