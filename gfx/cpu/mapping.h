#pragma once

#include "gfx/cpu/areas.h"
#include "gfx/cpu/canvas.h"
#include "gfx/draw.h"
#include "gfx/picture_part.h"
#include "gfx/transform.h"

#include <cstdint>
#include <optional>

namespace KAV::GFX::CPU {

/// Edges at which the quad meets the next slice of a picture: each pixel then belongs to one of the two.
struct SMeeting {
    bool bL = false;
    bool bT = false;
    bool bR = false;
    bool bB = false;

    bool operator==(const SMeeting&) const = default;
};

/// Where the pixels of a quad come from: a place of the frame to one of the quad, and that to one of the
/// picture.
struct SMapping {
    double fXX = 1.0; ///< place in the quad, 0..fW from its left: fXX * x + fXY * y + fX
    double fXY = 0.0;
    double fX = 0.0;
    double fYX = 0.0; ///< 0..fH from its top: fYX * x + fYY * y + fY
    double fYY = 1.0;
    double fY = 0.0;
    double fW = 0.0;
    double fH = 0.0;
    SPart sPart; ///< of the picture, on the whole quad
    bool bRepeat = false;
    SMeeting sMeeting;

    bool operator==(const SMapping& a_sOther) const noexcept;
};

/// The mapping of a quad that a matrix then moves. None if the matrix leaves nothing of it. Numbers are
/// finite.
std::optional<SMapping> MappingOf(
    const SRect& a_sTo, const SFlatMatrix* a_psMatrix, const SPart& a_sPart, bool a_bRepeat) noexcept;

/// How far whole pixels of the frame and of the picture lie apart, if the mapping does nothing but that.
struct SStep {
    std::int32_t nDX = 0;
    std::int32_t nDY = 0;
};
std::optional<SStep> StepOf(const SMapping& a_sMapping) noexcept;

/// The pixels that the quad may touch.
SArea BoundsOf(const SMapping& a_sMapping, const SArea& a_sWithin) noexcept;

/// Lays the quad over the area of the frame: takes the picture's pixels in between, multiplies them by the
/// colour, and lets the quad's edges fade over one pixel where they meet no other slice.
void LayMapped(CCanvas& a_rsCanvas, const CSource& a_piSource, const SMapping& a_sMapping,
    std::uint32_t a_nColor, const SArea& a_sArea) noexcept;

} // namespace KAV::GFX::CPU
