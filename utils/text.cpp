#include "utils/text.h"

#include <algorithm>
#include <charconv>

namespace KAV::Utils {

namespace {

bool ContinuesCharacter(char byte) noexcept {
    return (static_cast<unsigned char>(byte) & 0xC0u) == 0x80u;
}

} // namespace

void CopyText(std::string_view text, std::span<char> buffer) noexcept {
    if (buffer.empty()) return;
    std::size_t length = std::min(text.size(), buffer.size() - 1);
    if (length < text.size()) {
        while (length > 0 && ContinuesCharacter(text[length])) --length;
    }
    std::copy_n(text.begin(), length, buffer.begin());
    buffer[length] = '\0';
}

std::string_view FormatDecimal(float value, int decimals, std::span<char, DecimalCapacity> buffer) noexcept {
    const auto result = std::to_chars(buffer.data(), buffer.data() + buffer.size(), value,
        std::chars_format::fixed, std::clamp(decimals, 0, 2));
    return {buffer.data(), result.ptr};
}

} // namespace KAV::Utils
