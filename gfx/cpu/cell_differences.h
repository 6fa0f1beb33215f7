#pragma once

#include "gfx/cpu/areas.h"
#include "gfx/cpu/canvas.h"

#include <cstdint>
#include <vector>

namespace KAV::GFX::CPU {

/// Where two parts of one picture differ, as from one frame of a sprite to the next: between two levels of
/// a meter just the strip between them. Comparing takes longer than painting, so that results are kept.
/// Threads: the window's.
class CCellDifferences final {
public:
    CCellDifferences(); // allocates all of its memory

    /// The rectangle outside of which a part of the picture equals the one that lies at a_nOtherLeft,
    /// a_nOtherTop and is as large, from the upper left corner of the part. Empty if they are equal. Both
    /// parts lie in the picture.
    SArea Between(const CSource& a_piSource, const SArea& a_sPart, std::int32_t a_nOtherLeft,
        std::int32_t a_nOtherTop) noexcept;

private:
    struct SKept {
        std::uint64_t nSource = 0; // its serial number; 0: nothing is kept here
        SArea sPart;
        std::int32_t nOtherLeft = 0;
        std::int32_t nOtherTop = 0;
        SArea sDifference;
    };
    std::vector<SKept> _vsKept; // each pair of parts has one place
};

} // namespace KAV::GFX::CPU
