#include "device/parameter_table.h"
#include "device/value_flags.h"
#include "device_gui/fx_button.h"
#include "device_gui/macro_button.h"
#include "device_gui/patch_display.h"
#include "device_gui/xxx_gui.h"
#include "patch/patch_flags.h"
#include "patch/patch_text.h"
#include "utils/number.h"
#include "utils/product.h"
#include "utils/text.h"

#include <array>
#include <string>

namespace KAV {

namespace {

/// The names that widgets of one kind show, as one list.
template<typename TWidget>
std::string JoinTexts(const CXXXGUI& a_piGUI) {
    std::vector<std::string> names;
    for (const auto* const widget : a_piGUI.FindAll<TWidget>())
        names.push_back(Utils::ToUtf8(widget->Text()));
    return Patch::JoinNames(names);
}

/// Settings are shown in single precision, whatever they are kept in.
std::string Setting(double a_fValue) {
    return Utils::FormatFixed(static_cast<double>(static_cast<float>(a_fValue)), 3);
}

} // namespace

std::string CXXXGUI::PatchText(std::uint32_t a_nFlags) {
    const CChange change(*this);
    const auto* const display = Find<CPatch>();
    std::string text =
        Patch::Head(KAV_VERSION, display != nullptr ? Utils::ToUtf8(display->Text()) : KAV_PRODUCT " State");
    if (_piDSP.GetGroupCount() > 1) Patch::AddElement(text, "multi_fx", "true");
    if ((a_nFlags & FxNames) != 0) Patch::AddElement(text, "fx_names", JoinTexts<CFxBtn>(*this));
    WriteParameters(text, a_nFlags);
    Patch::AddElement(text, "host_bypass", _piDSP.GetHostBypass() ? "1" : "0");
    if ((a_nFlags & KAV::Routing) != 0) {
        for (int group = 0; group < _piDSP.GetGroupCount(); ++group)
            text += Patch::RoutingBlock(_piDSP.GetRouting(group), group);
    }
    WriteSettings(text, a_nFlags);
    WriteMacros(text);
    return text;
}

void CXXXGUI::WriteParameters(std::string& a_rsText, std::uint32_t a_nFlags) {
    const std::uint32_t which = (a_nFlags & EffectiveValues) != 0 ? 0 : std::uint32_t{BaseValue};
    for (const std::int32_t tag : HostParamTable()) {
        std::array<char, TagNameCapacity> name{};
        _piDSP.GetTagName(tag, name);
        Patch::AddParamLine(a_rsText, tag, name.data(), _piDSP.GetParam(tag, which));
    }
}

void CXXXGUI::WriteSettings(std::string& a_rsText, std::uint32_t a_nFlags) {
    const auto add = [&](std::string_view a_sName, const std::string& a_sValue) {
        Patch::AddElement(a_rsText, a_sName, a_sValue);
    };
    if ((a_nFlags & GuiWidth) != 0) add("gui_width", std::to_string(Width()));
    if ((a_nFlags & KAV::Simd) != 0) add("simd", _piControls.Simd() ? "1" : "0");
    if ((a_nFlags & KAV::GroupsParallel) != 0)
        add("groups_parallel", _piControls.GroupsParallel() ? "1" : "0");
    if ((a_nFlags & AgcSettings) == 0) return;
    const auto& settings = _piControls.AutoGain();
    add("agc_filter", settings.filter != 0 ? "1" : "0");
    add("agc_suspend", Setting(settings.suspendLevel));
    add("agc_rms", Setting(settings.rmsTime));
    add("agc_tolerance", Setting(settings.tolerance));
    add("agc_gain_max", Setting(settings.maximumGain));
    add("agc_gain_min", Setting(settings.maximumCut));
}

void CXXXGUI::WriteMacros(std::string& a_rsText) {
    Patch::AddElement(a_rsText, "macro_group_names", JoinTexts<CMacroBtn>(*this));
    for (std::size_t macro = 0; macro < CMacro::Macros; ++macro) {
        std::vector<Patch::SMacroTarget> targets;
        for (std::size_t slot = 0; slot < CMacro::Slots; ++slot) {
            const std::int32_t tag = _piDSP.tags[macro][slot];
            if (tag != CMacro::NoTag) targets.push_back({tag, _piDSP.sensitivities[macro][slot]});
        }
        Patch::AddMacroLine(a_rsText, static_cast<int>(macro), targets);
    }
}

} // namespace KAV
