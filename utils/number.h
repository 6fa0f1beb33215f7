#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <string>
#include <string_view>

/// Numbers as text, always as in the C locale. Any thread.
namespace KAV::Utils {

/// The decimal number at the beginning of a text, by the rules of strtol(): blanks and a sign may precede
/// it, anything may follow. 0 if there is no number, or it doesn't fit.
std::int32_t ToInt(std::string_view text) noexcept;
std::int32_t ToInt(std::u16string_view text) noexcept;

/// The number at the beginning of a text, by the rules of strtof(), including hexadecimal, "inf" and "nan".
/// The default if there is no number, if it is too large for a float, or if it is so small that a float would
/// keep only part of its digits.
float ToFloat(std::string_view text, float defaultValue) noexcept;
float ToFloat(std::u16string_view text, float defaultValue) noexcept;

enum class EBase { Decimal, Hexadecimal };

/// In decimal; or in hexadecimal, with "0x" in front and a negative number as its 32 bits.
std::u16string FormatInt(std::int32_t value, EBase base = EBase::Decimal);
std::u16string FormatUnsigned(std::uint32_t value);

/// As printf's "%.*f" writes it into a buffer of 32 bytes: at most 31 characters; a longer text is cut at its
/// end. Infinity is "inf" or "-inf", not-a-number "nan" or "-nan". `decimals` is clamped to 0..9.
std::string FormatFixed(double value, int decimals);

/// Enough for any float with up to two decimals, "-" and "+" included: 39 digits before the point.
inline constexpr std::size_t DecimalCapacity = 48;

/// As FormatFixed(), but uncut, with 0..2 decimals and without allocation. Returns the part of `buffer` that
/// holds the digits.
std::string_view FormatDecimal(float value, int decimals, std::span<char, DecimalCapacity> buffer) noexcept;

} // namespace KAV::Utils
