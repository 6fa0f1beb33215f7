#include "platform/winapi/wide_text.h"

#include <windows.h>

namespace KAV::Platform {

std::string ToUtf8(std::wstring_view wide) {
    const auto length = static_cast<int>(wide.size());
    const int bytes =
        WideCharToMultiByte(CP_UTF8, WC_ERR_INVALID_CHARS, wide.data(), length, nullptr, 0, nullptr, nullptr);
    std::string text(static_cast<std::size_t>(bytes), '\0');
    WideCharToMultiByte(
        CP_UTF8, WC_ERR_INVALID_CHARS, wide.data(), length, text.data(), bytes, nullptr, nullptr);
    return text;
}

std::wstring ToWide(std::string_view text) {
    const auto length = static_cast<int>(text.size());
    const int units = MultiByteToWideChar(CP_UTF8, MB_ERR_INVALID_CHARS, text.data(), length, nullptr, 0);
    std::wstring wide(static_cast<std::size_t>(units), L'\0');
    MultiByteToWideChar(CP_UTF8, MB_ERR_INVALID_CHARS, text.data(), length, wide.data(), units);
    return wide;
}

} // namespace KAV::Platform
