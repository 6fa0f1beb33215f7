#pragma once

#include "gfx/call_log.h"
#include "gfx/gpu.h"
#include "gfx/ogl/context.h"
#include "gfx/ogl/picture.h"
#include "gfx/ogl/textures.h"
#include "gfx/picture_part.h"
#include "gfx/renderer_row.h"

#include <array>
#include <cstdint>
#include <memory>
#include <optional>
#include <string_view>
#include <vector>

namespace KAV::GFX::OGL {

/// Draws with OpenGL 1.1, as the software renderer does (gfx/cpu/data.h), with these differences: edges of
/// quads don't fade; a shift is rounded to whole pixels; nine slices take the cell of the frame's value;
/// lines are those of OpenGL, with the colours of points on both systems.
///
/// Each renderer has a context of its own, and makes it current in whatever it does: other editors, and the
/// host itself, may use theirs on the same thread. A context that can't be made current throws
/// KAV::Exceptions::OGL from BeginFrame(), which drops the frame, and does nothing elsewhere. Other failed
/// calls are written to the session log. Threads: that of the window.
struct DATA final : GPU {
    /// The window is a Platform::IPictureTarget on Linux, an HWND on Windows. Throws SPassedOver.
    DATA(const SRendererTarget& a_sTarget, EReason a_nReason);
    ~DATA() override;

    bool AnySizeTextures() const override;
    std::int32_t MaxTextureW() const override;
    std::int32_t MaxTextureH() const override;
    /// Clips don't apply to it.
    void Clear() override;
    void BeginFrame() override;
    void EndFrame() override;
    void Present() override;
    /// With sizes above 0; there is no clip then, and lines aren't smooth.
    void Resize(std::int32_t a_nW, std::int32_t a_nH) override;
    void SetLineWidth(float a_fWidth) override;
    void SetLineColor(float a_fR, float a_fG, float a_fB, float a_fA) override;
    void SetLineSmooth(bool a_bSmooth) override;
    void DrawLines(
        std::int32_t a_nPoints, const SPoint* a_psPoints, bool a_bPerVertex, bool a_bStrip) override;
    void DrawTexture(const STexture& a_rsTexture, const SDraw& a_sDraw) override;
    void DrawTexture9(const STexture& a_rsTexture, const SDraw9& a_sDraw) override;
    void CreateTextureBits(const void* a_pBits, std::int32_t a_nPitch, std::int32_t a_nPixelFormat,
        STexture& a_rsTexture, std::int32_t a_nW, std::int32_t a_nH, std::int32_t a_nTexW,
        std::int32_t a_nTexH) override;
    void CreateTexture(const Pixels::SBitmap& a_piBitmap, STexture& a_rsTexture, std::int32_t a_nTexW,
        std::int32_t a_nTexH) override;
    void FreeTexture(STexture& a_rsTexture) override;
    void UnbindTexture() override;
    /// A pixel belongs to the clip if its centre does.
    void SetClip(float a_fL, float a_fT, float a_fW, float a_fH) override;
    bool Shutdown() override;
    bool IsReady() const override;
    bool IsCurrent() const override;
    /// The frame until it is presented; black beyond it.
    void ReadBack(std::uint32_t* a_pBits, std::int32_t a_nW, std::int32_t a_nH) override;
    const char16_t* GetName() const override;
    void SetStretching(bool a_bStretching) override;
    bool IsRenewalDue() const override;

private:
    /// One corner, as GL_T2F_C4UB_V3F.
    struct SVertex {
        float fU, fV;
        std::array<std::uint8_t, 4> sColour;
        float fX, fY, fZ;
    };
    class CTransformed;

    void Start(const SRendererTarget& a_sTarget, EReason a_nReason);
    bool Enter() const noexcept;
    void SetSize(std::int32_t a_nW, std::int32_t a_nH);
    CPicture* PictureOf(const STexture& a_rsTexture) const noexcept;
    void Adopt(STexture& a_rsTexture, std::unique_ptr<CPicture> a_piPicture);
    void DrawPart(CPicture& a_piPicture, const STexture& a_rsTexture, const SDraw& a_sDraw);
    void DrawTiles(CPicture& a_piPicture, const SDraw& a_sDraw, const SPart& a_sPart);
    void AddQuad(const SRect& a_sTo, const SPart& a_sFrom, const SObject& a_sObject, std::uint32_t a_nColor);
    void DrawQuads(
        SObject& a_rsObject, bool a_bRepeat, const SRect& a_sWhole, const STransform& a_sTransform);

    CCallLog _iLog;
    std::unique_ptr<CContext> _piContext; // null: it isn't ready
    const Platform::SOpenGL* _psGl = nullptr;
    std::unique_ptr<CTextures> _piTextures;
    std::vector<std::unique_ptr<CPicture>> _vpiPictures; // all textures
    std::vector<SVertex> _vsVertices;                    // of the draw under way
    std::int32_t _nWidth = 0;
    std::int32_t _nHeight = 0;
    std::int32_t _nMaxTexture = 0;
    bool _bNPOT = true;
    bool _bClipped = false;
    std::array<float, 4> _sLineColour{1.0f, 1.0f, 1.0f, 1.0f};
    float _fLineWidth = 1.0f;
    bool _bStretching = false;
};

} // namespace KAV::GFX::OGL
