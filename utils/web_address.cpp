#include "utils/web_address.h"

#include "utils/number.h"

#include <algorithm>

namespace KAV::Utils {

namespace {

constexpr std::string_view Http = "http://";
constexpr std::string_view Https = "https://";
constexpr std::string_view KeptMarks = "~!()'"; // by PercentEncoded()
constexpr std::string_view HexadecimalDigits = "0123456789abcdef";

bool IsDigit(char c) noexcept {
    return c >= '0' && c <= '9';
}

bool IsLetterOrDigit(char c) noexcept {
    return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || IsDigit(c);
}

void AppendCode(std::string& text, char byte) {
    const auto value = static_cast<unsigned char>(byte);
    text += '%';
    text += HexadecimalDigits[value >> 4];
    text += HexadecimalDigits[value & 15];
}

bool IsHost(std::string_view host) noexcept {
    return !host.empty() && std::ranges::all_of(host, [](char c) {
        return IsLetterOrDigit(c) || c == '.' || c == '-' || c == '_';
    });
}

/// 0 if the text isn't a port.
std::uint16_t Port(std::string_view digits) noexcept {
    if (digits.empty() || digits.size() > 5 || !std::ranges::all_of(digits, IsDigit)) return 0;
    const std::int32_t port = ToInt(digits);
    return port <= 0xFFFF ? static_cast<std::uint16_t>(port) : std::uint16_t{0};
}

/// The path of a request; nothing if `text` contains a control character, which could end the request's line.
std::optional<std::string> Path(std::string_view text) {
    text = text.substr(0, text.find('#'));
    std::string path;
    if (!text.starts_with('/')) path += '/';
    for (const char c : text) {
        const auto value = static_cast<unsigned char>(c);
        if (value < 0x20 || value == 0x7F) return std::nullopt;
        if (value == 0x20 || value > 0x7F || c == '"' || c == '<' || c == '>') {
            AppendCode(path, c);
        } else {
            path += c;
        }
    }
    return path;
}

} // namespace

bool IsWebAddress(std::u16string_view text) noexcept {
    return text.starts_with(u"http://") || text.starts_with(u"https://");
}

std::optional<SWebAddress> ParseWebAddress(std::string_view text) {
    SWebAddress address;
    address.secure = text.starts_with(Https);
    if (!address.secure && !text.starts_with(Http)) return std::nullopt;
    text.remove_prefix(address.secure ? Https.size() : Http.size());
    const auto authority = text.substr(0, text.find_first_of("/?#"));
    const auto colon = authority.find(':');
    const auto host = authority.substr(0, colon);
    address.port = colon != std::string_view::npos ? Port(authority.substr(colon + 1))
                                                   : static_cast<std::uint16_t>(address.secure ? 443 : 80);
    auto path = Path(text.substr(authority.size()));
    if (!IsHost(host) || address.port == 0 || !path) return std::nullopt;
    address.host = host;
    address.path = std::move(*path);
    return address;
}

std::optional<SWebAddress> FollowRedirect(const SWebAddress& from, std::string_view location) {
    if (location.empty()) return std::nullopt;
    if (const auto colon = location.find(':'); colon < location.find_first_of("/?#")) { // it has a scheme
        auto address = ParseWebAddress(location);
        if (address && from.secure && !address->secure) return std::nullopt;
        return address;
    }
    if (location.starts_with("//"))
        return ParseWebAddress(std::string(from.secure ? "https:" : "http:").append(location));
    auto address = from;
    const auto own = std::string_view(from.path).substr(0, from.path.find('?'));
    std::string_view kept;
    if (location.front() == '?') {
        kept = own;
    } else if (location.front() != '/') {
        kept = own.substr(0, own.rfind('/') + 1);
    }
    auto path = Path(std::string(kept).append(location));
    if (!path) return std::nullopt;
    address.path = std::move(*path);
    return address;
}

std::string PercentEncoded(std::string_view bytes) {
    std::string text;
    text.reserve(bytes.size());
    for (const char c : bytes) {
        if (IsLetterOrDigit(c) || KeptMarks.find(c) != std::string_view::npos) {
            text += c;
        } else {
            AppendCode(text, c);
        }
    }
    return text;
}

} // namespace KAV::Utils
