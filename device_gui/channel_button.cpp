#include "device_gui/channel_button.h"

#include "device/value_flags.h"
#include "device_gui/row_info.h"

#include <utility>

namespace KAV {

namespace {

constexpr std::uint32_t OpaqueText = 0xFF000000;
constexpr std::uint32_t DimmedText = 0x64000000;
constexpr std::uint32_t TextHue = 0x00FFFFFF;

} // namespace

CChannelBtn::CChannelBtn(CXXXGUI& a_piPlugin, int a_nChannel)
    : CPluginButton(a_piPlugin, InfoOf(Panel::RowOf(Panel::EClass::ChannelBtn, a_nChannel))),
      _nChannel(static_cast<std::size_t>(a_nChannel)) {
    bEllipsis = true;                         // the user names channels
    fTextInsetL = fTextInsetR = 3.0f / 50.0f; // clear of the edges
}

void CChannelBtn::SetText(std::u16string_view a_sText) {
    CPluginButton::SetText(a_sText);
    Plugin().State().NameChannel(_nChannel, a_sText);
}

void CChannelBtn::OnValueChanged(float a_fNormal, std::int32_t) {
    SetTextColor((nTextColor & TextHue) | (a_fNormal != 0.0f ? OpaqueText : DimmedText));
}

void CChannelBtn::OnMouseDown(std::int32_t a_nX, std::int32_t a_nY, std::uint32_t a_nFlags) {
    if (!IsDetached()) {
        CPluginButton::OnMouseDown(a_nX, a_nY, a_nFlags);
        return;
    }
    if ((a_nFlags & GUI::MouseLeft) == 0) return;
    if ((a_nFlags & GUI::MouseShift) == 0) {
        Root().Edit().Open(this, true);
        return;
    }
    CPluginButton::OnMouseDown(a_nX, a_nY, a_nFlags);
    ChooseUpToThis();
}

void CChannelBtn::ChooseUpToThis() {
    bool isUpToThis = true;
    for (auto* const button : Root().FindAll<CChannelBtn>()) {
        button->SetValue(isUpToThis ? 1.0f : 0.0f, false);
        if (button == this) isUpToThis = false;
    }
}

void CChannelBtn::ShowPanel(const SPanelState& a_psPanel) {
    const bool hasEntry = _nChannel < a_psPanel.entries;
    CPluginButton::SetText(a_psPanel.labels[_nChannel]);
    SetVisible(hasEntry || a_psPanel.isRoutingEdited, 0);
    if (a_psPanel.isRoutingEdited && !IsDetached()) Detach(hasEntry);
    if (!a_psPanel.isRoutingEdited && IsDetached()) Attach();
}

void CChannelBtn::Detach(bool a_bOn) {
    _nStoredId = std::exchange(nId, NoId);
    TakeFromHost(a_bOn ? 1.0f : 0.0f);
}

/// With the device's value at once: a step of history may come before the next frame.
void CChannelBtn::Attach() {
    nId = std::exchange(_nStoredId, NoId);
    TakeFromHost(Device().GetParam(nId, Normalized | GroupRelative));
}

std::array<bool, SPanelState::Channels> ChannelsThatAreOn(const GUI::CGUI& a_piGUI) {
    std::array<bool, SPanelState::Channels> on{};
    std::size_t channel = 0;
    for (const auto* const button : a_piGUI.FindAll<CChannelBtn>())
        on.at(channel++) = button->Value() != 0.0f;
    return on;
}

} // namespace KAV
