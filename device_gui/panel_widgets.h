#pragma once

#include "device_gui/xxx_gui.h"
#include "gui/widget.h"

#include <memory>
#include <vector>

namespace KAV {

/// The widgets of the panel, one for each row of its table, in that order. Threads: the window's.
class CPanelWidgets final {
public:
    /// Makes them, at the places that the rows name. From now on they move and scale with the root, which has
    /// the size of the panel.
    explicit CPanelWidgets(CXXXGUI& a_piGUI);
    /// The last one goes first.
    ~CPanelWidgets();
    CPanelWidgets(const CPanelWidgets&) = delete;
    CPanelWidgets& operator=(const CPanelWidgets&) = delete;

private:
    std::vector<std::unique_ptr<GUI::CWidget>> _vpiWidgets;
};

} // namespace KAV
