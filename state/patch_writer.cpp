// The state as a text.

#include "device/parameter_table.h"
#include "device/value_flags.h"
#include "patch/patch_flags.h"
#include "patch/patch_text.h"
#include "state/device_state.h"
#include "utils/number.h"
#include "utils/product.h"
#include "utils/text.h"

#include <array>
#include <string>
#include <vector>

namespace KAV {

namespace {

/// Names as one list.
std::string Joined(std::span<const std::u16string> shown) {
    std::vector<std::string> names;
    for (const auto& name : shown) names.push_back(Utils::ToUtf8(name));
    return Patch::JoinNames(names);
}

/// Settings are shown in single precision, whatever they are kept in.
std::string Setting(double value) {
    return Utils::FormatFixed(static_cast<double>(static_cast<float>(value)), 3);
}

} // namespace

std::string CDeviceState::PatchText(std::uint32_t flags) {
    const Turn turn(_turns);
    return Write(turn, flags);
}

std::size_t CDeviceState::WritePatch(const char** data, std::uint32_t flags) {
    if (data == nullptr) return 0;
    const Turn turn(_turns);
    _patch = Write(turn, flags);
    *data = _patch.c_str();
    return _patch.size() + 1;
}

std::size_t CDeviceState::WriteChunk(void** data, std::uint32_t flags) {
    if (data == nullptr) return 0;
    const Turn turn(_turns);
    _chunk = Write(turn, flags);
    *data = _chunk.data();
    return _chunk.size() + 1;
}

std::string CDeviceState::Write(const Turn&, std::uint32_t flags) {
    std::string text = Patch::Head(Utils::ProductVersionUtf8, Utils::ToUtf8(_panel.patch.Name()));
    if (_device.GetGroupCount() > 1) Patch::AddElement(text, "multi_fx", "true");
    if ((flags & FxNames) != 0) Patch::AddElement(text, "fx_names", Joined(_panel.groupNames));
    WriteParameters(text, flags);
    Patch::AddElement(text, "host_bypass", _device.GetHostBypass() ? "1" : "0");
    if ((flags & KAV::Routing) != 0) {
        for (int group = 0; group < _device.GetGroupCount(); ++group)
            text += Patch::RoutingBlock(_device.GetRouting(group), group);
    }
    WriteSettings(text, flags);
    WriteMacros(text);
    return text;
}

void CDeviceState::WriteParameters(std::string& text, std::uint32_t flags) {
    const std::uint32_t which = (flags & EffectiveValues) != 0 ? 0 : std::uint32_t{BaseValue};
    for (const std::int32_t tag : HostParamTable()) {
        std::array<char, TagNameCapacity> name{};
        _device.GetTagName(tag, name);
        Patch::AddParamLine(text, tag, name.data(), _device.GetParam(tag, which));
    }
}

void CDeviceState::WriteSettings(std::string& text, std::uint32_t flags) {
    const auto add = [&](std::string_view name, const std::string& value) {
        Patch::AddElement(text, name, value);
    };
    if ((flags & GuiWidth) != 0) add("gui_width", std::to_string(_panel.width));
    if ((flags & KAV::Simd) != 0) add("simd", _controls.Simd() ? "1" : "0");
    if ((flags & KAV::GroupsParallel) != 0) add("groups_parallel", _controls.GroupsParallel() ? "1" : "0");
    if ((flags & AgcSettings) == 0) return;
    const auto& settings = _controls.AutoGain();
    add("agc_filter", settings.filter != 0 ? "1" : "0");
    add("agc_suspend", Setting(settings.suspendLevel));
    add("agc_rms", Setting(settings.rmsTime));
    add("agc_tolerance", Setting(settings.tolerance));
    add("agc_gain_max", Setting(settings.maximumGain));
    add("agc_gain_min", Setting(settings.maximumCut));
}

void CDeviceState::WriteMacros(std::string& text) {
    Patch::AddElement(text, "macro_group_names", Joined(_panel.macroNames));
    for (std::size_t macro = 0; macro < CMacro::Macros; ++macro) {
        std::vector<Patch::SMacroTarget> targets;
        for (std::size_t slot = 0; slot < CMacro::Slots; ++slot) {
            const std::int32_t tag = _device.tags[macro][slot];
            if (tag != CMacro::NoTag) targets.push_back({tag, _device.sensitivities[macro][slot]});
        }
        Patch::AddMacroLine(text, static_cast<int>(macro), targets);
    }
}

} // namespace KAV
