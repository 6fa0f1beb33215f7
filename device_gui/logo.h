#pragma once

#include "device_gui/plugin_widget.h"

#include <cstdint>

namespace KAV {

/// The vendor's mark, which pulses while it is shown. A click opens the vendor's site. Threads: the window's.
class CLogo final : public CPluginButtonMom {
public:
    CLogo(CXXXGUI& a_piPlugin, const GUI::SWidgetInfo& a_sInfo);

    void OnClick() override;
    void Tick(std::uint32_t a_nMs) override;

private:
    void ShowPhase() noexcept;

    std::uint32_t _nPhaseMs = 0; // of the pulse
};

} // namespace KAV
