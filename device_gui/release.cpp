#include "device_gui/release.h"

#include "device_gui/row_info.h"
#include "utils/number.h"
#include "utils/text.h"

#include <cmath>

namespace KAV {

namespace {

constexpr std::uint32_t FadeMs = 250;
constexpr double LongestMs = 1000.0;
constexpr double Decades = 5.0; // from the shortest to the longest
constexpr int Decimals = 2;

double MsOf(float a_fNormal) noexcept {
    return std::pow(10.0, (static_cast<double>(a_fNormal) - 1.0) * Decades) * LongestMs;
}

} // namespace

CRelease::CRelease(CXXXGUI& a_piPlugin)
    : CPluginKnob(a_piPlugin, InfoOf(Panel::RowOf(Panel::EClass::Release))) {
    _sAlpha.Jump(1.0f);
    _sAlpha.nRiseMs = _sAlpha.nFallMs = FadeMs;
}

const std::u16string& CRelease::GetText(bool a_bValueOnly) {
    if (fTextFor != Value()) {
        fTextFor = Value();
        sValueText = Utils::ToUtf16(Utils::FormatFixed(MsOf(Value()), Decimals));
        sHint = sName + u": " + sValueText + u" " + sUnit;
    }
    return CPluginKnob::GetText(a_bValueOnly);
}

float CRelease::ToNormal(float a_fPlain) const noexcept {
    // Nothing and less than nothing have no logarithm: they are the shortest time.
    return Clamped(static_cast<float>(1.0 + std::log10(static_cast<double>(a_fPlain) / LongestMs) / Decades));
}

float CRelease::GetPlain() const noexcept {
    return static_cast<float>(MsOf(Value()));
}

void CRelease::SetEnabled(bool a_bEnabled) {
    if (!a_bEnabled) {
        OnCaptureLost(); // the rest of a drag is nothing
        auto& edit = Plugin().Edit();
        if (edit.piTarget == this) edit.Drop();
    }
    SetInteractive(a_bEnabled);
    _sAlpha.Retarget(a_bEnabled ? 1.0f : 0.0f);
}

void CRelease::Tick(std::uint32_t a_nMs) {
    CPluginKnob::Tick(a_nMs);
    if (!_sAlpha.Step(a_nMs)) return;
    const auto alpha = static_cast<std::uint32_t>((_sAlpha.fValue + 1.0f) * 0.5f * 255.0f);
    nColor = nColorHover = nColorInactive = nTextColor = (alpha << 24) + 0xFFFFFFu;
    Root().Invalidate();
}

/// The pointer may have rested on it since it was switched off.
void CRelease::OnMouseWheel(float a_fNotches, std::uint32_t a_nFlags) {
    if (bInteractive) CPluginKnob::OnMouseWheel(a_fNotches, a_nFlags);
}

CAutoRelease::CAutoRelease(CXXXGUI& a_piPlugin)
    : CPluginButton(a_piPlugin, InfoOf(Panel::RowOf(Panel::EClass::AutoRelease))) {}

void CAutoRelease::OnValueChanged(float a_fNormal, std::int32_t) {
    Plugin().Find<CRelease>()->SetEnabled(a_fNormal == 0.0f);
}

} // namespace KAV
