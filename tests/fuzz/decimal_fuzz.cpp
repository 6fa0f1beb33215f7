// Every float has a bounded text that printf would write, and a cut text is a prefix with a closing zero.

#include "utils/number.h"
#include "utils/text.h"

#include <array>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string_view>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size);
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    if (size < 6) return 0;
    float value = 0.0f;
    std::memcpy(&value, data, sizeof(value));
    const int decimals = data[4] % 3;
    std::array<char, KAV::Utils::DecimalCapacity> digits{};
    const auto text = KAV::Utils::FormatDecimal(value, decimals, digits);
    if (text.empty() || text.size() > digits.size()) std::abort();
    if (!std::isnan(value)) {
        std::array<char, 64> expected{};
        std::snprintf(expected.data(), expected.size(), "%.*f", decimals, static_cast<double>(value));
        if (text != expected.data()) std::abort();
    }
    std::array<char, 8> cut{};
    const std::string_view bytes(reinterpret_cast<const char*>(data + 5), size - 5);
    KAV::Utils::CopyText(bytes, cut);
    const std::size_t length = strnlen(cut.data(), cut.size());
    if (length == cut.size()) std::abort();
    if (std::memcmp(cut.data(), bytes.data(), length) != 0) std::abort();
    return 0;
}
