#include "device_gui/channel_button.h"

#include "utils/number.h"

namespace KAV {

namespace {

GUI::SWidgetInfo Info(int a_nChannel) {
    GUI::SWidgetInfo info;
    info.nId = a_nChannel + 1;
    info.sName = u"ToolCh" + Utils::FormatInt(a_nChannel + 1);
    if (a_nChannel < 2) {
        info.sText = a_nChannel == 0 ? u"L" : u"R";
        info.fValue = 1.0f;
    }
    return info;
}

} // namespace

CChannelBtn::CChannelBtn(CXXXGUI& a_piPlugin, int a_nChannel) : CPluginButton(a_piPlugin, Info(a_nChannel)) {}

} // namespace KAV
