#pragma once

#include "gfx/call_log.h"
#include "gfx/cpu/gdiplus/picture.h"
#include "gfx/gpu.h"
#include "gfx/renderer_row.h"
#include "platform/winapi/gdiplus_library.h"

#include <cstdint>
#include <memory>
#include <string_view>
#include <vector>

namespace KAV::GFX::CPU {

/// The software renderer of Windows: everything is drawn by GDI+ into a bitmap of the window's size. A cell
/// of a sprite that is drawn at whole pixels has been scaled before (gfx/cpu/gdiplus/picture.h); GDI+ scales
/// the rest. Lines are those of GDI+, in one colour each.
///
/// Every failed call is written to the session log, and the draw goes on; only pictures that can't be decoded
/// throw, as KAV::Exceptions::GDIPImage. Threads: that of the window.
struct DATA final : GPU {
    /// The window is an HWND, or null: then Present() does nothing.
    explicit DATA(const SRendererTarget& a_sTarget);
    ~DATA() override;

    bool AnySizeTextures() const override;
    std::int32_t MaxTextureW() const override;
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
    void DrawLines(
        std::int32_t a_nPoints, const SPoint* a_psPoints, bool a_bPerVertex, bool a_bStrip) override;
    void DrawTexture(const STexture& a_rsTexture, const SDraw& a_sDraw) override;
    /// The whole picture; the frame's value means nothing here.
    void DrawTexture9(const STexture& a_rsTexture, const SDraw9& a_sDraw) override;
    void CreateTextureBits(const void* a_pBits, std::int32_t a_nPitch, std::int32_t a_nPixelFormat,
        STexture& a_rsTexture, std::int32_t a_nW, std::int32_t a_nH, std::int32_t a_nTexW,
        std::int32_t a_nTexH) override;
    void CreateTexture(const Pixels::SBitmap& a_piBitmap, STexture& a_rsTexture, std::int32_t a_nTexW,
        std::int32_t a_nTexH) override;
    void FreeTexture(STexture& a_rsTexture) override;
    void SetClip(float a_fL, float a_fT, float a_fW, float a_fH) override;
    bool Shutdown() override;
    bool IsReady() const override;
    void ReadBack(std::uint32_t* a_pBits, std::int32_t a_nW, std::int32_t a_nH) override;
    const char16_t* GetName() const override;
    void SetStretching(bool a_bStretching) override;

private:
    class CDrawState;
    void MakeBackBuffer(std::int32_t a_nW, std::int32_t a_nH);
    void FreeBackBuffer() noexcept;
    void Adopt(STexture& a_rsTexture, std::unique_ptr<CPicture> a_piPicture);
    /// Writes a failed call to the log.
    void Check(Gdiplus::Status a_nStatus, std::u16string_view a_sCall) noexcept;

    CCallLog _iLog;
    std::unique_ptr<Platform::CGdiplusUse> _piUse; // as long as there is anything of the library's
    const Platform::SGdiplus* _piGdi = nullptr;    // null: nothing works
    HWND _hWnd = nullptr;
    Gdiplus::GpBitmap* _piBB = nullptr;
    Gdiplus::GpGraphics* _piGdipBB = nullptr;
    std::int32_t _nW = 0, _nH = 0;
    std::uint32_t _nLineColor = White;
    float _fLineWidth = 1.0f;
    std::vector<Gdiplus::PointF> _vsLinePoints;
    std::vector<std::unique_ptr<CPicture>> _vpiPictures; // all textures
    bool _bStretching = false;
};

} // namespace KAV::GFX::CPU
