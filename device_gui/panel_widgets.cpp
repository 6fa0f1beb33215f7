#include "device_gui/panel_widgets.h"

#include "device_gui/channel_button.h"
#include "device_gui/fx_button.h"
#include "device_gui/gain_reduction.h"
#include "device_gui/history_buttons.h"
#include "device_gui/macro_button.h"
#include "device_gui/macro_knob.h"
#include "device_gui/new_version_led.h"
#include "device_gui/oversampling.h"
#include "device_gui/patch_buttons.h"
#include "device_gui/patch_display.h"
#include "device_gui/plugin_widget.h"
#include "device_gui/release.h"
#include "device_gui/routing_display.h"
#include "device_gui/routing_drop_down.h"
#include "device_gui/routing_edit.h"
#include "device_gui/row_info.h"
#include "device_gui/settings.h"
#include "device_gui/side_buttons.h"
#include "device_gui/toolbar_top.h"
#include "gui/meter.h"
#include "panel/layout.h"

#include <map>
#include <utility>

namespace KAV {

namespace {

using WidgetPtr = std::unique_ptr<GUI::CWidget>;

/// Classes of this device's own that take their row by themselves; null for all others. `a_nPlace` counts the
/// rows of one class.
WidgetPtr MakeOwn(CXXXGUI& a_piGUI, Panel::EClass a_nClass, int a_nPlace) {
    using enum Panel::EClass;
    switch (a_nClass) {
    case ToolbarTop:
        return std::make_unique<CToolbarTop>(a_piGUI);
    case Routing:
        return std::make_unique<CRouting>(a_piGUI);
    case RoutingDropDownBtn:
        return std::make_unique<CRoutingDropDownBtn>(a_piGUI);
    case RoutingEdit:
        return std::make_unique<CRoutingEdit>(a_piGUI);
    case ChannelBtn:
        return std::make_unique<CChannelBtn>(a_piGUI, a_nPlace);
    case FxBtn:
        return std::make_unique<CFxBtn>(a_piGUI, a_nPlace);
    case FxBtnCopy:
        return std::make_unique<CFxBtnCopy>(a_piGUI);
    case PatchLoad:
        return std::make_unique<CPatchLoadSave<1>>(a_piGUI);
    case PatchSave:
        return std::make_unique<CPatchLoadSave<0>>(a_piGUI);
    case Patch:
        return std::make_unique<CPatch>(a_piGUI);
    case Undo:
        return std::make_unique<CUndo>(a_piGUI);
    case Redo:
        return std::make_unique<CRedo>(a_piGUI);
    case PatchABCopy:
        return std::make_unique<CPatchABCopy>(a_piGUI);
    case PatchABInplace:
        return std::make_unique<CPatchABInplace>(a_piGUI);
    case Oversampling:
        return std::make_unique<COversampling>(a_piGUI);
    case PreviousPatch:
        return std::make_unique<CPrevNext<1, 0>>(a_piGUI);
    case NextPatch:
        return std::make_unique<CPrevNext<0, 0>>(a_piGUI);
    case PreviousOversampling:
        return std::make_unique<CPrevNext<1, 1>>(a_piGUI);
    case NextOversampling:
        return std::make_unique<CPrevNext<0, 1>>(a_piGUI);
    case Settings:
        return std::make_unique<CSettings>(a_piGUI);
    case BtnAbout:
        return std::make_unique<CBtnAbout>(a_piGUI);
    case NewVersionLED:
        return std::make_unique<CNewVersionLED>(a_piGUI);
    case MacroKnob:
        return std::make_unique<CMacroKnob>(a_piGUI, a_nPlace);
    case MacroBtn:
        return std::make_unique<CMacroBtn>(a_piGUI, a_nPlace);
    case AutoRelease:
        return std::make_unique<CAutoRelease>(a_piGUI);
    case Release:
        return std::make_unique<CRelease>(a_piGUI);
    case GR:
        return std::make_unique<CGR>(a_piGUI);
    default:
        return nullptr;
    }
}

/// By the class of the toolkit that a row's class is or derives from.
WidgetPtr MakePlain(CXXXGUI& a_piGUI, const Panel::SPanelRow& a_sRow) {
    using enum Panel::EClass;
    const auto info = InfoOf(a_sRow);
    switch (a_sRow.widget) {
    case Meter:
        return std::make_unique<GUI::CMeter>(a_piGUI, info);
    case Knob:
        return std::make_unique<CPluginKnob>(a_piGUI, info);
    case Button:
        return std::make_unique<CPluginButton>(a_piGUI, info);
    default:
        return std::make_unique<GUI::CWidget>(a_piGUI, info);
    }
}

} // namespace

CPanelWidgets::CPanelWidgets(CXXXGUI& a_piGUI) {
    std::map<Panel::EClass, int> places;
    for (const auto& row : Panel::Rows()) {
        auto widget = MakeOwn(a_piGUI, row.widget, places[row.widget]++);
        if (widget == nullptr) widget = MakePlain(a_piGUI, row);
        widget->FreezeToFractions(true);
        _vpiWidgets.push_back(std::move(widget));
    }
}

CPanelWidgets::~CPanelWidgets() {
    while (!_vpiWidgets.empty()) _vpiWidgets.pop_back();
}

} // namespace KAV
