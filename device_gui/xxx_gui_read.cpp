#include "device/parameter_table.h"
#include "device/value_flags.h"
#include "device_gui/fx_button.h"
#include "device_gui/history_patch.h"
#include "device_gui/macro_button.h"
#include "device_gui/patch_display.h"
#include "device_gui/xxx_gui.h"
#include "patch/patch_flags.h"
#include "patch/patch_formats.h"
#include "patch/patch_text.h"
#include "patch/routing_files.h"
#include "utils/number.h"
#include "utils/text.h"

#include <memory>

namespace KAV {

namespace {

/// The value of an element that has no marks of its own.
std::string_view Element(std::string_view a_sText, std::string_view a_sName) {
    return Patch::ExtractTag(a_sText, std::string("<").append(a_sName), ">", "</");
}

/// Gives the widgets of one kind their names, as far as there are names and widgets.
template<typename TWidget>
void GiveTexts(const CXXXGUI& a_piGUI, std::string_view a_sNames) {
    Patch::CPieces names(a_sNames, Patch::ListSeparator);
    for (auto* const widget : a_piGUI.FindAll<TWidget>()) {
        if (!names.Next()) return;
        widget->SetText(Utils::ToUtf16(names.Piece()));
    }
}

} // namespace

bool CXXXGUI::ApplyPatchData(const void* a_pData, std::size_t a_nSize, std::uint32_t a_nFlags) {
    if (a_pData == nullptr || a_nSize == 0) return false;
    const std::span<const char> data(static_cast<const char*>(a_pData), a_nSize);
    if (Patch::IsText(data)) return ReadPatch(Patch::TextOf(data), a_nFlags);
    return Patch::IsBinary(data) && ReadPatch(Patch::TextFromBinary(data), a_nFlags);
}

bool CXXXGUI::ReadPatch(std::string_view a_sText, std::uint32_t a_nFlags) {
    if (a_sText.empty()) return false;
    const CChange change(*this);
    if (IsHistoryEnabled()) AddRecord(std::make_unique<CHistoryPatch>(*this));
    ReadNames(a_sText);
    ReadMacros(a_sText);
    const auto legacy = ReadParameters(a_sText);
    std::string extended;
    if (!legacy.empty()) a_sText = extended.append(a_sText).append(legacy);
    const auto bypass = Element(a_sText, "host_bypass");
    if (!bypass.empty()) _piDSP.SetHostBypass(Utils::ToInt(bypass) != 0);
    SetPatchName(Utils::ToUtf16(Patch::ExtractTag(a_sText, "<patch_name", ">", "<")));
    ReadRoutings(a_sText);
    ReadSettings(a_sText, a_nFlags);
    return true;
}

void CXXXGUI::ReadNames(std::string_view a_sText) const {
    GiveTexts<CFxBtn>(*this, Patch::ExtractTag(a_sText, "<fx_names", ">", "</"));
    GiveTexts<CMacroBtn>(*this, Patch::ExtractTag(a_sText, "<macro_group_names", ">", "</"));
}

/// Before the parameters: the macros' own values then find their targets.
void CXXXGUI::ReadMacros(std::string_view a_sText) {
    _piDSP.ClearMacros();
    for (std::size_t macro = 0; macro < CMacro::Macros; ++macro) {
        Patch::CPieces targets(Patch::MacroTargets(a_sText, static_cast<int>(macro)), "||");
        while (targets.Next()) {
            const auto target = Patch::ReadMacroTarget(targets.Piece());
            _piDSP.AssignMacro(macro, target.tag, target.sensitivity);
        }
    }
}

/// Gives the routing blocks that stand for the layouts of old patches.
std::string CXXXGUI::ReadParameters(std::string_view a_sText) {
    const bool isAbsolute = !Patch::ExtractTag(a_sText, "<multi_fx", ">", "<").empty();
    const std::uint32_t flags = isAbsolute ? std::uint32_t{RawBase} : RawBase | GroupRelative;
    std::string legacy;
    CLegacyRoutings layouts;
    Patch::CPieces lines(a_sText, Patch::LineEnd);
    while (lines.Next()) {
        const auto line = Patch::ReadParamLine(lines.Piece());
        if (!line) continue;
        if (line->name.find("ToolInp") != std::string_view::npos) {
            legacy += layouts.Block(line->value, line->tag / GroupTagStep);
        } else {
            SetParam(line->tag, line->value, flags);
        }
    }
    return legacy;
}

void CXXXGUI::ReadRoutings(std::string_view a_sText) {
    Patch::CRoutingBlocks blocks(a_sText);
    while (blocks.Next()) {
        const auto group = blocks.Group();
        if (!group.empty() && Utils::ToInt(group) >= 0) SetRouting(blocks.Document(), Utils::ToInt(group));
    }
}

void CXXXGUI::ReadSettings(std::string_view a_sText, std::uint32_t a_nFlags) {
    const auto readSwitch = [a_sText](std::string_view a_sName, auto& a_rsSetting) {
        const auto value = Element(a_sText, a_sName);
        if (!value.empty()) a_rsSetting = Utils::ToInt(value) != 0;
    };
    // What is no number leaves the setting as it is.
    const auto readNumber = [a_sText](std::string_view a_sName, Utils::CShared<double>& a_rsSetting) {
        const auto value = Element(a_sText, a_sName);
        const auto present = static_cast<float>(double{a_rsSetting});
        if (!value.empty()) a_rsSetting = static_cast<double>(Utils::ToFloat(value, present));
    };
    if ((a_nFlags & GuiWidth) != 0) ResizeToWidth(Utils::ToInt(Element(a_sText, "gui_width")));
    if ((a_nFlags & KAV::Simd) != 0) readSwitch("simd", _piControls.Simd());
    if ((a_nFlags & KAV::GroupsParallel) != 0) readSwitch("groups_parallel", _piControls.GroupsParallel());
    if ((a_nFlags & AgcSettings) == 0) return;
    auto& settings = _piControls.AutoGain();
    readSwitch("agc_filter", settings.filter);
    readNumber("agc_suspend", settings.suspendLevel);
    readNumber("agc_rms", settings.rmsTime);
    readNumber("agc_tolerance", settings.tolerance);
    readNumber("agc_gain_max", settings.maximumGain);
    readNumber("agc_gain_min", settings.maximumCut);
}

} // namespace KAV
