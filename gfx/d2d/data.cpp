#include "gfx/d2d/data.h"

#include "utils/number.h"
#include "utils/session_log.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <string>

namespace KAV::GFX::D2D {

namespace {

constexpr std::uint32_t Black = 0xFF000000U;

constexpr D2D1_BITMAP_PROPERTIES1 BitmapOf(
    D2D1_ALPHA_MODE a_nAlpha, D2D1_BITMAP_OPTIONS a_nOptions) noexcept {
    return {{DXGI_FORMAT_B8G8R8A8_UNORM, a_nAlpha}, Dpi, Dpi, a_nOptions, nullptr};
}

D2D1_SIZE_U SizeOf(std::int32_t a_nW, std::int32_t a_nH) noexcept {
    return {static_cast<UINT32>(a_nW), static_cast<UINT32>(a_nH)};
}

} // namespace

// Beginning and end

DATA::DATA(const SRendererTarget& a_sTarget)
    : _pCalls(Platform::Direct2D()), _hWnd(static_cast<HWND>(a_sTarget.pWindow)) {
    // Without a window some systems would draw into the desktop.
    if (_pCalls == nullptr || _hWnd == nullptr) return;
    void* piFactory = nullptr;
    const bool bMade = Check(_pCalls->CreateFactory(D2D1_FACTORY_TYPE_SINGLE_THREADED,
                                 &Platform::FactoryInterface, nullptr, &piFactory),
        u"D2D1CreateFactory(D2D1_FACTORY_TYPE_SINGLE_THREADED, &_piFactory)");
    if (!bMade || piFactory == nullptr) return;
    _piFactory.Adopt(*_pCalls, static_cast<ID2D1Factory*>(piFactory));
    MakeTarget(std::max(a_sTarget.nW, 1), std::max(a_sTarget.nH, 1));
    if (!_piContext) return;
    MakeTools();
    _nMaxBitmap = static_cast<std::int32_t>(_pCalls->GetMaximumBitmapSize(_piContext.Get()));
    const auto sLimit = Utils::FormatInt(_nMaxBitmap);
    std::u16string sText = u"Direct2D=MaxTextureW=";
    Utils::LogLine(sText.append(sLimit).append(u" | MaxTextureH=").append(sLimit));
}

DATA::~DATA() {
    _vpiPictures.clear();
    Shutdown();
}

bool DATA::Check(HRESULT a_nResult, std::u16string_view a_sCall) noexcept {
    if (SUCCEEDED(a_nResult)) return true;
    _iLog.Failed(a_sCall, static_cast<std::int32_t>(a_nResult));
    return false;
}

void DATA::MakeTarget(std::int32_t a_nW, std::int32_t a_nH) {
    const D2D1_RENDER_TARGET_PROPERTIES sProperties{D2D1_RENDER_TARGET_TYPE_DEFAULT,
        {DXGI_FORMAT_B8G8R8A8_UNORM, D2D1_ALPHA_MODE_IGNORE}, Dpi, Dpi, D2D1_RENDER_TARGET_USAGE_NONE,
        D2D1_FEATURE_LEVEL_DEFAULT};
    // The editor's clock paces the frames; and the frame can be read back after it has been shown.
    const auto nOptions = static_cast<D2D1_PRESENT_OPTIONS>(
        D2D1_PRESENT_OPTIONS_RETAIN_CONTENTS | D2D1_PRESENT_OPTIONS_IMMEDIATELY);
    const D2D1_HWND_RENDER_TARGET_PROPERTIES sWindow{_hWnd, SizeOf(a_nW, a_nH), nOptions};
    Check(_pCalls->CreateHwndRenderTarget(_piFactory.Get(), &sProperties, &sWindow, _piTarget.Fill(*_pCalls)),
        u"_piFactory->CreateHwndRenderTarget(sProperties, sWindow, &_piTarget)");
    if (!_piTarget) return;
    void* piContext = nullptr;
    Check(_pCalls->QueryInterface(_piTarget.Get(), &Platform::DeviceContextInterface, &piContext),
        u"_piTarget->QueryInterface(&_piContext)");
    if (piContext == nullptr) return;
    _piContext.Adopt(*_pCalls, static_cast<ID2D1DeviceContext*>(piContext));
    _nW = a_nW;
    _nH = a_nH;
}

/// What draws need besides the target; without one of them, only what needs it isn't drawn.
void DATA::MakeTools() {
    // Not every system has it, which is no error.
    if (FAILED(_pCalls->CreateEffect(_piContext.Get(), &Platform::ColorMatrixEffect, _piTint.Fill(*_pCalls))))
        _piTint.Reset();
    constexpr float fLongestTip = 10.0f; // of a corner, in halves of the width
    const D2D1_STROKE_STYLE_PROPERTIES sStyle{D2D1_CAP_STYLE_FLAT, D2D1_CAP_STYLE_FLAT, D2D1_CAP_STYLE_FLAT,
        D2D1_LINE_JOIN_MITER_OR_BEVEL, fLongestTip, D2D1_DASH_STYLE_SOLID, 0.0f};
    Check(_pCalls->CreateStrokeStyle(_piFactory.Get(), &sStyle, _piCorners.Fill(*_pCalls)),
        u"_piFactory->CreateStrokeStyle(sStyle, nullptr, 0, &_piCorners)");
    const D2D1_COLOR_F sWhite{1.0f, 1.0f, 1.0f, 1.0f};
    Check(_pCalls->CreateSolidColorBrush(_piContext.Get(), &sWhite, _piBrush.Fill(*_pCalls)),
        u"_piContext->CreateSolidColorBrush(sWhite, &_piBrush)");
}

bool DATA::Shutdown() {
    const bool bThere = IsReady();
    if (bThere && _bInFrame) {
        EndClip();
        _pCalls->EndDraw(_piContext.Get());
    }
    _bInFrame = false;
    _piSavedTarget.Reset();
    _piOffscreen.Reset();
    _piBlend.Reset();
    _piBrush.Reset();
    _piCorners.Reset();
    _piTint.Reset();
    _piContext.Reset();
    _piTarget.Reset();
    _piFactory.Reset();
    return bThere;
}

bool DATA::IsReady() const {
    return _piFactory && _piTarget && _piContext;
}

const char16_t* DATA::GetName() const {
    return u"Direct2D";
}

bool DATA::AnySizeTextures() const {
    return true;
}

std::int32_t DATA::MaxTextureW() const {
    return _nMaxBitmap;
}

std::int32_t DATA::MaxTextureH() const {
    return _nMaxBitmap;
}

void DATA::SetStretching(bool a_bStretching) {
    _bStretching = a_bStretching;
}

// Frames

void DATA::Clear() {
    if (!_bInFrame) return;
    const D2D1_COLOR_F sBlack{0.0f, 0.0f, 0.0f, 1.0f};
    _pCalls->Clear(_piContext.Get(), &sBlack);
}

void DATA::BeginFrame() {
    if (!IsReady()) return;
    // An error may have ended the last frame early.
    if (_piSavedTarget) EndOffscreen();
    if (_bInFrame) EndClip();
    if (!_bInFrame) _pCalls->BeginDraw(_piContext.Get());
    _bInFrame = true;
}

void DATA::EndFrame() {
    if (!_bInFrame) return;
    EndClip();
    _bInFrame = false;
    _bBackdropStale = true;
    Check(_pCalls->EndDraw(_piContext.Get()), u"_piContext->EndDraw()");
}

void DATA::Present() {}

void DATA::Resize(std::int32_t a_nW, std::int32_t a_nH) {
    if (!IsReady() || a_nW <= 0 || a_nH <= 0) return;
    const D2D1_SIZE_U sSize = SizeOf(a_nW, a_nH);
    if (!Check(_pCalls->ResizeTarget(_piTarget.Get(), &sSize), u"_piTarget->Resize(sSize)")) return;
    _nW = a_nW;
    _nH = a_nH;
    _bBackdropStale = true;
}

void DATA::EndClip() noexcept {
    if (_bClipped) _pCalls->PopAxisAlignedClip(_piContext.Get());
    _bClipped = false;
}

void DATA::SetClip(float a_fL, float a_fT, float a_fW, float a_fH) {
    if (!_bInFrame) return;
    EndClip();
    if (a_fW == 0.0f || a_fH == 0.0f) return;
    // The pixels whose centres lie in it.
    const auto pixel = [](float a_fPlace) { return std::ceil(a_fPlace - 0.5f); };
    const D2D1_RECT_F sRect{pixel(a_fL), pixel(a_fT), pixel(a_fL + a_fW), pixel(a_fT + a_fH)};
    _pCalls->PushAxisAlignedClip(_piContext.Get(), &sRect);
    _bClipped = true;
}

// The off-screen bitmap

bool DATA::IsOffscreenCapable() const {
    return true;
}

void DATA::BeginOffscreen() {
    if (!IsReady() || _piSavedTarget) return;
    if (!_piOffscreen || _nOffscreenW != _nW || _nOffscreenH != _nH) {
        const auto sProperties = BitmapOf(D2D1_ALPHA_MODE_PREMULTIPLIED, D2D1_BITMAP_OPTIONS_TARGET);
        Check(_pCalls->CreateBitmap(
                  _piContext.Get(), SizeOf(_nW, _nH), nullptr, 0, &sProperties, _piOffscreen.Fill(*_pCalls)),
            u"_piContext->CreateBitmap(sSize, nullptr, 0, sProperties, &_piOffscreen)");
        _nOffscreenW = _nW;
        _nOffscreenH = _nH;
    }
    if (!_piOffscreen) return;
    EndClip();
    ID2D1Image* piTarget = nullptr;
    _pCalls->GetTarget(_piContext.Get(), &piTarget);
    _piSavedTarget.Adopt(*_pCalls, piTarget);
    if (!_piSavedTarget) return;
    _pCalls->SetTarget(_piContext.Get(), _piOffscreen.Get());
    if (!_bInFrame) _pCalls->BeginDraw(_piContext.Get());
    const D2D1_COLOR_F sTransparent{0.0f, 0.0f, 0.0f, 0.0f};
    _pCalls->Clear(_piContext.Get(), &sTransparent);
}

void DATA::EndOffscreen() {
    if (!_piSavedTarget) return;
    if (!_bInFrame) Check(_pCalls->EndDraw(_piContext.Get()), u"_piContext->EndDraw()");
    EndClip();
    _pCalls->SetTarget(_piContext.Get(), _piSavedTarget.Get());
    _piSavedTarget.Reset();
}

void DATA::DrawOffscreen() {
    if (!_bInFrame || !_piOffscreen) return;
    const D2D1_RECT_F sAll{0.0f, 0.0f, static_cast<float>(_nOffscreenW), static_cast<float>(_nOffscreenH)};
    _pCalls->DrawBitmap(_piContext.Get(), _piOffscreen.Get(), &sAll, 1.0f, &sAll);
}

// Reading back

bool DATA::CopyTarget(CObject<ID2D1Bitmap1>& a_rsCopy) {
    const auto nReadable =
        static_cast<D2D1_BITMAP_OPTIONS>(D2D1_BITMAP_OPTIONS_CPU_READ | D2D1_BITMAP_OPTIONS_CANNOT_DRAW);
    const auto sProperties = BitmapOf(D2D1_ALPHA_MODE_IGNORE, nReadable);
    Check(_pCalls->CreateBitmap(
              _piContext.Get(), SizeOf(_nW, _nH), nullptr, 0, &sProperties, a_rsCopy.Fill(*_pCalls)),
        u"_piContext->CreateBitmap(sSize, nullptr, 0, sProperties, &piCopy)");
    if (!a_rsCopy) return false;
    if (SUCCEEDED(_pCalls->CopyFromRenderTarget(a_rsCopy.Get(), _piContext.Get()))) return true;
    // Some systems copy from bitmaps alone; a target is one, too.
    CObject<ID2D1Image> piImage;
    _pCalls->GetTarget(_piContext.Get(), piImage.Fill(*_pCalls));
    void* piFound = nullptr;
    if (piImage) _pCalls->QueryInterface(piImage.Get(), &Platform::BitmapInterface, &piFound);
    CObject<ID2D1Bitmap> piBitmap;
    piBitmap.Adopt(*_pCalls, static_cast<ID2D1Bitmap*>(piFound));
    const HRESULT nCopied =
        piBitmap ? _pCalls->CopyFromBitmap(a_rsCopy.Get(), piBitmap.Get()) : E_NOINTERFACE;
    return Check(nCopied, u"piCopy->CopyFromRenderTarget(nullptr, _piContext, nullptr)");
}

void DATA::ReadBack(std::uint32_t* a_pBits, std::int32_t a_nW, std::int32_t a_nH) {
    if (a_pBits == nullptr || a_nW <= 0 || a_nH <= 0) return;
    std::fill_n(a_pBits, static_cast<std::size_t>(a_nW) * static_cast<std::size_t>(a_nH), Black);
    CObject<ID2D1Bitmap1> piCopy;
    if (!IsReady() || !CopyTarget(piCopy)) return;
    D2D1_MAPPED_RECT sMapped{};
    if (!Check(_pCalls->Map(piCopy.Get(), &sMapped), u"piCopy->Map(D2D1_MAP_OPTIONS_READ, &sMapped)")) return;
    const std::int32_t nW = std::min(a_nW, _nW);
    for (std::int32_t y = 0; y < std::min(a_nH, _nH); ++y) {
        const auto* const pFrom = reinterpret_cast<const std::uint32_t*>(
            sMapped.bits + static_cast<std::ptrdiff_t>(sMapped.pitch) * y);
        std::uint32_t* const pTo = a_pBits + static_cast<std::size_t>(y) * static_cast<std::size_t>(a_nW);
        std::transform(pFrom, pFrom + nW, pTo, [](std::uint32_t a_nPixel) { return a_nPixel | Black; });
    }
    Check(_pCalls->Unmap(piCopy.Get()), u"piCopy->Unmap()");
}

void DATA::MakeBackdrop(STexture& a_rsTexture, std::int32_t a_nW, std::int32_t a_nH) {
    const bool bSame = a_rsTexture.piGDIP != 0 && a_rsTexture.nW == a_nW && a_rsTexture.nH == a_nH;
    if (bSame && !_bBackdropStale) return;
    GPU::MakeBackdrop(a_rsTexture, a_nW, a_nH); // ReadBack() copies the target
    _bBackdropStale = false;
}

void DATA::ReleaseTexture(STexture& a_rsTexture) {
    if (a_rsTexture.piGDIP != 0) FreeTexture(a_rsTexture);
    _bBackdropStale = true;
}

} // namespace KAV::GFX::D2D
