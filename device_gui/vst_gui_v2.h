#pragma once

#include "device_gui/xxx_gui.h"
#include "vst/aeff_editor.h"

namespace KAV {

/// The editor as a VST 2.4 host knows it. It has no window yet: a host shows controls of its own. Its calls,
/// all on the host's thread, are when the host hears what has waited for them.
class CVSTGUIv2 : public AEffEditor, public CXXXGUI {
public:
    /// The first three are parts of the instance that owns this object.
    CVSTGUIv2(CXXXDSP& a_piDSP, IDeviceControls& a_piControls, CDeviceState& a_piState,
        const Utils::SMakerService& a_psService);

    // AEffEditor
    bool hasWindow() const noexcept override { return false; }
    bool getRect(VST::ERect** a_psRect) override;
    bool open(void* a_pParent) override;
    void close() override;
    void idle() override;

    // CXXXGUI
    void OnLatencyChanged(std::int32_t a_nSamples) override;
    void RequestHostResize(std::int32_t a_nWidth, std::int32_t a_nHeight) override;

private:
    VST::ERect _sRect{};
};

} // namespace KAV
