#include "utils/maker_service.h"

#include "utils/text.h"
#include "utils/web_address.h"

#include <string_view>

namespace KAV::Utils {

namespace {

std::u16string Address(const std::u16string& origin, std::u16string_view path, std::u16string_view id = {}) {
    if (origin.empty()) return {};
    return origin + std::u16string(path) + std::u16string(id);
}

} // namespace

SMakerService ConfiguredService() {
    return {KAV_SERVICE_ORIGIN, KAV_MAKER_SITE, KAV_PRODUCT_ID, KAV_FORMAT_TAG, {}};
}

std::u16string VersionAddress(const SMakerService& service) {
    if (service.origin.empty()) return {};
    return Address(service.origin, u"/version.php?app_id=", service.productId) + u"&format=" +
           service.formatTag;
}

std::u16string WhatsNewAddress(const SMakerService& service) {
    return Address(service.origin, u"/service/whatsnew.php?platform=win&product_id=", service.productId);
}

std::u16string ManualAddress(const SMakerService& service) {
    return Address(service.origin, u"/service/help.php?product_id=", service.productId);
}

std::u16string SiteAddress(const SMakerService& service) {
    return Address(service.site, u"/?from=plugin");
}

std::u16string LogAddress(const SMakerService& service) {
    const auto address = Address(service.origin, u"/log.php");
    const auto parts = ParseWebAddress(ToUtf8(address));
    if (!parts) return {};
    const bool here = parts->host == "localhost" || parts->host == "127.0.0.1";
    return parts->secure || here ? address : std::u16string();
}

} // namespace KAV::Utils
