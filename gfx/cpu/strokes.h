#pragma once

#include "gfx/cpu/areas.h"
#include "gfx/cpu/canvas.h"
#include "gfx/cpu/channels.h"
#include "gfx/draw.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

namespace KAV::GFX::CPU {

/// How lines are drawn.
struct SPen {
    float fWidth = 1.0f; ///< pixels
    std::uint32_t nColor = White;
    bool bSmooth = false;
    bool bPerVertex = false; ///< the colours of the points, blended along the line, and not nColor

    bool operator==(const SPen&) const = default;
};

/// The pixels that the lines may touch.
SArea BoundsOf(std::span<const SPoint> a_asPoints, const SPen& a_sPen, const SArea& a_sWithin) noexcept;

/// Draws lines of any width. A line is a path: its joints are mitred, its ends flat, and each pixel is
/// laid over once, however often the line comes by. Keeps its memory. Threads: the window's.
class CStrokes final {
public:
    /// One line through all points, which are finite, over the area of the frame. Throws std::bad_alloc.
    void Draw(
        CCanvas& a_rsCanvas, std::span<const SPoint> a_asPoints, const SPen& a_sPen, const SArea& a_sArea);

private:
    struct SVector {
        double fX = 0.0;
        double fY = 0.0;
    };
    /// A convex shape.
    struct SShape {
        static constexpr std::size_t Most = 8; // four corners, and one more for each side of the frame
        std::array<SVector, Most> asCorners;
        std::size_t nCorners = 0;

        void Add(const SVector& a_sCorner) noexcept { asCorners[nCorners++] = a_sCorner; }
    };
    /// A point of the path, and where the line's edges pass it.
    struct SNode {
        SVector sAt;
        std::uint32_t nColor = 0;
        SVector sUnit;        // direction of the segment that begins here
        double fLength = 0.0; // of that segment
        bool bMitred = false; // both edges turn at one place each
        SVector sMitre;       // from the point to the left edge there
    };
    /// The colours along a segment, straight.
    struct SBlend {
        SVector sFrom;
        SVector sPerLength; // direction, divided by the length
        Channels sStart;
        Channels sChange; // from start to end
    };
    static SBlend BlendOf(const SNode& a_sNode, std::uint32_t a_nTo) noexcept;

    void TakePath(std::span<const SPoint> a_asPoints);
    void TakeJoints(double a_fHalf) noexcept;
    void AddSegment(std::size_t a_nAt, double a_fHalf);
    void AddJoint(std::size_t a_nAt, double a_fHalf);
    void Add(SShape a_sShape, const SBlend& a_sBlend);
    void AddSmooth(const SShape& a_sShape, const SBlend& a_sBlend);
    void AddHard(const SShape& a_sShape, const SBlend& a_sBlend);
    void AddEdge(const SVector& a_sFrom, const SVector& a_sTo, const SArea& a_sBox) noexcept;
    void AddPixel(std::int32_t x, std::int32_t y, float a_fCovered, const SBlend& a_sBlend) noexcept;
    void Lay(CCanvas& a_rsCanvas) noexcept;

    // Of the call
    SPen _sPen;
    SArea _sArea;
    SArea _sFrame;
    std::vector<SNode> _vsNodes;
    std::vector<float> _vfCovered;              // of each pixel of the area, summed over the shapes
    std::vector<Channels> _vsColors;            // premultiplied, weighted with that; only per vertex
    std::vector<std::array<double, 2>> _vfRuns; // of one shape: from where to where it reaches in each row
    std::vector<float> _vfEdges; // of one shape: how the covered share changes from pixel to pixel
};

} // namespace KAV::GFX::CPU
