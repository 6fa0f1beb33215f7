// What a widget of pictures looks like.

#include "gui/gui.h"
#include "gui/widget.h"

#include <algorithm>

namespace KAV::GUI {

namespace {

constexpr std::uint32_t OpaqueAlpha = 255;

std::uint32_t Channel(std::uint32_t a_nColor, int a_nShift) noexcept {
    return a_nColor >> a_nShift & 0xFFu;
}

/// How far a value is from the nearer of its ends.
float FromEnd(float a_fValue) noexcept {
    return a_fValue < 0.5f ? a_fValue : 1.0f - a_fValue;
}

/// One frame of a picture's grid, 0..1 from the first to the last.
GFX::STexturePart PartOf(const GFX::STexture& a_rsTexture, float a_fFrame) noexcept {
    const std::int32_t columns = std::max(a_rsTexture.nColumns, 1);
    const float place = static_cast<float>(a_rsTexture.nFrames - 1) * a_fFrame;
    const auto frame =
        static_cast<std::int32_t>(place + 0.5f); // NOLINT(bugprone-incorrect-roundings): 0 or more
    const std::int32_t row = frame / columns;
    const std::int32_t column = frame % columns;
    const float width = a_rsTexture.fU / static_cast<float>(columns);
    const float height = a_rsTexture.fV / static_cast<float>(std::max(a_rsTexture.nRows, 1));
    return {width * static_cast<float>(column), width * static_cast<float>(column + 1),
        height * static_cast<float>(row), height * static_cast<float>(row + 1)};
}

/// The whole picture again and again.
GFX::STexturePart Tiles(const GFX::STexture& a_rsTexture, const GFX::SRect& a_sTo) noexcept {
    return {0.0f, a_rsTexture.fU * a_sTo.fW / static_cast<float>(std::max(a_rsTexture.nW, 1)), 0.0f,
        a_rsTexture.fV * a_sTo.fH / static_cast<float>(std::max(a_rsTexture.nH, 1))};
}

} // namespace

std::uint32_t Faded(std::uint32_t a_nColor, float a_fAlpha) noexcept {
    const float alpha = static_cast<float>(a_nColor >> 24) * std::clamp(a_fAlpha, 0.0f, 1.0f);
    return static_cast<std::uint32_t>(alpha) << 24 | (a_nColor & 0xFFFFFFu);
}

std::uint32_t Blend(std::uint32_t a_nFrom, std::uint32_t a_nTo, float a_fShare) noexcept {
    const float share = std::clamp(a_fShare, 0.0f, 1.0f);
    std::uint32_t blend = 0;
    for (int shift = 0; shift < 32; shift += 8) {
        const auto from = static_cast<float>(Channel(a_nFrom, shift));
        const auto to = static_cast<float>(Channel(a_nTo, shift));
        blend |= static_cast<std::uint32_t>(from + (to - from) * share) << shift;
    }
    return blend;
}

bool CWidget::LoadTexture(GFX::STexture& a_rsTexture, const std::u16string& a_sName) {
    if (a_sName.empty()) return false;
    const auto rect = PixelRect();
    const bool fits = bFit && rect.nW > 0 && rect.nH > 0;
    a_rsTexture = Root().GetTexture(a_sName, fits ? rect.nW : -1, fits ? rect.nH : -1, 0);
    if (a_rsTexture.piGDIP == 0) return false;
    if (rect.nW == 0 && rect.nH == 0 && !HasMargins()) {
        const std::int32_t width = a_rsTexture.nW / std::max(a_rsTexture.nColumns, 1);
        const std::int32_t height = a_rsTexture.nH / std::max(a_rsTexture.nRows, 1);
        sW.Jump(static_cast<float>(width));
        sH.Jump(static_cast<float>(height));
    }
    return true;
}

void CWidget::CheckTextures() {
    if (!bFit || sTexture.piGDIP == 0 || Root().IsResizing()) return;
    const auto rect = PixelRect();
    if (sTexture.nW != rect.nW * sTexture.nColumns || sTexture.nH != rect.nH * sTexture.nRows)
        Root().ReleaseTexture(sTexture);
}

float CWidget::GetDrawValue() const {
    return 0.0f;
}

std::uint32_t CWidget::ImageColor() const noexcept {
    return bInteractive ? Blend(nColor, nColorHover, sHover.fValue) : nColorInactive;
}

GFX::STransform CWidget::PresentTransform() const noexcept {
    const auto rest = static_cast<std::size_t>(bInteractive ? EState::Normal : EState::Inactive);
    const float hover = sHover.fValue;
    std::array<float, Looks> look{};
    for (std::size_t n = 0; n < Looks; ++n)
        look[n] =
            (1.0f - hover) * asLook[n][rest] + hover * asLook[n][static_cast<std::size_t>(EState::Hover)];
    return {look[0], look[1], look[2], look[3], look[4], look[5], look[6], look[7], look[8]};
}

SPixelRect CWidget::Quad(std::int32_t a_nX, std::int32_t a_nY) const noexcept {
    const auto rect = PixelRect();
    const auto width = static_cast<float>(rect.nW);
    const auto height = static_cast<float>(rect.nH);
    const float hidden = 1.0f - sVisible.fValue;
    const float bump = FromEnd(GetDrawValue());
    return {
        RoundedPixels(static_cast<float>(rect.nL + a_nX) + fSlideX * width * hidden + fBumpX * width * bump),
        RoundedPixels(
            static_cast<float>(rect.nT + a_nY) + fSlideY * height * hidden + fBumpY * height * bump),
        rect.nW, rect.nH};
}

void CWidget::DrawFrameOf(
    GFX::STexture& a_rsTexture, float a_fFrame, std::uint32_t a_nColor, const SPixelRect& a_sQuad) {
    if (Channel(a_nColor, 24) < 1 || a_sQuad.nW <= 0 || a_sQuad.nH <= 0) return;
    const GFX::SRect to{static_cast<float>(a_sQuad.nL), static_cast<float>(a_sQuad.nT),
        static_cast<float>(a_sQuad.nW), static_cast<float>(a_sQuad.nH)};
    if (HasMargins()) {
        Root().GPU().DrawTexture9(
            a_rsTexture, {to, nMrgL, nMrgT, nMrgR, nMrgB, a_nColor, a_fFrame, PresentTransform()});
        return;
    }
    Root().GPU().DrawTexture(a_rsTexture,
        {to, bTile ? Tiles(a_rsTexture, to) : PartOf(a_rsTexture, a_fFrame), a_nColor, PresentTransform()});
}

void CWidget::DrawImage() {
    if (!IsOnScreen()) return;
    const auto color = Faded(ImageColor(), sVisible.fValue);
    if (color >> 24 < 1) return;
    if (sTexture.piGDIP == 0 && !LoadTexture(sTexture, sImage)) return;
    DrawFrameOf(sTexture, GetDrawValue(), color, Quad(0, 0));
}

void CWidget::DrawShadow() {
    if (!bShadow || !IsOnScreen() || sImage.empty()) return;
    if (sTextureShadow.piGDIP == 0) sTextureShadow = Root().GetTexture(sImage, -1, -1, nShadowBlur);
    if (sTextureShadow.piGDIP == 0) return;
    DrawShadowOf(GetDrawValue(), Faded(ImageColor(), sVisible.fValue) >> 24);
}

void CWidget::DrawShadowOf(float a_fFrame, std::uint32_t a_nImageAlpha) {
    const std::uint32_t alpha = a_nImageAlpha * (nShadowColor >> 24) / OpaqueAlpha;
    const auto x = ShadowOffset(fShadowX, Root().Width());
    const auto y = ShadowOffset(fShadowY, Root().Height());
    auto quad = Quad(x, y);
    if (!HasMargins()) {
        quad.nL -= 4 * nShadowBlur;
        quad.nT -= 4 * nShadowBlur;
        quad.nW += 8 * nShadowBlur;
        quad.nH += 8 * nShadowBlur;
    }
    DrawFrameOf(sTextureShadow, a_fFrame, alpha << 24 | (nShadowColor & 0xFFFFFFu), quad);
}

void CWidget::DrawFrame() {}

void CWidget::Draw(std::uint32_t) {
    CheckTextures();
    DrawShadow();
    DrawImage();
    if (Root().IsLayoutEditing()) DrawFrame();
}

} // namespace KAV::GUI
