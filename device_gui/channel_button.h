#pragma once

#include "device_gui/panel_view.h"
#include "device_gui/plugin_widget.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <string_view>

namespace KAV {

/// Whether a routing entry belongs to the current group. Its text is the entry's label, which is dimmed while
/// it doesn't; an entry that the routing doesn't have is hidden.
///
/// While a routing is edited all of them are shown and leave the group alone: what is on is an entry of the
/// new routing, a press asks for its label, and Shift and a press choose this many entries.
class CChannelBtn final : public CPluginButton, public IPanelView {
public:
    /// `a_nChannel` 0..15.
    CChannelBtn(CXXXGUI& a_piPlugin, int a_nChannel);

    void SetText(std::u16string_view a_sText) override; ///< while a routing is edited, the state keeps it
    void OnValueChanged(float a_fNormal, std::int32_t a_nItem) override;
    void OnMouseDown(std::int32_t a_nX, std::int32_t a_nY, std::uint32_t a_nFlags) override;

private:
    void ShowPanel(const SPanelState& a_psPanel) override;
    bool IsDetached() const noexcept { return _nStoredId != NoId; }
    void Detach(bool a_bOn);
    void Attach();
    void ChooseUpToThis();

    static constexpr std::int32_t NoId = -1;

    std::size_t _nChannel;
    std::int32_t _nStoredId = NoId; // the button's own, while a routing is edited
};

/// Which entries the channel buttons show as on.
std::array<bool, SPanelState::Channels> ChannelsThatAreOn(const GUI::CGUI& a_piGUI);

} // namespace KAV
