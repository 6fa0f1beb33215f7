#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <string>
#include <string_view>

namespace KAV {

// A routing document is text with elements like `<map>0,-1|*|1,-1</map>`: no attributes, no nesting, no
// escaping. The functions accept any bytes of any size; what is missing or cut off reads as empty. Threads:
// any.

/// The text between the end of the opening tag that begins with `opening` ("<map", "<name", ...) and the next
/// "<". Empty if there is no such element or it doesn't end.
std::string_view RoutingValue(std::string_view document, std::string_view opening) noexcept;

/// Separates the entries of a list; Utils::CPieces splits at it.
inline constexpr std::string_view RoutingSeparator = "|*|";

/// What `<type>` declares.
enum class ERoutingType : std::int32_t { None = 0, MidSide = 1, Mono = 2, DualMono = 3, Stereo = 4 };

/// The type of that name; any other name is None.
ERoutingType RoutingType(std::string_view name) noexcept;

/// The two channel numbers of an entry like "0,-1"; a number that can't be read is 0.
struct SRoutingNumbers {
    std::int32_t first = 0;
    std::int32_t second = 0;
};
SRoutingNumbers ReadRoutingEntry(std::string_view entry) noexcept;

/// A channel button as the routing editor shows it.
struct SRoutingButton {
    std::string_view label; ///< UTF-8
    bool on = false;
};

/// The document of a routing that the user has put together from channel buttons: an entry of one channel for
/// each button that is on. The display name is `fileName` without its extension.
std::string WriteRoutingDocument(std::string_view fileName, std::span<const SRoutingButton> buttons);

/// Layouts that old patches refer to by an index 0..43; empty for any other index.
std::string_view LegacyRoutingName(std::ptrdiff_t index) noexcept;

} // namespace KAV
