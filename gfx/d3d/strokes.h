#pragma once

#include "gfx/draw.h"

#include <cstdint>
#include <span>
#include <vector>

namespace KAV::GFX::D3D {

/// A corner of what the device draws, as its vertex format has it.
struct SVertex {
    float fX = 0.0f; ///< in pixels; a whole number is the edge of a pixel
    float fY = 0.0f;
    float fZ = 0.0f;
    std::uint32_t nColor = White;
    float fU = 0.0f;
    float fV = 0.0f;
};

/// Lines as triangles: the device's own lines are one pixel wide and rough. The corners of a path are pointed
/// up to ten times its width, as GDI+ draws them, and a path covers no pixel twice, so that it may be
/// translucent; only where it turns sharply between points closer together than its width does it overlap.
/// A smooth line fades out over the pixels of its edge, by how much of each it covers; another one covers the
/// pixels whose centres it contains, and is at least one pixel wide.
class CStrokes final {
public:
    /// Begins a new list.
    void Begin(float a_fWidth, bool a_bSmooth);
    /// Adds one path. The points have the colours.
    void AddPath(std::span<const SPoint> a_sPath);
    /// Three for each triangle.
    const std::vector<SVertex>& Triangles() const noexcept { return _vsTriangles; }

private:
    struct SVector {
        float fX = 0.0f;
        float fY = 0.0f;
    };
    struct SNode {
        SVector sAt;
        SVector sAlong; ///< of length 1, to the next node; not set in the last one
        float fLength = 0.0f;
        std::uint32_t nColor = White;
    };
    /// Where the line's bands are cut across, in units of half a line's width.
    struct SCut {
        SVector sAt;
        SVector sAcross;
        std::uint32_t nColor = White;
    };
    void AddNodes(std::span<const SPoint> a_sPath);
    bool JoinsSmoothly(const SNode& a_sBefore, const SNode& a_sAfter, SVector& a_rsAcross) const;
    void AddSegment(const SCut& a_sFrom, const SCut& a_sTo);
    void AddCorner(const SNode& a_sBefore, const SNode& a_sNode);
    void AddBand(const SCut& a_sFrom, const SCut& a_sTo, float a_fFrom, float a_fTo, float a_fShareFrom,
        float a_fShareTo);
    /// A corner at one of the two cuts, in the colour of its place between them.
    static SVertex At(
        const SCut& a_sFrom, const SCut& a_sTo, const SCut& a_sCut, float a_fOffset, float a_fShare) noexcept;

    bool _bSmooth = false;
    float _fOuter = 0.5f; // distances from the middle: where the line ends,
    float _fInner = 0.5f; // and where it begins to fade
    float _fShare = 1.0f; // of a pixel that a line thinner than a pixel covers
    std::vector<SNode> _vsNodes;
    std::vector<SVertex> _vsTriangles;
};

} // namespace KAV::GFX::D3D
