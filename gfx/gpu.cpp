#include "gfx/gpu.h"

#include "gfx/pixel_format.h"
#include "pixels/blur.h"

#include <cstddef>
#include <span>
#include <vector>

namespace KAV::GFX {

namespace {

constexpr std::int32_t BackdropRadius = 4;

/// The pixels are opaque then, and soft.
void SoftenFrame(std::vector<std::uint32_t>& a_rsPixels, std::int32_t a_nW, std::int32_t a_nH) {
    for (auto& nPixel : a_rsPixels) nPixel |= 0xFF000000U;
    const auto sBytes = std::as_writable_bytes(std::span(a_rsPixels));
    Pixels::Blur({reinterpret_cast<std::uint8_t*>(sBytes.data()), sBytes.size()}, a_nW, a_nH, BackdropRadius,
        a_nW * 4, false);
}

} // namespace

bool GPU::AnySizeTextures() const {
    return false;
}

std::int32_t GPU::MinTextureW() const {
    return 0;
}

std::int32_t GPU::MaxTextureW() const {
    return 0;
}

std::int32_t GPU::MinTextureH() const {
    return 0;
}

std::int32_t GPU::MaxTextureH() const {
    return 0;
}

std::int32_t GPU::MaxAspect() const {
    return 0;
}

void GPU::Clear() {}

void GPU::BeginFrame() {}

void GPU::EndFrame() {}

void GPU::Present() {}

void GPU::Resize(std::int32_t, std::int32_t) {}

void GPU::SetLineWidth(float) {}

void GPU::SetLineColor(float, float, float, float) {}

void GPU::SetLineSmooth(bool) {}

bool GPU::IsOffscreenCapable() const {
    return false;
}

void GPU::BeginOffscreen() {}

void GPU::EndOffscreen() {}

void GPU::DrawOffscreen() {}

void GPU::DrawLines(std::int32_t, const SPoint*, bool, bool) {}

void GPU::DrawTexture(const STexture&, const SDraw&) {}

void GPU::DrawTexture9(const STexture&, const SDraw9&) {}

void GPU::CreateTextureBits(const void*, std::int32_t, std::int32_t, STexture&, std::int32_t, std::int32_t,
    std::int32_t, std::int32_t) {}

void GPU::CreateTexture(const Pixels::SBitmap&, STexture&, std::int32_t, std::int32_t) {}

void GPU::FreeTexture(STexture&) {}

void GPU::UnbindTexture() {}

void GPU::MakeBackdrop(STexture& a_rsTexture, std::int32_t a_nW, std::int32_t a_nH) {
    if (a_rsTexture.piGDIP != 0) FreeTexture(a_rsTexture);
    a_rsTexture = FreedTexture();
    if (a_nW <= 0 || a_nH <= 0 || !IsReady()) return;
    std::vector<std::uint32_t> sPixels(static_cast<std::size_t>(a_nW) * static_cast<std::size_t>(a_nH));
    ReadBack(sPixels.data(), a_nW, a_nH);
    SoftenFrame(sPixels, a_nW, a_nH);

    STexture sBackdrop;
    const bool bAnySize = AnySizeTextures();
    const std::int32_t nTexW = TextureSide(a_nW, bAnySize);
    const std::int32_t nTexH = TextureSide(a_nH, bAnySize);
    sBackdrop.nW = a_nW;
    sBackdrop.nH = a_nH;
    sBackdrop.fU = static_cast<float>(a_nW) / static_cast<float>(nTexW);
    sBackdrop.fV = static_cast<float>(a_nH) / static_cast<float>(nTexH);
    CreateTextureBits(sPixels.data(), a_nW * 4, Argb32, sBackdrop, a_nW, a_nH, nTexW, nTexH);
    if (sBackdrop.piGDIP != 0) a_rsTexture = sBackdrop;
}

void GPU::SetClip(float, float, float, float) {}

void GPU::SetCulling(bool) {}

bool GPU::Shutdown() {
    return false;
}

bool GPU::IsReady() const {
    return false;
}

bool GPU::IsCurrent() const {
    return true;
}

void GPU::ReadBack(std::uint32_t*, std::int32_t, std::int32_t) {}

const char16_t* GPU::GetName() const {
    return u"Null";
}

void GPU::ReleaseTexture(STexture&) {}

void GPU::SetStretching(bool) {}

bool GPU::IsRenewalDue() const {
    return false;
}

GPU::~GPU() = default;

GPU& NoRenderer() noexcept {
    static GPU iNone;
    return iNone;
}

} // namespace KAV::GFX
