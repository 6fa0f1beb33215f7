#include "device_gui/patch_display.h"

#include "device_gui/row_info.h"

namespace KAV {

CPatch::CPatch(CXXXGUI& a_piPlugin)
    : CPluginValueDisplay(a_piPlugin, InfoOf(Panel::RowOf(Panel::EClass::Patch))) {
    bEllipsis = true;                           // names of files
    fTextInsetL = fTextInsetR = 25.0f / 195.0f; // clear of the buttons at both ends
}

void CPatch::OnValueChanged(float, std::int32_t a_nItem) {
    if (a_nItem < 0 || a_nItem >= ItemCount()) return;
    Plugin().State().ChoosePatch(a_nItem, Items()[static_cast<std::size_t>(a_nItem)]);
}

void CPatch::ShowPanel(const SPanelState& a_psPanel) {
    const auto& patch = a_psPanel.patch;
    Copy(patch.Names(), patch.Place(), patch.Name());
}

} // namespace KAV
