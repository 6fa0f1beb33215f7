#pragma once

#include "device_gui/panel_view.h"
#include "device_gui/plugin_widget.h"

#include <cstddef>
#include <string_view>

namespace KAV {

/// Whether a routing entry belongs to the current group. Its text is the entry's label; an entry that the
/// routing doesn't have is hidden.
class CChannelBtn final : public CPluginButton, public IPanelView {
public:
    /// `a_nChannel` 0..15.
    CChannelBtn(CXXXGUI& a_piPlugin, int a_nChannel);

    void SetText(std::u16string_view a_sText) override; ///< the state keeps it

private:
    void ShowPanel(const SPanelState& a_psPanel) override;

    std::size_t _nChannel;
};

} // namespace KAV
