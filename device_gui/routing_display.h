#pragma once

#include "device_gui/panel_view.h"
#include "device_gui/plugin_widget.h"

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

namespace KAV {

/// The current group's routing: its text is the routing's name, its list the names of the user's routings. A
/// choice is for the current group, one of three entries or more for all groups.
class CRouting final : public CPluginValueDisplay, public IPanelView {
public:
    explicit CRouting(CXXXGUI& a_piPlugin);

    void AfterSelect() override;
    void OnValueChanged(float a_fNormal, std::int32_t a_nItem) override;
    /// The host gives enough channels for the routing. Its file is read when this is asked for the first
    /// time.
    bool IsItemEnabled(std::int32_t a_nItem, const std::u16string& a_sText) override;

private:
    static constexpr std::size_t Unread = static_cast<std::size_t>(-1);

    void ShowPanel(const SPanelState& a_psPanel) override;
    /// Of an entry of the list, which is there.
    std::size_t Channels(std::int32_t a_nItem);

    std::vector<std::size_t> _vnChannels; // entries of each routing
    std::uint32_t _nScans = 0;            // that of the list
};

} // namespace KAV
