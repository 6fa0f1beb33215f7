#pragma once

#include <filesystem>
#include <optional>
#include <span>
#include <string>
#include <string_view>

/// Texts of the command line, of effects and of profiles. Nothing here depends on the locale.
namespace KAV::Host {

std::string_view Trim(std::string_view text) noexcept;

/// Differences of ASCII case do not count.
bool EqualIgnoringCase(std::string_view a, std::string_view b) noexcept;

struct SNumber {
    double value;
    std::string_view unit; ///< what stands behind the digits, trimmed; part of the text that was read
    int decimals;          ///< digits behind the point
};

/// Reads a text that begins with a decimal number, such as "-6", "+0.5 dB" or "-inf dB". Nothing when it does
/// not.
std::optional<SNumber> ReadNumber(std::string_view text) noexcept;

/// A whole number that fills the text; nothing when it does not, or is out of an int's range.
std::optional<int> ReadIndex(std::string_view text) noexcept;

/// The fewest characters that must be changed, added or removed to make `a` of `b`, differences of case
/// aside.
std::size_t EditDistance(std::string_view a, std::string_view b);

/// The candidate with the smallest edit distance to `text`, the first of several; null when there are none.
const std::string* Nearest(std::string_view text, std::span<const std::string> candidates);

/// "12.34", or "-inf" for what a logarithm makes of silence; up to 80 decimals.
std::string Fixed(double value, int decimals);

/// The number in as few digits as tell it from its neighbours.
std::string Shortest(double value);

/// File names travel as UTF-8 in all texts.
std::filesystem::path PathOf(std::string_view utf8);
std::string Utf8(const std::filesystem::path& path);

/// The level of a linear amplitude; minus infinity for 0.
double Decibels(double amplitude) noexcept;

} // namespace KAV::Host
