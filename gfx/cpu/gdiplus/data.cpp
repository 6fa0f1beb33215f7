#include "gfx/cpu/gdiplus/data.h"

#include "gfx/pixel_format.h"
#include "gfx/transform.h"
#include "utils/session_log.h"
#include "utils/text.h"

#include <algorithm>
#include <array>
#include <bit>
#include <cstddef>
#include <cstring>
#include <new>
#include <string>
#include <utility>

namespace KAV::GFX::CPU {

namespace {

using Gdiplus::Ok;

constexpr std::int32_t LargestTexture = 999999;

std::uint32_t Byte(float a_fComponent) noexcept {
    if (!(a_fComponent > 0.0f)) return 0;
    return static_cast<std::uint32_t>(std::min(a_fComponent, 1.0f) * 255.0f);
}

/// "10.0.19041.1", of the file that is loaded.
std::u16string LibraryVersion() {
    const HMODULE library = GetModuleHandleW(L"gdiplus.dll");
    const HRSRC found = FindResourceW(library, MAKEINTRESOURCEW(VS_VERSION_INFO), RT_VERSION);
    const HGLOBAL loaded = found == nullptr ? nullptr : LoadResource(library, found);
    const auto* const bytes =
        loaded == nullptr ? nullptr : static_cast<const std::uint8_t*>(LockResource(loaded));
    const std::size_t size = bytes == nullptr ? 0 : SizeofResource(library, found);
    // The fixed part begins with its mark, after texts whose length differs.
    constexpr DWORD mark = 0xFEEF04BD;
    for (std::size_t at = 0; at + sizeof(VS_FIXEDFILEINFO) <= size; at += sizeof(DWORD)) {
        VS_FIXEDFILEINFO info;
        std::memcpy(&info, bytes + at, sizeof(info));
        if (info.dwSignature != mark) continue;
        std::string text;
        for (const DWORD part : {info.dwFileVersionMS >> 16U, info.dwFileVersionMS & 0xFFFFU,
                 info.dwFileVersionLS >> 16U, info.dwFileVersionLS & 0xFFFFU})
            text += (text.empty() ? "" : ".") + std::to_string(part);
        return Utils::ToUtf16(text);
    }
    return u"?";
}

std::unique_ptr<GPU> Create(const SRendererTarget& a_sTarget, EReason) {
    return std::make_unique<DATA>(a_sTarget);
}

CPicture* PictureOf(const STexture& a_rsTexture) noexcept {
    return std::bit_cast<CPicture*>(static_cast<std::uintptr_t>(a_rsTexture.piGDIP));
}

} // namespace

/// The transform and the colour of one draw, given back at its end.
class DATA::CDrawState final {
public:
    CDrawState(DATA& a_piData, const SRect& a_sTo, const STransform& a_sTransform, std::uint32_t a_nColor)
        : _piData(a_piData) {
        if (!a_sTransform.IsNeutral()) Move(FlatPart(MatrixOf(a_sTo, a_sTransform)));
        if (a_nColor != White) Tint(a_nColor);
    }
    ~CDrawState() {
        const auto& gdi = *_piData._piGdi;
        if (_piAttributes != nullptr) gdi.GdipDisposeImageAttributes(_piAttributes);
        if (_bMoved)
            _piData.Check(gdi.GdipResetWorldTransform(_piData._piGdipBB), u"_piGdipBB->ResetTransform()");
    }
    CDrawState(const CDrawState&) = delete;
    CDrawState& operator=(const CDrawState&) = delete;

