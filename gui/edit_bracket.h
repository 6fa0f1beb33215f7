#pragma once

#include "gui/gui.h"

#include <cstdint>

namespace KAV::GUI {

/// Makes a change within an edit of the parameter, which ends whatever happens. Without a parameter, or if
/// `a_bWanted` says that an edit is already under way, the change is made alone.
template<typename TStep>
void InEdit(CGUI& a_piGUI, std::int32_t a_nId, bool a_bWanted, TStep a_iStep) {
    if (!a_bWanted || a_nId < 0) {
        a_iStep();
        return;
    }
    a_piGUI.BeginEdit(a_nId);
    try {
        a_iStep();
    } catch (...) {
        a_piGUI.EndEdit(a_nId);
        throw;
    }
    a_piGUI.EndEdit(a_nId);
}

} // namespace KAV::GUI
