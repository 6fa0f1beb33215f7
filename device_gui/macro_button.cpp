#include "device_gui/macro_button.h"

#include "device_gui/row_info.h"

namespace KAV {

namespace {

constexpr std::uint32_t BrightName = 0xFF000000; // alpha
constexpr std::uint32_t DimName = 0x64000000;
constexpr std::uint32_t NameHue = 0x00FFFFFF;

} // namespace

CMacroBtn::CMacroBtn(CXXXGUI& a_piPlugin, int a_nMacro)
    : CPluginButton(a_piPlugin, InfoOf(Panel::RowOf(Panel::EClass::MacroBtn, a_nMacro))),
      _nMacro(static_cast<std::size_t>(a_nMacro)) {
    bEllipsis = true;                          // the user names macros
    fTextInsetL = fTextInsetR = 16.0f / 84.0f; // clear of the lamp
}

void CMacroBtn::SetText(std::u16string_view a_sText) {
    CPluginButton::SetText(a_sText);
    Plugin().State().NameMacro(_nMacro, a_sText);
}

void CMacroBtn::ShowPanel(const SPanelState& a_psPanel) {
    CPluginButton::SetText(a_psPanel.macroNames[_nMacro]);
}

void CMacroBtn::OnMouseDown(std::int32_t x, std::int32_t y, std::uint32_t a_nFlags) {
    CPluginButton::OnMouseDown(x, y, a_nFlags);
    if ((a_nFlags & GUI::MouseRight) != 0) Plugin().Edit().Open(this, true);
}

void CMacroBtn::OnValueChanged(float a_fNormal, std::int32_t) {
    const bool isOn = a_fNormal != 0.0f;
    SetTextColor((isOn ? BrightName : DimName) | (nTextColor & NameHue));
    if (isOn) {
        for (auto* const button : Plugin().FindAll<CMacroBtn>()) {
            if (button != this) button->SetValue(0.0f, false);
        }
    }
    if (_piPanels == nullptr) _piPanels = std::make_unique<CMacroPanels>(Plugin(), _nMacro, nColor);
    _piPanels->Show(isOn);
}

} // namespace KAV
