#pragma once

#include "device_gui/xxx_gui.h"
#include "vst/aeff_editor.h"
#include "vst/audio_effect_x.h"

namespace KAV {

/// The editor as a VST 2.4 host knows it. It has no window yet: a host shows controls of its own.
class CVSTGUIv2 : public AEffEditor, public CXXXGUI {
public:
    /// The first four are parts of the instance that owns this object.
    CVSTGUIv2(AudioEffectX& a_piEffect, CXXXDSP& a_piDSP, IDeviceControls& a_piControls,
        CDeviceState& a_piState, const Utils::SMakerService& a_psService);

    // AEffEditor
    bool hasWindow() const noexcept override { return false; }
    bool getRect(VST::ERect** a_psRect) override;
    bool open(void* a_pParent) override;
    void close() override;

    void OnLatencyChanged(std::int32_t a_nSamples) override;

private:
    AudioEffectX& _piEffect;
    VST::ERect _sRect{};
};

} // namespace KAV
