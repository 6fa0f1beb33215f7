#pragma once

#include "gui/led.h"

#include <cstdint>

namespace KAV {

/// The lamp that indicates a newer version: hidden at first, and breathing while it is shown. Ignores values
/// from the device. Threads: the window's, unless noted.
class CNewVersionLED final : public GUI::CLED {
public:
    explicit CNewVersionLED(GUI::CGUI& a_piGUI);

    void SetFromHost(float a_fNormal) override;
    /// The value moves with Pulse() and not with the picture, so that the lamp breathes without one as well.
    void Tick(std::uint32_t a_nMs) override;
    void SoakTest() override;

    /// The step of a frame: a second from dark to bright, and one back.
    void Pulse(std::uint32_t a_nElapsedMs);
    float Brightness() const noexcept { return sValue.fValue; } ///< 0..1, on its way to Value()
};

} // namespace KAV
