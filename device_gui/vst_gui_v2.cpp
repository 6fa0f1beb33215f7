#include "device_gui/vst_gui_v2.h"

namespace KAV {

CVSTGUIv2::CVSTGUIv2(CXXXDSP& a_piDSP, IDeviceControls& a_piControls, CDeviceState& a_piState,
    const Utils::SMakerService& a_psService)
    : CXXXGUI(a_piDSP, a_piControls, a_piState, a_psService) {}

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

void CVSTGUIv2::close() {
    State().TellHost(CHostQueue::EOccasion::Close); // last: no idle call may follow
}

void CVSTGUIv2::idle() {
    State().TellHost(CHostQueue::EOccasion::Idle);
}

void CVSTGUIv2::OnLatencyChanged(std::int32_t a_nSamples) {
    State().ReportLatency(a_nSamples);
}

void CVSTGUIv2::RequestHostResize(std::int32_t a_nWidth, std::int32_t a_nHeight) {
    State().ReportSize(a_nWidth, a_nHeight);
}

} // namespace KAV
