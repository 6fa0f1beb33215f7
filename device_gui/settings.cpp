#include "device_gui/settings.h"

#include "device_gui/row_info.h"
#include "device_gui/setting_choices.h"
#include "gfx/renderers.h"
#include "gui/menu.h"
#include "utils/cpu_features.h"

#include <algorithm>
#include <array>
#include <string>
#include <utility>

namespace KAV {

namespace {

/// An entry that does something instead of setting a value.
struct SAction {
    std::int32_t nItem;
    void (*pDo)(CXXXGUI&);
};

constexpr std::int32_t Manual = 56;
constexpr std::int32_t About = 58;
constexpr std::int32_t NewVersion = 59;
constexpr std::int32_t WhatsNew = 60;
constexpr std::int32_t SaveAsDefault = 61;

constexpr std::array<SAction, 5> Actions{{
    {Manual, [](CXXXGUI& a_piGUI) { a_piGUI.Maker().OpenUserManual(); }},
    {About, [](CXXXGUI& a_piGUI) { a_piGUI.OpenAbout(); }},
    {NewVersion, [](CXXXGUI& a_piGUI) { a_piGUI.Maker().OpenDownload(); }},
    {WhatsNew, [](CXXXGUI& a_piGUI) { a_piGUI.Maker().OpenWhatsNew(); }},
    {SaveAsDefault, [](CXXXGUI& a_piGUI) { a_piGUI.State().SaveAsDefault(); }},
}};

GUI::SMenuItem Line() {
    return {{}, 0, false, true, true, {}};
}

GUI::SMenuItem Sub(std::u16string_view a_sTitle, GUI::Menu a_vsEntries) {
    return {std::u16string(a_sTitle), 0, false, true, false, std::move(a_vsEntries)};
}

bool Has(std::uint64_t a_nFeatures, std::uint64_t a_nFeature) noexcept {
    return (a_nFeatures & a_nFeature) != 0;
}

std::u16string SimdText(std::uint64_t a_nFeatures) {
    if (!Has(a_nFeatures, Utils::CpuFma)) return u"No SIMD optimizations available";
    std::u16string text = u"FMA/";
    if (Has(a_nFeatures, Utils::CpuSse2)) text += u"SSE2";
    if (Has(a_nFeatures, Utils::CpuSse2) && Has(a_nFeatures, Utils::CpuAvx)) text += u'/';
    if (Has(a_nFeatures, Utils::CpuAvx)) text += u"AVX";
    return text + u" (experimental)";
}

bool HasSimd(std::uint64_t a_nFeatures) noexcept {
    return Has(a_nFeatures, Utils::CpuFma) && Has(a_nFeatures, Utils::CpuSse2 | Utils::CpuAvx);
}

bool IsOnThisSystem(double a_fRenderer) noexcept {
    return GFX::Renderers().at(static_cast<std::size_t>(a_fRenderer)).bOnThisSystem;
}

} // namespace

CSettings::CSettings(CXXXGUI& a_piPlugin)
    : CPluginValueDisplay(a_piPlugin, InfoOf(Panel::RowOf(Panel::EClass::Settings))) {}

void CSettings::ShowMenu() {
    Root().ShowMenu(*this, MenuFor(Utils::DetectFeatures()));
}

void CSettings::SelectItem(std::int32_t a_nItem) {
    for (const auto& setting : Settings()) {
        for (const auto& choice : setting.sChoices) {
            if (choice.nItem == a_nItem) setting.pSet(Plugin(), choice.fValue);
        }
    }
    const auto action = std::ranges::find(Actions, a_nItem, &SAction::nItem);
    if (action != Actions.end()) action->pDo(Plugin()); // last: the instance may end in it
}

GUI::SMenuItem CSettings::Entry(std::int32_t a_nItem, std::u16string_view a_sText) const {
    return {std::u16string(a_sText), GUI::CommandOf({nId, a_nItem}).value_or(0), false, true, false, {}};
}

GUI::Menu CSettings::ChoicesOf(ESetting a_nSetting) const {
    const auto& setting = SettingOf(a_nSetting);
    const double present = setting.pGet(Plugin());
    GUI::Menu choices;
    for (const auto& choice : setting.sChoices) {
        choices.push_back(Entry(choice.nItem, choice.sText));
        choices.back().bChecked = choice.fValue == present;
    }
    return choices;
}

GUI::Menu CSettings::AutoGainMenu() const {
    return {
        Sub(u"RMS Time", ChoicesOf(ESetting::RmsTime)),
        Sub(u"Filter Type", ChoicesOf(ESetting::Filter)),
        Sub(u"Suspend Comparison", ChoicesOf(ESetting::Suspend)),
        Sub(u"Auto", {Sub(u"Auto-mode Tolerance", ChoicesOf(ESetting::Tolerance)),
                         Sub(u"Maximum Positive Gain Adjustment", ChoicesOf(ESetting::MostGain)),
                         Sub(u"Maximum Negative Gain Adjustment", ChoicesOf(ESetting::MostCut))}),
    };
}

GUI::Menu CSettings::SimdMenu(std::uint64_t a_nFeatures) const {
    auto choices = ChoicesOf(ESetting::Simd);
    choices.back().sText = SimdText(a_nFeatures);
    choices.back().bEnabled = HasSimd(a_nFeatures);
    return choices;
}

GUI::Menu CSettings::RenderingMenu() const {
    auto menu = ChoicesOf(ESetting::Renderer);
    const auto renderers = SettingOf(ESetting::Renderer).sChoices;
    for (std::size_t n = 0; n < menu.size(); ++n) menu[n].bEnabled = IsOnThisSystem(renderers[n].fValue);
    menu.push_back(Line());
    for (auto& rate : ChoicesOf(ESetting::FPS)) menu.push_back(std::move(rate));
    return menu;
}

GUI::Menu CSettings::MenuFor(std::uint64_t a_nFeatures) const {
    GUI::Menu menu;
    if (const auto text = Plugin().Maker().NewVersionText(); !text.empty()) {
        menu.push_back(Entry(NewVersion, text));
        menu.back().bBold = true;
    }
    if (const auto text = Plugin().Maker().WhatsNewText(); !text.empty()) {
        menu.push_back(Entry(WhatsNew, text));
        menu.push_back(Line());
    }
    menu.push_back(Sub(u"AGC Settings", AutoGainMenu()));
    menu.push_back(Sub(u"SIMD", SimdMenu(a_nFeatures)));
    menu.push_back(Sub(u"GUI Rendering", RenderingMenu()));
    menu.push_back(Sub(u"Effect Groups connection", ChoicesOf(ESetting::Groups)));
    menu.push_back(Entry(SaveAsDefault, u"Save as Default (for new instances)"));
    menu.push_back(Line());
    menu.push_back(Entry(Manual, u"User Manual..."));
    menu.push_back(Entry(About, u"About..."));
    return menu;
}

CBtnAbout::CBtnAbout(CXXXGUI& a_piPlugin)
    : CPluginButtonMom(a_piPlugin, InfoOf(Panel::RowOf(Panel::EClass::BtnAbout))) {}

void CBtnAbout::OnClick() {
    if (auto* const settings = Root().Find<CSettings>()) settings->ShowMenu();
}

} // namespace KAV
