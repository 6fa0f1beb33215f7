#include "device_gui/vst_gui_v2.h"

namespace KAV {

CVSTGUIv2::CVSTGUIv2(AudioEffectX& a_piEffect, CXXXDSP& a_piDSP, IDeviceControls& a_piControls,
    CDeviceState& a_piState, const Utils::SMakerService& a_psService)
    : CXXXGUI(a_piDSP, a_piControls, a_piState, a_psService), _piEffect(a_piEffect) {}

bool CVSTGUIv2::getRect(VST::ERect** a_psRect) {
    const Utils::CTurn turn(State().Turns());
    const auto& panel = State().Panel(turn);
    _sRect.bottom = static_cast<std::int16_t>(panel.height);
    _sRect.right = static_cast<std::int16_t>(panel.width);
    *a_psRect = &_sRect;
    return true;
}

bool CVSTGUIv2::open(void*) {
    return false;
}

void CVSTGUIv2::close() {}

void CVSTGUIv2::OnLatencyChanged(std::int32_t a_nSamples) {
    _piEffect.setInitialDelay(a_nSamples);
    _piEffect.ioChanged();
}

} // namespace KAV
