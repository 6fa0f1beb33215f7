#include "device_gui/new_version_led.h"

#include "device_gui/row_info.h"
#include "gui/gui.h"
#include "utils/clock.h"

namespace KAV {

namespace {

constexpr std::uint32_t WayMs = 1000; // from dark to bright, and back

} // namespace

CNewVersionLED::CNewVersionLED(GUI::CGUI& a_piGUI)
    : GUI::CLED(a_piGUI, InfoOf(Panel::RowOf(Panel::EClass::NewVersionLED))) {
    sValue.nRiseMs = WayMs;
    sValue.nFallMs = WayMs;
}

void CNewVersionLED::SetFromHost(float) {}

void CNewVersionLED::Tick(std::uint32_t a_nMs) {
    GUI::CLabel::Tick(a_nMs); // NOLINT(bugprone-parent-virtual-call): the value stays
}

void CNewVersionLED::Pulse(std::uint32_t a_nElapsedMs) {
    if (sValue.Step(a_nElapsedMs) && IsVisible()) Root().Invalidate();
    if (IsVisible() && Brightness() == Value()) SetValue(Value() == 0.0f ? 1.0f : 0.0f, false);
}

void CNewVersionLED::SoakTest() {
    for (const float value : {0.0f, 1.0f, 0.0f}) {
        SetValue(value, false);
        Utils::WaitMs(SoakPauseMs);
    }
}

} // namespace KAV
