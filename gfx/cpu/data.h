#pragma once

#include "gfx/call_log.h"
#include "gfx/cpu/areas.h"
#include "gfx/cpu/canvas.h"
#include "gfx/cpu/cell_differences.h"
#include "gfx/cpu/draw_list.h"
#include "gfx/cpu/picture.h"
#include "gfx/cpu/strokes.h"
#include "gfx/gpu.h"
#include "gfx/renderer_row.h"
#include "platform/picture_target.h"

#include <cstddef>
#include <cstdint>
#include <memory>
#include <vector>

namespace KAV::GFX::CPU {

/// The software renderer: the reference for what every operation means. It needs no graphics hardware.
///
/// Pixels. The pixel in column n covers n..n + 1 and is sampled at its centre, n + 0.5; so are the pixels of
/// pictures. Places that are less than a thousandth of a pixel from a whole number count as whole. Everything
/// is computed on premultiplied values with 8 bits per channel. A quad without width or height, or
/// with a number that isn't finite or beyond a million, isn't drawn; neither are lines with such a point.
///
/// Quads. What a quad shows of its picture is its cell. If that is one of the cells of the picture's grid, it
/// is first scaled by itself to the quad's size in whole pixels, before any transform (pixels/resample.h);
/// each size is made once. While SetStretching() is on no further size is made, and the nearest one is
/// stretched. Any other part of a picture is taken from the picture as stored. A quad at whole
/// pixels then gets just these pixels, also after turns by 90 degrees. Elsewhere they are bilinear between
/// the pixels of the cell, whose outermost pixels go on beyond it: the next cell never shines through. A part
/// that exceeds 0..1 repeats the picture, without a seam. A quad's edges that aren't at whole pixels fade
/// over one pixel, across the edge.
///
/// Colour. Each channel is multiplied by the colour's, then the result is laid over the frame; both times it
/// is rounded to 8 bits.
///
/// Nine slices take the whole picture; the frame's value means nothing here. Each slice is a cell; an
/// edge at which two slices meet doesn't fade: each pixel belongs to the slice in which its centre lies. A
/// slice without size, as margins make it that exceed the quad, isn't drawn; margins that exceed the picture
/// take its outermost pixels.
///
/// Lines. Points are moved by -0.5, so that x = n + 0.5 runs through the centres of column n. Joints are
/// mitred, or cut off where a mitre would exceed ten widths; ends are flat; a strip is one shape, no
/// pixel of which is painted twice. Smooth lines cover each pixel by the area they have in it. Others cover
/// pixels whose centre they contain, and are at least one pixel wide. The colours of points are blended along
/// the line.
///
/// Frames. Draws are noted, and painted by EndFrame(): where they are those of the last frame, that stays as
/// it is; of a sprite's next frame only what differs is painted. The frame always is what painting all of it
/// would give. Textures may be freed as soon as they were drawn. Present() puts the changed areas into the
/// window. A frame that was begun and never ended is dropped.
///
/// Every failed call is written to the session log, and the draw goes on; only pictures that can't be decoded
/// throw, as KAV::Exceptions::GDIPImage.
struct DATA final : GPU {
    /// The window is a Platform::IPictureTarget, or null: then Present() does nothing.
    explicit DATA(const SRendererTarget& a_sTarget);
    ~DATA() override;

    bool AnySizeTextures() const override;
    std::int32_t MaxTextureW() const override;
    std::int32_t MaxTextureH() const override;
    std::int32_t MaxAspect() const override;
    /// Clips don't apply to it.
    void Clear() override;
    void BeginFrame() override;
    void EndFrame() override;
    void Present() override;
    /// With sizes above 0 the frame is made anew: black, without a clip, and lines aren't smooth.
    void Resize(std::int32_t a_nW, std::int32_t a_nH) override;
    void SetLineWidth(float a_fWidth) override;
    void SetLineColor(float a_fR, float a_fG, float a_fB, float a_fA) override;
    void SetLineSmooth(bool a_bSmooth) override;
    void DrawLines(
        std::int32_t a_nPoints, const SPoint* a_psPoints, bool a_bPerVertex, bool a_bStrip) override;
    void DrawTexture(const STexture& a_rsTexture, const SDraw& a_sDraw) override;
    void DrawTexture9(const STexture& a_rsTexture, const SDraw9& a_sDraw) override;
    /// A pitch that isn't that of a packed picture of a_nTexW pixels, or another height, leaves it blank.
    void CreateTextureBits(const void* a_pBits, std::int32_t a_nPitch, std::int32_t a_nPixelFormat,
        STexture& a_rsTexture, std::int32_t a_nW, std::int32_t a_nH, std::int32_t a_nTexW,
        std::int32_t a_nTexH) override;
    void CreateTexture(const Pixels::SBitmap& a_piBitmap, STexture& a_rsTexture, std::int32_t a_nTexW,
        std::int32_t a_nTexH) override;
    void FreeTexture(STexture& a_rsTexture) override;
    /// A pixel belongs to the clip if its centre does.
    void SetClip(float a_fL, float a_fT, float a_fW, float a_fH) override;
    bool Shutdown() override;
    bool IsReady() const override;
    /// The frame as it was last ended; black beyond it.
    void ReadBack(std::uint32_t* a_pBits, std::int32_t a_nW, std::int32_t a_nH) override;
    const char16_t* GetName() const override;
    void SetStretching(bool a_bStretching) override;

    // For tests
    std::size_t PaintedDraws() const noexcept { return _nPainted; } ///< by the last EndFrame()
    std::size_t NotedDraws() const noexcept { return _iNoted.Draws().size(); }

private:
    struct SQuad;
    CPicture* PictureOf(const STexture& a_rsTexture) const noexcept;
    void AddQuad(CPicture& a_piPicture, const STexture& a_rsTexture, const SQuad& a_sQuad);
    void Adopt(STexture& a_rsTexture, std::unique_ptr<CPicture> a_piPicture);
    void Paint();
    void PaintArea(const SArea& a_sArea);
    void PaintDraw(const CDrawList::SDraw& a_sDraw, const SArea& a_sArea);

    CCallLog _iLog;
    CCanvas _iCanvas;
    CStrokes _iStrokes;
    Platform::IPictureTarget* _piTarget;
    std::vector<std::unique_ptr<CPicture>> _vpiPictures; // all textures
    std::vector<std::unique_ptr<CPicture>> _vpiFreed;    // draws that aren't painted yet may use them
    CDrawList _iNoted;                                   // the draws since the last frame ended
    CDrawList _iPainted;                                 // the draws of the frame as it is, if it is known
    bool _bPaintedKnown = false;
    CCellDifferences _iCells;
    CAreas _iChanged; // areas that the frame under way repaints
    CAreas _iDue;     // areas that the window doesn't show yet
    std::size_t _nPainted = 0;
    SArea _sClip; // within the frame
    SPen _sPen;
    bool _bStretching = false;
};

} // namespace KAV::GFX::CPU
