#include "utils/text.h"

#include <algorithm>
#include <iterator>
#include <utf8/checked.h>

namespace KAV::Utils {

namespace {

bool ContinuesCharacter(char byte) noexcept {
    return (static_cast<unsigned char>(byte) & 0xC0u) == 0x80u;
}

template<typename View>
std::vector<View> SplitText(View text, View delimiter) {
    std::vector<View> pieces;
    if (text.empty()) return pieces;
    while (true) {
        const auto end = delimiter.empty() ? View::npos : text.find(delimiter);
        pieces.push_back(text.substr(0, end));
        if (end == View::npos) return pieces;
        text.remove_prefix(end + delimiter.size());
    }
}

/// Characters `first`..`last` whose capitals are `down` places lower: all of them, or every second one,
/// beginning with the first.
struct SCapitals {
    char16_t first = 0;
    char16_t last = 0;
    int down = 0;
    bool everySecond = false;
};

constexpr SCapitals Capitals[] = {
    {u'a', u'z', 32},
    {0xE0, 0xF6, 32}, // Latin
    {0xF8, 0xFE, 32},
    {0xFF, 0xFF, 0xFF - 0x178},
    {0x101, 0x12F, 1, true},
    {0x131, 0x131, 0x131 - u'I'},
    {0x133, 0x137, 1, true},
    {0x13A, 0x148, 1, true},
    {0x14B, 0x177, 1, true},
    {0x17A, 0x17E, 1, true},
    {0x17F, 0x17F, 0x17F - u'S'},
    {0x3AC, 0x3AC, 38}, // Greek
    {0x3AD, 0x3AF, 37},
    {0x3B1, 0x3C1, 32},
    {0x3C2, 0x3C2, 31},
    {0x3C3, 0x3CB, 32},
    {0x3CC, 0x3CC, 64},
    {0x3CD, 0x3CE, 63},
    {0x430, 0x44F, 32}, // Cyrillic
    {0x450, 0x45F, 80},
    {0x461, 0x481, 1, true},
    {0x48B, 0x4BF, 1, true},
    {0x4C2, 0x4CE, 1, true},
    {0x4CF, 0x4CF, 15},
    {0x4D1, 0x52F, 1, true},
};

char16_t ToCapital(char16_t c) noexcept {
    for (const auto& range : Capitals) {
        if (c < range.first || c > range.last) continue;
        if (range.everySecond && (c - range.first) % 2 != 0) return c;
        return static_cast<char16_t>(c - range.down);
    }
    return c;
}

} // namespace

std::u16string ToUtf16(std::string_view text) {
    std::u16string result;
    try {
        result.reserve(text.size());
        utf8::utf8to16(text.begin(), text.end(), std::back_inserter(result));
    } catch (const utf8::exception&) {
        result.clear();
    }
    return result;
}

std::string ToUtf8(std::u16string_view text) {
    std::string result;
    try {
        result.reserve(text.size());
        utf8::utf16to8(text.begin(), text.end(), std::back_inserter(result));
    } catch (const utf8::exception&) {
        result.clear();
    }
    return result;
}

std::u16string ToUtf16Repaired(std::string_view text) {
    std::string repaired;
    repaired.reserve(text.size());
    utf8::replace_invalid(text.begin(), text.end(), std::back_inserter(repaired));
    return ToUtf16(repaired);
}

std::vector<std::string_view> Split(std::string_view text, std::string_view delimiter) {
    return SplitText(text, delimiter);
}

std::vector<std::u16string_view> Split(std::u16string_view text, std::u16string_view delimiter) {
    return SplitText(text, delimiter);
}

std::u16string ToLower(std::u16string_view text) {
    std::u16string result(text);
    for (char16_t& c : result) {
        if (c >= u'A' && c <= u'Z') c = static_cast<char16_t>(c + (u'a' - u'A'));
    }
    return result;
}

std::u16string ToUpper(std::u16string_view text) {
    std::u16string result(text);
    std::transform(result.begin(), result.end(), result.begin(), ToCapital);
    return result;
}

void CopyText(std::string_view text, std::span<char> buffer) noexcept {
    if (buffer.empty()) return;
    std::size_t length = std::min(text.size(), buffer.size() - 1);
    if (length < text.size()) {
        while (length > 0 && ContinuesCharacter(text[length])) --length;
    }
    std::copy_n(text.begin(), length, buffer.begin());
    buffer[length] = '\0';
}

} // namespace KAV::Utils
