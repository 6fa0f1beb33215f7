#pragma once

#include "gfx/draw.h"

#include <array>

namespace KAV::GFX {

/// Four rows; a point is a row vector in front of it, so its last row is a shift.
using Matrix = std::array<std::array<float, 4>, 4>;

/// What a matrix does to the points of a flat picture, whose z is 0, when z is then dropped: a turn about X
/// or Y makes the picture narrower, without perspective.
struct SFlatMatrix {
    float m11 = 1.0f; ///< x' = x * m11 + y * m21 + dx
    float m12 = 0.0f; ///< y' = x * m12 + y * m22 + dy
    float m21 = 0.0f;
    float m22 = 1.0f;
    float dx = 0.0f;
    float dy = 0.0f;
};

/// The transform of a draw about the centre of its rectangle, which is (fL + round(fW / 2), fT + round(fH /
/// 2)), with halves rounded away from 0. To a point, in this order: subtract the centre; add the shift;
/// rotate about Z, then Y, then X; scale; add the centre. A positive angle turns X towards Y, Y towards Z,
/// and Z towards X.
Matrix MatrixOf(const SRect& a_sRect, const STransform& a_sTransform) noexcept;

SFlatMatrix FlatPart(const Matrix& a_sMatrix) noexcept;

} // namespace KAV::GFX
