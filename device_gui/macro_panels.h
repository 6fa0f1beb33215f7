#pragma once

#include "device_gui/macro_sens.h"
#include "device_gui/plugin_widget.h"

#include <cstddef>
#include <cstdint>
#include <memory>
#include <vector>

namespace KAV {

/// The panels of one macro: a strip over each fader that can follow it, with a knob for each group. They are
/// hidden at first, and fade in and out. Made in the window's present size, they move and grow with it from
/// then on.
class CMacroPanels final {
public:
    /// One strip. It is only a picture: what is pressed between its knobs is the fader below.
    class CMacroPanel final : public GUI::CButton {
    public:
        /// `a_piBefore` is the panel that was made before; null: there is none. This one goes below it where
        /// they would cover each other.
        CMacroPanel(CXXXGUI& a_piPlugin, std::size_t a_nMacro, const CPluginKnob& a_piControl,
            const CMacroPanel* a_piBefore, std::uint32_t a_nColor);

        void Show(bool a_bShow);
        const std::vector<std::unique_ptr<CMacroSens>>& Knobs() const noexcept { return _vpiKnobs; }

    private:
        CMacroPanel(CXXXGUI& a_piPlugin, std::size_t a_nMacro, const CPluginKnob& a_piControl,
            const SMacroRect& a_sRect, std::uint32_t a_nColor);

        SMacroRect _sRect; // as it was made
        std::vector<std::unique_ptr<CMacroSens>> _vpiKnobs;
    };

    /// `a_nMacro` 0..4; `a_nColor` is that of the knobs.
    CMacroPanels(CXXXGUI& a_piPlugin, std::size_t a_nMacro, std::uint32_t a_nColor);

    /// Shows them with the present sensitivities, or hides them.
    void Show(bool a_bShow);
    const std::vector<std::unique_ptr<CMacroPanel>>& Panels() const noexcept { return _vpiPanels; }

private:
    std::vector<std::unique_ptr<CMacroPanel>> _vpiPanels;
};

} // namespace KAV
