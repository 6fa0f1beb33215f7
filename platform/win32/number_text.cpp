#include "platform/number_text.h"

#include <charconv>
#include <cmath>
#include <cstring>
#include <limits>
#include <string_view>
#include <system_error>

// The function of this C library that accepts a locale reads neither hexadecimal nor "inf" and "nan", and
// has no single precision; the others take the decimal point from the process's locale. The C++ library reads
// exactly and ignores the locale. What C also allows around the digits is handled here.

namespace KAV::Platform {

namespace {

struct SSigned {
    std::string_view digits;
    bool negative = false;
};

SSigned SkipBlanksAndSign(const char* text) noexcept {
    SSigned rest{text};
    while (!rest.digits.empty() && std::strchr(" \t\n\v\f\r", rest.digits.front()) != nullptr)
        rest.digits.remove_prefix(1);
    if (!rest.digits.empty() && (rest.digits.front() == '+' || rest.digits.front() == '-')) {
        rest.negative = rest.digits.front() == '-';
        rest.digits.remove_prefix(1);
    }
    // The C++ library would accept a second minus.
    if (rest.digits.starts_with('-')) rest.digits = {};
    return rest;
}

/// Whether any digit before the exponent is not zero.
bool HasValue(std::string_view mantissa, char exponent) noexcept {
    for (const char c : mantissa) {
        if ((c | 0x20) == exponent) return false;
        if (c != '0' && c != '.') return true;
    }
    return false;
}

/// Reads decimal or hexadecimal digits. A value too large or too small for a float is out of range, however
/// the library reports that.
std::from_chars_result Read(
    std::string_view digits, float& number, std::chars_format format, char exponent) noexcept {
    auto result = std::from_chars(digits.data(), digits.data() + digits.size(), number, format);
    if (result.ec != std::errc{}) return result;
    const std::string_view used(digits.data(), static_cast<std::size_t>(result.ptr - digits.data()));
    const bool isWord = (used.front() | 0x20) == 'i' || (used.front() | 0x20) == 'n';
    if ((std::isinf(number) && !isWord) || (number == 0.0f && HasValue(used, exponent)))
        result.ec = std::errc::result_out_of_range;
    return result;
}

/// "0x" is a prefix only if hexadecimal digits follow; otherwise the number is just its "0".
std::from_chars_result ReadDigits(std::string_view digits, float& number) noexcept {
    const bool prefix = digits.size() > 2 && digits[0] == '0' && (digits[1] | 0x20) == 'x';
    if (prefix && digits[2] != '-' && (digits[2] | 0x20) != 'i' && (digits[2] | 0x20) != 'n') {
        const auto result = Read(digits.substr(2), number, std::chars_format::hex, 'p');
        if (result.ec != std::errc::invalid_argument) return result;
    }
    return Read(digits, number, std::chars_format::general, 'e');
}

} // namespace

ENumber ReadInt(const char* text, std::int32_t& value) noexcept {
    const SSigned rest = SkipBlanksAndSign(text);
    std::int64_t number = 0;
    const auto result =
        std::from_chars(rest.digits.data(), rest.digits.data() + rest.digits.size(), number, 10);
    if (result.ec == std::errc::invalid_argument) return ENumber::None;
    if (rest.negative) number = -number;
    if (result.ec == std::errc::result_out_of_range || number < std::numeric_limits<std::int32_t>::min() ||
        number > std::numeric_limits<std::int32_t>::max()) {
        return ENumber::OutOfRange;
    }
    value = static_cast<std::int32_t>(number);
    return ENumber::Read;
}

ENumber ReadFloat(const char* text, float& value) noexcept {
    const SSigned rest = SkipBlanksAndSign(text);
    float number = 0.0f;
    const auto result = ReadDigits(rest.digits, number);
    if (result.ec == std::errc::invalid_argument) return ENumber::None;
    if (result.ec == std::errc::result_out_of_range || std::fpclassify(number) == FP_SUBNORMAL)
        return ENumber::OutOfRange;
    value = rest.negative ? -number : number;
    return ENumber::Read;
}

} // namespace KAV::Platform
