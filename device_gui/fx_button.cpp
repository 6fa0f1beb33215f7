#include "device_gui/fx_button.h"

#include "device_gui/row_info.h"

namespace KAV {

namespace {

constexpr std::int32_t PulseMs = 500;
constexpr std::uint32_t PulseFrom = 0xFFFFFFFF;
constexpr std::uint32_t PulseTo = 0x64FFFFFF;
constexpr std::uint32_t SoloColor = 0xFFF7F3A2;
constexpr std::uint32_t MuteColor = 0xFFFF8E7B;

// Alphas of the text
constexpr std::uint32_t Bright = 0xFF;
constexpr std::uint32_t Dim = 0x64;

std::uint32_t WithAlpha(std::uint32_t a_nColor, std::uint32_t a_nAlpha) noexcept {
    return a_nAlpha << 24 | (a_nColor & 0xFFFFFFu);
}

} // namespace

CFxBtn::CFxBtn(CXXXGUI& a_piPlugin, int a_nGroup)
    : CPluginButton(a_piPlugin, InfoOf(Panel::RowOf(Panel::EClass::FxBtn, a_nGroup))), _nGroup(a_nGroup),
      _nBaseColor(nColor), _nPulseMs(PulseMs) {
    bEllipsis = true;                         // the user names groups
    fTextInsetL = fTextInsetR = 3.0f / 50.0f; // clear of the edges
}

// What the user does

void CFxBtn::OnMouseDown(std::int32_t x, std::int32_t y, std::uint32_t a_nFlags) {
    CPluginButton::OnMouseDown(x, y, a_nFlags);
    auto& controls = Plugin().Controls();
    if ((a_nFlags & GUI::MouseLeft) == 0) {
        if ((a_nFlags & GUI::MouseRight) != 0) Root().Edit().Open(this, true);
    } else if ((a_nFlags & GUI::MouseShift) != 0) {
        controls.Mute(_nGroup) = !controls.Mute(_nGroup);
        controls.Solo(_nGroup) = false;
    } else if ((a_nFlags & GUI::MouseDouble) != 0) {
        controls.Mute(_nGroup) = false;
        StepSolo();
    }
    ShowRestColor();
}

void CFxBtn::StepSolo() {
    auto& controls = Plugin().Controls();
    if (!controls.SeveralSolos()) {
        for (int group = 0; group < Device().GetGroupCount(); ++group) {
            if (group != _nGroup) controls.Solo(group) = false;
        }
    }
    controls.Solo(_nGroup) = !controls.Solo(_nGroup);
}

void CFxBtn::OnValueChanged(float a_fNormal, std::int32_t) {
    if (a_fNormal == 0.0f) {
        SetTextColor(WithAlpha(nTextColor, Dim));
        return;
    }
    if (Device().GetCurrentGroup() != _nGroup) Plugin().BeforeGroupChange();
    Plugin().State().SelectGroup(_nGroup, _bCopy);
    if (auto* const copy = Plugin().Find<CFxBtnCopy>()) copy->SetValue(0.0f, false);
    SetTextColor(WithAlpha(nTextColor, Bright));
}

void CFxBtn::SetText(std::u16string_view a_sText) {
    CPluginButton::SetText(a_sText);
    Plugin().State().NameGroup(static_cast<std::size_t>(_nGroup), a_sText);
}

// What others do

void CFxBtn::SetFromHost(float a_fNormal) {
    CPluginButton::SetFromHost(a_fNormal);
    ShowRestColor();
}

void CFxBtn::ShowPanel(const SPanelState& a_psPanel) {
    CPluginButton::SetText(a_psPanel.groupNames[static_cast<std::size_t>(_nGroup)]);
}

// Drawing

std::uint32_t CFxBtn::RestColor() const noexcept {
    auto& controls = Plugin().Controls();
    if (controls.Solo(_nGroup)) return SoloColor;
    return controls.Mute(_nGroup) ? MuteColor : _nBaseColor;
}

std::uint32_t CFxBtn::NextPulseColor(std::uint32_t a_nMs) noexcept {
    const auto left = static_cast<std::uint32_t>(_nPulseMs - _nPhaseMs);
    _nPhaseMs = a_nMs > left ? 0 : _nPhaseMs + static_cast<std::int32_t>(a_nMs);
    return GUI::Blend(PulseFrom, PulseTo, static_cast<float>(_nPhaseMs) / static_cast<float>(_nPulseMs));
}

void CFxBtn::Paint(std::uint32_t a_nColor) noexcept {
    nColor = nColorHover = nColorActive = a_nColor;
}

/// Nothing else asks for a picture when a patch or the host's automation has changed solo or mute.
void CFxBtn::ShowRestColor() {
    if (_bCopy || RestColor() == nColor) return;
    Paint(RestColor());
    Root().Invalidate();
}

void CFxBtn::Draw(std::uint32_t a_nMs) {
    if (_bCopy) {
        Paint(NextPulseColor(a_nMs));
        Root().Invalidate(); // the pulse goes on
    } else {
        _nPhaseMs = 0;
        Paint(RestColor());
    }
    CPluginButton::Draw(a_nMs);
}

// The copy

CFxBtnCopy::CFxBtnCopy(CXXXGUI& a_piPlugin)
    : CPluginButton(a_piPlugin, InfoOf(Panel::RowOf(Panel::EClass::FxBtnCopy))), nPulseMs(PulseMs) {}

void CFxBtnCopy::OnValueChanged(float a_fNormal, std::int32_t) {
    for (auto* const button : Plugin().FindAll<CFxBtn>()) button->SetCopyMode(a_fNormal != 0.0f);
    Root().Invalidate();
}

} // namespace KAV
