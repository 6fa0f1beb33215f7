#include "tools/kavhost/setup/setting_words.h"

#include <algorithm>
#include <array>

namespace KAV::Host {

namespace {

struct SWords {
    std::string_view name;
    std::string_view words;
    bool isSwitch;
};

constexpr std::array Known{SWords{"host_bypass", "bypassed by the host", true},
    SWords{"gui_width", "editor's width in pixels", false}, SWords{"simd", "vector code", true},
    SWords{"groups_parallel", "groups in parallel", true},
    SWords{"agc_filter", "gain compensation weighted", true},
    SWords{"agc_suspend", "gain compensation suspended below", false},
    SWords{"agc_rms", "gain compensation RMS time", false},
    SWords{"agc_tolerance", "gain compensation tolerance", false},
    SWords{"agc_gain_max", "gain compensation at most up", false},
    SWords{"agc_gain_min", "gain compensation at most down", false}};

constexpr auto Names = [] {
    std::array<std::string_view, Known.size()> names;
    std::ranges::transform(Known, names.begin(), &SWords::name);
    return names;
}();

} // namespace

std::span<const std::string_view> SettingNames() noexcept {
    return Names;
}

std::string_view SettingWords(std::string_view name) noexcept {
    const auto* const known = std::ranges::find(Known, name, &SWords::name);
    return known != Known.end() ? known->words : name;
}

std::string_view SettingValueWords(std::string_view name, std::string_view value) noexcept {
    const auto* const known = std::ranges::find(Known, name, &SWords::name);
    if (known == Known.end() || !known->isSwitch) return value;
    return value == "0" ? "off" : "on";
}

} // namespace KAV::Host
