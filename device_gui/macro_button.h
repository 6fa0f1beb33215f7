#pragma once

#include "device_gui/panel_view.h"
#include "device_gui/plugin_widget.h"
#include "device_gui/row_info.h"

#include <cstddef>
#include <string_view>

namespace KAV {

/// Names a macro: its text is the name, which patches keep.
class CMacroBtn final : public CPluginButton, public IPanelView {
public:
    /// `a_nMacro` 0..4.
    CMacroBtn(CXXXGUI& a_piPlugin, int a_nMacro)
        : CPluginButton(a_piPlugin, InfoOf(Panel::RowOf(Panel::EClass::MacroBtn, a_nMacro))),
          _nMacro(static_cast<std::size_t>(a_nMacro)) {
        bEllipsis = true; // the user names macros
    }

    /// The state keeps it.
    void SetText(std::u16string_view a_sText) override {
        CPluginButton::SetText(a_sText);
        Plugin().State().NameMacro(_nMacro, a_sText);
    }

private:
    void ShowPanel(const SPanelState& a_psPanel) override {
        CPluginButton::SetText(a_psPanel.macroNames[_nMacro]);
    }

    std::size_t _nMacro;
};

} // namespace KAV
