#pragma once

#include <cstdint>

/// Numbers by the rules of the C library's strtol() and strtof(), in the C locale whatever the process or
/// another thread has chosen: blanks in front, a sign, "0x" for hexadecimal floats, "inf" and "nan" in any
/// case, and anything after that. `errno` stays as it was. Any thread.
namespace KAV::Platform {

enum class ENumber {
    None,       ///< the text doesn't begin with a number
    OutOfRange, ///< too large for the type, or too small for a float at full precision
    Read,
};

/// Decimal. `value` is set only when the result is Read.
ENumber ReadInt(const char* text, std::int32_t& value) noexcept;

/// Rounded to nearest. `value` is set only when the result is Read, and is then 0, infinite, not a number, or
/// normal.
ENumber ReadFloat(const char* text, float& value) noexcept;

} // namespace KAV::Platform
