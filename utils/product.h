#pragma once

#include <cstdint>
#include <string_view>

// What users, their systems and the vendor call this product. Macros, so that they can be part of a longer
// literal, UTF-16 as well. CMake reads them here too.
#define KAV_VENDOR "Kavelin"
#define KAV_PRODUCT "KAV Sorrel Limiter"
#define KAV_PACKAGE "kav-sorrel-limiter"

// The user guide: the machine's copy, next to the library or where packages put their documents; and the
// user's own, next to the patches, which has kept the name of an earlier guide.
#define KAV_GUIDE KAV_PRODUCT " User Guide.pdf"
#define KAV_OWN_GUIDE "Tessel User Guide.pdf"

namespace KAV::Utils {

inline constexpr std::u16string_view ProductName = u"" KAV_PRODUCT;

/// The version of CMake's project: four numbers of one digit. No constant of this header, so that another
/// version recompiles one source.
extern const std::u16string_view ProductVersion;
extern const std::string_view ProductVersionUtf8;

/// A version as VST hosts show it, digit by digit: 1.0.1.0 is 1010.
constexpr std::int32_t VersionDigits(std::string_view version) noexcept {
    std::int32_t digits = 0;
    for (const char letter : version) {
        if (letter != '.') digits = digits * 10 + (letter - '0');
    }
    return digits;
}

} // namespace KAV::Utils
