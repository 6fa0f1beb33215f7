#pragma once

#include "device_gui/plugin_widget.h"

#include <cstdint>

namespace KAV {

/// The present patch: its text is the patch's name, its list the names of the user's patches.
class CPatch final : public CPluginValueDisplay {
public:
    /// Looks for the user's patches and selects none.
    explicit CPatch(CXXXGUI& a_piPlugin);

    void OnValueChanged(float a_fNormal, std::int32_t a_nItem) override;
};

} // namespace KAV
