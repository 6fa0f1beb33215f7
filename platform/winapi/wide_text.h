#pragma once

#include <string>
#include <string_view>

/// Converts the system's texts of 16-bit units to UTF-8 and back. Only for the Windows part of this folder.
/// Empty for an ill-formed text.
namespace KAV::Platform {

std::string ToUtf8(std::wstring_view wide);
std::wstring ToWide(std::string_view text);

} // namespace KAV::Platform
