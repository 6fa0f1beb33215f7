#pragma once

#include "device_gui/panel_view.h"
#include "device_gui/plugin_widget.h"
#include "gui/pointer.h"

#include <cstdint>

namespace KAV {

/// While it is on, the user puts a routing together on the channel buttons. Its second click asks where to
/// save that; a press on anything else but a channel button drops it. Hidden for a routing that can't be
/// edited.
///
/// The state knows whether a routing is edited, since a patch that is loaded on any thread ends that. This
/// button follows.
class CRoutingEdit final : public CPluginButton, public IPanelView, public GUI::ICaptured {
public:
    explicit CRoutingEdit(CXXXGUI& a_piPlugin);

    void OnMouseDown(std::int32_t a_nX, std::int32_t a_nY, std::uint32_t a_nFlags) override;
    void OnClick() override;
    void OnCaptureLost() override; ///< a press that becomes no click changes nothing

private:
    void ShowPanel(const SPanelState& a_psPanel) override;

    bool _bEdited = false;  // as the panel was last shown
    bool _bPending = false; // pressed, and not clicked yet
};

} // namespace KAV
