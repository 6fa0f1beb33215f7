#include "device_gui/channel_button.h"

#include "device_gui/row_info.h"

namespace KAV {

CChannelBtn::CChannelBtn(CXXXGUI& a_piPlugin, int a_nChannel)
    : CPluginButton(a_piPlugin, InfoOf(Panel::RowOf(Panel::EClass::ChannelBtn, a_nChannel))) {}

} // namespace KAV
