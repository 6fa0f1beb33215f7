#include "device_gui/logo.h"

#include <cstddef>

namespace KAV {

namespace {

constexpr std::uint32_t PulseMs = 1000;
constexpr std::uint32_t LeapMs = 200; // from then on the pulse begins anew
constexpr std::uint32_t Bright = 0xFFFF0000;
constexpr std::uint32_t Dark = 0x81000000;
constexpr float Shrinkage = 0.1f;
constexpr std::size_t ScaleX = 0;
constexpr std::size_t ScaleY = 1;

} // namespace

CLogo::CLogo(CXXXGUI& a_piPlugin, const GUI::SWidgetInfo& a_sInfo) : CPluginButtonMom(a_piPlugin, a_sInfo) {
    ShowPhase();
}

void CLogo::OnClick() {
    Plugin().Maker().OpenMakersSite();
}

void CLogo::Tick(std::uint32_t a_nMs) {
    CPluginButtonMom::Tick(a_nMs);
    if (!IsVisible()) return;
    _nPhaseMs = (_nPhaseMs + a_nMs % PulseMs) % PulseMs;
    ShowPhase();
    Root().Invalidate(); // which also brings the next tick
}

void CLogo::ShowPhase() noexcept {
    const std::uint32_t ms = _nPhaseMs > LeapMs ? _nPhaseMs - LeapMs : _nPhaseMs;
    const float share = static_cast<float>(ms) / static_cast<float>(PulseMs);
    nColor = nColorHover = GUI::Blend(Bright, Dark, share);
    asLook[ScaleX].fill(1.0f - Shrinkage * share);
    asLook[ScaleY].fill(1.0f - Shrinkage * share);
}

} // namespace KAV
