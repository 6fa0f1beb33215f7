#include "device_gui/patch_display.h"

#include "patch/patch_files.h"

namespace KAV {

namespace {

GUI::SWidgetInfo Info() {
    GUI::SWidgetInfo info;
    info.sName = u"ToolPatch";
    info.sText = u"Text";
    return info;
}

} // namespace

CPatch::CPatch(CXXXGUI& a_piPlugin) : CPluginValueDisplay(a_piPlugin, Info()) {
    SetItems(PatchNames());
}

void CPatch::OnValueChanged(float, std::int32_t a_nItem) {
    Plugin().SelectPatch(a_nItem, false);
}

} // namespace KAV
