#pragma once

#include "gfx/cpu/areas.h"
#include "gfx/cpu/canvas.h"
#include "gfx/cpu/cell_differences.h"
#include "gfx/cpu/mapping.h"
#include "gfx/cpu/strokes.h"
#include "gfx/draw.h"

#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

namespace KAV::GFX::CPU {

/// The draws of a frame in their order, with all that decides what they look like. Keeps its memory from
/// frame to frame. Threads: the window's.
class CDrawList final {
public:
    struct SDraw {
        enum class EKind { Copy, Map, Lines };
        EKind nKind = EKind::Copy;
        SArea sBox; ///< the pixels that it may touch; not empty
        // Copy, Map
        const CSource* piSource = nullptr; ///< lives until the frame is painted
        std::uint64_t nSource = 0;         ///< its serial number
        std::uint32_t nColor = White;
        bool bRepeat = false; ///< Copy
        SStep sStep;          ///< Copy
        SMapping sMapping;    ///< Map
        // Lines
        SPen sPen;
        bool bStrip = false;
        std::size_t nFirstPoint = 0;
        std::size_t nPoints = 0;
    };

    /// Without draws, on top of what the frame showed before.
    void Reset() noexcept;
    /// Without draws, on black.
    void Clear() noexcept;
    void Add(const SDraw& a_sDraw) { _vsDraws.push_back(a_sDraw); }
    void AddLines(SDraw a_sDraw, std::span<const SPoint> a_asPoints);

    bool IsOnBlack() const noexcept { return _bOnBlack; }
    const std::vector<SDraw>& Draws() const noexcept { return _vsDraws; }
    std::span<const SPoint> PointsOf(const SDraw& a_sDraw) const noexcept {
        return std::span(_vsPoints).subspan(a_sDraw.nFirstPoint, a_sDraw.nPoints);
    }

    /// Adds areas that cover all pixels in which the next frame's list may look different. Both are on
    /// black; the sources of the next one's draws are alive.
    void AddDifferences(
        const CDrawList& a_piNext, CCellDifferences& a_rsCells, CAreas& a_rsAreas) const noexcept;

private:
    bool LooksLike(const SDraw& a_sOwn, const CDrawList& a_piNext, const SDraw& a_sNext) const noexcept;

    std::vector<SDraw> _vsDraws;
    std::vector<SPoint> _vsPoints; // of all lines, one after the other
    bool _bOnBlack = false;
};

} // namespace KAV::GFX::CPU
