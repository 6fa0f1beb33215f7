// A text as the state.

#include "device/parameter_table.h"
#include "device/value_flags.h"
#include "patch/patch_flags.h"
#include "patch/patch_formats.h"
#include "patch/patch_text.h"
#include "patch/routing_files.h"
#include "state/device_state.h"
#include "utils/number.h"
#include "utils/text.h"

#include <utility>
#include <vector>

namespace KAV {

namespace {

constexpr std::string_view LegacyLayout = "ToolInp"; // a parameter of old patches: the number of a layout

/// The value of an element that has no marks of its own.
std::string_view Element(std::string_view text, std::string_view name) {
    return Patch::ExtractTag(text, std::string("<").append(name), ">", "</");
}

bool IsLegacyLayout(const Patch::SParamLine& line) noexcept {
    return line.name.find(LegacyLayout) != std::string_view::npos;
}

/// The routing blocks that stand for the layouts of old patches; reads files of the user's if there are any.
std::string LegacyRoutings(std::string_view text) {
    std::string blocks;
    if (text.find(LegacyLayout) == std::string_view::npos) return blocks;
    CLegacyRoutings layouts;
    Patch::CPieces lines(text, Patch::LineEnd);
    while (lines.Next()) {
        const auto line = Patch::ReadParamLine(lines.Piece());
        if (line && IsLegacyLayout(*line)) blocks += layouts.Block(line->value, line->tag / GroupTagStep);
    }
    return blocks;
}

/// Gives names as far as there are some, and places for them.
void GiveNames(SPanelState& panel, std::span<std::u16string> places, std::string_view list) {
    Patch::CPieces names(list, Patch::ListSeparator);
    for (auto& place : places) {
        if (!names.Next()) return;
        panel.Put(place, Utils::ToUtf16(names.Piece()));
    }
}

/// Every slot of every macro.
std::vector<std::pair<std::int32_t, float>> SlotsOf(const CMacro& table) {
    std::vector<std::pair<std::int32_t, float>> slots;
    slots.reserve(CMacro::Macros * CMacro::Slots);
    for (std::size_t macro = 0; macro < CMacro::Macros; ++macro) {
        for (std::size_t slot = 0; slot < CMacro::Slots; ++slot)
            slots.emplace_back(table.tags[macro][slot], table.sensitivities[macro][slot]);
    }
    return slots;
}

} // namespace

CDeviceState::SReadable CDeviceState::Prepare(std::string_view text) {
    return {std::string(text), LegacyRoutings(text)};
}

CDeviceState::SReadable CDeviceState::Prepare(const void* data, std::size_t size) {
    if (data == nullptr || size == 0) return {};
    const std::span<const char> bytes(static_cast<const char*>(data), size);
    if (Patch::IsText(bytes)) return Prepare(Patch::TextOf(bytes));
    return Patch::IsBinary(bytes) ? Prepare(Patch::TextFromBinary(bytes)) : SReadable{};
}

bool CDeviceState::ApplyPatchData(const void* data, std::size_t size, std::uint32_t flags) {
    const auto patch = Prepare(data, size);
    Turn turn(_turns);
    return Read(turn, patch, flags);
}

bool CDeviceState::ReadPatch(std::string_view text, std::uint32_t flags) {
    const auto patch = Prepare(text);
    Turn turn(_turns);
    return Read(turn, patch, flags);
}

bool CDeviceState::Read(Turn& turn, const SReadable& patch, std::uint32_t flags) {
    std::string_view text = patch.text;
    if (text.empty()) return false;
    EndRoutingEdit(turn);
    ++_patches;
    if (_witness != nullptr) _witness->BeforePatch(turn);
    ReadNames(text);
    ReadMacros(text);
    ReadParameters(turn, text);
    std::string extended;
    if (!patch.legacyRoutings.empty()) text = extended.append(text).append(patch.legacyRoutings);
    const auto bypass = Element(text, "host_bypass");
    if (!bypass.empty()) _device.SetHostBypass(Utils::ToInt(bypass) != 0);
    ShowPatchName(turn, Utils::ToUtf16(Patch::ExtractTag(text, "<patch_name", ">", "<")));
    ReadRoutings(turn, text);
    ReadSettings(text, flags);
    return true;
}

void CDeviceState::ReadNames(std::string_view text) {
    GiveNames(_panel, _panel.groupNames, Patch::ExtractTag(text, "<fx_names", ">", "</"));
    GiveNames(_panel, _panel.macroNames, Patch::ExtractTag(text, "<macro_group_names", ">", "</"));
}

/// Before the parameters: the macros' own values then find their targets.
void CDeviceState::ReadMacros(std::string_view text) {
    const auto before = SlotsOf(_device);
    _device.ClearMacros();
    for (std::size_t macro = 0; macro < CMacro::Macros; ++macro) {
        Patch::CPieces targets(Patch::MacroTargets(text, static_cast<int>(macro)), "||");
        while (targets.Next()) {
            const auto target = Patch::ReadMacroTarget(targets.Piece());
            _device.AssignMacro(macro, target.tag, target.sensitivity);
        }
    }
    if (SlotsOf(_device) != before) _panel.Touch();
}

void CDeviceState::ReadParameters(Turn& turn, std::string_view text) {
    const bool isAbsolute = !Patch::ExtractTag(text, "<multi_fx", ">", "<").empty();
    const std::uint32_t flags = isAbsolute ? std::uint32_t{RawBase} : RawBase | GroupRelative;
    Patch::CPieces lines(text, Patch::LineEnd);
    while (lines.Next()) {
        const auto line = Patch::ReadParamLine(lines.Piece());
        if (line && !IsLegacyLayout(*line)) SetParam(turn, line->tag, line->value, flags);
    }
}

void CDeviceState::ReadRoutings(Turn& turn, std::string_view text) {
    Patch::CRoutingBlocks blocks(text);
    while (blocks.Next()) {
        const auto group = blocks.Group();
        if (!group.empty() && Utils::ToInt(group) >= 0)
            SetRouting(turn, blocks.Document(), Utils::ToInt(group));
    }
}

void CDeviceState::ReadSettings(std::string_view text, std::uint32_t flags) {
    const auto readSwitch = [text](std::string_view name, auto& setting) {
        const auto value = Element(text, name);
        if (!value.empty()) setting = Utils::ToInt(value) != 0;
    };
    // What is no number leaves the setting as it is.
    const auto readNumber = [text](std::string_view name, Utils::CShared<double>& setting) {
        const auto value = Element(text, name);
        const auto present = static_cast<float>(double{setting});
        if (!value.empty()) setting = static_cast<double>(Utils::ToFloat(value, present));
    };
    if ((flags & GuiWidth) != 0) ResizeToWidth(Utils::ToInt(Element(text, "gui_width")));
    if ((flags & KAV::Simd) != 0) readSwitch("simd", _controls.Simd());
    if ((flags & KAV::GroupsParallel) != 0) readSwitch("groups_parallel", _controls.GroupsParallel());
    if ((flags & AgcSettings) == 0) return;
    auto& settings = _controls.AutoGain();
    readSwitch("agc_filter", settings.filter);
    readNumber("agc_suspend", settings.suspendLevel);
    readNumber("agc_rms", settings.rmsTime);
    readNumber("agc_tolerance", settings.tolerance);
    readNumber("agc_gain_max", settings.maximumGain);
    readNumber("agc_gain_min", settings.maximumCut);
}

} // namespace KAV
