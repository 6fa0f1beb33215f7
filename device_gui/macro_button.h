#pragma once

#include "device_gui/plugin_widget.h"
#include "device_gui/row_info.h"

namespace KAV {

/// Names a macro: its text is the name, which patches keep.
class CMacroBtn final : public CPluginButton {
public:
    /// `a_nMacro` 0..4.
    CMacroBtn(CXXXGUI& a_piPlugin, int a_nMacro)
        : CPluginButton(a_piPlugin, InfoOf(Panel::RowOf(Panel::EClass::MacroBtn, a_nMacro))) {}
};

} // namespace KAV
