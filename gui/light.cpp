#include "gui/light.h"

namespace KAV::GUI {

namespace {

SWidgetInfo LightInfo() {
    constexpr float side = 32.0f;
    SWidgetInfo info;
    info.sName = u"Light";
    info.fW = side;
    info.fH = side;
    return info;
}

} // namespace

CLight::CLight(CGUI& a_piGUI) : CWidget(a_piGUI, LightInfo()) {}

void CLight::OnMouseMove(std::int32_t x, std::int32_t y, std::uint32_t a_nFlags) {
    CWidget::OnMouseMove(x, y, a_nFlags);
}

} // namespace KAV::GUI
