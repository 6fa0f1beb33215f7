#pragma once

#include "device_gui/panel_view.h"
#include "device_gui/plugin_widget.h"

#include <cstdint>
#include <string_view>

namespace KAV {

/// Selects a group: what the editor shows from then on. Its text is the group's name, which patches keep. In
/// copy mode the group that was shown is copied to the one that is selected.
class CFxBtn final : public CPluginButton, public IPanelView {
public:
    /// `a_nGroup` 0..3.
    CFxBtn(CXXXGUI& a_piPlugin, int a_nGroup);

    int Group() const noexcept { return _nGroup; }
    void SetCopyMode(bool a_bCopy) noexcept { _bCopy = a_bCopy; }
    void SetText(std::u16string_view a_sText) override; ///< the state keeps it
    void OnValueChanged(float a_fNormal, std::int32_t a_nItem) override;

private:
    void ShowPanel(const SPanelState& a_psPanel) override;

    int _nGroup;
    bool _bCopy = false;
};

/// Copy mode: on from its press until a group is selected.
class CFxBtnCopy final : public CPluginButton {
public:
    explicit CFxBtnCopy(CXXXGUI& a_piPlugin);

    void OnValueChanged(float a_fNormal, std::int32_t a_nItem) override;
};

} // namespace KAV
