#include "device_gui/routing_display.h"

#include "device_gui/row_info.h"
#include "patch/routing_files.h"

#include <algorithm>

namespace KAV {

CRouting::CRouting(CXXXGUI& a_piPlugin)
    : CPluginValueDisplay(a_piPlugin, InfoOf(Panel::RowOf(Panel::EClass::Routing))) {
    Refresh();
}

void CRouting::Refresh() {
    const GUI::CLock lock(Plugin());
    const auto text = Text();
    SetItems(RoutingNames());
    SetText(text); // the list is new, the routing isn't
    _vnChannels.assign(Items().size(), Unread);
}

void CRouting::OnValueChanged(float, std::int32_t a_nItem) {
    Plugin().SelectRouting(a_nItem, false);
}

bool CRouting::IsItemEnabled(std::int32_t a_nItem) {
    const GUI::CLock lock(Plugin());
    if (a_nItem < 0 || a_nItem >= ItemCount()) return false;
    auto& channels = _vnChannels[static_cast<std::size_t>(a_nItem)];
    if (channels == Unread)
        channels = RoutingEntryCount(ReadRoutingFile(Items()[static_cast<std::size_t>(a_nItem)]));
    return static_cast<std::size_t>(std::max(Plugin().Controls().Channels(), 0)) >= channels;
}

} // namespace KAV
