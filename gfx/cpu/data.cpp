#include "gfx/cpu/data.h"

#include "gfx/pixel_format.h"
#include "pixels/resample.h"

#include <algorithm>
#include <bit>
#include <cmath>
#include <cstring>
#include <new>
#include <utility>

namespace KAV::GFX::CPU {

namespace {

constexpr std::int32_t LargestTexture = 999999;
std::uint32_t Byte(float a_fComponent) noexcept {
    if (!(a_fComponent > 0.0f)) return 0;
    return static_cast<std::uint32_t>(std::min(a_fComponent, 1.0f) * 255.0f);
}

std::unique_ptr<GPU> Create(const SRendererTarget& a_sTarget, EReason) {
    return std::make_unique<DATA>(a_sTarget);
}

} // namespace

DATA::DATA(const SRendererTarget& a_sTarget)
    : _piTarget(static_cast<Platform::IPictureTarget*>(a_sTarget.pWindow)) {
    if (!_iCanvas.Start(_iLog)) return;
    if (_iCanvas.Resize(std::max(a_sTarget.nW, 1), std::max(a_sTarget.nH, 1), _iLog)) {
        _sClip = _iCanvas.Bounds();
        _iDue.Add(_sClip);
    }
}

DATA::~DATA() = default;

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
    return _iCanvas.IsReady();
}

const char16_t* DATA::GetName() const {
    return u"Software";
}

void DATA::SetStretching(bool a_bStretching) {
    _bStretching = a_bStretching;
}

void DATA::SetLineWidth(float a_fWidth) {
    _sPen.fWidth = a_fWidth;
}

void DATA::SetLineColor(float a_fR, float a_fG, float a_fB, float a_fA) {
    _sPen.nColor = Byte(a_fA) << 24U | Byte(a_fR) << 16U | Byte(a_fG) << 8U | Byte(a_fB);
}

void DATA::SetLineSmooth(bool a_bSmooth) {
    _sPen.bSmooth = a_bSmooth;
}

void DATA::SetClip(float a_fL, float a_fT, float a_fW, float a_fH) {
    const SArea sFrame = _iCanvas.Bounds();
    _sClip = sFrame;
    if (a_fW == 0.0f || a_fH == 0.0f) return;
    const std::int32_t nL = FirstPixel(a_fL, sFrame.width);
    const std::int32_t nT = FirstPixel(a_fT, sFrame.height);
    const std::int32_t nR = FirstPixel(a_fL + a_fW, sFrame.width);
    const std::int32_t nB = FirstPixel(a_fT + a_fH, sFrame.height);
    _sClip = {nL, nT, std::max(nR - nL, 0), std::max(nB - nT, 0)};
}

void DATA::Resize(std::int32_t a_nW, std::int32_t a_nH) {
    if (a_nW <= 0 || a_nH <= 0 || !IsReady()) return;
    _bPaintedKnown = false;
    _iNoted.Reset();
    _iDue.Clear();
    _sPen.bSmooth = false;
    _sClip = {};
    if (!_iCanvas.Resize(a_nW, a_nH, _iLog)) return;
    _sClip = _iCanvas.Bounds();
    _iDue.Add(_sClip);
}

bool DATA::Shutdown() {
    _iNoted.Reset();
    _iPainted.Reset();
    _bPaintedKnown = false;
    _vpiFreed.clear();
    _iDue.Clear();
    _sClip = {};
    _piTarget = nullptr;
    return _iCanvas.Release();
}

void DATA::ReadBack(std::uint32_t* a_pBits, std::int32_t a_nW, std::int32_t a_nH) {
    if (a_pBits == nullptr || a_nW <= 0 || a_nH <= 0) return;
    constexpr std::uint32_t nBlack = 0xFF000000U;
    const SArea sFrame = _iCanvas.Bounds();
    const std::int32_t nW = std::min(a_nW, sFrame.width);
    for (std::int32_t y = 0; y < a_nH; ++y) {
        std::uint32_t* const pRow = a_pBits + static_cast<std::size_t>(y) * static_cast<std::size_t>(a_nW);
        const std::int32_t nCopied = y < sFrame.height ? nW : 0;
        if (nCopied > 0) std::copy_n(_iCanvas.Row(y), nCopied, pRow);
        std::fill(pRow + nCopied, pRow + a_nW, nBlack);
    }
}

// Textures

void DATA::Adopt(STexture& a_rsTexture, std::unique_ptr<CPicture> a_piPicture) {
    _vpiPictures.push_back(std::move(a_piPicture));
    a_rsTexture.piGDIP = std::bit_cast<std::uintptr_t>(_vpiPictures.back().get());
}

