#pragma once

#include "gfx/call_log.h"
#include "gfx/d3d/strokes.h"
#include "gfx/d3d/texture.h"
#include "gfx/gpu.h"
#include "gfx/renderer_row.h"
#include "gfx/transform.h"
#include "platform/winapi/direct3d_library.h"

#include <cstdint>
#include <memory>
#include <string_view>
#include <vector>

namespace KAV::GFX::D3D {

/// Direct3D 9. What is drawn into is an additional swap chain of the window's size: a new size, or another
/// mode of the display, costs another chain, and the device with its own chain of one pixel stays as it is.
///
/// Every failed call is written to the session log and costs what it would have drawn; only pictures that
/// can't be decoded throw, as KAV::Exceptions::GDIPImage. When the system has taken the device away, nothing
/// is drawn until the editor makes the renderer anew (IsRenewalDue()). Threads: that of the window.
struct DATA final : GPU {
    /// The window is an HWND; without one the renderer isn't ready.
    explicit DATA(const SRendererTarget& a_sTarget);
    ~DATA() override;

    bool AnySizeTextures() const override;
    std::int32_t MinTextureW() const override;
    std::int32_t MaxTextureW() const override;
    std::int32_t MinTextureH() const override;
    std::int32_t MaxTextureH() const override;
    std::int32_t MaxAspect() const override;
    void Clear() override;
    void BeginFrame() override;
    void EndFrame() override;
    void Present() override;
    void Resize(std::int32_t a_nW, std::int32_t a_nH) override;
    void SetLineWidth(float a_fWidth) override;
    void SetLineColor(float a_fR, float a_fG, float a_fB, float a_fA) override;
    void SetLineSmooth(bool a_bSmooth) override;
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
    void UnbindTexture() override;
    void SetClip(float a_fL, float a_fT, float a_fW, float a_fH) override;
    void SetCulling(bool a_bCull) override;
    bool Shutdown() override;
    bool IsReady() const override;
    void ReadBack(std::uint32_t* a_pBits, std::int32_t a_nW, std::int32_t a_nH) override;
    const char16_t* GetName() const override;
    void SetStretching(bool a_bStretching) override;
    bool IsRenewalDue() const override;

private:
    bool MakeDevice();
    void SetFixedState();
    void LogLimits();
    bool MakeTarget(std::int32_t a_nW, std::int32_t a_nH);
    void FreeTarget() noexcept;
    /// Writes a failed call to the log; whether it succeeded.
    bool Check(HRESULT a_nResult, std::u16string_view a_sCall) noexcept;

    /// Room for the pixels, filled with them. False, and an empty image, if that fails.
    bool MakeImage(
        SImage& a_rsImage, const SPicturePixels& a_sPixels, std::int32_t a_nTexW, std::int32_t a_nTexH);
    bool FillImage(const SImage& a_sImage, const SPicturePixels& a_sPixels);
    bool MakeWhole(SPicture& a_rsPicture);
    bool MakeCells(SPicture& a_rsPicture, const SCellWish& a_sWish);
    void Adopt(STexture& a_rsTexture, std::unique_ptr<SPicture> a_piPicture);

    void BeginDraw(const SRect& a_sTo, const STransform& a_sTransform);
    void ResetTransform();
    void EndDraw(const STransform& a_sTransform);
    void DrawPiece(SPicture& a_rsPicture, const SPiece& a_sPiece, std::uint32_t a_nColor);
    void DrawWhole(const SImage& a_sImage, const SPiece& a_sPiece, std::uint32_t a_nColor);
    void SetRepeating(bool a_bRepeating);
    void DrawQuad(const SImage& a_sImage, const SPiece& a_sPiece, std::uint32_t a_nColor);

    CCallLog _iLog;
    const Platform::SDirect3D* _pCalls = nullptr; // null: nothing works
    CObject<IDirect3DSwapChain9> _piD3D09SwapChain;
    CObject<IDirect3DSurface9> _piD3D09Surface;
    CObject<IDirect3DSurface9> _piDepthStencil;
    std::int32_t _nMinTextureW = 0, _nMinTextureH = 0;
    std::int32_t _nMaxTextureW = 0, _nMaxTextureH = 0;
    std::int32_t _nMaxAspect = 0;
    bool _bNPOT = false;
    bool _bRepeats = false; // pictures of any size
    bool _bSquareOnly = false;
    std::uint32_t _nLineColor = White;
    float _fLineWidth = 1.0f;
    SRect _sClip;
    bool _bLineSmooth = false;
    CObject<IDirect3DDevice9> _piD3D09Device;
    CObject<IDirect3D9> _piD3D09;

    HWND _hWnd = nullptr;
    D3DFORMAT _nFormat = D3DFMT_UNKNOWN; // of the display
    std::int32_t _nW = 0, _nH = 0;       // of the target
    bool _bTargetFailed = false;         // that of the last size: a new device may do better
    bool _bInScene = false;
    mutable bool _bLost = false; // the device was taken away, as it says when it is asked
    bool _bStretching = false;
    CStrokes _iStrokes;
    std::vector<SPoint> _vsPath;
    std::vector<std::unique_ptr<SPicture>> _vpiPictures; // all textures
};

} // namespace KAV::GFX::D3D
