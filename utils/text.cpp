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