    /// Rectangles are left, top, width and height.
    void Draw(Gdiplus::GpBitmap* a_piBitmap, const std::array<float, 4>& a_sTo,
        const std::array<float, 4>& a_sFrom, std::u16string_view a_sCall) {
        _piData.Check(_piData._piGdi->GdipDrawImageRectRect(_piData._piGdipBB, a_piBitmap, a_sTo[0], a_sTo[1],
                          a_sTo[2], a_sTo[3], a_sFrom[0], a_sFrom[1], a_sFrom[2], a_sFrom[3],
                          Gdiplus::UnitPixel, _piAttributes, nullptr, nullptr),
            a_sCall);
    }

private:
    void Move(const SFlatMatrix& a_sFlat) {
        const auto& gdi = *_piData._piGdi;
        Gdiplus::GpMatrix* piMatrix = nullptr;
        const auto& [m11, m12, m21, m22, dx, dy] = a_sFlat;
        _piData.Check(gdi.GdipCreateMatrix2(m11, m12, m21, m22, dx, dy, &piMatrix),
            u"Gdiplus::Matrix iMatrix(m11, m12, m21, m22, dx, dy)");
        if (piMatrix == nullptr) return;
        _piData.Check(
            gdi.GdipSetWorldTransform(_piData._piGdipBB, piMatrix), u"_piGdipBB->SetTransform(&iMatrix)");
        gdi.GdipDeleteMatrix(piMatrix);
        _bMoved = true;
    }
    void Tint(std::uint32_t a_nColor) {
        const auto& gdi = *_piData._piGdi;
        const auto share = [a_nColor](unsigned a_nShift) {
            return static_cast<float>(a_nColor >> a_nShift & 0xFFU) / 255.0f;
        };
        Gdiplus::ColorMatrix sColors{};
        sColors.m[0][0] = share(16);
        sColors.m[1][1] = share(8);
        sColors.m[2][2] = share(0);
        sColors.m[3][3] = share(24);
        sColors.m[4][4] = 1.0f;
        _piData.Check(gdi.GdipCreateImageAttributes(&_piAttributes), u"Gdiplus::ImageAttributes iAttr");
        if (_piAttributes == nullptr) return;
        _piData.Check(gdi.GdipSetImageAttributesColorMatrix(_piAttributes, Gdiplus::ColorAdjustTypeBitmap,
                          TRUE, &sColors, nullptr, Gdiplus::ColorMatrixFlagsDefault),
            u"iAttr.SetColorMatrix(&sColorMatrix)");
    }

