#include "gui/led.h"

#include "gui/gui.h"

#include <algorithm>

namespace KAV::GUI {

std::uint32_t CLED::LitColor() const noexcept {
    return Blend(nColorActive, nColorHover, sHover.fValue);
}

CLED::SFade CLED::PresentFade() const {
    return {0.0f, 1.0f, std::clamp(GetDrawValue(), 0.0f, 1.0f)};
}

bool CLED::HasImage() {
    return IsOnScreen() && (sTexture.piGDIP != 0 || LoadTexture(sTexture, sImage));
}

bool CLED::HasShadow() {
    if (!bShadow || !IsOnScreen() || sImage.empty()) return false;
    if (sTextureShadow.piGDIP == 0) sTextureShadow = Root().GetTexture(sImage, -1, -1, nShadowBlur);
    return sTextureShadow.piGDIP != 0;
}

void CLED::DrawShadow() {
    if (HasShadow()) DrawShadowFade(PresentFade());
}

void CLED::DrawImage() {
    if (HasImage()) DrawImageFade(PresentFade());
}

void CLED::DrawShadowFade(const SFade& a_sFade) {
    if (sTextureShadow.nFrames < 2) {
        CMeter::DrawShadow();
        return;
    }
    const float visible = std::clamp(sVisible.fValue, 0.0f, 1.0f);
    DrawShadowOf(a_sFade.fDark, Faded(ImageColor(), visible * (1.0f - a_sFade.fShare)) >> 24);
    DrawShadowOf(a_sFade.fLit, Faded(LitColor(), visible * a_sFade.fShare) >> 24);
}

void CLED::DrawImageFade(const SFade& a_sFade) {
    if (sTexture.nFrames < 2) {
        CMeter::DrawImage();
        return;
    }
    const float visible = std::clamp(sVisible.fValue, 0.0f, 1.0f);
    const auto quad = Quad(0, 0);
    DrawFrameOf(sTexture, a_sFade.fDark, Faded(ImageColor(), visible * (1.0f - a_sFade.fShare)), quad);
    DrawFrameOf(sTexture, a_sFade.fLit, Faded(LitColor(), visible * a_sFade.fShare), quad);
}

} // namespace KAV::GUI
