#include "device_gui/device_gui.h"

#include "device_gui/row_info.h"
#include "utils/location.h"
#include "utils/product.h"

#include <cstring>
#include <utility>

namespace KAV {

namespace {

/// As many widgets of one kind as the array has, each made with its place.
template<typename TWidget, std::size_t... Places>
std::array<TWidget, sizeof...(Places)> MakeAll(CXXXGUI& a_piGUI, std::index_sequence<Places...>) {
    return {TWidget(a_piGUI, static_cast<int>(Places))...};
}

constexpr std::u16string_view StoredWidth =
    u"HKEY_CURRENT_USER/Software/" KAV_VENDOR "/" KAV_PRODUCT "/Width";

} // namespace

CDeviceGUI::CDeviceGUI(CXXXDSP& a_piDSP, IDeviceControls& a_piControls, CDeviceState& a_piState,
    const Utils::SMakerService& a_psService)
    : CVSTGUIv2(a_piDSP, a_piControls, a_piState, a_psService), _iRouting(*this),
      _aiChannels(MakeAll<CChannelBtn>(*this, std::make_index_sequence<DeviceChannels>())),
      _aiGroups(MakeAll<CFxBtn>(*this, std::make_index_sequence<4>())), _iGroupCopy(*this), _iPatch(*this),
      _iOversampling(*this, InfoOf(Panel::RowOf(Panel::EClass::Oversampling))),
      _aiMacros(MakeAll<CMacroBtn>(*this, std::make_index_sequence<5>())), _iNewVersion(*this) {
    {
        Utils::CTurn turn(State().Turns());
        ShowAtTurnEnds(turn);
    }
    std::size_t size = 0;
    const auto stored = Utils::ReadUniversal(StoredWidth, size);
    std::int32_t width = 0;
    if (stored == nullptr || size != sizeof(width)) return;
    std::memcpy(&width, stored.get(), sizeof(width));
    State().ResizeToWidth(width);
}

} // namespace KAV
