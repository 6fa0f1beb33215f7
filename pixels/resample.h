#pragma once

#include "pixels/bitmap.h"
#include "pixels/image_name.h"

#include <cstdint>

namespace KAV::Pixels {

/// Scales every cell of a picture by itself, so that no cell's edge takes anything from its neighbour. The
/// kernel is the cubic of Catmull and Rom (Keys, 1981, a = -0.5), widened by the factor when a picture
/// shrinks; samples lie at pixel centres; pixels beyond a cell's edge count as the nearest one inside. Works
/// on premultiplied values. The result has the grid's columns x cellWidth by rows x cellHeight pixels and is
/// premultiplied, and no colour exceeds its alpha, however far the cubic overshoots; at the same size it is
/// the picture itself, premultiplied. `from` has bytes, its sides are at least the grid's. Any thread. Throws
/// std::bad_alloc, also for sides beyond 65535 pixels.
SBitmap Resampled(
    const SBitmap& from, const SImageGrid& grid, std::int32_t cellWidth, std::int32_t cellHeight);

/// The same picture with premultiplied colours: each channel is (colour x alpha + 127) / 255, rounded down.
SBitmap Premultiplied(const SBitmap& from);

} // namespace KAV::Pixels
