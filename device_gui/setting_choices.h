#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <string_view>

namespace KAV {

class CXXXGUI;

/// One of the values that a setting can be given in the menu.
struct SSettingChoice {
    std::int32_t nItem = 0; ///< its number in the menu
    std::u16string_view sText;
    double fValue = 0.0;
};

/// A setting that the menu offers to change: its choices in the order of the menu, and where its value is. A
/// value that isn't among the choices, from a patch for instance, matches no choice.
struct SSetting {
    std::span<const SSettingChoice> sChoices;
    double (*pGet)(CXXXGUI&);
    void (*pSet)(CXXXGUI&, double);
};

/// By their places in Settings().
enum class ESetting : std::uint8_t {
    RmsTime,   ///< ms
    Filter,    ///< 0 flat, 1 K-weighted
    Suspend,   ///< dB; 0 never suspends
    Tolerance, ///< dB
    MostGain,  ///< dB
    MostCut,   ///< dB, above 0
    Simd,      ///< 0 or 1; what 1 is called depends on the processor
    Renderer,  ///< its number
    FPS,       ///< frames per second
    Groups,    ///< 0 in series, 1 in parallel
};

/// All of them, every number of an item once. Threads: the window's for what they point to.
std::span<const SSetting> Settings() noexcept;
inline const SSetting& SettingOf(ESetting a_nSetting) noexcept {
    return Settings()[static_cast<std::size_t>(a_nSetting)];
}

} // namespace KAV
