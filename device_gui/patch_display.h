#pragma once

#include "device_gui/panel_view.h"
#include "device_gui/plugin_widget.h"

#include <cstdint>

namespace KAV {

/// The present patch: its text is the patch's name, its list the names of the user's patches.
class CPatch final : public CPluginValueDisplay, public IPanelView {
public:
    explicit CPatch(CXXXGUI& a_piPlugin);

    void OnValueChanged(float a_fNormal, std::int32_t a_nItem) override;

private:
    void ShowPanel(const SPanelState& a_psPanel) override;
};

} // namespace KAV
