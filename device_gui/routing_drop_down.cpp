#include "device_gui/routing_drop_down.h"

#include "device_gui/routing_display.h"
#include "device_gui/row_info.h"

namespace KAV {

CRoutingDropDownBtn::CRoutingDropDownBtn(CXXXGUI& a_piPlugin)
    : CPluginButtonMom(a_piPlugin, InfoOf(Panel::RowOf(Panel::EClass::RoutingDropDownBtn))) {}

void CRoutingDropDownBtn::OnClick() {
    CPluginButtonMom::OnClick();
    if (auto* const routings = Root().Find<CRouting>()) routings->ShowMenu();
}

} // namespace KAV
