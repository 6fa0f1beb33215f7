#include "device_gui/routing_edit.h"

#include "device_gui/channel_button.h"
#include "device_gui/row_info.h"

#include <utility>

namespace KAV {

CRoutingEdit::CRoutingEdit(CXXXGUI& a_piPlugin)
    : CPluginButton(a_piPlugin, InfoOf(Panel::RowOf(Panel::EClass::RoutingEdit))) {}

void CRoutingEdit::OnMouseDown(std::int32_t a_nX, std::int32_t a_nY, std::uint32_t a_nFlags) {
    CPluginButton::OnMouseDown(a_nX, a_nY, a_nFlags);
    _bPending = (a_nFlags & GUI::MouseLeft) != 0;
}

void CRoutingEdit::OnClick() {
    _bPending = false;
    CPluginButton::OnClick();
    auto& state = Plugin().State();
    if (Value() == 0.0f) {
        state.FinishRoutingEdit(ChannelsThatAreOn(Root())); // last: it asks the user
        return;
    }
    state.BeginRoutingEdit();
    Plugin().ShowPanel(); // now, so that the next press finds the channel buttons detached
    if (!_bEdited) TakeFromHost(0.0f);
}

void CRoutingEdit::OnCaptureLost() {
    if (!std::exchange(_bPending, false)) return;
    TakePress(0);
    TakeFromHost(Value() == 0.0f ? 1.0f : 0.0f);
}

void CRoutingEdit::ShowPanel(const SPanelState& a_psPanel) {
    SetVisible(a_psPanel.canEditRouting, 0);
    if (std::exchange(_bEdited, a_psPanel.isRoutingEdited) && !_bEdited) TakeFromHost(0.0f);
}

} // namespace KAV
