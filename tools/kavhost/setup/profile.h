#pragma once

#include <cstdint>
#include <filesystem>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

/// What an effect's own interface cannot provide: its parameters' full names, of which a host sees 7
/// characters, and the laws between a host's 0 to 1 and the real quantities, which the effect's display may
/// show in another way.
///
/// A profile is a JSON file:
///
///     {
///       "name": "Example", "unique_id": 1936683628,
///       "parameters": [
///         {"index": 0, "name": "Level",  "unit": "dB", "law": "linear",      "minimum": -30,  "maximum": 0},
///         {"index": 1, "name": "Fall",   "unit": "ms", "law": "exponential", "minimum": 0.01, "maximum":
///         1000},
///         {"index": 2, "name": "Active", "unit": "",   "law": "toggle"},
///         {"index": 3, "name": "Mode",   "unit": "",   "law": "choice", "choices": ["Soft", "Hard"]}
///       ]
///     }
///
/// With x for the host's value: linear is minimum + x (maximum - minimum); exponential is
/// minimum (maximum / minimum)^x; a toggle is off at 0 and on at 1; choice k of n stands at x = k / (n - 1).
/// "unique_id" is the number that distinguishes an effect from others. A parameter may have a "tag", the
/// number by which the effect's patches know it, and a "default", the host's value in a new instance. There
/// may be a "state": the chunk of a bank in which every value is the effect's built-in one, for effects that
/// begin with what their user has stored. Unknown
/// members are ignored.
namespace KAV::Host {

enum class ELaw { Linear, Exponential, Toggle, Choice };

struct SParameterProfile {
    std::int32_t index = 0;
    std::optional<std::int32_t> tag; ///< the number that the effect's patches have for it
    std::string name;
    std::string unit;
    ELaw law = ELaw::Linear;
    double minimum = 0; ///< of the two continuous laws
    double maximum = 1;
    std::vector<std::string> choices; ///< two or more, of the law Choice
    std::optional<double> initial;    ///< the host's value in a new instance
};

struct SProfile {
    std::string name;
    std::int32_t uniqueId = 0;
    std::string state; ///< of built-in values; empty: the effect begins with them by itself
    std::vector<SParameterProfile> parameters;

    const SParameterProfile* Find(std::int32_t index) const noexcept; ///< null when not in the profile
    const SParameterProfile* FindByTag(std::int32_t tag) const noexcept;
    const SParameterProfile* Find(std::string_view name) const noexcept; ///< case aside
};

/// Throws CFailure with a text that wants a file name in front.
SProfile ParseProfile(std::string_view json);

/// Throws CFailure when the file is missing or no profile.
SProfile ReadProfile(const std::filesystem::path& file);

/// The profile for an effect among the files *.json of a folder; nothing when none has its number. Files that
/// are no profile are passed over; a profile of the right number with a fault throws CFailure.
std::optional<SProfile> FindProfile(const std::filesystem::path& folder, std::int32_t uniqueId);

/// The host's value for a quantity as a user writes it: a number, with or without the unit, for the
/// continuous laws; on, off, 1, 0, true, false, yes, no for a toggle; for a choice its text, its last word,
/// or its place from 0. Throws CUsageError for what has no place.
float HostValue(const SParameterProfile& parameter, std::string_view quantity);

/// What HostValue() accepts, in words: "-30 to 0 dB", "on or off".
std::string AllowedQuantities(const SParameterProfile& parameter);

/// The other way: the quantity at a host's value, with its unit, to two decimals; values outside 0 to 1 count
/// as the nearest inside.
std::string QuantityAt(const SParameterProfile& parameter, double value);

} // namespace KAV::Host
