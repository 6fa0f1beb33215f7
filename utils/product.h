#pragma once

#include <string_view>

/// The names under which users, their systems and the maker know this product.
namespace KAV::Utils {

inline constexpr std::u16string_view ProductName = u"KAV Sorrel Limiter";
inline constexpr std::u16string_view ProductVersion = u"1.0.1.0";

} // namespace KAV::Utils
