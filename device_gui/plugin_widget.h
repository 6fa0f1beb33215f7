#pragma once

#include "device_gui/xxx_gui.h"
#include "gui/button.h"
#include "gui/button_mom.h"
#include "gui/knob.h"
#include "gui/value_display.h"

namespace KAV {

/// A widget of the toolkit that knows its device.
template<typename TWidget>
class CPluginWidget : public TWidget {
public:
    CPluginWidget(CXXXGUI& a_piPlugin, const GUI::SWidgetInfo& a_sInfo)
        : TWidget(a_piPlugin, a_sInfo), _piPlugin(a_piPlugin) {}

protected:
    CXXXGUI& Plugin() const noexcept { return _piPlugin; }
    CXXXDSP& Device() const noexcept { return _piPlugin.Device(); }

private:
    CXXXGUI& _piPlugin;
};

using CPluginKnob = CPluginWidget<GUI::CKnob>;
using CPluginButton = CPluginWidget<GUI::CButton>;
using CPluginButtonMom = CPluginWidget<GUI::CButtonMom>;
using CPluginValueDisplay = CPluginWidget<GUI::CValueDisplay>;

} // namespace KAV
