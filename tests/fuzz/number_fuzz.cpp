// Numbers from any bytes, compared with the C library in the C locale, which this process never changes.

#include "utils/number.h"

#include <bit>
#include <cerrno>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <limits>
#include <string>

using namespace KAV::Utils;

namespace {

void Require(bool holds) {
    if (!holds) std::abort();
}

float PlainFloat(const std::string& text, float defaultValue) {
    errno = 0;
    char* end = nullptr;
    const float value = std::strtof(text.c_str(), &end);
    const bool denormal = value != 0.0f && std::fabs(value) < std::numeric_limits<float>::min();
    return end == text.c_str() || errno == ERANGE || denormal ? defaultValue : value;
}

std::int32_t PlainInt(const std::string& text) {
    errno = 0;
    const long value = std::strtol(text.c_str(), nullptr, 10);
    const bool fits = errno == 0 && value >= std::numeric_limits<std::int32_t>::min() &&
                      value <= std::numeric_limits<std::int32_t>::max();
    return fits ? static_cast<std::int32_t>(value) : 0;
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size);
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string text(reinterpret_cast<const char*>(data), size);
    std::string ascii = text; // other characters end a number
    for (char& c : ascii) c = static_cast<unsigned char>(c) < 0x80 ? c : '\0';
    const float expected = PlainFloat(ascii, -1.25f);
    const float value = ToFloat(text, -1.25f);
    Require(std::isnan(value)
                ? std::isnan(expected)
                : std::bit_cast<std::uint32_t>(value) == std::bit_cast<std::uint32_t>(expected));
    Require(ToInt(text) == PlainInt(ascii));
    const std::u16string wide(ascii.begin(), ascii.end());
    Require(ToInt(wide) == ToInt(ascii));

    double number = 0.0;
    std::memcpy(&number, data, size < sizeof(number) ? size : sizeof(number));
    for (int decimals = 0; decimals <= 9; ++decimals) {
        char printed[32];
        std::snprintf(printed, sizeof(printed), "%.*f", decimals, number);
        Require(std::isnan(number) || FormatFixed(number, decimals) == printed);
    }
    return 0;
}