CPicture* DATA::PictureOf(const STexture& a_rsTexture) const noexcept {
    return std::bit_cast<CPicture*>(static_cast<std::uintptr_t>(a_rsTexture.piGDIP));
}

void DATA::CreateTextureBits(const void* a_pBits, std::int32_t a_nPitch, std::int32_t a_nPixelFormat,
    STexture& a_rsTexture, std::int32_t, std::int32_t a_nH, std::int32_t a_nTexW, std::int32_t a_nTexH) try {
    const bool bKnown = a_nPixelFormat == Rgb24 || a_nPixelFormat == Rgb32 || a_nPixelFormat == Argb32 ||
                        a_nPixelFormat == PremultipliedArgb32;
    constexpr std::int32_t nMost = 1 << 15;
    if (!bKnown || a_nTexW <= 0 || a_nTexH <= 0 || a_nTexW > nMost || a_nTexH > nMost) {
        _iLog.Failed(
            u"a_rsTexture.piGDIP->LockBits(nullptr, 0, a_nPixelFormat, &iImageData)", InvalidParameter);
        return;
    }
    Pixels::SBitmap sBitmap = Pixels::TransparentBitmap(a_nTexW, a_nTexH);
    const std::int32_t nBytes = a_nPixelFormat == Rgb24 ? 3 : 4;
    const std::int32_t nStride = (a_nTexW * nBytes + 3) / 4 * 4;
    if (a_pBits != nullptr && a_nPitch == nStride && a_nH == a_nTexH) {
        const auto* const pBits = static_cast<const std::uint8_t*>(a_pBits);
        for (std::int32_t y = 0; y < a_nTexH; ++y) {
            const std::uint8_t* pFrom =
                pBits + static_cast<std::size_t>(nStride) * static_cast<std::size_t>(y);
            std::uint8_t* pTo =
                sBitmap.bytes.data() + static_cast<std::size_t>(sBitmap.stride) * static_cast<std::size_t>(y);
            for (std::int32_t x = 0; x < a_nTexW; ++x, pFrom += nBytes, pTo += 4)
                std::memcpy(pTo, pFrom, static_cast<std::size_t>(nBytes));
        }
    }
    sBitmap.alpha = a_nPixelFormat == PremultipliedArgb32 ? Pixels::EAlpha::Premultiplied
                    : HasAlpha(a_nPixelFormat)            ? Pixels::EAlpha::Straight
                                                          : Pixels::EAlpha::None;
    Adopt(a_rsTexture, std::make_unique<CPicture>(Pixels::Premultiplied(sBitmap)));
} catch (const std::bad_alloc&) {
    _iLog.Failed(u"a_rsTexture.piGDIP->LockBits(nullptr, 0, a_nPixelFormat, &iImageData)", OutOfMemory);
}

void DATA::CreateTexture(
    const Pixels::SBitmap& a_piBitmap, STexture& a_rsTexture, std::int32_t, std::int32_t) try {
    if (a_piBitmap.sheet != nullptr) {
        Adopt(a_rsTexture, std::make_unique<CPicture>(a_piBitmap.sheet));
        return;
    }
    const std::int64_t nBytes = std::int64_t{a_piBitmap.stride} * a_piBitmap.height;
    const bool bWhole = a_piBitmap.width > 0 && a_piBitmap.height > 0 &&
                        a_piBitmap.stride / 4 >= a_piBitmap.width &&
                        static_cast<std::int64_t>(a_piBitmap.bytes.size()) >= nBytes;
    if (!bWhole) {
        _iLog.Failed(
            u"a_piBitmap->Clone(0, 0, a_nTexW, a_nTexH, a_piBitmap->GetPixelFormat())", InvalidParameter);
        return;
    }
    Adopt(a_rsTexture, std::make_unique<CPicture>(Pixels::Premultiplied(a_piBitmap)));
} catch (const std::bad_alloc&) {
    _iLog.Failed(u"a_piBitmap->Clone(0, 0, a_nTexW, a_nTexH, a_piBitmap->GetPixelFormat())", OutOfMemory);
}

void DATA::FreeTexture(STexture& a_rsTexture) {
    const auto* const piPicture = PictureOf(a_rsTexture);
    a_rsTexture = FreedTexture();
    const auto iFound = std::find_if(_vpiPictures.begin(), _vpiPictures.end(),
        [piPicture](const auto& a_piOther) { return a_piOther.get() == piPicture; });
    if (iFound == _vpiPictures.end()) return;
    if (!_iNoted.Draws().empty()) _vpiFreed.push_back(std::move(*iFound));
    _vpiPictures.erase(iFound);
}

} // namespace KAV::GFX::CPU

KAV::GFX::SRendererRow KAV::GFX::SoftwareRenderer() noexcept {
    return {u"Software", &CPU::Create, true};
}
