#pragma once

#include "device_gui/macro_panels.h"
#include "device_gui/panel_view.h"
#include "device_gui/plugin_widget.h"

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string_view>

namespace KAV {

/// Opens the panels of a macro over the faders, and closes them; those of one macro are open at a time. Its
/// text is the macro's name, which patches keep; a press of the right button edits it.
class CMacroBtn final : public CPluginButton, public IPanelView {
public:
    /// `a_nMacro` 0..4.
    CMacroBtn(CXXXGUI& a_piPlugin, int a_nMacro);

    void SetText(std::u16string_view a_sText) override; ///< the state keeps it
    void OnMouseDown(std::int32_t x, std::int32_t y, std::uint32_t a_nFlags) override;
    void OnValueChanged(float a_fNormal, std::int32_t a_nItem) override;

private:
    void ShowPanel(const SPanelState& a_psPanel) override;

    std::size_t _nMacro;
    std::unique_ptr<CMacroPanels> _piPanels; // null until the button is first pressed
};

} // namespace KAV
