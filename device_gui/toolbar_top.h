#pragma once

#include "device_gui/row_info.h"
#include "gui/widget.h"

#include <cstdint>

namespace KAV {

/// The bar at the top. It takes the presses between its widgets, so that nothing below does.
class CToolbarTop final : public GUI::CWidget {
public:
    explicit CToolbarTop(GUI::CGUI& a_piGUI)
        : CWidget(a_piGUI, InfoOf(Panel::RowOf(Panel::EClass::ToolbarTop))) {
        bHint = false; // there is nothing to say about a bar
    }

    bool HitTest(std::int32_t a_nX, std::int32_t a_nY, bool /*a_bAny*/) const override {
        return CWidget::HitTest(a_nX, a_nY, true);
    }
};

} // namespace KAV
