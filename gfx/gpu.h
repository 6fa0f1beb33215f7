#pragma once

#include "gfx/draw.h"
#include "gfx/texture.h"
#include "pixels/bitmap.h"

#include <cstdint>

namespace KAV::GFX {

/// Draws the editor into its window. This base is a valid renderer that does nothing and is never ready, so
/// that an editor always has one. A back end only draws; what all of them share lies above this interface:
/// the cache of textures, their counts, and the checks of their sizes.
///
/// The order of the operations is fixed: new ones are added at the end, before the destructor. Arguments have
/// the names that back ends quote when they log a failed call; that is why a texture that is only read is
/// called `a_rsTexture` too. Operations that draw or create something may throw KAV::Exceptions::Std.
/// Threads: that of the window.
struct GPU {
    GPU() = default;
    GPU(const GPU&) = delete;
    GPU& operator=(const GPU&) = delete;

    /// If false, the sides of textures have to be powers of two (TextureSide()).
    virtual bool AnySizeTextures() const;
    // Limits for the sides of textures, and for the ratio of the longer side to the shorter one. 0: no limit.
    virtual std::int32_t MinTextureW() const;
    virtual std::int32_t MaxTextureW() const;
    virtual std::int32_t MinTextureH() const;
    virtual std::int32_t MaxTextureH() const;
    virtual std::int32_t MaxAspect() const;

    /// Fills the frame with opaque black.
    virtual void Clear();
    virtual void BeginFrame();
    virtual void EndFrame();
    /// Shows the finished frame in the window.
    virtual void Present();
    virtual void Resize(std::int32_t a_nW, std::int32_t a_nH);

    // Lines that DrawLines() draws from now on. Components are 0..1.
    virtual void SetLineWidth(float a_fWidth);
    virtual void SetLineColor(float a_fR, float a_fG, float a_fB, float a_fA);
    virtual void SetLineSmooth(bool a_bSmooth);

    /// Whether the three operations below do something: draw into a layer, and draw the layer.
    virtual bool IsOffscreenCapable() const;
    virtual void BeginOffscreen();
    virtual void EndOffscreen();
    virtual void DrawOffscreen();

    /// Draws lines through all points as one strip, or one line for each pair of them. The colour is that of
    /// the points or the one that was set.
    virtual void DrawLines(
        std::int32_t a_nPoints, const SPoint* a_psPoints, bool a_bPerVertex, bool a_bStrip);
    virtual void DrawTexture(const STexture& a_rsTexture, const SDraw& a_sDraw);
    virtual void DrawTexture9(const STexture& a_rsTexture, const SDraw9& a_sDraw);

    /// Makes a texture of a_nTexW by a_nTexH pixels whose upper left part holds the picture of a_nW by a_nH.
    /// The rows of the picture are a_nPitch bytes apart; its format is one of gfx/pixel_format.h. Sets the
    /// handle of the record and nothing else of it; the handle stays 0 if that fails.
    virtual void CreateTextureBits(const void* a_pBits, std::int32_t a_nPitch, std::int32_t a_nPixelFormat,
        STexture& a_rsTexture, std::int32_t a_nW, std::int32_t a_nH, std::int32_t a_nTexW,
        std::int32_t a_nTexH);
    /// The same of a decoded bitmap.
    virtual void CreateTexture(
        const Pixels::SBitmap& a_piBitmap, STexture& a_rsTexture, std::int32_t a_nTexW, std::int32_t a_nTexH);
    /// Deletes a texture and resets its record.
    virtual void FreeTexture(STexture& a_rsTexture);
    /// The next draw uses no texture: call it before shapes without one.
    virtual void UnbindTexture();

    /// Makes a texture of the last frame, opaque and blurred, and fills in its record: the background of a
    /// box. A texture that the record holds is freed first. The record stays freed if there is no frame.
    virtual void MakeBackdrop(STexture& a_rsTexture, std::int32_t a_nW, std::int32_t a_nH);

    /// Restricts draws to this rectangle. A width or height of 0 ends the restriction.
    virtual void SetClip(float a_fL, float a_fT, float a_fW, float a_fH);
    virtual void SetCulling(bool a_bCull);

    /// Releases everything but the textures; true if there was something. Also for a renderer that never
    /// became ready.
    virtual bool Shutdown();
    /// Whether the renderer can draw: everything that it needs has been made.
    virtual bool IsReady() const;
    /// Whether this renderer is the one that this thread draws with.
    virtual bool IsCurrent() const;
    /// Copies the last frame as rows of a_nW pixels, 0xAARRGGBB.
    virtual void ReadBack(std::uint32_t* a_pBits, std::int32_t a_nW, std::int32_t a_nH);
    virtual const char16_t* GetName() const;
    /// For a backdrop that is no longer up to date: Direct2D frees it. Nothing elsewhere.
    virtual void ReleaseTexture(STexture& a_rsTexture);
    /// While it stretches, pictures that a renderer keeps at the sizes in use are drawn from the sizes that
    /// it has: the window is being dragged to another size.
    virtual void SetStretching(bool a_bStretching);
    /// Whether the device behind it was lost and can be had again: this renderer draws nothing any more, and
    /// another one has to take its place. Asked at each tick.
    virtual bool IsRenewalDue() const;

    virtual ~GPU();
};

/// The base, for an editor that has no other renderer.
GPU& NoRenderer() noexcept;

} // namespace KAV::GFX
