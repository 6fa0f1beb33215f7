#include "device_gui/device_gui.h"

#include "gui/settings.h"

namespace KAV {

CDeviceGUI::CDeviceGUI(CXXXDSP& a_piDSP, IDeviceControls& a_piControls, CDeviceState& a_piState,
    const Utils::SMakerService& a_psService, IEditorSystem& a_piSystem)
    : CVSTGUIv2(a_piDSP, a_piControls, a_piState, a_psService, a_piSystem) {
    Edit().Restack(false, true, 0); // the box lies below everything, as it draws nothing itself
    {
        Utils::CTurn turn(State().Turns());
        ShowAtTurnEnds(turn);
    }
    if (const auto stored = GUI::StoredNumber(u"Width"))
        State().ResizeToWidth(static_cast<std::int32_t>(*stored));
}

CDeviceGUI::~CDeviceGUI() {
    if (isOpen()) close();
}

} // namespace KAV
