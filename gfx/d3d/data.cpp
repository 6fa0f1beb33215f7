#include "gfx/d3d/data.h"

#include "utils/number.h"
#include "utils/session_log.h"
#include "utils/text.h"

#include <algorithm>
#include <array>
#include <cfenv>
#include <cmath>
#include <cstddef>
#include <string>

namespace KAV::GFX::D3D {

namespace {

constexpr std::uint32_t Black = 0xFF000000U;

std::u16string_view Word(bool a_bValue) noexcept {
    return a_bValue ? u"true" : u"false";
}

/// Pixels to the device's -1..1, y downwards.
D3DMATRIX Projection(std::int32_t a_nW, std::int32_t a_nH) noexcept {
    D3DMATRIX mProj{};
    mProj._11 = 2.0f / static_cast<float>(a_nW);
    mProj._22 = -2.0f / static_cast<float>(a_nH);
    mProj._33 = 1.0f;
    mProj._41 = -1.0f;
    mProj._42 = 1.0f;
    mProj._44 = 1.0f;
    return mProj;
}

bool Is32Bit(D3DFORMAT a_nFormat) noexcept {
    return a_nFormat == D3DFMT_X8R8G8B8 || a_nFormat == D3DFMT_A8R8G8B8;
}

/// The arithmetic of the thread as the host has set it up: the system's library sets it to single precision
/// when it makes a device.
class CHostsArithmetic final {
public:
    CHostsArithmetic() noexcept { std::fegetenv(&_sHosts); }
    ~CHostsArithmetic() { std::fesetenv(&_sHosts); }
    CHostsArithmetic(const CHostsArithmetic&) = delete;
    CHostsArithmetic& operator=(const CHostsArithmetic&) = delete;

private:
    std::fenv_t _sHosts{};
};

} // namespace

// Beginning and end

DATA::DATA(const SRendererTarget& a_sTarget)
    : _pCalls(Platform::Direct3D()), _hWnd(static_cast<HWND>(a_sTarget.pWindow)) {
    // Without a window some systems would draw into the desktop.
    if (_pCalls == nullptr || _hWnd == nullptr || !MakeDevice()) return;
    SetFixedState();
    LogLimits();
    MakeTarget(std::max(a_sTarget.nW, 1), std::max(a_sTarget.nH, 1));
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

bool DATA::MakeDevice() {
    _piD3D09.Adopt(*_pCalls, _pCalls->Direct3DCreate9(D3D_SDK_VERSION));
    IDirect3D9* const piD3D09 = _piD3D09.Get();
    if (piD3D09 == nullptr) {
        _iLog.Failed(u"Direct3DCreate9(D3D_SDK_VERSION)", static_cast<std::int32_t>(D3DERR_NOTAVAILABLE));
        return false;
    }
    D3DDISPLAYMODE sMode{};
    if (!Check(_pCalls->GetAdapterDisplayMode(piD3D09, D3DADAPTER_DEFAULT, &sMode),
            u"piD3D09->GetAdapterDisplayMode(D3DADAPTER_DEFAULT, &sMode)"))
        return false;
    D3DCAPS9 sCaps{};
    if (!Check(_pCalls->GetDeviceCaps(piD3D09, D3DADAPTER_DEFAULT, D3DDEVTYPE_HAL, &sCaps),
            u"piD3D09->GetDeviceCaps(D3DADAPTER_DEFAULT, D3DDEVTYPE_HAL, &sCaps)"))
        return false;
    _nFormat = sMode.Format;
    const bool bHardware = (sCaps.DevCaps & D3DDEVCAPS_HWTRANSFORMANDLIGHT) != 0;
    const DWORD nBehaviorFlags =
        bHardware ? D3DCREATE_HARDWARE_VERTEXPROCESSING : D3DCREATE_SOFTWARE_VERTEXPROCESSING;
    D3DPRESENT_PARAMETERS sD3D09PP{};
    sD3D09PP.BackBufferWidth = 1;
    sD3D09PP.BackBufferHeight = 1;
    sD3D09PP.BackBufferFormat = _nFormat;
    sD3D09PP.BackBufferCount = 1;
    sD3D09PP.SwapEffect = D3DSWAPEFFECT_DISCARD;
    sD3D09PP.Windowed = TRUE;
    sD3D09PP.hDeviceWindow = _hWnd;
    sD3D09PP.PresentationInterval = D3DPRESENT_INTERVAL_IMMEDIATE;
    {
        const CHostsArithmetic iHosts;
        Check(_pCalls->CreateDevice(piD3D09, D3DADAPTER_DEFAULT, D3DDEVTYPE_HAL, nullptr, nBehaviorFlags,
                  &sD3D09PP, _piD3D09Device.Fill(*_pCalls)),
            u"piD3D09->CreateDevice(D3DADAPTER_DEFAULT, D3DDEVTYPE_HAL, nullptr, nBehaviorFlags, &sD3D09PP, "
            u"&piD3D09Device)");
    }
    _nMinTextureW = _nMinTextureH = 1;
    _nMaxTextureW = static_cast<std::int32_t>(sCaps.MaxTextureWidth);
    _nMaxTextureH = static_cast<std::int32_t>(sCaps.MaxTextureHeight);
    _nMaxAspect = static_cast<std::int32_t>(sCaps.MaxTextureAspectRatio);
    // Sizes under the condition that nothing is repeated will do: what repeats is then drawn piece by piece.
    _bRepeats = (sCaps.TextureCaps & D3DPTEXTURECAPS_POW2) == 0;
    _bNPOT = _bRepeats || (sCaps.TextureCaps & D3DPTEXTURECAPS_NONPOW2CONDITIONAL) != 0;
    _bSquareOnly = (sCaps.TextureCaps & D3DPTEXTURECAPS_SQUAREONLY) != 0;
    return _piD3D09Device.Get() != nullptr;
}

void DATA::SetFixedState() {
    IDirect3DDevice9* const piDevice = _piD3D09Device.Get();
    struct SState {
        D3DRENDERSTATETYPE nState;
        DWORD nValue;
        std::u16string_view sCall;
    };
    for (const auto& [nState, nValue, sCall] :
        {
            SState{D3DRS_LIGHTING, FALSE, u"SetRenderState(D3DRS_LIGHTING, false)"},
            {D3DRS_CULLMODE, D3DCULL_NONE, u"SetRenderState(D3DRS_CULLMODE, D3DCULL_NONE)"},
            {D3DRS_ALPHABLENDENABLE, TRUE, u"SetRenderState(D3DRS_ALPHABLENDENABLE, true)"},
            {D3DRS_BLENDOP, D3DBLENDOP_ADD, u"SetRenderState(D3DRS_BLENDOP, D3DBLENDOP_ADD)"},
            {D3DRS_SRCBLEND, D3DBLEND_SRCALPHA, u"SetRenderState(D3DRS_SRCBLEND, D3DBLEND_SRCALPHA)"},
            {D3DRS_DESTBLEND, D3DBLEND_INVSRCALPHA, u"SetRenderState(D3DRS_DESTBLEND, D3DBLEND_INVSRCALPHA)"},
            {D3DRS_SEPARATEALPHABLENDENABLE, TRUE, u"SetRenderState(D3DRS_SEPARATEALPHABLENDENABLE, true)"},
            {D3DRS_SRCBLENDALPHA, D3DBLEND_INVDESTALPHA,
                u"SetRenderState(D3DRS_SRCBLENDALPHA, D3DBLEND_INVDESTALPHA)"},
            {D3DRS_DESTBLENDALPHA, D3DBLEND_ONE, u"SetRenderState(D3DRS_DESTBLENDALPHA, D3DBLEND_ONE)"},
            {D3DRS_BLENDOPALPHA, D3DBLENDOP_ADD, u"SetRenderState(D3DRS_BLENDOPALPHA, D3DBLENDOP_ADD)"},
        })
        Check(_pCalls->SetRenderState(piDevice, nState, nValue), sCall);
    Check(_pCalls->SetTextureStageState(piDevice, 0, D3DTSS_COLOROP, D3DTOP_MODULATE),
        u"SetTextureStageState(0, D3DTSS_COLOROP, D3DTOP_MODULATE)");
    Check(_pCalls->SetTextureStageState(piDevice, 0, D3DTSS_ALPHAOP, D3DTOP_MODULATE),
        u"SetTextureStageState(0, D3DTSS_ALPHAOP, D3DTOP_MODULATE)");
    Check(_pCalls->SetSamplerState(piDevice, 0, D3DSAMP_MINFILTER, D3DTEXF_LINEAR),
        u"SetSamplerState(0, D3DSAMP_MINFILTER, D3DTEXF_LINEAR)");
    Check(_pCalls->SetSamplerState(piDevice, 0, D3DSAMP_MAGFILTER, D3DTEXF_LINEAR),
        u"SetSamplerState(0, D3DSAMP_MAGFILTER, D3DTEXF_LINEAR)");
    Check(_pCalls->SetFVF(piDevice, D3DFVF_XYZ | D3DFVF_DIFFUSE | D3DFVF_TEX1),
        u"SetFVF(D3DFVF_XYZ | D3DFVF_DIFFUSE | D3DFVF_TEX1)");
    // The border of a picture isn't mixed with its opposite one, and hardware that takes sizes other than
    // powers of two on this condition takes them.
    Check(_pCalls->SetSamplerState(piDevice, 0, D3DSAMP_ADDRESSU, D3DTADDRESS_CLAMP),
        u"SetSamplerState(0, D3DSAMP_ADDRESSU, D3DTADDRESS_CLAMP)");
    Check(_pCalls->SetSamplerState(piDevice, 0, D3DSAMP_ADDRESSV, D3DTADDRESS_CLAMP),
        u"SetSamplerState(0, D3DSAMP_ADDRESSV, D3DTADDRESS_CLAMP)");
}

void DATA::LogLimits() {
    D3DADAPTER_IDENTIFIER9 sAdapter{};
    const bool bKnown = Check(_pCalls->GetAdapterIdentifier(_piD3D09.Get(), D3DADAPTER_DEFAULT, 0, &sAdapter),
        u"piD3D09->GetAdapterIdentifier(D3DADAPTER_DEFAULT, 0, &sAdapter)");
    // The driver's own text, in whatever encoding: what isn't plain is left out.
    std::u16string sText = u"Direct3D=v9 | ";
    if (bKnown) {
        for (const char nCharacter : sAdapter.Description) {
            if (nCharacter == '\0') break;
            if (nCharacter >= ' ' && nCharacter <= '~') sText.push_back(static_cast<char16_t>(nCharacter));
        }
    }
    sText.append(u" | NPOT=").append(Word(_bNPOT)).append(u" | SquareOnly=").append(Word(_bSquareOnly));
    const std::array<std::pair<std::u16string_view, std::int32_t>, 5> vsLimits{
        {{u" | MinTextureW=", _nMinTextureW}, {u" | MinTextureH=", _nMinTextureH},
            {u" | MaxTextureW=", _nMaxTextureW}, {u" | MaxTextureH=", _nMaxTextureH},
            {u" | MaxAspect=", _nMaxAspect}}};
    for (const auto& [sName, nValue] : vsLimits) sText.append(sName).append(Utils::FormatInt(nValue));
    Utils::LogLine(sText);
}

bool DATA::Shutdown() {
    const bool bThere = IsReady();
    FreeTarget();
    _piD3D09Device.Reset();
    _piD3D09.Reset();
    return bThere;
}

bool DATA::IsReady() const {
    return _piD3D09Device.Get() != nullptr && _piD3D09SwapChain.Get() != nullptr &&
           _piD3D09Surface.Get() != nullptr;
}

bool DATA::IsRenewalDue() const {
    if (_piD3D09Device.Get() == nullptr) return false;
    const HRESULT nState = _pCalls->TestCooperativeLevel(_piD3D09Device.Get());
    if (nState == D3DERR_DEVICELOST) _bLost = true;
    return nState == D3DERR_DEVICENOTRESET || (nState == D3D_OK && (_bLost || _bTargetFailed));
}

const char16_t* DATA::GetName() const {
    return u"Direct3D9";
}

// Limits

bool DATA::AnySizeTextures() const {
    return _bNPOT && !_bSquareOnly;
}

std::int32_t DATA::MinTextureW() const {
    return _nMinTextureW;
}

std::int32_t DATA::MaxTextureW() const {
    return _nMaxTextureW;
}

std::int32_t DATA::MinTextureH() const {
    return _nMinTextureH;
}

std::int32_t DATA::MaxTextureH() const {
    return _nMaxTextureH;
}

std::int32_t DATA::MaxAspect() const {
    return _nMaxAspect;
}

// The target

void DATA::FreeTarget() noexcept {
    if (_bInScene) _pCalls->EndScene(_piD3D09Device.Get());
    _bInScene = false;
    _piD3D09Surface.Reset();
    _piDepthStencil.Reset();
    _piD3D09SwapChain.Reset();
    _nW = _nH = 0;
}

void DATA::Resize(std::int32_t a_nW, std::int32_t a_nH) {
    if (!_piD3D09Device || a_nW <= 0 || a_nH <= 0) return;
    _bTargetFailed = !MakeTarget(a_nW, a_nH);
}

/// False if any of it failed.
bool DATA::MakeTarget(std::int32_t a_nW, std::int32_t a_nH) {
    IDirect3DDevice9* const piDevice = _piD3D09Device.Get();
    FreeTarget();
    D3DPRESENT_PARAMETERS sD3D09PP{};
    sD3D09PP.BackBufferWidth = static_cast<UINT>(a_nW);
    sD3D09PP.BackBufferHeight = static_cast<UINT>(a_nH);
    sD3D09PP.BackBufferFormat = _nFormat;
    sD3D09PP.BackBufferCount = 1;
    sD3D09PP.SwapEffect = D3DSWAPEFFECT_COPY; // the frame can be read back after it has been shown, too
    sD3D09PP.Windowed = TRUE;
    sD3D09PP.hDeviceWindow = _hWnd;
    sD3D09PP.Flags = D3DPRESENTFLAG_LOCKABLE_BACKBUFFER;
    sD3D09PP.PresentationInterval = D3DPRESENT_INTERVAL_IMMEDIATE;
    Check(_pCalls->CreateAdditionalSwapChain(piDevice, &sD3D09PP, _piD3D09SwapChain.Fill(*_pCalls)),
        u"CreateAdditionalSwapChain(&sD3D09PP, &_piD3D09SwapChain)");
    if (!_piD3D09SwapChain) return false;
    Check(_pCalls->GetBackBuffer(
              _piD3D09SwapChain.Get(), 0, D3DBACKBUFFER_TYPE_MONO, _piD3D09Surface.Fill(*_pCalls)),
        u"GetBackBuffer(0, D3DBACKBUFFER_TYPE_MONO, &_piD3D09Surface)");
    if (!_piD3D09Surface) return false;
    _nW = a_nW;
    _nH = a_nH;
    bool bWhole = Check(
        _pCalls->CreateDepthStencilSurface(piDevice, sD3D09PP.BackBufferWidth, sD3D09PP.BackBufferHeight,
            D3DFMT_D16, D3DMULTISAMPLE_NONE, 0, FALSE, _piDepthStencil.Fill(*_pCalls), nullptr),
        u"CreateDepthStencilSurface(sD3D09PP.BackBufferWidth, sD3D09PP.BackBufferHeight, D3DFMT_D16, "
        u"D3DMULTISAMPLE_TYPE::D3DMULTISAMPLE_NONE, 0, false, &_piDepthStencil, nullptr)");
    bWhole = Check(_pCalls->SetDepthStencilSurface(piDevice, _piDepthStencil.Get()),
                 u"SetDepthStencilSurface(_piDepthStencil)") &&
             bWhole;
    const D3DMATRIX mProj = Projection(a_nW, a_nH);
    bWhole = Check(_pCalls->SetTransform(piDevice, D3DTS_PROJECTION, &mProj),
                 u"SetTransform(D3DTS_PROJECTION, &mProj)") &&
             bWhole;
    return Check(_pCalls->SetRenderTarget(piDevice, 0, _piD3D09Surface.Get()),
               u"SetRenderTarget(0, _piD3D09Surface)") &&
           bWhole;
}

void DATA::Clear() {
    if (!IsReady()) return;
    Check(_pCalls->Clear(_piD3D09Device.Get(), 0, nullptr, D3DCLEAR_TARGET, Black, 1.0f, 0),
        u"Clear(0, nullptr, D3DCLEAR_TARGET, 0xFF000000, 1.0f, 0)");
}

void DATA::BeginFrame() {
    if (!IsReady()) return;
    // An error may have ended the last frame early; the next one then goes on in its scene, without its clip
    // and transform.
    SetClip(0.0f, 0.0f, 0.0f, 0.0f);
    ResetTransform();
    if (!_bInScene) _bInScene = Check(_pCalls->BeginScene(_piD3D09Device.Get()), u"BeginScene()");
}

void DATA::EndFrame() {
    if (!IsReady() || !_bInScene) return;
    _bInScene = false;
    if (Check(_pCalls->EndScene(_piD3D09Device.Get()), u"EndScene()")) return;
    _pCalls->EndScene(_piD3D09Device.Get()); // no frame could begin in a scene that is still open
}

void DATA::Present() {
    if (!IsReady() || _bLost) return;
    const HRESULT nResult = _pCalls->Present(_piD3D09SwapChain.Get(), nullptr, nullptr, nullptr, nullptr, 0);
    Check(nResult, u"_piD3D09SwapChain->Present(nullptr, nullptr, nullptr, nullptr, 0)");
    if (nResult == D3DERR_DEVICELOST || nResult == D3DERR_DEVICENOTRESET) _bLost = true;
}

void DATA::ReadBack(std::uint32_t* a_pBits, std::int32_t a_nW, std::int32_t a_nH) {
    if (a_pBits == nullptr || a_nW <= 0 || a_nH <= 0) return;
    std::fill_n(a_pBits, static_cast<std::size_t>(a_nW) * static_cast<std::size_t>(a_nH), Black);
    if (!IsReady()) return;
    constexpr std::u16string_view lock =
        u"_piD3D09Surface->LockRect(&sLockedRect, nullptr, D3DLOCK_READONLY)";
    if (!Is32Bit(_nFormat)) {
        _iLog.Failed(lock, InvalidParameter);
        return;
    }
    D3DLOCKED_RECT sLockedRect{};
    if (!Check(_pCalls->LockSurface(_piD3D09Surface.Get(), &sLockedRect, nullptr, D3DLOCK_READONLY), lock))
        return;
    const std::int32_t nW = std::min(a_nW, _nW);
    for (std::int32_t y = 0; y < std::min(a_nH, _nH); ++y) {
        const auto* const pFrom = reinterpret_cast<const std::uint32_t*>(
            static_cast<const std::uint8_t*>(sLockedRect.pBits) + std::ptrdiff_t{sLockedRect.Pitch} * y);
        std::uint32_t* const pTo = a_pBits + static_cast<std::size_t>(y) * static_cast<std::size_t>(a_nW);
        // The fourth byte means nothing there.
        std::transform(pFrom, pFrom + nW, pTo, [](std::uint32_t a_nPixel) { return a_nPixel | Black; });
    }
    Check(_pCalls->UnlockSurface(_piD3D09Surface.Get()), u"_piD3D09Surface->UnlockRect()");
}

void DATA::SetClip(float a_fL, float a_fT, float a_fW, float a_fH) {
    if (!IsReady()) return;
    _sClip = {a_fL, a_fT, a_fW, a_fH};
    IDirect3DDevice9* const piDevice = _piD3D09Device.Get();
    if (a_fW == 0.0f || a_fH == 0.0f) {
        Check(_pCalls->SetRenderState(piDevice, D3DRS_SCISSORTESTENABLE, FALSE),
            u"SetRenderState(D3DRS_SCISSORTESTENABLE, false)");
        return;
    }
    // The pixels whose centres lie in it, within the target.
    const auto pixel = [](float a_fPlace, std::int32_t a_nMost) {
        constexpr float fHalf = 0.5f;
        return static_cast<LONG>(std::ceil(std::clamp(a_fPlace - fHalf, 0.0f, static_cast<float>(a_nMost))));
    };
    const RECT rcScissors{
        pixel(a_fL, _nW), pixel(a_fT, _nH), pixel(a_fL + a_fW, _nW), pixel(a_fT + a_fH, _nH)};
    Check(_pCalls->SetRenderState(piDevice, D3DRS_SCISSORTESTENABLE, TRUE),
        u"SetRenderState(D3DRS_SCISSORTESTENABLE, true)");
    Check(_pCalls->SetScissorRect(piDevice, &rcScissors), u"SetScissorRect(&rcScissors)");
}

void DATA::SetCulling(bool a_bCull) {
    if (!IsReady()) return;
    Check(_pCalls->SetRenderState(_piD3D09Device.Get(), D3DRS_CULLMODE, a_bCull ? D3DCULL_CCW : D3DCULL_NONE),
        u"SetRenderState(D3DRS_CULLMODE, a_bCull ? D3DCULL_CCW : D3DCULL_NONE)");
}

void DATA::SetStretching(bool a_bStretching) {
    _bStretching = a_bStretching;
}

} // namespace KAV::GFX::D3D
