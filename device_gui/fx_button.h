#pragma once

#include "device_gui/panel_view.h"
#include "device_gui/plugin_widget.h"

#include <cstdint>
#include <string_view>

namespace KAV {

/// Selects a group: what the editor shows from then on. Its text is the group's name, which the user types
/// after a right press and patches keep. Shift and a press mute the group, a double press gives it solo; the
/// button has the colour of the one or the other. In copy mode, while the button pulses, the group that was
/// shown is copied to the one that is selected.
class CFxBtn final : public CPluginButton, public IPanelView {
public:
    /// `a_nGroup` 0..3.
    CFxBtn(CXXXGUI& a_piPlugin, int a_nGroup);

    int Group() const noexcept { return _nGroup; }
    void SetCopyMode(bool a_bCopy) noexcept { _bCopy = a_bCopy; }

    void SetText(std::u16string_view a_sText) override; ///< the state keeps it
    void SetFromHost(float a_fNormal) override;         ///< also looks whether it is solo or muted by now
    void Draw(std::uint32_t a_nMs) override;
    void OnMouseDown(std::int32_t x, std::int32_t y, std::uint32_t a_nFlags) override;
    void OnValueChanged(float a_fNormal, std::int32_t a_nItem) override;

private:
    void ShowPanel(const SPanelState& a_psPanel) override;
    void StepSolo();
    std::uint32_t RestColor() const noexcept; ///< of its picture, out of copy mode
    std::uint32_t NextPulseColor(std::uint32_t a_nMs) noexcept;
    void Paint(std::uint32_t a_nColor) noexcept;
    void ShowRestColor();

    int _nGroup;
    std::uint32_t _nBaseColor;
    std::int32_t _nPulseMs;     // the period
    std::int32_t _nPhaseMs = 0; // 0.._nPulseMs
    bool _bCopy = false;
};

/// Copy mode: on from its press until another group is selected, or it is pressed again.
class CFxBtnCopy final : public CPluginButton {
public:
    explicit CFxBtnCopy(CXXXGUI& a_piPlugin);

    void OnValueChanged(float a_fNormal, std::int32_t a_nItem) override;

    std::int32_t nPulseMs; ///< unused: the pulse is that of the groups' buttons
};

} // namespace KAV
