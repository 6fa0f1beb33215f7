#pragma once

#include "gui/pictures.h"
#include "pixels/bitmap.h"

#include <cstdint>
#include <string_view>

/// The pictures that a text is put together from: premultiplied, all of one size. Threads: the window's. All
/// that make one throw KAV::Exceptions::GDIPImage with the layer's name when they can't.
namespace KAV::GUI {

/// Transparent.
Pixels::SBitmap EmptyLayer(std::int32_t a_nWidth, std::int32_t a_nHeight, std::u16string_view a_sName);
/// With a text; without pixels if nothing can render texts.
Pixels::SBitmap TextLayer(IPictures& a_piPictures, const SLettering& a_sLettering, std::int32_t a_nWidth,
    std::int32_t a_nHeight, std::u16string_view a_sName);
/// Copies a layer, moved by so many pixels; what leaves the picture is cut off.
void CopyLayer(
    const Pixels::SBitmap& a_sLayer, std::int32_t a_nX, std::int32_t a_nY, Pixels::SBitmap& a_rsTo) noexcept;
/// Draws a layer over what is there.
void CoverLayer(const Pixels::SBitmap& a_sLayer, Pixels::SBitmap& a_rsTo) noexcept;

} // namespace KAV::GUI
