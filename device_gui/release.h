#pragma once

#include "device_gui/plugin_widget.h"
#include "gui/animation.h"

#include <cstdint>
#include <string>

namespace KAV {

/// The release time. Its way is exponential, and so are its text and what the user types. While Auto Release
/// is on it can't be moved by hand, and has faded to half. Threads: the window's.
class CRelease final : public CPluginKnob {
public:
    explicit CRelease(CXXXGUI& a_piPlugin);

    /// Ends what the user is doing with it when it is switched off.
    void SetEnabled(bool a_bEnabled);

    const std::u16string& GetText(bool a_bValueOnly) override;
    float ToNormal(float a_fPlain) const noexcept override; ///< of milliseconds
    float GetPlain() const noexcept override;               ///< milliseconds
    void Tick(std::uint32_t a_nMs) override;
    void OnMouseWheel(float a_fNotches, std::uint32_t a_nFlags) override;

private:
    GUI::SAnimValue _sAlpha; // 0..1: switched off, on
};

/// Whether the release time follows the sound.
class CAutoRelease final : public CPluginButton {
public:
    explicit CAutoRelease(CXXXGUI& a_piPlugin);

    void OnValueChanged(float a_fNormal, std::int32_t a_nItem) override;
};

} // namespace KAV
