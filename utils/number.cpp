#include "utils/number.h"

#include "platform/number_text.h"

#include <algorithm>
#include <array>
#include <charconv>

namespace KAV::Utils {

namespace {

/// Calls `read` with the text terminated by a zero, as the C library requires. A character that can't be part
/// of a number also ends the text.
template<typename View, typename Read>
auto WithZeroBehind(View text, Read read) noexcept {
    constexpr std::size_t shortLength = 64; // enough for nearly every number
    const auto narrow = [](auto c) { return c > 0 && c < 0x80 ? static_cast<char>(c) : '\0'; };
    try {
        if (text.size() < shortLength) {
            std::array<char, shortLength> buffer{};
            std::transform(text.begin(), text.end(), buffer.begin(), narrow);
            return read(buffer.data());
        }
        std::string buffer(text.size(), '\0');
        std::transform(text.begin(), text.end(), buffer.begin(), narrow);
        return read(buffer.c_str());
    } catch (...) { // no memory for the copy
        return read("");
    }
}

template<typename View>
std::int32_t ReadInt(View text) noexcept {
    std::int32_t value = 0;
    WithZeroBehind(text, [&](const char* digits) { return Platform::ReadInt(digits, value); });
    return value;
}

template<typename View>
float ReadFloat(View text, float defaultValue) noexcept {
    float value = defaultValue;
    WithZeroBehind(text, [&](const char* digits) { return Platform::ReadFloat(digits, value); });
    return value;
}

template<typename Integer>
std::u16string Digits(Integer value, int base) {
    std::array<char, 16> buffer{};
    const auto end = std::to_chars(buffer.data(), buffer.data() + buffer.size(), value, base).ptr;
    return {buffer.data(), end};
}

} // namespace

std::int32_t ToInt(std::string_view text) noexcept {
    return ReadInt(text);
}

std::int32_t ToInt(std::u16string_view text) noexcept {
    return ReadInt(text);
}

float ToFloat(std::string_view text, float defaultValue) noexcept {
    return ReadFloat(text, defaultValue);
}

float ToFloat(std::u16string_view text, float defaultValue) noexcept {
    return ReadFloat(text, defaultValue);
}

std::u16string FormatInt(std::int32_t value, EBase base) {
    if (base == EBase::Hexadecimal) return u"0x" + Digits(static_cast<std::uint32_t>(value), 16);
    return Digits(value, 10);
}

std::u16string FormatUnsigned(std::uint32_t value) {
    return Digits(value, 10);
}

std::string FormatFixed(double value, int decimals) {
    constexpr std::size_t longest = 31;
    std::array<char, 400> buffer{}; // the largest double has 309 digits before its point
    const auto end = std::to_chars(buffer.data(), buffer.data() + buffer.size(), value,
        std::chars_format::fixed, std::clamp(decimals, 0, 9))
                         .ptr;
    return {buffer.data(), std::min(static_cast<std::size_t>(end - buffer.data()), longest)};
}

std::string_view FormatDecimal(float value, int decimals, std::span<char, DecimalCapacity> buffer) noexcept {
    const auto result = std::to_chars(buffer.data(), buffer.data() + buffer.size(), value,
        std::chars_format::fixed, std::clamp(decimals, 0, 2));
    return {buffer.data(), result.ptr};
}

} // namespace KAV::Utils
