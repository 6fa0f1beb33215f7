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
        if (text.starts_with('-')) return std::nullopt;
    }
    SNumber number{};
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number.value);
    if (error != std::errc{} || std::isnan(number.value)) return std::nullopt;
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
    return {buffer.data(), result.ptr};
}

std::string Shortest(double value) {
    std::array<char, 32> buffer{};
    const auto result = std::to_chars(buffer.data(), buffer.data() + buffer.size(), value);
    return {buffer.data(), result.ptr};
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