    DATA& _piData;
    Gdiplus::GpImageAttributes* _piAttributes = nullptr;
    bool _bMoved = false;
};

DATA::DATA(const SRendererTarget& a_sTarget)
    : _piUse(std::make_unique<Platform::CGdiplusUse>()), _hWnd(static_cast<HWND>(a_sTarget.pWindow)) {
    if (!_piUse->Works()) {
        _iLog.Failed(
            u"Gdiplus::GdiplusStartup(&nGdipToken, &s_GdiplusStartupInput, nullptr)", _piUse->Status());
        return;
    }
    _piGdi = Platform::Gdiplus();
    Utils::LogLine(u"GdiPlus=v" + LibraryVersion());
    MakeBackBuffer(std::max(a_sTarget.nW, 1), std::max(a_sTarget.nH, 1));
}

DATA::~DATA() {
    _vpiPictures.clear();
    FreeBackBuffer();
}

void DATA::Check(Gdiplus::Status a_nStatus, std::u16string_view a_sCall) noexcept {
    if (a_nStatus != Ok) _iLog.Failed(a_sCall, a_nStatus);
}

/// If that fails, the renderer isn't ready any more.
void DATA::MakeBackBuffer(std::int32_t a_nW, std::int32_t a_nH) {
    FreeBackBuffer();
    Check(_piGdi->GdipCreateBitmapFromScan0(a_nW, a_nH, 0, PixelFormat32bppRGB, nullptr, &_piBB),
        u"new Gdiplus::Bitmap(a_nW, a_nH, PixelFormat32bppRGB)");
    if (_piBB == nullptr) return;
    Check(_piGdi->GdipGetImageGraphicsContext(_piBB, &_piGdipBB), u"Gdiplus::Graphics::FromImage(_piBB)");
    if (_piGdipBB == nullptr) {
        FreeBackBuffer();
        return;
    }
    _nW = a_nW;
    _nH = a_nH;
    SetLineSmooth(false);
}

void DATA::FreeBackBuffer() noexcept {
    if (_piGdi == nullptr) return;
    if (auto* const piGraphics = std::exchange(_piGdipBB, nullptr)) _piGdi->GdipDeleteGraphics(piGraphics);
    if (auto* const piBitmap = std::exchange(_piBB, nullptr)) _piGdi->GdipDisposeImage(piBitmap);
    _nW = _nH = 0;
}

bool DATA::AnySizeTextures() const {
    return true;
}

std::int32_t DATA::MaxTextureW() const {
    return LargestTexture;
}

std::int32_t DATA::MaxTextureH() const {
    return LargestTexture;
}

std::int32_t DATA::MaxAspect() const {
    return LargestTexture;
}

bool DATA::IsReady() const {
    return _piGdipBB != nullptr;
}

const char16_t* DATA::GetName() const {
    return u"Software";
}

void DATA::SetStretching(bool a_bStretching) {
    _bStretching = a_bStretching;
}

void DATA::Clear() {
    if (!IsReady()) return;
    Check(_piGdi->GdipGraphicsClear(_piGdipBB, Gdiplus::Color::Black),
        u"_piGdipBB->Clear(Gdiplus::Color::Black)");
}

void DATA::BeginFrame() {}
void DATA::EndFrame() {}

void DATA::Present() {
    if (!IsReady() || _hWnd == nullptr) return;
    Gdiplus::GpGraphics* piWindow = nullptr;
    Check(_piGdi->GdipCreateFromHWND(_hWnd, &piWindow), u"Gdiplus::Graphics iGraphics(_hWnd)");
    if (piWindow == nullptr) return;
    Check(_piGdi->GdipDrawImageI(piWindow, _piBB, 0, 0), u"iGraphics.DrawImage(_piBB, 0, 0)");
    _piGdi->GdipDeleteGraphics(piWindow);
}

void DATA::Resize(std::int32_t a_nW, std::int32_t a_nH) {
    if (a_nW > 0 && a_nH > 0 && IsReady()) MakeBackBuffer(a_nW, a_nH);
}

void DATA::SetLineWidth(float a_fWidth) {
    _fLineWidth = a_fWidth;
}

void DATA::SetLineColor(float a_fR, float a_fG, float a_fB, float a_fA) {
    _nLineColor = Byte(a_fA) << 24U | Byte(a_fR) << 16U | Byte(a_fG) << 8U | Byte(a_fB);
}

void DATA::SetLineSmooth(bool a_bSmooth) {
    if (!IsReady()) return;
    const auto nMode = a_bSmooth ? Gdiplus::SmoothingModeAntiAlias : Gdiplus::SmoothingModeNone;
    Check(_piGdi->GdipSetSmoothingMode(_piGdipBB, nMode), u"_piGdipBB->SetSmoothingMode(nMode)");
}

void DATA::SetClip(float a_fL, float a_fT, float a_fW, float a_fH) {
    if (!IsReady()) return;
    if (a_fW == 0.0f || a_fH == 0.0f) {
        Check(_piGdi->GdipResetClip(_piGdipBB), u"_piGdipBB->ResetClip()");
    } else {
        Check(_piGdi->GdipSetClipRect(_piGdipBB, a_fL, a_fT, a_fW, a_fH, Gdiplus::CombineModeReplace),
            u"_piGdipBB->SetClip(Gdiplus::RectF(a_fL, a_fT, a_fW, a_fH))");
    }
}

void DATA::DrawTexture(const STexture& a_rsTexture, const SDraw& a_sDraw) {
    auto* const piPicture = PictureOf(a_rsTexture);
    if (!IsReady() || piPicture == nullptr || IsTransparent(a_sDraw.nColor)) return;
    constexpr std::u16string_view call =
        u"_piGdipBB->DrawImage(a_rsTexture.piGDIP, Gdiplus::RectF(a_fL, a_fT, a_fW, a_fH), "
        u"a_fU1 * a_rsTexture.nW, a_fV1 * a_rsTexture.nH, (a_fU2 - a_fU1) * a_rsTexture.nW, "
        u"(a_fV2 - a_fV1) * a_rsTexture.nH, Gdiplus::Unit::UnitPixel, piAttr)";
    const auto& [fL, fT, fW, fH] = a_sDraw.sTo;
    const auto& [fU1, fU2, fV1, fV2] = a_sDraw.sFrom;
    try {
        CDrawState iState(*this, a_sDraw.sTo, a_sDraw.sTransform, a_sDraw.nColor);
        const auto sCell = piPicture->CellAt(fU1, fU2, fV1, fV2, fW, fH, _bStretching);
        if (sCell.piBitmap != nullptr) {
            iState.Draw(sCell.piBitmap, {fL, fT, fW, fH}, {sCell.fL, sCell.fT, sCell.fW, sCell.fH}, call);
            return;
        }
        const auto fTexW = static_cast<float>(a_rsTexture.nW);
        const auto fTexH = static_cast<float>(a_rsTexture.nH);
        iState.Draw(piPicture->Whole(), {fL, fT, fW, fH},
            {fU1 * fTexW, fV1 * fTexH, (fU2 - fU1) * fTexW, (fV2 - fV1) * fTexH}, call);
    } catch (const std::bad_alloc&) {
        _iLog.Failed(call, OutOfMemory);
    }
}

void DATA::DrawTexture9(const STexture& a_rsTexture, const SDraw9& a_sDraw) {
    auto* const piPicture = PictureOf(a_rsTexture);
    if (!IsReady() || piPicture == nullptr || IsTransparent(a_sDraw.nColor)) return;
    constexpr std::u16string_view callLeft =
        u"_piGdipBB->DrawImage(a_rsTexture.piGDIP, Gdiplus::RectF(a_fL, fDstT, a_nMrgL, fDstH), 0, "
        u"fSrcT, fMrgL_01 * a_rsTexture.nW, fSrcH, Gdiplus::Unit::UnitPixel, piAttr)";
    Gdiplus::GpBitmap* piWhole = nullptr;
    try {
        piWhole = piPicture->Whole();
    } catch (const std::bad_alloc&) {
        _iLog.Failed(callLeft, OutOfMemory);
        return;
    }
    const auto& [fL, fT, fW, fH] = a_sDraw.sTo;
    const auto fTexW = static_cast<float>(a_rsTexture.nW);
    const auto fTexH = static_cast<float>(a_rsTexture.nH);
    const auto fMrgL = static_cast<float>(a_sDraw.nMrgL);
    const auto fMrgT = static_cast<float>(a_sDraw.nMrgT);
    const auto fMrgR = static_cast<float>(a_sDraw.nMrgR);
    const auto fMrgB = static_cast<float>(a_sDraw.nMrgB);
    const float fMrgL_01 = fMrgL / fTexW;
    const float fMrgR_01 = fMrgR / fTexW;
    const float fMrgT_01 = fMrgT / fTexH;
    const float fMrgB_01 = fMrgB / fTexH;
    struct SRow {
        float fDstT, fDstH, fSrcT, fSrcH;
    };
    const std::array<SRow, 3> sRows{{{fT, fMrgT, 0.0f, fMrgT_01 * fTexH},
        {fT + fMrgT, fH - fMrgT - fMrgB, fMrgT_01 * fTexH, (1.0f - fMrgT_01 - fMrgB_01) * fTexH},
        {fT + fH - fMrgB, fMrgB, (1.0f - fMrgB_01) * fTexH, fMrgB_01 * fTexH}}};
    CDrawState iState(*this, a_sDraw.sTo, a_sDraw.sTransform, a_sDraw.nColor);
    for (const auto& [fDstT, fDstH, fSrcT, fSrcH] : sRows) {
        iState.Draw(piWhole, {fL, fDstT, fMrgL, fDstH}, {0.0f, fSrcT, fMrgL_01 * fTexW, fSrcH}, callLeft);
        iState.Draw(piWhole, {fL + fMrgL, fDstT, fW - fMrgL - fMrgR, fDstH},
            {fMrgL_01 * fTexW, fSrcT, (1.0f - fMrgL_01 - fMrgR_01) * fTexW, fSrcH},
            u"_piGdipBB->DrawImage(a_rsTexture.piGDIP, Gdiplus::RectF(a_fL + a_nMrgL, fDstT, "
            u"a_fW - a_nMrgL - a_nMrgR, fDstH), fMrgL_01 * a_rsTexture.nW, fSrcT, "
            u"(1 - fMrgL_01 - fMrgR_01) * a_rsTexture.nW, fSrcH, Gdiplus::Unit::UnitPixel, piAttr)");
        iState.Draw(piWhole, {fL + fW - fMrgR, fDstT, fMrgR, fDstH},
            {(1.0f - fMrgR_01) * fTexW, fSrcT, fMrgR_01 * fTexW, fSrcH},
            u"_piGdipBB->DrawImage(a_rsTexture.piGDIP, Gdiplus::RectF(a_fL + a_fW - a_nMrgR, fDstT, "
            u"a_nMrgR, fDstH), (1 - fMrgR_01) * a_rsTexture.nW, fSrcT, fMrgR_01 * a_rsTexture.nW, fSrcH, "
            u"Gdiplus::Unit::UnitPixel, piAttr)");
    }
}

void DATA::DrawLines(std::int32_t a_nPoints, const SPoint* a_psPoints, bool a_bPerVertex, bool a_bStrip) {
    if (!IsReady() || a_nPoints <= 0 || a_psPoints == nullptr) return;
    const auto nPoints = static_cast<std::size_t>(a_nPoints);
    if (_vsLinePoints.size() < nPoints) _vsLinePoints.resize(nPoints);
    // GDI+ takes the centre of a pixel for its corner.
    for (std::size_t n = 0; n < nPoints; ++n)
        _vsLinePoints[n] = {a_psPoints[n].fX - 0.5f, a_psPoints[n].fY - 0.5f};
    Gdiplus::GpPen* piPen = nullptr;
    Check(_piGdi->GdipCreatePen1(
              a_bPerVertex ? a_psPoints[0].nColor : _nLineColor, _fLineWidth, Gdiplus::UnitWorld, &piPen),
        u"Gdiplus::Pen iPen(nColor, _fLineWidth)");
    if (piPen == nullptr) return;
    if (a_bStrip) {
        Check(_piGdi->GdipDrawLines(_piGdipBB, piPen, _vsLinePoints.data(), a_nPoints),
            u"_piGdipBB->DrawLines(&iPen, _pviGdipLinePoints, a_nPoints)");
    } else {
        for (std::size_t n = 0; n + 1 < nPoints; n += 2) {
            const auto &sFrom = _vsLinePoints[n], &sTo = _vsLinePoints[n + 1];
            Check(_piGdi->GdipDrawLine(_piGdipBB, piPen, sFrom.X, sFrom.Y, sTo.X, sTo.Y),
                u"_piGdipBB->DrawLine(&iPen, _pviGdipLinePoints[n], _pviGdipLinePoints[n + 1])");
        }
    }
    _piGdi->GdipDeletePen(piPen);
}

// Textures

void DATA::Adopt(STexture& a_rsTexture, std::unique_ptr<CPicture> a_piPicture) {
    _vpiPictures.push_back(std::move(a_piPicture));
    a_rsTexture.piGDIP = std::bit_cast<std::uintptr_t>(_vpiPictures.back().get());
}

void DATA::CreateTextureBits(const void* a_pBits, std::int32_t a_nPitch, std::int32_t a_nPixelFormat,
    STexture& a_rsTexture, std::int32_t, std::int32_t a_nH, std::int32_t a_nTexW, std::int32_t a_nTexH) {
    if (_piGdi == nullptr) return;
    constexpr std::u16string_view lock =
        u"a_rsTexture.piGDIP->LockBits(nullptr, 0, a_nPixelFormat, &iImageData)";
    Gdiplus::GpBitmap* piBitmap = nullptr;
    Check(_piGdi->GdipCreateBitmapFromScan0(a_nTexW, a_nTexH, 0, a_nPixelFormat, nullptr, &piBitmap), lock);
    if (piBitmap == nullptr) return;
    CGdipBitmap iBitmap(piBitmap, nullptr);
    const Gdiplus::Rect sAll(0, 0, a_nTexW, a_nTexH);
    Gdiplus::BitmapData iImageData{};
    const auto nLocked =
        _piGdi->GdipBitmapLockBits(piBitmap, &sAll, Gdiplus::ImageLockModeWrite, a_nPixelFormat, &iImageData);
    Check(nLocked, lock);
    if (nLocked == Ok) {
        const bool bFits = a_pBits != nullptr && iImageData.Stride == a_nPitch && a_nH >= 0 &&
                           iImageData.Height == static_cast<UINT>(a_nH);
        if (bFits)
            std::memcpy(iImageData.Scan0, a_pBits,
                static_cast<std::size_t>(a_nPitch) * static_cast<std::size_t>(a_nH));
        Check(_piGdi->GdipBitmapUnlockBits(piBitmap, &iImageData),
            u"a_rsTexture.piGDIP->UnlockBits(&iImageData)");
    }
    Adopt(a_rsTexture, std::make_unique<CPicture>(std::move(iBitmap)));
}

void DATA::CreateTexture(
    const Pixels::SBitmap& a_piBitmap, STexture& a_rsTexture, std::int32_t, std::int32_t) {
    if (_piGdi == nullptr) return;
    if (a_piBitmap.sheet != nullptr) {
        Adopt(a_rsTexture, std::make_unique<CPicture>(a_piBitmap.sheet));
        return;
    }
    constexpr std::u16string_view call =
        u"a_piBitmap->Clone(0, 0, a_nTexW, a_nTexH, a_piBitmap->GetPixelFormat())";
    const std::int64_t nBytes = std::int64_t{a_piBitmap.stride} * a_piBitmap.height;
    const bool bWhole = a_piBitmap.width > 0 && a_piBitmap.height > 0 &&
                        a_piBitmap.stride / 4 >= a_piBitmap.width &&
                        static_cast<std::int64_t>(a_piBitmap.bytes.size()) >= nBytes;
    if (!bWhole) {
        _iLog.Failed(call, InvalidParameter);
        return;
    }
    try {
        auto iClone = Sharing(std::make_shared<const Pixels::SBitmap>(a_piBitmap));
        if (!iClone) throw std::bad_alloc();
        Adopt(a_rsTexture, std::make_unique<CPicture>(std::move(iClone)));
    } catch (const std::bad_alloc&) {
        _iLog.Failed(call, OutOfMemory);
    }
}

void DATA::FreeTexture(STexture& a_rsTexture) {
    const auto* const piPicture = PictureOf(a_rsTexture);
    a_rsTexture = FreedTexture();
    std::erase_if(_vpiPictures, [piPicture](const auto& a_piOther) { return a_piOther.get() == piPicture; });
}

bool DATA::Shutdown() {
    const bool bThere = IsReady();
    FreeBackBuffer();
    _vsLinePoints = {};
    _hWnd = nullptr;
    return bThere;
}

void DATA::ReadBack(std::uint32_t* a_pBits, std::int32_t a_nW, std::int32_t a_nH) {
    if (a_pBits == nullptr || a_nW <= 0 || a_nH <= 0) return;
    constexpr std::uint32_t nBlack = 0xFF000000U;
    std::fill_n(a_pBits, static_cast<std::size_t>(a_nW) * static_cast<std::size_t>(a_nH), nBlack);
    if (!IsReady()) return;
    const Gdiplus::Rect sAll(0, 0, _nW, _nH);
    Gdiplus::BitmapData iImageData{};
    const auto nLocked = _piGdi->GdipBitmapLockBits(
        _piBB, &sAll, Gdiplus::ImageLockModeRead, PixelFormat32bppRGB, &iImageData);
    Check(nLocked, u"_piBB->LockBits(nullptr, 0, _piBB->GetPixelFormat(), &iImageData)");
    if (nLocked != Ok) return;
    const std::int32_t nW = std::min(a_nW, _nW);
    for (std::int32_t y = 0; y < std::min(a_nH, _nH); ++y) {
        const auto* const pFrom =
            static_cast<const std::uint8_t*>(iImageData.Scan0) + std::ptrdiff_t{iImageData.Stride} * y;
        std::uint32_t* const pTo = a_pBits + static_cast<std::size_t>(y) * static_cast<std::size_t>(a_nW);
        std::memcpy(pTo, pFrom, static_cast<std::size_t>(nW) * sizeof(std::uint32_t));
        for (std::int32_t x = 0; x < nW; ++x) pTo[x] |= nBlack; // the fourth byte means nothing there
    }
    Check(_piGdi->GdipBitmapUnlockBits(_piBB, &iImageData), u"_piBB->UnlockBits(&iImageData)");
}

} // namespace KAV::GFX::CPU

KAV::GFX::SRendererRow KAV::GFX::SoftwareRenderer() noexcept {
    return {u"Software", &CPU::Create, true};
}
