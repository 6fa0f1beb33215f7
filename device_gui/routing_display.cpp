#include "device_gui/routing_display.h"

#include "device_gui/row_info.h"
#include "patch/routing_files.h"

#include <algorithm>

namespace KAV {

CRouting::CRouting(CXXXGUI& a_piPlugin)
    : CPluginValueDisplay(a_piPlugin, InfoOf(Panel::RowOf(Panel::EClass::Routing))) {
    bEllipsis = true; // names of files
    fTextInsetL = 1.0f / 58.0f;
    fTextInsetR = 9.0f / 58.0f; // clear of the button that opens the list
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

void CRouting::AfterSelect() {
    constexpr std::size_t leastForAll = 3; // what doesn't fit in a stereo pair
    const std::int32_t item = Item();
    if (item < 0 || item >= ItemCount() || Channels(item) < leastForAll) return;
    Plugin().State().ChooseRouting(item, Items()[static_cast<std::size_t>(item)], true);
}

bool CRouting::IsItemEnabled(std::int32_t a_nItem, const std::u16string&) {
    if (a_nItem < 0 || a_nItem >= ItemCount()) return false;
    return static_cast<std::size_t>(std::max(Plugin().Controls().Channels(), 0)) >= Channels(a_nItem);
}

std::size_t CRouting::Channels(std::int32_t a_nItem) {
    const auto place = static_cast<std::size_t>(a_nItem);
    auto& channels = _vnChannels[place];
    if (channels == Unread) channels = RoutingEntryCount(ReadRoutingFile(Items()[place]));
    return channels;
}

} // namespace KAV
