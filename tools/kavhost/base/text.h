#pragma once

#include <filesystem>
#include <optional>
#include <span>
#include <string>
#include <string_view>

/// Texts of the command line, of effects and of profiles. Nothing here depends on the locale.
namespace KAV::Host {

std::string_view Trim(std::string_view text) noexcept;

/// Ignores ASCII case.
bool EqualIgnoringCase(std::string_view a, std::string_view b) noexcept;

struct SNumber {
    double value;
    std::string_view unit; ///< what follows the digits, trimmed; part of the text that was read
    int decimals;          ///< digits after the point
};

/// How U+2212 begins a number that was copied from a page, in UTF-8.
inline constexpr std::string_view MinusSign = "\xE2\x88\x92";

/// Reads a text that begins with a decimal number, such as "-6", "+0.5 dB" or "-inf dB", with a minus sign of
/// either kind. Nothing if it doesn't.
std::optional<SNumber> ReadNumber(std::string_view text) noexcept;

/// A whole number that is the whole text; nothing if it isn't, or if it is out of an int's range.
std::optional<int> ReadIndex(std::string_view text) noexcept;

/// The fewest characters that must be changed, added or removed to turn `b` into `a`, ignoring case.
std::size_t EditDistance(std::string_view a, std::string_view b);

/// The candidate with the smallest edit distance to `text`, the first of several; null if there are none.
const std::string* Nearest(std::string_view text, std::span<const std::string> candidates);

/// "12.34", or "-inf" for the logarithm of silence; up to 80 decimals. What rounds to zero has no sign.
std::string Fixed(double value, int decimals);

/// The number with the fewest digits that distinguish it from its neighbours.
std::string Shortest(double value);

/// The text with its control characters, and bytes that are no UTF-8, in a form that a terminal shows: "\n",
/// "\x1b". File names may contain them.
std::string Printable(std::string_view text);

/// File names are UTF-8 in all texts.
std::filesystem::path PathOf(std::string_view utf8);
std::string Utf8(const std::filesystem::path& path);

/// The level of a linear amplitude; minus infinity for 0.
double Decibels(double amplitude) noexcept;

} // namespace KAV::Host
