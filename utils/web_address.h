#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

/// Addresses of web resources. Any thread.
namespace KAV::Utils {

struct SWebAddress {
    bool secure = false; ///< HTTPS
    std::string host;
    std::uint16_t port = 0;
    std::string path; ///< begins with '/', with the query; visible ASCII
};

/// Whether an address may be passed to a browser: it begins with "http://" or "https://".
bool IsWebAddress(std::u16string_view text) noexcept;

/// The parts of an address in UTF-8. Without a port it is 443 for https and 80 for http; without a path
/// it is the root. Characters that a path can't contain are percent-encoded, and what follows a '#' is
/// dropped. Nothing for any other scheme, an impossible port, a control character, and a host of anything but
/// letters, digits, '.', '-' and '_': no user names or passwords.
std::optional<SWebAddress> ParseWebAddress(std::string_view text);

/// The target of a redirect: `location` may be a whole address, or only the end of one. Nothing if it leads
/// from https to http.
std::optional<SWebAddress> FollowRedirect(const SWebAddress& from, std::string_view location);

/// Keeps letters, digits and ~ ! ( ) ' and writes every other byte as '%' and two digits of 0-9a-f.
std::string PercentEncoded(std::string_view bytes);

} // namespace KAV::Utils
