#pragma once

#include "device_gui/plugin_widget.h"

#include <cstdint>

namespace KAV {

/// Which renderer draws the editor. Threads: the window's.
class CSwitchGPU final : public CPluginKnob {
public:
    CSwitchGPU(CXXXGUI& a_piPlugin, const GUI::SWidgetInfo& a_sInfo);

    /// The one that is in use. It has no position for Direct2D, which counts as Direct3D 9.
    void ShowPresent() noexcept;
    void OnValueChanged(float a_fNormal, std::int32_t a_nItem) override;
};

/// Whether the processor's vector instructions are used. Threads: the window's.
class CSwitchSIMD final : public CPluginButton {
public:
    CSwitchSIMD(CXXXGUI& a_piPlugin, const GUI::SWidgetInfo& a_sInfo);

    /// What is in use; patches can change it.
    void ShowPresent() noexcept;
    void OnValueChanged(float a_fNormal, std::int32_t a_nItem) override;
};

} // namespace KAV
