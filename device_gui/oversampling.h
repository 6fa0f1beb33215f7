#pragma once

#include "device_gui/plugin_widget.h"
#include "device_gui/row_info.h"

namespace KAV {

/// The factor of oversampling.
class COversampling final : public CPluginValueDisplay {
public:
    explicit COversampling(CXXXGUI& a_piPlugin)
        : CPluginValueDisplay(a_piPlugin, InfoOf(Panel::RowOf(Panel::EClass::Oversampling))) {
        // Between the button to the left and the mark of high quality
        fTextInsetL = 22.0f / 96.0f;
        fTextInsetR = 42.0f / 96.0f;
    }
};

} // namespace KAV
