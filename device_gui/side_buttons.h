#pragma once

#include "device_gui/panel_view.h"
#include "device_gui/plugin_widget.h"
#include "gui/animation.h"

#include <cstdint>

namespace KAV {

/// Copies the live side of A/B to the other one. Its picture turns by half while the button is pressed, and
/// back.
class CPatchABCopy final : public CPluginButtonMom {
public:
    explicit CPatchABCopy(CXXXGUI& a_piPlugin);

    void Tick(std::uint32_t a_nMs) override;
    void OnClick() override;

private:
    GUI::SAnimValue _sTurn; // 0..1: upright to upside down
};

/// Shows which side of A/B is live, and changes it: the other side is shown from the press on, and becomes
/// the live one with the click.
class CPatchABInplace final : public CPluginButtonMom, public IPanelView {
public:
    explicit CPatchABInplace(CXXXGUI& a_piPlugin);

    std::uint8_t ShownSide() const noexcept { return _bFlipped ? Other(_nLive) : _nLive; }

    float StateValue(std::int32_t a_nState) const override;
    void OnMouseDown(std::int32_t x, std::int32_t y, std::uint32_t a_nFlags) override;
    void OnClick() override;
    void OnCaptureLost() override;

private:
    static constexpr std::uint8_t Other(std::uint8_t a_nSide) noexcept { return a_nSide != 0 ? 0 : 1; }
    void ShowPanel(const SPanelState& a_psPanel) override;
    void Show(std::uint8_t a_nLive, bool a_bFlipped);

    std::uint8_t _nLive = 1; // as the state has it
    bool _bFlipped = false;  // pressed, and not clicked yet
};

} // namespace KAV
