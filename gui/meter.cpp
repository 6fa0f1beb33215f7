#include "gui/meter.h"

#include "gui/gui.h"
#include "utils/clock.h"

namespace KAV::GUI {

CMeter::CMeter(CGUI& a_piGUI, const SWidgetInfo& a_sInfo)
    : CLabel(a_piGUI, a_sInfo), CValueWidget(a_piGUI, *this, a_sInfo) {}

void CMeter::SetFromHost(float a_fNormal) {
    TakeFromHost(a_fNormal);
}

void CMeter::Tick(std::uint32_t a_nMs) {
    CLabel::Tick(a_nMs);
    if (sValue.Step(a_nMs)) Root().Invalidate();
}

void CMeter::SoakTest() {
    for (const float value : {1.0f, 0.75f, 0.5f, 0.25f, 0.0f}) {
        SetValue(value, false);
        Utils::WaitMs(SoakPauseMs);
    }
}

} // namespace KAV::GUI
