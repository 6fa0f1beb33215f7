#include "gui/hint.h"

#include "gui/gui.h"

#include <algorithm>
#include <cmath>
#include <limits>

namespace KAV::GUI {

namespace {

constexpr std::int32_t DropPx = 50; // at 96 per inch: how far above its place it appears
constexpr float FirstShift = 0.25f; // of its height: how far below its place at a widget
constexpr std::int32_t MeasuredQuality = 3;

} // namespace

CHint::CHint(CGUI& a_piGUI, const SWidgetInfo& a_sInfo) : CLabel(a_piGUI, a_sInfo) {
    sClass = u"Hint";
    sName = u"Hint";
    sImage = u"Hint##Sz-1x-1pxSb0.png";
    bEllipsis = true;
    sVisible.Jump(0.0f);
    // It moves and grows as fast as it appears.
    for (auto* const value : {&sX, &sY, &sW, &sH}) {
        value->nRiseMs = a_sInfo.nVisibleRiseMs;
        value->nFallMs = a_sInfo.nVisibleFallMs;
    }
}

void CHint::HoverChanged(CWidget* a_piWidget) {
    if (a_piWidget == piFor) return;
    piFor = a_piWidget;
    bFirst = true;
    SetVisible(false, 0);
    bPending = piFor != nullptr && piFor->bHint;
    if (bPending) nWaitMs = 0;
}

void CHint::Forget(const CWidget& a_piWidget) {
    if (piFor == &a_piWidget) Reset();
}

void CHint::Advance(std::uint32_t a_nMs) {
    if (!bPending) return;
    nWaitMs += std::min(a_nMs, std::numeric_limits<std::uint32_t>::max() - nWaitMs);
    if (nWaitMs < DelayMs) return;
    bPending = false;
    if (piFor == nullptr || piFor->fHintAt == 0.0f) {
        sX.Jump(static_cast<float>(nAnchorX));
        sY.Jump(static_cast<float>(nAnchorY - Root().ScaleByDPI(DropPx)));
        Move(sY, static_cast<float>(nAnchorY));
    }
    Root().Window().TrackLeave();
    SetVisible(true, 0);
}

void CHint::PrepareDraw() {
    if (piFor != nullptr && piFor->bHint && IsVisible()) {
        SetText(piFor->GetText(false));
        // Two widgets may have the same text.
        if (bFirst && !Text().empty()) PlaceAtWidget();
    }
    if (!Text().empty()) StayWithinRoot();
}

void CHint::DrawOnTop(std::uint32_t a_nMs) {
    PrepareDraw();
    Draw(a_nMs);
}

void CHint::OnGuiResize(std::int32_t a_nWidth, std::int32_t a_nHeight) {
    CLabel::OnGuiResize(a_nWidth, a_nHeight);
    SetText({});
}

float CHint::FontBasis() const {
    return static_cast<float>(fFontSize < 0.0f ? Root().Height() : Root().Width());
}

void CHint::SetText(std::u16string_view a_sText) {
    if (a_sText == Text()) return;
    CLabel::SetText(a_sText);
    Fit();
}

void CHint::Fit() {
    if (Text().empty()) {
        Move(sW, 0.0f);
        Move(sH, 0.0f);
        return;
    }
    const auto insetW = static_cast<float>(HotL() + HotR());
    const auto insetH = static_cast<float>(HotT() + HotB());
    const auto rootW = static_cast<float>(Root().Width());
    const auto rootH = static_cast<float>(Root().Height());
    auto lettering = LetteringOf(Root().Width(), Root().Height());
    lettering.nQuality = MeasuredQuality;
    const auto size = Root().Pictures().Measure(lettering);
    // Whole pixels, or the last letter of a text that needs a part of one would give way to an ellipsis.
    Move(sW, std::min(std::ceil(size.fW) + insetW, rootW));
    Move(sH, std::min(std::ceil(size.fH) + insetH, rootH));
    PlaceAtWidget();
}

void CHint::PlaceAtWidget() {
    if (piFor == nullptr || piFor->fHintAt == 0.0f) return;
    const auto widget = piFor->PixelRect();
    const auto left = static_cast<float>(widget.nL);
    const auto top = static_cast<float>(widget.nT);
    // Whole pixels, since a place between -1 and 1 is a fraction.
    const float x = std::round(left + (static_cast<float>(widget.nW) - sW.fTarget) * 0.5f);
    const float y = std::round(top - sH.fTarget + static_cast<float>(widget.nH) * piFor->fHintAt);
    if (bFirst) {
        sX.Jump(x);
        sY.Jump(std::round(y + sH.fTarget * FirstShift));
        bFirst = false;
    }
    Move(sX, x);
    Move(sY, y);
}

void CHint::StayWithinRoot() {
    const float right = static_cast<float>(Root().Width()) - sW.fTarget;
    const float bottom = static_cast<float>(Root().Height()) - sH.fTarget;
    Move(sX, std::clamp(sX.fTarget, 0.0f, std::max(right, 0.0f)));
    Move(sY, std::clamp(sY.fTarget, 0.0f, std::max(bottom, 0.0f)));
}

void CHint::Move(SAnimValue& a_rsValue, float a_fTarget) {
    if (a_fTarget == a_rsValue.fTarget) return;
    a_rsValue.Retarget(a_fTarget);
    // On the way to 0 it would pass for a fraction of the root.
    if (a_fTarget == 0.0f) a_rsValue.Jump(0.0f);
    Root().Invalidate();
}

} // namespace KAV::GUI
