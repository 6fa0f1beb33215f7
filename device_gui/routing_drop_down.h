#pragma once

#include "device_gui/plugin_widget.h"

namespace KAV {

/// Opens the menu of the routings.
class CRoutingDropDownBtn final : public CPluginButtonMom {
public:
    explicit CRoutingDropDownBtn(CXXXGUI& a_piPlugin);

    void OnClick() override;
};

} // namespace KAV
