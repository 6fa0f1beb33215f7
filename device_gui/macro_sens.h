#pragma once

#include "device_gui/panel_view.h"
#include "device_gui/plugin_widget.h"

#include <cstddef>
#include <cstdint>
#include <string>

namespace KAV {

/// In which the panel of a macro and its knobs appear and vanish.
inline constexpr std::uint32_t MacroFadeMs = 250;

/// Where something lies, in pixels of the window, not rounded yet.
struct SMacroRect {
    float fX = 0.0f, fY = 0.0f, fW = 0.0f, fH = 0.0f;
};

/// A small knob on the panel of a macro, with the number of a group on it: how strongly a control of that
/// group follows the macro, from -100 % over "Off" in the middle to 100 %. The device's table of macros keeps
/// the value; a sensitivity is no parameter, so neither the host nor the history is notified.
class CMacroSens final : public CPluginKnob, public IPanelView {
public:
    /// `a_nMacro` 0..4, `a_nGroup` 0..3. `a_piControl` is the control that follows, `a_sPanel` the panel that
    /// the knob lies on, in a row with those of the other groups. Hidden at first.
    CMacroSens(CXXXGUI& a_piPlugin, std::size_t a_nMacro, int a_nGroup, const CPluginKnob& a_piControl,
        const SMacroRect& a_sPanel, std::uint32_t a_nColor);

    /// Shows what the device's table says.
    void Sync();

    const std::u16string& GetText(bool a_bValueOnly) override; ///< the value is the number alone
    void DrawImage() override;
    bool SetValue(float a_fNormal, bool a_bHistory) override;

private:
    /// A patch may have brought another table.
    void ShowPanel(const SPanelState& a_psPanel) override;
    void MirrorImage(float a_fScale) noexcept;

    std::size_t _nMacro;
    std::int32_t _nTag; // of the group's control
};

} // namespace KAV
