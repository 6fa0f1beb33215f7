#include "device_gui/setting_choices.h"

#include "device_gui/xxx_gui.h"
#include "gfx/renderers.h"

#include <array>

namespace KAV {

namespace {

using Choices = std::span<const SSettingChoice>;

constexpr std::array<SSettingChoice, 7> RmsTimes{{{0, u"0.6s", 600}, {1, u"1s", 1000}, {2, u"2s", 2000},
    {3, u"3s", 3000}, {4, u"4s", 4000}, {5, u"5s", 5000}, {6, u"10s", 10000}}};

constexpr std::array<SSettingChoice, 2> Filters{{{40, u"Flat", 0}, {41, u"K-Weighted", 1}}};

constexpr std::array<SSettingChoice, 3> SuspendLevels{{{42, u"Never Suspend", 0},
    {43, u"If input signal is below -60dB", -60}, {44, u"If input signal is below -30dB", -30}}};

constexpr std::array<SSettingChoice, 11> Tolerances{
    {{29, u"0dB", 0}, {30, u"1dB", 1}, {31, u"2dB", 2}, {32, u"3dB", 3}, {33, u"4dB", 4}, {34, u"5dB", 5},
        {35, u"6dB", 6}, {36, u"7dB", 7}, {37, u"8dB", 8}, {38, u"9dB", 9}, {39, u"10dB", 10}}};

constexpr std::array<SSettingChoice, 11> Gains{
    {{7, u"0dB", 0}, {8, u"+2dB", 2}, {9, u"+4dB", 4}, {10, u"+6dB", 6}, {11, u"+8dB", 8}, {12, u"+10dB", 10},
        {13, u"+12dB", 12}, {14, u"+14dB", 14}, {15, u"+16dB", 16}, {16, u"+18dB", 18}, {17, u"+20dB", 20}}};

// One of 1 dB, then steps of 2: a cut of nothing would make the automatic gain one-sided.
constexpr std::array<SSettingChoice, 11> Cuts{{{18, u"-1dB", 1}, {19, u"-2dB", 2}, {20, u"-4dB", 4},
    {21, u"-6dB", 6}, {22, u"-8dB", 8}, {23, u"-10dB", 10}, {24, u"-12dB", 12}, {25, u"-14dB", 14},
    {26, u"-16dB", 16}, {27, u"-18dB", 18}, {28, u"-20dB", 20}}};

constexpr std::array<SSettingChoice, 2> SimdChoices{{{52, u"Off", 0}, {53, u"", 1}}};

// In the order in which they follow one another when one fails, but for the processor's own.
constexpr std::array<SSettingChoice, 4> RendererChoices{{{47, u"Direct3D9", GFX::Direct3D9},
    {46, u"OpenGL", GFX::OpenGL}, {48, u"Direct2D", GFX::Direct2D}, {45, u"CPU", GFX::Software}}};

constexpr std::array<SSettingChoice, 3> Rates{
    {{49, u"30 FPS", 30}, {50, u"60 FPS", 60}, {51, u"100 FPS", 100}}};

constexpr std::array<SSettingChoice, 2> Connections{{{54, u"Serial", 0}, {55, u"Parallel", 1}}};

DSP::AutoGainSettings& AutoGain(CXXXGUI& a_piGUI) {
    return a_piGUI.Controls().AutoGain();
}

/// A number of the automatic gain.
template<auto Member>
constexpr SSetting Number(Choices a_sChoices) {
    return {a_sChoices, [](CXXXGUI& a_piGUI) -> double { return AutoGain(a_piGUI).*Member; },
        [](CXXXGUI& a_piGUI, double a_fValue) { AutoGain(a_piGUI).*Member = a_fValue; }};
}

using DSP::AutoGainSettings;

constexpr std::array<SSetting, 10> All{{
    Number<&AutoGainSettings::rmsTime>(RmsTimes),
    {Filters, [](CXXXGUI& a_piGUI) { return AutoGain(a_piGUI).filter != 0 ? 1.0 : 0.0; },
        [](CXXXGUI& a_piGUI, double a_fValue) {
            AutoGain(a_piGUI).filter = static_cast<std::uint8_t>(a_fValue);
        }},
    Number<&AutoGainSettings::suspendLevel>(SuspendLevels),
    Number<&AutoGainSettings::tolerance>(Tolerances),
    Number<&AutoGainSettings::maximumGain>(Gains),
    Number<&AutoGainSettings::maximumCut>(Cuts),
    {SimdChoices, [](CXXXGUI& a_piGUI) { return a_piGUI.Controls().Simd() ? 1.0 : 0.0; },
        [](CXXXGUI& a_piGUI, double a_fValue) { a_piGUI.Controls().Simd() = a_fValue != 0.0; }},
    {RendererChoices, [](CXXXGUI& a_piGUI) { return static_cast<double>(a_piGUI.Screen().Renderer()); },
        [](CXXXGUI& a_piGUI, double a_fValue) {
            a_piGUI.Screen().SetRenderer(static_cast<std::uint32_t>(a_fValue));
        }},
    {Rates, [](CXXXGUI& a_piGUI) { return static_cast<double>(a_piGUI.FPS()); },
        [](CXXXGUI& a_piGUI, double a_fValue) { a_piGUI.SetFPS(static_cast<std::uint32_t>(a_fValue)); }},
    {Connections, [](CXXXGUI& a_piGUI) { return a_piGUI.Controls().GroupsParallel() ? 1.0 : 0.0; },
        [](CXXXGUI& a_piGUI, double a_fValue) { a_piGUI.Controls().GroupsParallel() = a_fValue != 0.0; }},
}};

} // namespace

std::span<const SSetting> Settings() noexcept {
    return All;
}

} // namespace KAV
