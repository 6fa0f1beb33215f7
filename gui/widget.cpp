#include "gui/widget.h"

#include "gui/gui.h"

#include <algorithm>

namespace KAV::GUI {

namespace {

/// Places in SWidgetInfo::afLook and in the renderer's nine values.
constexpr std::size_t Kinds = 3; // scales, rotations, moves
constexpr std::size_t Axes = 3;

constexpr std::uint32_t FrameFadeMs = 250;

Look LookOf(const SWidgetInfo& a_sInfo) noexcept {
    Look look{};
    for (std::size_t kind = 0; kind < Kinds; ++kind) {
        for (std::size_t axis = 0; axis < Axes; ++axis) {
            const auto& values = a_sInfo.afLook[kind];
            look[kind * Axes + axis] = {values[0][axis], values[1][axis], values[2][axis], values[0][axis]};
        }
    }
    return look;
}

} // namespace

CWidget::CWidget(CGUI& a_piGUI, const SWidgetInfo& a_sInfo)
    : nId(a_sInfo.nId), nGroups(a_sInfo.nGroups), sClass(a_sInfo.sName), sName(a_sInfo.sName),
      sTitle(a_sInfo.sTitle.empty() ? a_sInfo.sName : a_sInfo.sTitle), sAux1(a_sInfo.sAux1),
      sImage(a_sInfo.sImage), sImage2(a_sInfo.sImage2), sImage3(a_sInfo.sImage3), sAux2(a_sInfo.sAux2),
      sHint(sTitle), nAnchor(a_sInfo.nAnchor), fHotL(a_sInfo.fHotL), fHotT(a_sInfo.fHotT),
      fHotR(a_sInfo.fHotR), fHotB(a_sInfo.fHotB), nMrgL(a_sInfo.nMrgL), nMrgT(a_sInfo.nMrgT),
      nMrgR(a_sInfo.nMrgR), nMrgB(a_sInfo.nMrgB), asLook(LookOf(a_sInfo)), nColor(a_sInfo.nColor),
      nColorHover(a_sInfo.nColorHover), nColorActive(a_sInfo.nColorActive),
      nColorInactive(a_sInfo.nColorInactive), bInteractive(a_sInfo.bInteractive), bTile(a_sInfo.bTile),
      bHint(a_sInfo.bHint), fHintAt(a_sInfo.fHintAt), bFit(a_sInfo.bFit), nShadowColor(a_sInfo.nShadowColor),
      bShadow(a_sInfo.bShadow), fShadowX(a_sInfo.fShadowX), fShadowY(a_sInfo.fShadowY),
      nShadowBlur(a_sInfo.nShadowBlur), nReserved(a_sInfo.nReserved), _piGUI(a_piGUI) {
    sX.Jump(a_sInfo.fX);
    sY.Jump(a_sInfo.fY);
    sW.Jump(a_sInfo.fW);
    sH.Jump(a_sInfo.fH);
    sVisible.nRiseMs = a_sInfo.nVisibleRiseMs;
    sVisible.nFallMs = a_sInfo.nVisibleFallMs;
    sVisible.pfnEase = Overshoot;
    sVisible.Retarget(a_sInfo.bVisible ? 1.0f : 0.0f);
    sHover.nRiseMs = a_sInfo.nHoverRiseMs;
    sHover.nFallMs = a_sInfo.nHoverFallMs;
    sFrameAlpha.nRiseMs = FrameFadeMs;
    sFrameAlpha.nFallMs = FrameFadeMs;
    _piGUI.Enter(*this);
}

CWidget::~CWidget() {
    _piGUI.Leave(*this);
    _piGUI.Frame().Guard([this] { CWidget::ReleaseTextures(); });
}

void CWidget::ReleaseTextures() {
    for (auto* const texture : {&sTexture, &sTextureAlt, &sTextureAlt2, &sTextureFrame, &sTextureShadow})
        Root().ReleaseTexture(*texture);
}

const std::u16string& CWidget::GetText(bool a_bValueOnly) {
    return a_bValueOnly ? sValueText : sHint;
}

// What others set

void CWidget::SetWidth(float a_fWidth) {
    if (a_fWidth == sW.fTarget) return;
    sW.Retarget(a_fWidth);
    Root().ReleaseTexture(sTextureFrame);
    Root().Invalidate();
}

void CWidget::SetHeight(float a_fHeight) {
    if (a_fHeight == sH.fTarget) return;
    sH.Retarget(a_fHeight);
    Root().ReleaseTexture(sTextureFrame);
    Root().Invalidate();
}

void CWidget::SetVisible(bool a_bShow, std::uint32_t a_nGroups) {
    if (a_nGroups != 0) {
        for (auto* const widget : Root().Widgets()) {
            if ((widget->nGroups & a_nGroups) != 0) widget->SetVisible(a_bShow, 0);
        }
        return;
    }
    if (a_bShow == IsVisible()) return;
    sVisible.Retarget(a_bShow ? 1.0f : 0.0f);
    Root().Invalidate();
}

void CWidget::SetInteractive(bool a_bInteractive) {
    if (a_bInteractive == bInteractive) return;
    bInteractive = a_bInteractive;
    Root().Invalidate();
}

void CWidget::SetImage(std::u16string_view a_sName) {
    if (a_sName == sImage) return;
    sImage = a_sName;
    Root().ReleaseTexture(sTexture);
    Root().ReleaseTexture(sTextureShadow);
    Root().Invalidate();
}

void CWidget::Restack(bool a_bRaise, bool a_bToEnd, std::uint32_t a_nGroups) {
    if (a_nGroups == 0) {
        Root().Restack(*this, a_bRaise, a_bToEnd);
        return;
    }
    std::vector<CWidget*> members;
    for (auto* const widget : Root().Widgets()) {
        if ((widget->nGroups & a_nGroups) != 0) members.push_back(widget);
    }
    if (!a_bRaise) std::reverse(members.begin(), members.end());
    for (auto* const widget : members) widget->Restack(a_bRaise, a_bToEnd, 0);
}

void CWidget::SetFromHost(float) {}

void CWidget::Tick(std::uint32_t a_nMs) {
    bool moved = false;
    for (auto* const value : {&sVisible, &sHover, &sX, &sY, &sW, &sH, &sFrameAlpha}) {
        if (value->Step(a_nMs)) moved = true;
    }
    if (sFrameAlpha.fValue == 0.0f) Root().ReleaseTexture(sTextureFrame);
    if (moved) Root().Invalidate();
}

// The pointer

void CWidget::OnMouseDown(std::int32_t, std::int32_t, std::uint32_t) {}

void CWidget::OnMouseUp(std::int32_t, std::int32_t, std::uint32_t) {}

void CWidget::OnMouseMove(std::int32_t, std::int32_t, std::uint32_t) {}

void CWidget::OnMouseWheel(float, std::uint32_t) {}

void CWidget::OnMouseEnter() {
    sHover.Retarget(1.0f);
    if (LooksDifferentUnderPointer()) Root().Invalidate();
}

void CWidget::OnMouseLeave() {
    sHover.Retarget(0.0f);
    if (LooksDifferentUnderPointer()) Root().Invalidate();
}

bool CWidget::LooksDifferentUnderPointer() const noexcept {
    return nColor != nColorHover || std::any_of(asLook.begin(), asLook.end(), [](const auto& a_afValues) {
        return a_afValues[static_cast<std::size_t>(EState::Normal)] !=
               a_afValues[static_cast<std::size_t>(EState::Hover)];
    });
}

void CWidget::OnGuiResize(std::int32_t, std::int32_t) {}

void CWidget::SoakTest() {}

} // namespace KAV::GUI
