#include "device_gui/fx_button.h"

#include "device_gui/row_info.h"

namespace KAV {

CFxBtn::CFxBtn(CXXXGUI& a_piPlugin, int a_nGroup)
    : CPluginButton(a_piPlugin, InfoOf(Panel::RowOf(Panel::EClass::FxBtn, a_nGroup))), _nGroup(a_nGroup) {
    bEllipsis = true; // the user names groups
}

void CFxBtn::OnValueChanged(float a_fNormal, std::int32_t) {
    if (a_fNormal == 0.0f) return;
    Plugin().State().SelectGroup(_nGroup, _bCopy);
    if (auto* const copy = Plugin().Find<CFxBtnCopy>()) copy->SetValue(0.0f, false);
}

void CFxBtn::SetText(std::u16string_view a_sText) {
    CPluginButton::SetText(a_sText);
    Plugin().State().NameGroup(static_cast<std::size_t>(_nGroup), a_sText);
}

void CFxBtn::ShowPanel(const SPanelState& a_psPanel) {
    CPluginButton::SetText(a_psPanel.groupNames[static_cast<std::size_t>(_nGroup)]);
}

CFxBtnCopy::CFxBtnCopy(CXXXGUI& a_piPlugin)
    : CPluginButton(a_piPlugin, InfoOf(Panel::RowOf(Panel::EClass::FxBtnCopy))) {}

void CFxBtnCopy::OnValueChanged(float a_fNormal, std::int32_t) {
    for (auto* const button : Plugin().FindAll<CFxBtn>()) button->SetCopyMode(a_fNormal != 0.0f);
}

} // namespace KAV
