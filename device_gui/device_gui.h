#pragma once

#include "device/parameter_table.h"
#include "device_gui/channel_button.h"
#include "device_gui/fx_button.h"
#include "device_gui/macro_button.h"
#include "device_gui/new_version_led.h"
#include "device_gui/patch_display.h"
#include "device_gui/routing_display.h"
#include "device_gui/vst_gui_v2.h"

#include <array>

namespace KAV {

/// The editor of this device: its widgets, made with it and gone with it. There is one set of them for all
/// groups; the current group decides what they show.
class CDeviceGUI final : public CVSTGUIv2 {
public:
    /// As CVSTGUIv2. Begins with the width that the user last gave an editor.
    CDeviceGUI(CXXXDSP& a_piDSP, IDeviceControls& a_piControls, CDeviceState& a_piState,
        const Utils::SMakerService& a_psService);

private:
    CRouting _iRouting;
    std::array<CChannelBtn, DeviceChannels> _aiChannels;
    std::array<CFxBtn, 4> _aiGroups;
    CFxBtnCopy _iGroupCopy;
    CPatch _iPatch;
    CPluginValueDisplay _iOversampling;
    std::array<CMacroBtn, 5> _aiMacros;
    CNewVersionLED _iNewVersion;
};

} // namespace KAV
