#pragma once

#include "gfx/cpu/areas.h"
#include "gfx/cpu/canvas.h"
#include "gfx/cpu/channels.h"
#include "gfx/draw.h"

#include <algorithm>
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
        /// From places between pixels' centres to those at which pixel n begins at n.
        void MoveToPixels() noexcept {
            for (std::size_t n = 0; n < nCorners; ++n) {
                asCorners[n].fX += 0.5;
                asCorners[n].fY += 0.5;
            }
        }
    };
    /// Rows of the frame, the last one excluded.
    struct SRows {
        std::int32_t nFirst = 0;
        std::int32_t nEnd = 0;
    };
    /// A point of the path, and where the line's edges pass it.
    struct SNode {
        SVector sAt;
        std::uint32_t nColor = 0;
        SVector sUnit;        // direction of the segment that begins here
        double fLength = 0.0; // of that segment
        bool bMitred = false; // both edges turn at one place each
        SVector sMitre;       // from the point to the left edge there
        SRows sAlone;         // where the segment that begins here is all that covers column nColumn
        std::int32_t nColumn = 0;
    };
    /// The nodes of a path at one place across.
    struct SColumn {
        std::size_t nFirst = 0;
        std::size_t nEnd = 0;
        double fTop = 0.0;
        double fBottom = 0.0;
    };
    /// The colours along a segment, straight.
    struct SBlend {
        SVector sFrom;
        SVector sPerLength; // direction, divided by the length
        Channels sStart;
        Channels sChange; // from start to end

        // At the centre of a pixel
        float ShareAt(std::int32_t x, std::int32_t y) const noexcept { ///< 0 at the start, 1 at the end
            const double fAlong = (x - sFrom.fX) * sPerLength.fX + (y - sFrom.fY) * sPerLength.fY;
            return static_cast<float>(std::clamp(fAlong, 0.0, 1.0));
        }
        Channels At(std::int32_t x, std::int32_t y) const noexcept { ///< premultiplied
            return (sStart + sChange * ShareAt(x, y)).Premultiplied();
        }
    };
    /// The first row or column whose centre lies past a place. None is below 0, so that this is floor(),
    /// which is a call in the C library and takes longer than all the rest.
    static std::int32_t FirstBehind(double a_fPlace) noexcept {
        return static_cast<std::int32_t>(a_fPlace + 0.5); // NOLINT(bugprone-incorrect-roundings): 0 or more
    }
    static SBlend BlendOf(const SNode& a_sNode, std::uint32_t a_nTo) noexcept;

    void TakePath(std::span<const SPoint> a_asPoints);
    void TakeJoints(double a_fHalf) noexcept;
    SShape SegmentAt(std::size_t a_nAt, double a_fHalf) const noexcept;
    SShape JointAt(std::size_t a_nAt, double a_fHalf) const noexcept;
    bool IsInFrame(const SVector& a_sPlace) const noexcept {
        return a_sPlace.fX >= 0.0 && a_sPlace.fX <= _sFrame.width && a_sPlace.fY >= 0.0 &&
               a_sPlace.fY <= _sFrame.height;
    }
    /// Cuts the shape to the frame. False: nothing had to be cut.
    bool Cut(SShape& a_rsShape) const noexcept;

    // Lines in one colour, smooth: the outline of the whole path
    void AddOutline(double a_fHalf);
    bool TurnsInFrame(std::size_t a_nAt) const noexcept;
    void AddClosed(const SShape& a_sShape) noexcept;
    void LayOutline(CCanvas& a_rsCanvas) noexcept;

    // All others: shape by shape
    void Add(SShape a_sShape, const SBlend& a_sBlend, const SRows& a_sWithout);
    void AddSmooth(const SShape& a_sShape, const SBlend& a_sBlend);
    void AddHard(const SShape& a_sShape, const SBlend& a_sBlend, const SRows& a_sWithin);
    void AddPixel(std::int32_t x, std::int32_t y, float a_fCovered, const SBlend& a_sBlend) noexcept;
    void Lay(CCanvas& a_rsCanvas) noexcept;
    void AddEdge(const SVector& a_sFrom, const SVector& a_sTo, const SArea& a_sBox) noexcept;

    // Columns side by side, which fill an area (strokes_columns.cpp)
    void TakeColumns(double a_fHalf);
    SRows RowsAlone(std::size_t a_nColumn) const noexcept;
    void LayColumn(CCanvas& a_rsCanvas, std::size_t a_nAt) const noexcept;

    // Of the call
    SPen _sPen;
    SArea _sArea;
    SArea _sFrame;
    SArea _sOutline; // in the rows of the area, from where the line begins to its end
    std::vector<SNode> _vsNodes;
    std::vector<SColumn> _vsColumns;
    std::vector<float> _vfCovered;              // of each pixel of the area, summed over the shapes
    std::vector<Channels> _vsColors;            // premultiplied, weighted with that; only per vertex
    std::vector<std::array<double, 2>> _vfRuns; // of one shape: from where to where it reaches in each row
    std::vector<float>
        _vfEdges; // of a shape or an outline: how the covered share changes from pixel to pixel
};

} // namespace KAV::GFX::CPU
