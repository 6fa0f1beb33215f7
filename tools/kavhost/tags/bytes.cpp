#include "tools/kavhost/tags/bytes.h"

#include "tools/kavhost/base/text.h"

namespace KAV::Host {

namespace {

bool Continues(char letter) noexcept {
    return (static_cast<unsigned char>(letter) & 0xC0) == 0x80;
}

/// The bytes of the character at the front; 0 if there is none in UTF-8.
std::size_t CharacterBytes(std::string_view text) noexcept {
    const auto first = static_cast<unsigned char>(text.front());
    const std::size_t count = first < 0x80                    ? 1
                              : first >= 0xC2 && first < 0xE0 ? 2
                              : first >= 0xE0 && first < 0xF0 ? 3
                              : first >= 0xF0 && first < 0xF5 ? 4
                                                              : 0;
    if (count > text.size()) return 0;
    for (std::size_t i = 1; i < count; ++i) {
        if (!Continues(text[i])) return 0;
    }
    const auto second = count > 1 ? static_cast<unsigned char>(text[1]) : 0;
    const bool tooLong = (first == 0xE0 && second < 0xA0) || (first == 0xF0 && second < 0x90);
    const bool noCharacter = (first == 0xED && second >= 0xA0) || (first == 0xF4 && second >= 0x90);
    return tooLong || noCharacter ? 0 : count;
}

bool IsUtf8(std::string_view text) noexcept {
    while (!text.empty()) {
        const auto count = CharacterBytes(text);
        if (count == 0) return false;
        text.remove_prefix(count);
    }
    return true;
}

} // namespace

std::uint64_t NumberAt(
    std::string_view bytes, std::size_t place, std::size_t count, EByteOrder order) noexcept {
    if (place > bytes.size() || bytes.size() - place < count) return 0;
    std::uint64_t value = 0;
    for (std::size_t i = 0; i < count; ++i) {
        const auto at = place + (order == EByteOrder::HighFirst ? i : count - 1 - i);
        value = value << 8 | static_cast<unsigned char>(bytes[at]);
    }
    return value;
}

void AppendNumber(std::string& bytes, std::uint64_t value, std::size_t count, EByteOrder order) {
    for (std::size_t i = 0; i < count; ++i) {
        const auto shift = 8 * (order == EByteOrder::LowFirst ? i : count - 1 - i);
        bytes.push_back(static_cast<char>(value >> shift & 0xFF));
    }
}

std::string ChunkText(std::string_view bytes) {
    const auto text = Trim(bytes.substr(0, bytes.find('\0')));
    if (IsUtf8(text)) return std::string(text);
    std::string converted;
    for (const char letter : text) {
        const auto code = static_cast<unsigned char>(letter);
        if (code < 0x80) {
            converted.push_back(letter);
        } else {
            converted.push_back(static_cast<char>(0xC0 | code >> 6));
            converted.push_back(static_cast<char>(0x80 | (code & 0x3F)));
        }
    }
    return converted;
}

std::string_view CutUtf8(std::string_view text, std::size_t most) noexcept {
    if (text.size() <= most) return text;
    while (most > 0 && Continues(text[most])) --most;
    return text.substr(0, most);
}

std::string FixedField(std::string_view text, std::size_t size) {
    std::string field(CutUtf8(text, size));
    field.resize(size);
    return field;
}

} // namespace KAV::Host
