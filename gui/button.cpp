#include "gui/button.h"

#include "gui/edit_bracket.h"
#include "gui/gui.h"
#include "utils/clock.h"

#include <algorithm>
#include <cmath>
#include <utility>

namespace KAV::GUI {

namespace {

constexpr float PressBump = 0.125f; // of its height, half way between off and on
constexpr auto Off = static_cast<std::int32_t>(EState::Normal);
constexpr auto On = static_cast<std::int32_t>(EState::Active);
constexpr std::int32_t FramesWithInert = 3; // off, inert, on
constexpr float InertFrame = 0.5f;

} // namespace

CButton::CButton(CGUI& a_piGUI, const SWidgetInfo& a_sInfo)
    : CLED(a_piGUI, a_sInfo), sOverlay(a_sInfo.sOverlay),
      nOverlayX(static_cast<std::int32_t>(a_sInfo.fOverlayX)),
      nOverlayY(static_cast<std::int32_t>(a_sInfo.fOverlayY)), nOverlayColor(a_sInfo.nOverlayColor),
      nOverlayColorHover(a_sInfo.nOverlayColorHover), nOverlayColorActive(a_sInfo.nOverlayColorActive),
      nOverlayColorInactive(a_sInfo.nOverlayColor), nRadioGroup(a_sInfo.nRadioGroup),
      fTextFor(Value() + NoTextYet) {
    if (!a_sInfo.bPassive) bInteractive = true;
    fBumpY = PressBump;
}

CButton::~CButton() {
    Root().ReleaseTexture(sOverlayTexture);
}

void CButton::ReleaseTextures() {
    CLED::ReleaseTextures();
    Root().ReleaseTexture(sOverlayTexture);
}

// The value

bool CButton::SetValue(float a_fNormal, bool a_bHistory) {
    if (!TakeValue(a_fNormal, a_bHistory)) return false;
    if (nRadioGroup >= 0 && Value() == 1.0f) {
        for (auto* const button : Root().FindAll<CButton>()) {
            if (button != this && button->nRadioGroup == nRadioGroup) button->SetValue(0.0f, false);
        }
    }
    TellDevice();
    OnValueChanged(Value(), Item());
    return true;
}

void CButton::SetFromHost(float a_fNormal) {
    if (nId >= 0) TakeFromHost(a_fNormal);
}

CButton& CButton::OnInGroup() {
    if (nRadioGroup >= 0) {
        for (auto* const button : Root().FindAll<CButton>()) {
            if (button->nRadioGroup == nRadioGroup && button->Value() == 1.0f) return *button;
        }
    }
    return *this;
}

CValueWidget& CButton::HistoryTarget() {
    return OnInGroup();
}

// The press

bool CButton::TakePress(std::uint32_t a_nFlags) noexcept {
    _bPressed = (a_nFlags & MouseLeft) != 0;
    return _bPressed;
}

void CButton::OnMouseDown(std::int32_t x, std::int32_t y, std::uint32_t a_nFlags) {
    CLED::OnMouseDown(x, y, a_nFlags);
    if (!TakePress(a_nFlags) || (nRadioGroup >= 0 && Value() == 1.0f)) return;
    // The host hears of the old state first, so that its automation has a value to come back to.
    const auto& present = OnInGroup();
    if (present.nId >= 0)
        InEdit(Root(), present.nId, true, [&] { Root().SetParameter(present.nId, present.Value()); });
    InEdit(Root(), nId, true, [this] { SetValue(Value() == 0.0f ? 1.0f : 0.0f, false); });
    Root().Hint().nWaitMs = CHint::DelayMs;
}

void CButton::OnMouseUp(std::int32_t x, std::int32_t y, std::uint32_t a_nFlags) {
    CLED::OnMouseUp(x, y, a_nFlags);
    if (std::exchange(_bPressed, false) && (a_nFlags & MouseLeft) != 0) OnClick();
}

void CButton::OnClick() {
    if (piOnClick != nullptr && bInteractive) piOnClick->OnClick(this);
}

// Its text

void CButton::MakeText(std::u16string_view a_sWithoutList) {
    if (sName.empty() || fTextFor == Value()) return;
    fTextFor = Value();
    sValueText = vsItems.empty() ? std::u16string(a_sWithoutList) : ItemText();
    sHint = sTitle + u": " + sValueText;
}

const std::u16string& CButton::GetText(bool a_bValueOnly) {
    MakeText(Value() != 0.0f ? u"On" : u"Off");
    return CLED::GetText(a_bValueOnly);
}

// Drawing

float CButton::StateValue(std::int32_t a_nState) const {
    return a_nState == On ? 1.0f : 0.0f;
}

/// A button that can do nothing shows the middle one of three frames.
CLED::SFade CButton::FadeOf(const GFX::STexture& a_rsTexture) const {
    if (!bInteractive && a_rsTexture.nFrames == FramesWithInert) return {InertFrame, InertFrame, 0.0f};
    return {StateValue(Off), StateValue(On), std::clamp(GetDrawValue(), 0.0f, 1.0f)};
}

void CButton::DrawShadow() {
    if (HasShadow()) DrawShadowFade(FadeOf(sTextureShadow));
}

void CButton::DrawImage() {
    if (HasImage()) DrawImageFade(FadeOf(sTexture));
}

bool CButton::HasOverlay() {
    const auto rect = PixelRect();
    if (sOverlay.empty() || !IsOnScreen() || rect.nW <= 0 || rect.nH <= 0) return false;
    auto& texture = sOverlayTexture;
    const bool isOfSize = texture.nW == rect.nW * texture.nColumns && texture.nH == rect.nH * texture.nRows;
    if (bFit && !isOfSize && !Root().IsResizing()) Root().ReleaseTexture(texture);
    if (texture.piGDIP == 0)
        texture = Root().GetTexture(sOverlay, bFit ? rect.nW : -1, bFit ? rect.nH : -1, 0);
    return texture.piGDIP != 0;
}

SPixelRect CButton::OverlayRect() const noexcept {
    auto rect = Quad(nOverlayX, nOverlayY);
    const auto columns = static_cast<float>(std::max(sOverlayTexture.nColumns, 1));
    const auto rows = static_cast<float>(std::max(sOverlayTexture.nRows, 1));
    const float aspect = static_cast<float>(sOverlayTexture.nW) / columns /
                         (static_cast<float>(std::max(sOverlayTexture.nH, 1)) / rows);
    auto width = static_cast<float>(rect.nW);
    float height = width / aspect;
    if (height > static_cast<float>(rect.nH)) {
        height = static_cast<float>(rect.nH);
        width = height * aspect;
    }
    const auto wide = static_cast<std::int32_t>(std::lround(width));
    const auto high = static_cast<std::int32_t>(std::lround(height));
    return {rect.nL + (rect.nW - wide) / 2, rect.nT + (rect.nH - high) / 2, wide, high};
}

void CButton::DrawOverlay() {
    if (!HasOverlay()) return;
    const float visible = std::clamp(sVisible.fValue, 0.0f, 1.0f);
    const auto color =
        bInteractive ? Blend(nOverlayColor, nOverlayColorHover, sHover.fValue) : nOverlayColorInactive;
    const auto quad = OverlayRect();
    if (sOverlayTexture.nFrames < 2) {
        DrawFrameOf(sOverlayTexture, 0.0f, Faded(color, visible), quad);
        return;
    }
    const auto fade = FadeOf(sOverlayTexture);
    const auto litColor = Blend(nOverlayColorActive, nOverlayColorHover, sHover.fValue);
    DrawFrameOf(sOverlayTexture, fade.fDark, Faded(color, visible * (1.0f - fade.fShare)), quad);
    DrawFrameOf(sOverlayTexture, fade.fLit, Faded(litColor, visible * fade.fShare), quad);
}

void CButton::Draw(std::uint32_t) {
    CheckTextures();
    DrawShadow();
    DrawImage();
    DrawOverlay();
    DrawText();
    if (Root().IsLayoutEditing()) DrawFrame();
}

void CButton::SoakTest() {
    const auto rect = PixelRect();
    const std::int32_t x = rect.nL + rect.nW / 2;
    const std::int32_t y = rect.nT + rect.nH / 2;
    for (std::int32_t n = 0; n < ItemCount(); ++n) {
        Root().OnMouseDown(x, y, MouseLeft);
        Utils::WaitMs(SoakPauseMs);
        Root().OnMouseUp(x, y, MouseLeft);
        Utils::WaitMs(SoakPauseMs);
    }
}

} // namespace KAV::GUI
