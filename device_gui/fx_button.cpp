#include "device_gui/fx_button.h"

#include "device_gui/row_info.h"

namespace KAV {

CFxBtn::CFxBtn(CXXXGUI& a_piPlugin, int a_nGroup)
    : CPluginButton(a_piPlugin, InfoOf(Panel::RowOf(Panel::EClass::FxBtn, a_nGroup))), _nGroup(a_nGroup) {}

void CFxBtn::OnValueChanged(float a_fNormal, std::int32_t) {
    if (a_fNormal == 0.0f) return;
    const int from = Device().GetCurrentGroup();
    Plugin().Controls().SetCurrentGroup(_nGroup);
    if (_bCopy) Plugin().CopyGroup(from, _nGroup);
    if (auto* const copy = Plugin().Find<CFxBtnCopy>()) copy->SetValue(0.0f, false);
    Plugin().ApplyRouting();
}

CFxBtnCopy::CFxBtnCopy(CXXXGUI& a_piPlugin)
    : CPluginButton(a_piPlugin, InfoOf(Panel::RowOf(Panel::EClass::FxBtnCopy))) {}

void CFxBtnCopy::OnValueChanged(float a_fNormal, std::int32_t) {
    for (auto* const button : Plugin().FindAll<CFxBtn>()) button->SetCopyMode(a_fNormal != 0.0f);
}

} // namespace KAV
