#include "device_gui/maker_pages.h"

#include "utils/shell_open.h"
#include "utils/web_address.h"

namespace KAV {

namespace {

/// Nothing but web pages: the address may come from the net, and a desktop opens programs as well.
bool OpenPage(std::u16string_view a_sAddress) {
    return Utils::IsWebAddress(a_sAddress) && Utils::OpenUrlOrFile(a_sAddress);
}

} // namespace

std::u16string CMakerPages::NewVersionText() const {
    if (!_piVersion.IsNewerKnown()) return {};
    return u"New version " + _piVersion.LatestVersion() + u" is available...";
}

std::u16string CMakerPages::WhatsNewText() const {
    const auto latest = _piVersion.LatestVersion();
    return latest.empty() ? std::u16string() : u"What's new in version " + latest + u"...";
}

bool CMakerPages::OpenDownload() const {
    return OpenPage(_piVersion.DownloadAddress());
}

bool CMakerPages::OpenWhatsNew() const {
    return OpenPage(Utils::WhatsNewAddress(_sService));
}

bool CMakerPages::OpenUserManual() const {
    return OpenPage(Utils::ManualAddress(_sService));
}

bool CMakerPages::OpenMakersSite() const {
    return OpenPage(Utils::SiteAddress(_sService));
}

} // namespace KAV
