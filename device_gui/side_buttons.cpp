#include "device_gui/side_buttons.h"

#include "device_gui/row_info.h"

namespace KAV {

namespace {

constexpr std::uint32_t TurnMs = 250;
constexpr float HalfTurn = 180.0f; // degrees
constexpr std::size_t RotationZ = 5;

// Of the four frames: a side at rest and pressed, then the other one.
constexpr float RestA = 0.0f;
constexpr float PressedA = 0.25f;
constexpr float RestB = 0.5f;
constexpr float PressedB = 1.0f;

} // namespace

// The copy

CPatchABCopy::CPatchABCopy(CXXXGUI& a_piPlugin)
    : CPluginButtonMom(a_piPlugin, InfoOf(Panel::RowOf(Panel::EClass::PatchABCopy))) {
    _sTurn.nRiseMs = TurnMs;
    _sTurn.nFallMs = TurnMs;
}

void CPatchABCopy::Tick(std::uint32_t a_nMs) {
    CPluginButtonMom::Tick(a_nMs);
    _sTurn.Retarget(sPress.fTarget);
    if (!_sTurn.Step(a_nMs)) return;
    asLook[RotationZ].fill(_sTurn.fValue * HalfTurn);
    Root().Invalidate();
}

void CPatchABCopy::OnClick() {
    Plugin().State().CopyAB();
}

// The side

CPatchABInplace::CPatchABInplace(CXXXGUI& a_piPlugin)
    : CPluginButtonMom(a_piPlugin, InfoOf(Panel::RowOf(Panel::EClass::PatchABInplace))) {}

float CPatchABInplace::StateValue(std::int32_t a_nState) const {
    const bool isPressed = a_nState == static_cast<std::int32_t>(GUI::EState::Active);
    if (ShownSide() != 0) return isPressed ? PressedA : RestA;
    return isPressed ? PressedB : RestB;
}

void CPatchABInplace::OnMouseDown(std::int32_t x, std::int32_t y, std::uint32_t a_nFlags) {
    CPluginButtonMom::OnMouseDown(x, y, a_nFlags); // lets go of a press whose release has not come
    if ((a_nFlags & GUI::MouseLeft) != 0) Show(_nLive, true);
}

void CPatchABInplace::OnClick() {
    Show(ShownSide(), false);
    Plugin().State().SwitchAB(_nLive); // last: the host hears of it, and may end the instance
}

void CPatchABInplace::OnCaptureLost() {
    CPluginButtonMom::OnCaptureLost();
    Show(_nLive, false);
}

void CPatchABInplace::ShowPanel(const SPanelState& a_psPanel) {
    Show(a_psPanel.side, _bFlipped);
}

void CPatchABInplace::Show(std::uint8_t a_nLive, bool a_bFlipped) {
    if (a_nLive == _nLive && a_bFlipped == _bFlipped) return;
    _nLive = a_nLive;
    _bFlipped = a_bFlipped;
    Root().Invalidate();
}

} // namespace KAV
