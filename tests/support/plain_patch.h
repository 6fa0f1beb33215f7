#pragma once

#include <array>
#include <cstdint>
#include <map>
#include <string>
#include <utility>
#include <vector>

namespace KAV::Tests {

/// A patch according to its format, built without any code of the product: the reference for the writer.
/// Initially the state of a new instance of a user without patches and routings.
struct SPlainPatch {
    SPlainPatch();

    std::string title = "KAV Sorrel Limiter";
    std::string name = "No KVP patches found!";
    std::array<std::string, 4> groupNames{"1", "2", "3", "4"};
    std::map<std::int32_t, double> values; ///< by parameter number, all 109
    int hostBypass = 0;
    std::array<std::string, 4> routings;
    int width = 754;
    int simd = 0;
    int parallel = 0;
    int filter = 1;
    double suspend = -60.0;
    double rms = 2000.0;
    double tolerance = 1.0;
    double gainMax = 10.0;
    double gainMin = 20.0;
    std::array<std::string, 5> macroNames{"Macro 1", "Macro 2", "Macro 3", "Macro 4", "Macro 5"};
    std::array<std::vector<std::pair<std::int32_t, double>>, 5> macros;

    /// The text, without its closing zero. `flags`: 1 group names, 2 routings, 4 width, 8 vector code, 16
    /// automatic gain, 128 connection.
    std::string Text(std::uint32_t flags) const;

    /// The parameters' numbers in host order, with their full names.
    static const std::vector<std::pair<std::int32_t, std::string>>& Parameters();
};

/// The document of a new instance.
std::string PlainDefaultRouting();

} // namespace KAV::Tests
