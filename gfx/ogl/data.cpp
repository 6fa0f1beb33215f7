#include "gfx/ogl/data.h"

#include "gfx/ogl/constants.h"
#include "gfx/pixel_format.h"
#include "pixels/resample.h"
#include "utils/exceptions.h"
#include "utils/number.h"
#include "utils/product.h"
#include "utils/session_log.h"
#include "utils/text.h"

#include <algorithm>
#include <array>
#include <bit>
#include <charconv>
#include <cstddef>
#include <cstring>
#include <new>
#include <string>
#include <utility>

namespace KAV::GFX::OGL {

namespace {

std::string TextOf(const Platform::SOpenGL& a_sGl, std::uint32_t a_nName) {
    const auto* const pText = a_sGl.glGetString(a_nName);
    return pText != nullptr ? reinterpret_cast<const char*>(pText) : "";
}

/// The number in front of the first "."; what is in front of it but no number is 0; nothing without a ".".
std::optional<int> MajorVersion(std::string_view a_sVersion) noexcept {
    const auto nDot = a_sVersion.find('.');
    if (nDot == std::string_view::npos) return std::nullopt;
    int nMajor = 0;
    std::from_chars(a_sVersion.data(), a_sVersion.data() + nDot, nMajor);
    return nMajor;
}

bool DrawsInSoftware(std::string_view a_sRenderer) noexcept {
    constexpr std::array<std::string_view, 4> sNames{"llvmpipe", "softpipe", "swrast", "Software Rasterizer"};
    return std::any_of(sNames.begin(), sNames.end(),
        [a_sRenderer](std::string_view a_sName) { return a_sRenderer.find(a_sName) != std::string::npos; });
}

void WarnOfGenericDriver(const SRendererTarget& a_sTarget) {
    if (a_sTarget.pShowError == nullptr || !*a_sTarget.pShowError) return;
    const auto sProduct = std::u16string(Utils::ProductName);
    (*a_sTarget.pShowError)(sProduct + u" v" + std::u16string(Utils::ProductVersion),
        u"No hardware accelerated OpenGL implementation detected - " + sProduct +
            u" graphical user interface performance may be unsatisfactory! Please update your graphics "
            u"hardware or switch GPU in multi-GPU environment.");
}

} // namespace

DATA::DATA(const SRendererTarget& a_sTarget, EReason a_nReason) {
    try {
        Start(a_sTarget, a_nReason);
    } catch (const Exceptions::Std& error) {
        _piContext.reset();
        Utils::LogLine(u"Error=" + error.message);
    }
}

DATA::~DATA() {
    Shutdown();
}

void DATA::Start(const SRendererTarget& a_sTarget, EReason a_nReason) {
    _piContext = std::make_unique<CContext>(a_sTarget, a_nReason);
    _psGl = &_piContext->Functions();
    _psGl->glDisable(GL_LIGHTING);
    _psGl->glEnable(GL_BLEND);
    _psGl->glBlendFunc(GL_SRC_ALPHA, GL_ONE_MINUS_SRC_ALPHA);
    _psGl->glClearColor(0.0f, 0.0f, 0.0f, 1.0f);
    // The frame stays opaque: a window may have a visual with alpha.
    _psGl->glColorMask(1, 1, 1, 0);
    _psGl->glEnable(GL_TEXTURE_2D);
    if (a_sTarget.nW > 0 && a_sTarget.nH > 0) SetSize(a_sTarget.nW, a_sTarget.nH);

    const auto sVendor = TextOf(*_psGl, GL_VENDOR);
    const auto sRenderer = TextOf(*_psGl, GL_RENDERER);
    const auto sVersion = TextOf(*_psGl, GL_VERSION);
    _bNPOT = MajorVersion(sVersion).value_or(2) >= 2;
    _psGl->glGetIntegerv(GL_MAX_TEXTURE_SIZE, &_nMaxTexture);
    Utils::LogLine(u"OpenGL=" + Utils::ToUtf16(sVersion) + u" | " + Utils::ToUtf16(sVendor) + u" | " +
                   Utils::ToUtf16(sRenderer) + u" | MaxTexture=" + Utils::FormatInt(_nMaxTexture));
    if (CContext::AsksForHardware(a_nReason) && DrawsInSoftware(sRenderer)) throw SPassedOver();
    const bool bOld = sVersion.starts_with("1.0") || sVersion.starts_with("1.1");
    _piTextures = std::make_unique<CTextures>(*_psGl, _iLog, _nMaxTexture, _bNPOT, !bOld);
    if (sRenderer == "GDI Generic") WarnOfGenericDriver(a_sTarget);
}

bool DATA::AnySizeTextures() const {
    return _bNPOT;
}

std::int32_t DATA::MaxTextureW() const {
    return _nMaxTexture;
}

std::int32_t DATA::MaxTextureH() const {
    return _nMaxTexture;
}

bool DATA::IsReady() const {
    return _piContext != nullptr;
}

bool DATA::IsCurrent() const {
    return IsReady() && _piContext->IsCurrent();
}

const char16_t* DATA::GetName() const {
    return u"OpenGL";
}

void DATA::SetStretching(bool a_bStretching) {
    _bStretching = a_bStretching;
}

bool DATA::IsRenewalDue() const {
    return IsReady() && _piContext->IsLost();
}

/// Whether the context is current now. Calls into another one would change what that draws.
bool DATA::Enter() const noexcept {
    return IsReady() && (_piContext->IsCurrent() || _piContext->MakeCurrent());
}

// Frames

void DATA::BeginFrame() {
    if (!IsReady() || Enter()) return;
    throw Exceptions::OGL(CContext::RedrawCall(), _piContext->Error(), _psGl->glGetString);
}

void DATA::Clear() {
    if (!Enter()) return;
    if (_bClipped) _psGl->glDisable(GL_SCISSOR_TEST);
    _psGl->glColorMask(1, 1, 1, 1);
    _psGl->glClear(GL_COLOR_BUFFER_BIT);
    _psGl->glColorMask(1, 1, 1, 0);
    if (_bClipped) _psGl->glEnable(GL_SCISSOR_TEST);
}

void DATA::EndFrame() {
    if (!Enter()) return;
    if (const std::uint32_t nError = _psGl->glGetError(); nError != 0)
        _iLog.Failed(u"glGetError()", static_cast<std::int32_t>(nError));
    for (const auto& piPicture : _vpiPictures) piPicture->DropUnused(*_piTextures);
}

void DATA::Present() {
    if (!Enter() || _piContext->Swap()) return;
    _iLog.Failed(CContext::SwapCall(), static_cast<std::int32_t>(_piContext->Error()));
}

void DATA::Resize(std::int32_t a_nW, std::int32_t a_nH) {
    if (a_nW <= 0 || a_nH <= 0 || !Enter()) return;
    _piContext->Resize(a_nW, a_nH);
    SetSize(a_nW, a_nH);
    SetClip(0.0f, 0.0f, 0.0f, 0.0f);
    SetLineSmooth(false);
}

/// Y goes downwards.
void DATA::SetSize(std::int32_t a_nW, std::int32_t a_nH) {
    _psGl->glViewport(0, 0, a_nW, a_nH);
    _psGl->glLoadIdentity();
    _psGl->glOrtho(0.0, a_nW, a_nH, 0.0, -1.0, 1.0);
    _nWidth = a_nW;
    _nHeight = a_nH;
}

void DATA::SetClip(float a_fL, float a_fT, float a_fW, float a_fH) {
    if (!Enter()) return;
    _bClipped = a_fW != 0.0f && a_fH != 0.0f;
    if (!_bClipped) {
        _psGl->glDisable(GL_SCISSOR_TEST);
        return;
    }
    const std::int32_t nL = FirstPixel(a_fL, _nWidth);
    const std::int32_t nT = FirstPixel(a_fT, _nHeight);
    const std::int32_t nR = std::max(FirstPixel(a_fL + a_fW, _nWidth), nL);
    const std::int32_t nB = std::max(FirstPixel(a_fT + a_fH, _nHeight), nT);
    _psGl->glEnable(GL_SCISSOR_TEST);
    _psGl->glScissor(nL, _nHeight - nB, nR - nL, nB - nT);
}

bool DATA::Shutdown() {
    const bool bThere = IsReady();
    if (bThere && _piTextures != nullptr && Enter()) {
        for (const auto& piPicture : _vpiPictures) piPicture->Free(*_piTextures);
    }
    _piTextures.reset();
    _piContext.reset();
    _psGl = nullptr;
    return bThere;
}

void DATA::ReadBack(std::uint32_t* a_pBits, std::int32_t a_nW, std::int32_t a_nH) {
    if (a_pBits == nullptr || a_nW <= 0 || a_nH <= 0) return;
    const auto nRow = static_cast<std::ptrdiff_t>(a_nW);
    constexpr std::uint32_t nBlack = 0xFF000000U;
    std::fill_n(a_pBits, nRow * a_nH, nBlack);
    const std::int32_t nW = std::min(a_nW, _nWidth);
    const std::int32_t nH = std::min(a_nH, _nHeight);
    if (nW <= 0 || nH <= 0 || !Enter()) return;
    // OpenGL's first row is the lowest one.
    std::vector<std::uint32_t> vnPixels(static_cast<std::size_t>(nW) * static_cast<std::size_t>(nH));
    _psGl->glReadPixels(0, _nHeight - nH, nW, nH, GL_BGRA, GL_UNSIGNED_BYTE, vnPixels.data());
    const auto* pFrom = vnPixels.data();
    for (std::int32_t y = nH - 1; y >= 0; --y, pFrom += nW)
        std::transform(
            pFrom, pFrom + nW, a_pBits + nRow * y, [](std::uint32_t a_nPixel) { return a_nPixel | nBlack; });
}

// Textures

CPicture* DATA::PictureOf(const STexture& a_rsTexture) const noexcept {
    return std::bit_cast<CPicture*>(static_cast<std::uintptr_t>(a_rsTexture.piGDIP));
}

void DATA::Adopt(STexture& a_rsTexture, std::unique_ptr<CPicture> a_piPicture) {
    _vpiPictures.push_back(std::move(a_piPicture));
    a_rsTexture.piGDIP = std::bit_cast<std::uintptr_t>(_vpiPictures.back().get());
}

void DATA::CreateTextureBits(const void* a_pBits, std::int32_t a_nPitch, std::int32_t a_nPixelFormat,
    STexture& a_rsTexture, std::int32_t a_nW, std::int32_t a_nH, std::int32_t a_nTexW,
    std::int32_t a_nTexH) try {
    const bool bKnown = a_nPixelFormat == Rgb24 || a_nPixelFormat == Rgb32 || a_nPixelFormat == Argb32 ||
                        a_nPixelFormat == PremultipliedArgb32;
    constexpr std::int32_t nMost = 1 << 15;
    if (!Enter()) return;
    if (a_pBits == nullptr || !bKnown || a_nW <= 0 || a_nH <= 0 || a_nW > a_nTexW || a_nH > a_nTexH ||
        a_nTexW > nMost || a_nTexH > nMost) {
        _iLog.Failed(u"CreateTextureBits(a_pBits, a_nPitch, a_nPixelFormat, a_rsTexture, a_nW, a_nH, "
                     u"a_nTexW, a_nTexH)",
            InvalidParameter);
        return;
    }
    Pixels::SBitmap sBitmap = Pixels::TransparentBitmap(a_nW, a_nH);
    const std::int32_t nBytes = a_nPixelFormat == Rgb24 ? 3 : 4;
    auto* pTo = sBitmap.bytes.data();
    for (std::int32_t y = 0; y < a_nH; ++y) {
        const auto* pFrom = static_cast<const std::uint8_t*>(a_pBits) + std::ptrdiff_t{a_nPitch} * y;
        for (std::int32_t x = 0; x < a_nW; ++x, pFrom += nBytes, pTo += 4)
            std::memcpy(pTo, pFrom, static_cast<std::size_t>(nBytes));
    }
    sBitmap.alpha = a_nPixelFormat == PremultipliedArgb32 ? Pixels::EAlpha::Premultiplied
                    : HasAlpha(a_nPixelFormat)            ? Pixels::EAlpha::Straight
                                                          : Pixels::EAlpha::None;
    CreateTexture(sBitmap, a_rsTexture, a_nTexW, a_nTexH);
} catch (const std::bad_alloc&) {
    _iLog.Failed(
        u"CreateTextureBits(a_pBits, a_nPitch, a_nPixelFormat, a_rsTexture, a_nW, a_nH, a_nTexW, a_nTexH)",
        OutOfMemory);
}

void DATA::CreateTexture(const Pixels::SBitmap& a_piBitmap, STexture& a_rsTexture, std::int32_t a_nTexW,
    std::int32_t a_nTexH) try {
    if (!Enter()) return;
    if (a_piBitmap.sheet != nullptr) {
        Adopt(a_rsTexture, std::make_unique<CPicture>(a_piBitmap.sheet, a_nTexW, a_nTexH));
        return;
    }
    const std::int64_t nBytes = std::int64_t{a_piBitmap.stride} * a_piBitmap.height;
    const bool bWhole = a_piBitmap.width > 0 && a_piBitmap.height > 0 &&
                        a_piBitmap.stride / 4 >= a_piBitmap.width &&
                        static_cast<std::int64_t>(a_piBitmap.bytes.size()) >= nBytes;
    if (!bWhole) {
        _iLog.Failed(u"CreateTexture(a_piBitmap, a_rsTexture, a_nTexW, a_nTexH)", InvalidParameter);
        return;
    }
    auto piPicture = std::make_unique<CPicture>(Straight(a_piBitmap), a_nTexW, a_nTexH);
    _vpiPictures.reserve(_vpiPictures.size() + 1); // nothing may fail once the texture is made
    if (piPicture->Stored(*_piTextures) != nullptr) Adopt(a_rsTexture, std::move(piPicture));
} catch (const std::bad_alloc&) {
    _iLog.Failed(u"CreateTexture(a_piBitmap, a_rsTexture, a_nTexW, a_nTexH)", OutOfMemory);
}

void DATA::FreeTexture(STexture& a_rsTexture) {
    const auto* const piPicture = PictureOf(a_rsTexture);
    a_rsTexture = FreedTexture();
    const auto iFound = std::find_if(_vpiPictures.begin(), _vpiPictures.end(),
        [piPicture](const auto& a_piOther) { return a_piOther.get() == piPicture; });
    if (iFound == _vpiPictures.end()) return;
    if (Enter()) (*iFound)->Free(*_piTextures);
    _vpiPictures.erase(iFound);
}

void DATA::UnbindTexture() {
    if (Enter()) _psGl->glBindTexture(GL_TEXTURE_2D, 0);
}

} // namespace KAV::GFX::OGL

KAV::GFX::SRendererRow KAV::GFX::OpenGLRenderer() noexcept {
    constexpr auto create = [](const SRendererTarget& a_sTarget, EReason a_nReason) -> std::unique_ptr<GPU> {
        return std::make_unique<OGL::DATA>(a_sTarget, a_nReason);
    };
    return {u"OpenGL", create, true};
}
