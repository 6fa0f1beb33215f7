#pragma once

#include "device_gui/panel_widgets.h"
#include "device_gui/vst_gui_v2.h"

namespace KAV {

/// The editor of this device: its widgets, made with it and gone with it. There is one set of them for all
/// groups; the current group decides what they show.
class CDeviceGUI final : public CVSTGUIv2 {
public:
    /// As CVSTGUIv2. Begins with the width that the user last gave an editor.
    CDeviceGUI(CXXXDSP& a_piDSP, IDeviceControls& a_piControls, CDeviceState& a_piState,
        const Utils::SMakerService& a_psService, IEditorSystem& a_piSystem);
    /// Closes it first, if it is open.
    ~CDeviceGUI() override;
    CDeviceGUI(const CDeviceGUI&) = delete;
    CDeviceGUI& operator=(const CDeviceGUI&) = delete;

private:
    CPanelWidgets _iWidgets{*this};
};

} // namespace KAV
