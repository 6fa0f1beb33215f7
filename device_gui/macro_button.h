#pragma once

#include "device_gui/plugin_widget.h"
#include "utils/number.h"

#include <string>

namespace KAV {

/// Names a macro: its text is the name, which patches keep.
class CMacroBtn final : public CPluginButton {
public:
    /// `a_nMacro` 0..4.
    CMacroBtn(CXXXGUI& a_piPlugin, int a_nMacro) : CPluginButton(a_piPlugin, Info(a_nMacro)) {}

private:
    static GUI::SWidgetInfo Info(int a_nMacro) {
        GUI::SWidgetInfo info;
        info.sName = u"Macro " + Utils::FormatInt(a_nMacro + 1);
        info.sText = info.sName;
        return info;
    }
};

} // namespace KAV
