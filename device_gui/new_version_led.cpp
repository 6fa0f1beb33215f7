#include "device_gui/new_version_led.h"

#include "device_gui/row_info.h"

#include <algorithm>

namespace KAV {

namespace {

constexpr float WayMs = 1000.0f; // from dark to bright, and back

} // namespace

CNewVersionLED::CNewVersionLED(GUI::CGUI& a_piGUI)
    : GUI::CWidget(a_piGUI, InfoOf(Panel::RowOf(Panel::EClass::NewVersionLED))), GUI::CValueWidget(0.0f, {}) {
}

bool CNewVersionLED::SetValue(float a_fNormal, bool) {
    if (!ChangeTo(Clamped(a_fNormal))) return false;
    _fFrom = _fBrightness;
    return true;
}

void CNewVersionLED::Tick(std::uint32_t a_nElapsedMs) {
    const float way = Value() - _fFrom;
    const float next = _fBrightness + static_cast<float>(a_nElapsedMs) / WayMs * way;
    _fBrightness = way > 0.0f ? std::min(next, Value()) : std::max(next, Value());
    if (IsVisible() && _fBrightness == Value()) SetValue(Value() == 0.0f ? 1.0f : 0.0f, false);
}

} // namespace KAV
