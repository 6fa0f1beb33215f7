#include "device_gui/routing_display.h"

#include "device_gui/row_info.h"
#include "patch/routing_files.h"

#include <algorithm>

namespace KAV {

CRouting::CRouting(CXXXGUI& a_piPlugin)
    : CPluginValueDisplay(a_piPlugin, InfoOf(Panel::RowOf(Panel::EClass::Routing))) {
    bEllipsis = true; // names of files
}

void CRouting::ShowPanel(const SPanelState& a_psPanel) {
    const auto& routing = a_psPanel.routing;
    Copy(routing.Names(), routing.Place(), routing.Name());
    if (_nScans != a_psPanel.routingScans) _vnChannels.assign(Items().size(), Unread);
    _nScans = a_psPanel.routingScans;
}

void CRouting::OnValueChanged(float, std::int32_t a_nItem) {
    if (a_nItem < 0 || a_nItem >= ItemCount()) return;
    Plugin().State().ChooseRouting(a_nItem, Items()[static_cast<std::size_t>(a_nItem)]);
}

bool CRouting::IsItemEnabled(std::int32_t a_nItem, const std::u16string&) {
    if (a_nItem < 0 || a_nItem >= ItemCount()) return false;
    auto& channels = _vnChannels[static_cast<std::size_t>(a_nItem)];
    if (channels == Unread)
        channels = RoutingEntryCount(ReadRoutingFile(Items()[static_cast<std::size_t>(a_nItem)]));
    return static_cast<std::size_t>(std::max(Plugin().Controls().Channels(), 0)) >= channels;
}

} // namespace KAV
