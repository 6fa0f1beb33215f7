#include "device_gui/about_switches.h"

#include "device_gui/backdrop.h"
#include "gfx/renderers.h"

#include <algorithm>

namespace KAV {

CSwitchGPU::CSwitchGPU(CXXXGUI& a_piPlugin, const GUI::SWidgetInfo& a_sInfo)
    : CPluginKnob(a_piPlugin, a_sInfo) {
    ShowPresent();
}

void CSwitchGPU::ShowPresent() noexcept {
    const auto item = static_cast<std::int32_t>(std::min(Plugin().Screen().Renderer(), GFX::Direct3D9));
    if (item == Item()) return;
    ShowItemSilently(item);
    Root().Invalidate();
}

void CSwitchGPU::OnValueChanged(float, std::int32_t a_nItem) {
    const auto wanted = static_cast<std::uint32_t>(a_nItem);
    if (wanted == Plugin().Screen().Renderer()) return;
    Plugin().Screen().SetRenderer(wanted);
    ShowPresent(); // another one, if that one doesn't work here
    if (auto* const backdrop = Plugin().Find<CBackdrop>()) backdrop->Take();
}

CSwitchSIMD::CSwitchSIMD(CXXXGUI& a_piPlugin, const GUI::SWidgetInfo& a_sInfo)
    : CPluginButton(a_piPlugin, a_sInfo) {
    ShowPresent();
}

void CSwitchSIMD::ShowPresent() noexcept {
    const std::int32_t item = Plugin().Controls().Simd() ? 1 : 0;
    if (item == Item()) return;
    ShowItemSilently(item);
    Root().Invalidate();
}

void CSwitchSIMD::OnValueChanged(float a_fNormal, std::int32_t) {
    Plugin().Controls().Simd() = a_fNormal != 0.0f;
}

} // namespace KAV
