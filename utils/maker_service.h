#pragma once

#include <string>

namespace KAV::Utils {

/// Where the vendor's service is, and what this product is called there.
struct SMakerService {
    std::u16string origin;    ///< scheme, host and port, like "https://host:port"; empty: there is no service
    std::u16string site;      ///< the same for the vendor's site
    std::u16string productId; ///< eight hexadecimal digits
    std::u16string formatTag; ///< this form of the product, like "vst24_win"
    std::u16string authorities; ///< as HttpOptions::authorities
};

/// What was decided when this library was built.
SMakerService ConfiguredService();

// Addresses; empty if there is no such server.
std::u16string VersionAddress(const SMakerService& service);
std::u16string WhatsNewAddress(const SMakerService& service);
std::u16string ManualAddress(const SMakerService& service);
std::u16string SiteAddress(const SMakerService& service);
/// Where logs are sent: over HTTPS, or to this machine itself. Empty for any other server.
std::u16string LogAddress(const SMakerService& service);

} // namespace KAV::Utils
