#include "device_gui/patch_display.h"

#include "device_gui/row_info.h"
#include "patch/patch_files.h"

namespace KAV {

CPatch::CPatch(CXXXGUI& a_piPlugin)
    : CPluginValueDisplay(a_piPlugin, InfoOf(Panel::RowOf(Panel::EClass::Patch))) {
    SetItems(PatchNames());
}

void CPatch::OnValueChanged(float, std::int32_t a_nItem) {
    Plugin().SelectPatch(a_nItem, false);
}

} // namespace KAV
