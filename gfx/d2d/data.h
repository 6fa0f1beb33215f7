#pragma once

#include "gfx/call_log.h"
#include "gfx/d2d/texture.h"
#include "gfx/gpu.h"
#include "gfx/renderer_row.h"
#include "gfx/transform.h"
#include "platform/winapi/direct2d_library.h"

#include <array>
#include <cstdint>
#include <memory>
#include <span>
#include <string_view>
#include <vector>

namespace KAV::GFX::D2D {

/// Direct2D 1.1: the window's own target, and the context that draws into it.
///
/// Every failed call is written to the session log and costs what it would have drawn; only pictures that
/// can't be decoded throw, as KAV::Exceptions::GDIPImage. A target that the system has taken away stays so
/// until the user chooses a renderer. Threads: that of the window.
struct DATA final : GPU {
    /// The window is an HWND; without one the renderer isn't ready.
    explicit DATA(const SRendererTarget& a_sTarget);
    ~DATA() override;

    bool AnySizeTextures() const override;
    std::int32_t MaxTextureW() const override;
    std::int32_t MaxTextureH() const override;
    void Clear() override;
    void BeginFrame() override;
    /// Shows the frame, too.
    void EndFrame() override;
    void Present() override;
    void Resize(std::int32_t a_nW, std::int32_t a_nH) override;
    void SetLineWidth(float a_fWidth) override;
    void SetLineColor(float a_fR, float a_fG, float a_fB, float a_fA) override;
    void SetLineSmooth(bool a_bSmooth) override;
    bool IsOffscreenCapable() const override;
    void BeginOffscreen() override;
    void EndOffscreen() override;
    void DrawOffscreen() override;
    /// Each line has the colours of its points, and blends from one to the other.
    void DrawLines(
        std::int32_t a_nPoints, const SPoint* a_psPoints, bool a_bPerVertex, bool a_bStrip) override;
    void DrawTexture(const STexture& a_rsTexture, const SDraw& a_sDraw) override;
    /// The frame that the value chooses.
    void DrawTexture9(const STexture& a_rsTexture, const SDraw9& a_sDraw) override;
    void CreateTextureBits(const void* a_pBits, std::int32_t a_nPitch, std::int32_t a_nPixelFormat,
        STexture& a_rsTexture, std::int32_t a_nW, std::int32_t a_nH, std::int32_t a_nTexW,
        std::int32_t a_nTexH) override;
    void CreateTexture(const Pixels::SBitmap& a_piBitmap, STexture& a_rsTexture, std::int32_t a_nTexW,
        std::int32_t a_nTexH) override;
    void FreeTexture(STexture& a_rsTexture) override;
    /// Of a copy of the target. One that was made of the same frame stays.
    void MakeBackdrop(STexture& a_rsTexture, std::int32_t a_nW, std::int32_t a_nH) override;
    void SetClip(float a_fL, float a_fT, float a_fW, float a_fH) override;
    bool Shutdown() override;
    bool IsReady() const override;
    void ReadBack(std::uint32_t* a_pBits, std::int32_t a_nW, std::int32_t a_nH) override;
    const char16_t* GetName() const override;
    void ReleaseTexture(STexture& a_rsTexture) override;
    void SetStretching(bool a_bStretching) override;

private:
    void MakeTarget(std::int32_t a_nW, std::int32_t a_nH);
    void MakeTools();
    void EndClip() noexcept;
    /// Writes a failed call to the log; whether it succeeded.
    bool Check(HRESULT a_nResult, std::u16string_view a_sCall) noexcept;

    /// A copy of the target that can be read; false if that fails.
    bool CopyTarget(CObject<ID2D1Bitmap1>& a_rsCopy);
    bool MakeBitmap(CObject<ID2D1Bitmap1>& a_rsBitmap, const SPicturePixels& a_sPixels);
    bool MakeImage(SImage& a_rsImage, SPicturePixels a_sPixels);
    bool MakeChannels(SImage& a_rsImage);
    bool MakeWhole(SPicture& a_rsPicture);
    bool MakeCells(SPicture& a_rsPicture, const SCellWish& a_sWish);
    void Adopt(STexture& a_rsTexture, std::unique_ptr<SPicture> a_piPicture);

    void DrawPiece(
        SPicture& a_rsPicture, const SPiece& a_sPiece, std::uint32_t a_nColor, const SFlatMatrix& a_sFlat);
    void DrawQuad(
        SImage& a_rsImage, const SPiece& a_sPiece, std::uint32_t a_nColor, const SFlatMatrix& a_sFlat);
    void DrawTinted(
        const SImage& a_sImage, const SPiece& a_sPiece, std::uint32_t a_nColor, const SFlatMatrix& a_sFlat);
    void DrawByChannels(SImage& a_rsImage, const SPiece& a_sPiece, std::uint32_t a_nColor);
    void SetTransform(const SFlatMatrix& a_sFlat);
    void DrawPath(std::span<const SPoint> a_sPath, float a_fWidth);
    bool MakeBlend(const std::array<std::uint32_t, 2>& a_nColors);
    void DrawBlended(const SPoint& a_sFrom, const SPoint& a_sTo, float a_fWidth);
    ID2D1Brush* BrushOf(std::uint32_t a_nColor);

    CCallLog _iLog;
    const Platform::SDirect2D* _pCalls = nullptr; // null: nothing works
    float _fLineWidth = 1.0f;
    bool _bLineSmooth = false;
    bool _bBackdropStale = true; // a frame has been drawn since the last one was made
    std::uint32_t _nLineColor = White;
    CObject<ID2D1Factory> _piFactory;
    CObject<ID2D1HwndRenderTarget> _piTarget;
    CObject<ID2D1DeviceContext> _piContext;
    CObject<ID2D1Bitmap1> _piOffscreen;
    CObject<ID2D1Image> _piSavedTarget; // while the off-screen bitmap is drawn into
    std::int32_t _nMaxBitmap = 0;

    HWND _hWnd = nullptr;
    std::int32_t _nW = 0, _nH = 0;
    std::int32_t _nOffscreenW = 0, _nOffscreenH = 0;
    bool _bInFrame = false;
    bool _bClipped = false;
    bool _bStretching = false;
    CObject<ID2D1Effect> _piTint; // null: this system has none
    CObject<ID2D1StrokeStyle> _piCorners;
    CObject<ID2D1SolidColorBrush> _piBrush;
    CObject<ID2D1Bitmap1> _piBlend;
    std::array<std::uint32_t, 2> _nBlendColors{}; // of that bitmap
    std::vector<D2D1_POINT_2F> _vsLinePoints;
    std::vector<std::unique_ptr<SPicture>> _vpiPictures; // all textures
};

} // namespace KAV::GFX::D2D
