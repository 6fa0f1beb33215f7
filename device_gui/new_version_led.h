#pragma once

#include "gui/value_widget.h"
#include "gui/widget.h"

#include <cstdint>

namespace KAV {

/// The lamp that indicates a newer version: hidden at first, and breathing while it is shown. Ignores values
/// from the device. Threads: the window's, unless noted.
class CNewVersionLED final : public GUI::CWidget, public GUI::CValueWidget {
public:
    explicit CNewVersionLED(GUI::CGUI& a_piGUI);

    // CValueWidget. The value is the brightness that the lamp is on its way to.
    bool SetValue(float a_fNormal, bool a_bHistory) override;

    /// The step of a frame: a second from dark to bright, and one back.
    void Tick(std::uint32_t a_nElapsedMs);
    float Brightness() const noexcept { return _fBrightness; } ///< 0..1

private:
    float _fFrom = 0.0f;       // the brightness when the way to Value() began
    float _fBrightness = 0.0f; // between that and Value()
};

} // namespace KAV
