#pragma once

#include "device_gui/macro_button.h"
#include "device_gui/macro_knob.h"
#include "device_gui/macro_panels.h"
#include "device_gui/macro_sens.h"
#include "tests/device_gui/open_panel.h"

#include <cstddef>
#include <string>
#include <vector>

namespace KAV::Tests {

/// An open panel with its macros. Places count from 0.
class OpenMacros : public OpenPanel {
protected:
    static constexpr std::size_t Targets = 4; ///< "Input Gain", "Threshold", "Release", "Output Ceiling"
    static constexpr std::size_t Groups = 4;

    CMacroBtn& Button(std::size_t macro) { return Widget<CMacroBtn>(macro); }
    CMacroKnob& Knob(std::size_t macro) { return Widget<CMacroKnob>(macro); }
    /// Presses the macro's button and waits until all fading is over.
    void Toggle(std::size_t macro) {
        Click(Button(macro));
        robot.Advance(300);
    }
    /// The panel over a target, of the `opened`th macro that was opened.
    CMacroPanels::CMacroPanel& PanelOver(std::size_t target, std::size_t opened = 0) {
        return Widget<CMacroPanels::CMacroPanel>(opened * Targets + target);
    }
    CMacroSens& Sens(std::size_t target, std::size_t group, std::size_t opened = 0) {
        return Widget<CMacroSens>((opened * Targets + target) * Groups + group);
    }
    /// The lines of a macro in a project, without their frame: "33;0.750||132;0.200".
    std::string Table(std::size_t macro) {
        const auto chunk = Chunk(false);
        const auto open = "<macro group=\"" + std::to_string(macro) + "\">";
        const auto from = chunk.find(open);
        if (from == std::string::npos) return "none";
        const auto begin = from + open.size();
        return chunk.substr(begin, chunk.find("</macro>", begin) - begin);
    }
    /// Whether a whole picture of the panel contains such a draw.
    static bool Contains(const std::vector<std::string>& picture, const std::string& part) {
        for (const auto& line : picture) {
            if (line.find(part) != std::string::npos) return true;
        }
        return false;
    }
};

} // namespace KAV::Tests
