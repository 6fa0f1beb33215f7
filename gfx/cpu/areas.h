#pragma once

#include "platform/picture_target.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <span>

namespace KAV::GFX::CPU {

using Platform::SArea;

constexpr bool IsEmpty(const SArea& a_sArea) noexcept {
    return a_sArea.width <= 0 || a_sArea.height <= 0;
}

/// What both cover; empty if they don't meet. Sides are below 2^30 in all of these.
constexpr SArea Common(const SArea& a_sOne, const SArea& a_sOther) noexcept {
    const std::int32_t nLeft = std::max(a_sOne.left, a_sOther.left);
    const std::int32_t nTop = std::max(a_sOne.top, a_sOther.top);
    const std::int32_t nRight = std::min(a_sOne.left + a_sOne.width, a_sOther.left + a_sOther.width);
    const std::int32_t nBottom = std::min(a_sOne.top + a_sOne.height, a_sOther.top + a_sOther.height);
    if (nLeft >= nRight || nTop >= nBottom) return {};
    return {nLeft, nTop, nRight - nLeft, nBottom - nTop};
}
/// The smallest area that covers both. Neither is empty.
SArea Around(const SArea& a_sOne, const SArea& a_sOther) noexcept;

/// A part of the frame as a few areas that don't overlap. It covers all that was added, and may cover more:
/// near areas become one, since each has its price. Never allocates.
class CAreas final {
public:
    void Add(const SArea& a_sArea) noexcept;
    void Clear() noexcept { _nAreas = 0; }

    bool IsEmpty() const noexcept { return _nAreas == 0; }
    std::span<const SArea> All() const noexcept { return {_asAreas.data(), _nAreas}; }

private:
    /// The place of an area that goes together with this one; _nAreas if there is none.
    std::size_t Partner(const SArea& a_sArea) const noexcept;

    static constexpr std::size_t Most = 64;
    std::array<SArea, Most> _asAreas{}; // the first _nAreas; no two overlap
    std::size_t _nAreas = 0;
};

} // namespace KAV::GFX::CPU
