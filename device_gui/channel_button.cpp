#include "device_gui/channel_button.h"

#include "device_gui/row_info.h"

namespace KAV {

CChannelBtn::CChannelBtn(CXXXGUI& a_piPlugin, int a_nChannel)
    : CPluginButton(a_piPlugin, InfoOf(Panel::RowOf(Panel::EClass::ChannelBtn, a_nChannel))),
      _nChannel(static_cast<std::size_t>(a_nChannel)) {
    bEllipsis = true; // the user names channels
}

void CChannelBtn::SetText(std::u16string_view a_sText) {
    CPluginButton::SetText(a_sText);
    Plugin().State().NameChannel(_nChannel, a_sText);
}

void CChannelBtn::ShowPanel(const SPanelState& a_psPanel) {
    CPluginButton::SetText(a_psPanel.labels[_nChannel]);
    SetVisible(_nChannel < a_psPanel.entries, 0);
}

} // namespace KAV
