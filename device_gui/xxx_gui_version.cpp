// What the maker's service tells, and the pages of his that the user opens.

#include "device_gui/new_version_led.h"
#include "device_gui/xxx_gui.h"
#include "utils/shell_open.h"
#include "utils/web_address.h"

namespace KAV {

namespace {

/// Nothing but web pages: the address may come from the net, and a desktop opens programs as well.
bool OpenPage(std::u16string_view a_sAddress) {
    return Utils::IsWebAddress(a_sAddress) && Utils::OpenUrlOrFile(a_sAddress);
}

} // namespace

void CXXXGUI::CreateGUIWindow() {
    CGUI::CreateGUIWindow();
    ShowLamp();
    ShowHeldErrors();
}

bool CXXXGUI::OnUserMessage(std::uint32_t a_nMessage) {
    if (a_nMessage != NewVersionMessage) return CGUI::OnUserMessage(a_nMessage);
    ShowLamp();
    return true;
}

void CXXXGUI::ShowLamp() {
    if (!_iVersion.TakeLamp()) return;
    if (auto* const lamp = Find<CNewVersionLED>()) lamp->SetVisible(true);
}

std::u16string CXXXGUI::NewVersionText() const {
    if (!_iVersion.IsNewerKnown()) return {};
    return u"New version " + _iVersion.LatestVersion() + u" is available...";
}

std::u16string CXXXGUI::WhatsNewText() const {
    const auto latest = _iVersion.LatestVersion();
    return latest.empty() ? std::u16string() : u"What's new in version " + latest + u"...";
}

bool CXXXGUI::OpenDownload() const {
    return OpenPage(_iVersion.DownloadAddress());
}

bool CXXXGUI::OpenWhatsNew() const {
    return OpenPage(Utils::WhatsNewAddress(_sService));
}

bool CXXXGUI::OpenUserManual() const {
    return OpenPage(Utils::ManualAddress(_sService));
}

bool CXXXGUI::OpenMakersSite() const {
    return OpenPage(Utils::SiteAddress(_sService));
}

} // namespace KAV
