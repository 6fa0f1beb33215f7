#include "gui/label.h"

#include "gui/gui.h"
#include "gui/text_layers.h"
#include "pixels/blur.h"
#include "utils/text.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <utility>

namespace KAV::GUI {

namespace {

constexpr std::uint32_t SlideMs = 250;
constexpr float PixelsPerPoint = 1.3333334f; // at 96 pixels per inch
constexpr std::int32_t NextTextEnters = -2;  // while the old one leaves on the other side

std::uint32_t Alpha(std::uint32_t a_nColor) noexcept {
    return a_nColor >> 24;
}

/// As far as it is a whole number to three places.
bool IsWhole(float a_fSize) noexcept {
    return static_cast<std::int32_t>((a_fSize - std::trunc(a_fSize)) * 1000.0f) == 0;
}

} // namespace

CLabel::CLabel(CGUI& a_piGUI, const SWidgetInfo& a_sInfo)
    : CWidget(a_piGUI, a_sInfo), sText(a_sInfo.sText), sFont(a_sInfo.sFont), nTextColor(a_sInfo.nTextColor),
      fFontSize(a_sInfo.fFontSize), nTextAlign(a_sInfo.nTextAlign), nTextQuality(a_sInfo.nTextQuality),
      bBold(a_sInfo.bBold), bItalic(a_sInfo.bItalic), bUpper(a_sInfo.bUpper),
      nTextShadowColor(a_sInfo.nTextShadowColor), bTextShadow(a_sInfo.bTextShadow),
      nTextShadowX(static_cast<std::int32_t>(a_sInfo.fTextShadowX)),
      nTextShadowY(static_cast<std::int32_t>(a_sInfo.fTextShadowY)),
      nTextShadowBlur(a_sInfo.nTextShadowBlur) {
    sTextSlide.Jump(1.0f);
    sTextSlide.nRiseMs = SlideMs;
    sTextSlide.nFallMs = SlideMs;
    sTextSlide.pfnEase = Overshoot;
}

CLabel::~CLabel() {
    ReleaseTexts();
}

void CLabel::ReleaseTextures() {
    CWidget::ReleaseTextures();
    ReleaseTexts();
}

void CLabel::ReleaseTexts() {
    Root().ReleaseTexture(sTextTexture);
    Root().ReleaseTexture(sOldTextTexture);
}

// The text

void CLabel::SetText(std::u16string_view a_sText) {
    ChangeText(a_sText, NextTextEnters);
}

bool CLabel::ChangeText(std::u16string_view a_sText, std::int32_t a_nSlide) {
    if (a_sText == sText) return false;
    sText = a_sText;
    if (bTextSlide) {
        nTextSlideDir = a_nSlide;
        sTextSlide.Jump(0.0f);
        sTextSlide.Retarget(1.0f);
    } else {
        Root().ReleaseTexture(sTextTexture);
    }
    Root().Invalidate();
    return true;
}

void CLabel::SetTextColor(std::uint32_t a_nColor) {
    if (a_nColor == nTextColor) return;
    nTextColor = a_nColor;
    _bOtherColor = true;
    Root().Invalidate();
}

// Its picture

float CLabel::FontBasis() const {
    const auto rect = PixelRect();
    return static_cast<float>(fFontSize > 0.0f ? rect.nW : rect.nH);
}

float CLabel::FontPixels() const {
    const float size = std::abs(fFontSize);
    return (IsWhole(size) ? std::trunc(size) : size * FontBasis()) * PixelsPerPoint;
}

SPixelRect CLabel::TextRect() const {
    auto rect = PixelRect();
    rect.nW = std::min(rect.nW, Root().Width());
    rect.nH = std::min(rect.nH, Root().Height());
    return rect;
}

bool CLabel::IsTextOutdated() const {
    if (Root().IsResizing()) return false;
    const auto rect = TextRect();
    return _bOtherColor || sTextTexture.piGDIP == 0 || sTextTexture.nW != rect.nW ||
           sTextTexture.nH != rect.nH;
}

SLettering CLabel::LetteringOf(std::int32_t a_nWidth, std::int32_t a_nHeight) const {
    const auto whole = PixelRect();
    SLettering lettering;
    lettering.sText = bUpper ? Utils::ToUpper(sText) : sText;
    lettering.sFont = sFont;
    lettering.fPixels = FontPixels();
    lettering.nAlign = nTextAlign;
    lettering.nQuality = nTextQuality;
    lettering.nColor = nTextColor;
    lettering.bBold = bBold;
    lettering.bItalic = bItalic;
    lettering.bEllipsis = bEllipsis || a_nWidth < whole.nW;
    const auto inset = [a_nWidth](float a_fShare) {
        return static_cast<std::int32_t>(std::lround(a_fShare * static_cast<float>(a_nWidth)));
    };
    const std::int32_t left = HotL() + inset(fTextInsetL);
    lettering.nL = left;
    lettering.nT = HotT();
    lettering.nW = std::max(a_nWidth - left - HotR() - inset(fTextInsetR), 0);
    lettering.nH = std::max(a_nHeight - HotT() - HotB(), 0);
    return lettering;
}

void CLabel::RenderText(Pixels::SBitmap& a_rsBitmap) {
    const auto rect = TextRect();
    auto lettering = LetteringOf(rect.nW, rect.nH);
    auto top = TextLayer(Root().Pictures(), lettering, rect.nW, rect.nH, u"LabelImageTop");
    if (top.bytes.empty() || !bTextShadow || Alpha(nTextShadowColor) == 0) {
        a_rsBitmap = std::move(top);
        return;
    }
    lettering.nColor = nTextShadowColor;
    auto shadow = TextLayer(Root().Pictures(), lettering, rect.nW, rect.nH, u"LabelImageShadow");
    Pixels::Blur(shadow.bytes, shadow.width, shadow.height, nTextShadowBlur, shadow.stride, true);
    a_rsBitmap = EmptyLayer(rect.nW, rect.nH, u"LabelImage");
    CopyLayer(shadow, nTextShadowX, nTextShadowY, a_rsBitmap);
    CoverLayer(top, a_rsBitmap);
}

bool CLabel::MakeTextTexture() {
    Root().ReleaseTexture(sTextTexture);
    _bOtherColor = false;
    const auto rect = TextRect();
    if (sText.empty() || rect.nW <= 0 || rect.nH <= 0) return false;
    Pixels::SBitmap bitmap;
    RenderText(bitmap);
    if (bitmap.bytes.empty()) return false;
    auto& gpu = Root().GPU();
    const std::int32_t width = GFX::TextureSide(bitmap.width, gpu.AnySizeTextures());
    const std::int32_t height = GFX::TextureSide(bitmap.height, gpu.AnySizeTextures());
    GFX::STexture texture;
    gpu.CreateTexture(bitmap, texture, width, height);
    if (texture.piGDIP == 0) return false;
    texture.nW = bitmap.width;
    texture.nH = bitmap.height;
    texture.fU = static_cast<float>(bitmap.width) / static_cast<float>(width);
    texture.fV = static_cast<float>(bitmap.height) / static_cast<float>(height);
    sTextTexture = texture;
    return true;
}

// Drawing

void CLabel::DrawTextTexture(const GFX::STexture& a_rsTexture, float a_fShift, float a_fAlpha) {
    const auto color = Faded(GFX::White, std::clamp(sVisible.fValue, 0.0f, 1.0f) * a_fAlpha);
    if (a_rsTexture.piGDIP == 0 || GFX::IsTransparent(color)) return;
    const auto rect = TextRect();
    const auto quad = Quad(static_cast<std::int32_t>(std::lround(a_fShift)), 0);
    Root().GPU().DrawTexture(
        a_rsTexture, {{static_cast<float>(quad.nL), static_cast<float>(quad.nT), static_cast<float>(rect.nW),
                          static_cast<float>(rect.nH)},
                         {0.0f, a_rsTexture.fU, 0.0f, a_rsTexture.fV}, color, PresentTransform()});
}

void CLabel::DrawText() {
    if (!IsOnScreen()) return;
    if (std::abs(nTextSlideDir) == 2) {
        nTextSlideDir /= 2;
        Root().ReleaseTexture(sOldTextTexture);
        sOldTextTexture = std::exchange(sTextTexture, GFX::FreedTexture());
        MakeTextTexture();
    } else if (IsTextOutdated()) {
        MakeTextTexture();
    }
    const float phase = std::clamp(sTextSlide.fValue, 0.0f, 1.0f);
    const auto height = std::trunc(FontPixels());
    const float way = height * static_cast<float>(nTextSlideDir);
    DrawTextTexture(sTextTexture, -way * (1.0f - phase), phase);
    DrawTextTexture(sOldTextTexture, way * phase, 1.0f - phase);
}

void CLabel::Tick(std::uint32_t a_nMs) {
    CWidget::Tick(a_nMs);
    if (sTextSlide.Step(a_nMs)) Root().Invalidate();
}

void CLabel::Draw(std::uint32_t) {
    CheckTextures();
    DrawShadow();
    DrawImage();
    DrawText();
    if (Root().IsLayoutEditing()) DrawFrame();
}

} // namespace KAV::GUI
