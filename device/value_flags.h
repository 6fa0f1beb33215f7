#pragma once

#include <cstdint>

namespace KAV {

/// How SetParam() and GetParam() interpret their value and number.
enum ValueFlag : std::uint32_t {
    Normalized = 1,    ///< a selector's value is 0..1 instead of its index
    NotifyHost = 2,    ///< set: report the stored value to the host as an automated change
    GroupRelative = 4, ///< the number is that of the first group and stands for the current group's
    MacroOffset = 8,   ///< set: the value is the new macro offset
    RawBase = 16,      ///< set: the value is the new base
    BaseValue = 32,    ///< get: the base instead of the final value
};

} // namespace KAV
