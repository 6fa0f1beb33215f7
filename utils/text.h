#pragma once

#include <cstddef>
#include <span>
#include <string_view>

namespace KAV::Utils {

/// Copies UTF-8 `text` into `buffer` with a closing zero, cut to what fits. A cut never splits a character:
/// one whose last byte would not fit is left out whole. Bytes behind the zero stay as they were; an empty
/// buffer stays untouched. Any thread.
void CopyText(std::string_view text, std::span<char> buffer) noexcept;

/// Enough for any float with up to two decimals, "-" and "+" included: 39 digits before the point.
inline constexpr std::size_t DecimalCapacity = 48;

/// `value` with `decimals` (0..2) digits behind a full stop, as printf's "%.*f" writes it in the C locale,
/// whatever the process's locale is. Not-a-number gives "nan" or "-nan", infinity "inf" or "-inf". Returns
/// the part of `buffer` that holds the digits. Any thread.
std::string_view FormatDecimal(float value, int decimals, std::span<char, DecimalCapacity> buffer) noexcept;

} // namespace KAV::Utils
