#include "tools/kavhost/base/text.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>
#include <limits>
#include <vector>

namespace KAV::Host {

namespace {

char Lower(char letter) noexcept {
    return letter >= 'A' && letter <= 'Z' ? static_cast<char>(letter - 'A' + 'a') : letter;
}

bool IsSpace(char letter) noexcept {
    return letter == ' ' || (letter >= '\t' && letter <= '\r');
}

unsigned Byte(char letter) noexcept {
    return static_cast<unsigned char>(letter);
}

/// Bytes of the UTF-8 character with which the text begins; 0 if it begins with none.
std::size_t CharacterLength(std::string_view text) noexcept {
    const unsigned first = Byte(text[0]);
    if (first < 0x80) return 1;
    const std::size_t length = first >= 0xF0 ? 4 : first >= 0xE0 ? 3 : 2;
    if (first < 0xC2 || first > 0xF4 || text.size() < length) return 0;
    for (std::size_t i = 1; i < length; ++i) {
        if ((Byte(text[i]) & 0xC0) != 0x80) return 0;
    }
    return length;
}

/// One of the control characters of ASCII, or of the 32 that follow it; terminals obey both.
bool IsControl(std::string_view character) noexcept {
    const unsigned first = Byte(character[0]);
    if (character.size() == 1) return first < 0x20 || first == 0x7F;
    return character.size() == 2 && first == 0xC2 && Byte(character[1]) < 0xA0;
}

std::string Escaped(char byte) {
    switch (byte) {
    case '\n':
        return "\\n";
    case '\r':
        return "\\r";
    case '\t':
        return "\\t";
    default:
        break;
    }
    constexpr std::string_view digits = "0123456789abcdef";
    return std::string("\\x") + digits[Byte(byte) >> 4] + digits[Byte(byte) & 15];
}

} // namespace

std::string_view Trim(std::string_view text) noexcept {
    while (!text.empty() && IsSpace(text.front())) text.remove_prefix(1);
    while (!text.empty() && IsSpace(text.back())) text.remove_suffix(1);
    return text;
}

bool EqualIgnoringCase(std::string_view a, std::string_view b) noexcept {
    return std::ranges::equal(a, b, {}, Lower, Lower);
}

std::optional<SNumber> ReadNumber(std::string_view text) noexcept {
    text = Trim(text);
    if (text.starts_with('+')) {
        text.remove_prefix(1);
        if (text.starts_with('-') || text.starts_with(MinusSign)) return std::nullopt;
    }
    const bool isNegative = text.starts_with(MinusSign);
    if (isNegative) text.remove_prefix(MinusSign.size());
    SNumber number{};
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number.value);
    if (error != std::errc{} || std::isnan(number.value)) return std::nullopt;
    if (isNegative) {
        if (text.starts_with('-')) return std::nullopt;
        number.value = -number.value;
    }
    const std::string_view digits(text.data(), static_cast<std::size_t>(end - text.data()));
    const auto point = digits.find('.');
    if (point != std::string_view::npos) {
        const auto fraction = digits.substr(point + 1);
        number.decimals = static_cast<int>(std::min(fraction.find_first_of("eE"), fraction.size()));
    }
    number.unit = Trim(text.substr(digits.size()));
    return number;
}

std::optional<int> ReadIndex(std::string_view text) noexcept {
    int index = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), index);
    if (error != std::errc{} || end != text.data() + text.size()) return std::nullopt;
    return index;
}

std::size_t EditDistance(std::string_view a, std::string_view b) {
    // Row by row: `costs[j]` makes the first j letters of b of the letters of a that were read.
    std::vector<std::size_t> costs{0};
    while (costs.size() <= b.size()) costs.push_back(costs.size());
    for (std::size_t i = 0; i < a.size(); ++i) {
        std::size_t diagonal = costs[0];
        costs[0] = i + 1;
        for (std::size_t j = 0; j < b.size(); ++j) {
            const std::size_t change = diagonal + (Lower(a[i]) == Lower(b[j]) ? 0 : 1);
            diagonal = costs[j + 1];
            costs[j + 1] = std::min({change, costs[j] + 1, costs[j + 1] + 1});
        }
    }
    return costs.back();
}

const std::string* Nearest(std::string_view text, std::span<const std::string> candidates) {
    const auto nearest = std::ranges::min_element(
        candidates, {}, [text](const std::string& candidate) { return EditDistance(text, candidate); });
    return nearest == candidates.end() ? nullptr : &*nearest;
}

std::string Fixed(double value, int decimals) {
    std::array<char, 400> buffer{}; // the largest double has 309 digits before the point
    const auto result = std::to_chars(
        buffer.data(), buffer.data() + buffer.size(), value, std::chars_format::fixed, decimals);
    std::string text(buffer.data(), result.ptr);
    if (text.starts_with('-') && text.find_first_not_of("-0.") == std::string::npos) text.erase(0, 1);
    return text;
}

std::string Shortest(double value) {
    std::array<char, 32> buffer{};
    if (value == 0) value = 0; // without a sign
    const auto result = std::to_chars(buffer.data(), buffer.data() + buffer.size(), value);
    return {buffer.data(), result.ptr};
}

std::string Printable(std::string_view text) {
    std::string printable;
    while (!text.empty()) {
        const std::size_t length = CharacterLength(text);
        const auto bytes = text.substr(0, std::max<std::size_t>(length, 1));
        if (length > 0 && !IsControl(bytes))
            printable += bytes;
        else
            for (const char byte : bytes) printable += Escaped(byte);
        text.remove_prefix(bytes.size());
    }
    return printable;
}

std::filesystem::path PathOf(std::string_view utf8) {
    return std::filesystem::path(std::u8string(utf8.begin(), utf8.end()));
}

std::string Utf8(const std::filesystem::path& path) {
    const auto text = path.u8string();
    return {text.begin(), text.end()};
}

double Decibels(double amplitude) noexcept {
    return amplitude > 0 ? 20 * std::log10(amplitude) : -std::numeric_limits<double>::infinity();
}

} // namespace KAV::Host
