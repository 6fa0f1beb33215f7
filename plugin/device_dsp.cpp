#include "plugin/device_dsp.h"

#include "device_gui/device_gui.h"
#include "utils/text.h"

#include <algorithm>
#include <memory>
#include <utility>

namespace KAV {

namespace {

constexpr float HighestOversampling = 3.0f;

SParameter HostParameter(std::int32_t hostIndex) noexcept {
    if (hostIndex < 0 || static_cast<std::size_t>(hostIndex) >= HostParamTable().size()) return {};
    return FindParameter(HostParamTable()[static_cast<std::size_t>(hostIndex)]);
}

/// The integer part of a value, clamped to the selector's range; 0 for not-a-number.
std::int32_t SelectorIndex(float value) noexcept {
    return value > 0.0f ? static_cast<std::int32_t>(std::min(value, HighestOversampling)) : 0;
}

} // namespace

CDeviceDSP::CDeviceDSP(
    VST::HostCallback audioMaster, const Utils::SMakerService& service, std::unique_ptr<IEditorSystem> system)
    : CVSTDSPv2(audioMaster), _system(std::move(system)) {
    InitialiseParameters(parameters);
    state = &_state;
    auto editor = std::make_unique<CDeviceGUI>(*this, *this, _state, service, *_system);
    gui = editor.get();
    setEditor(std::move(editor));
    // A patch without group numbers applies only to the current group. So it is loaded once per group, from
    // the last to the first, and the first stays current.
    _state.Errors().BeginCreation();
    for (int group = DeviceGroups - 1; group >= 0; --group) {
        SetCurrentGroup(group);
        curProgram = 0;
        _state.SelectPatch(0, true);
        _state.SelectRouting(0, false);
    }
    _state.Errors().EndCreation();
}

void CDeviceDSP::Process(float** channels, float** side, int channelCount, int frames) noexcept {
    Engine::Process(channels, side, channelCount, frames);
}

void CDeviceDSP::SetBlockSize(std::int32_t frames) {
    Engine::SetBlockSize(frames);
}

void CDeviceDSP::SetSampleRate(float rateHz) {
    Engine::SetSampleRate(rateHz);
}

int CDeviceDSP::GetCurrentGroup() const noexcept {
    return static_cast<int>(std::uint32_t{currentGroup});
}

void CDeviceDSP::SetCurrentGroup(int group) noexcept {
    currentGroup = static_cast<std::uint32_t>(std::clamp(group, 0, DeviceGroups - 1));
}

void CDeviceDSP::GetTagName(std::int32_t tag, std::span<char> text) {
    const SParameter parameter = FindParameter(tag);
    if (parameter) {
        WriteParameterName(parameter, text);
    } else {
        Utils::CopyText("", text);
    }
}

void CDeviceDSP::GetParamLabel(std::int32_t hostIndex, std::span<char> text) {
    const SParameter parameter = HostParameter(hostIndex);
    Utils::CopyText(parameter ? parameter.row->unit : "", text);
}

void CDeviceDSP::GetParamDisplay(std::int32_t hostIndex, std::span<char> text) {
    const SParameter parameter = HostParameter(hostIndex);
    if (parameter) {
        WriteParameterDisplay(parameter, parameters, text);
    } else {
        Utils::CopyText("", text);
    }
}

std::int32_t CDeviceDSP::ResolveTag(std::int32_t tag, std::uint32_t flags) const noexcept {
    if ((flags & GroupRelative) == 0 || tag < 0 || tag > HighestTag) return tag;
    const std::int32_t inGroup = GetCurrentGroup() * GroupTagStep + tag;
    return HostIndexOf(inGroup) != NoHostIndex ? inGroup : tag;
}

float CDeviceDSP::GetMeter(std::int32_t tag) const noexcept {
    const auto place = [tag](std::int32_t first) { return static_cast<std::size_t>(first - tag); };
    if (tag <= -40) return Meters().Output(place(-40));
    if (tag <= -24) return Meters().Input(place(-24));
    if (tag <= -20) return Meters().Group(place(-20));
    return Meters().Source(place(-4));
}

float CDeviceDSP::GetParam(std::int32_t tag, std::uint32_t flags) {
    if (tag >= LastMeterTag && tag <= FirstMeterTag) return GetMeter(tag);
    const SParameter parameter = FindParameter(ResolveTag(tag, flags));
    if (!parameter) return 0.0f;
    const SParameterRow& row = *parameter.row;
    switch (row.kind) {
    case EParameterKind::Toggle:
        return row.toggle(parameters, parameter.place, parameter.group) ? 1.0f : 0.0f;
    case EParameterKind::Selector: {
        const auto index = static_cast<float>(std::int32_t{row.selector(parameters)});
        return (flags & Normalized) != 0 ? index / HighestOversampling : index;
    }
    case EParameterKind::Continuous: {
        const DSP::SValueTriple& value = row.continuous(parameters, parameter.place, parameter.group);
        return (flags & BaseValue) != 0 ? value.base : value.final;
    }
    }
    return 0.0f;
}

void CDeviceDSP::SetParam(std::int32_t tag, float value, std::uint32_t flags) {
    Write(tag, value, flags, 0);
}

void CDeviceDSP::Write(std::int32_t tag, float value, std::uint32_t flags, MacroChain chain) {
    const std::int32_t resolved = ResolveTag(tag, flags);
    const SParameter parameter = FindParameter(resolved);
    if (!parameter) return;
    Store(parameter, value, flags);
    OnValueChanged();
    if ((flags & NotifyHost) != 0)
        SetParameterAutomated(resolved, GetParam(resolved, Normalized | BaseValue));
    if (resolved >= FirstMacroTag && resolved < FirstMacroTag + static_cast<std::int32_t>(Macros)) {
        Spread(static_cast<std::size_t>(resolved - FirstMacroTag), value, chain);
    }
}

void CDeviceDSP::Store(const SParameter& parameter, float value, std::uint32_t flags) noexcept {
    const SParameterRow& row = *parameter.row;
    switch (row.kind) {
    case EParameterKind::Toggle:
        row.toggle(parameters, parameter.place, parameter.group) = value != 0.0f; // not-a-number counts as on
        break;
    case EParameterKind::Selector:
        row.selector(parameters) =
            SelectorIndex((flags & Normalized) != 0 ? value * HighestOversampling + 0.5f : value);
        break;
    case EParameterKind::Continuous: {
        DSP::SValueTriple& triple = row.continuous(parameters, parameter.place, parameter.group);
        if ((flags & MacroOffset) != 0) {
            triple.SetOffset(value);
        } else if ((flags & RawBase) != 0) {
            triple.SetBase(value);
        } else {
            triple.SetFinal(value);
        }
        break;
    }
    }
}

void CDeviceDSP::Spread(std::size_t macro, float value, MacroChain chain) {
    const MacroChain spreading = chain | (MacroChain{1} << macro);
    for (std::size_t slot = 0; slot < Slots; ++slot) {
        const std::int32_t target = tags[macro][slot];
        if (target < 0) continue;
        const std::int32_t targetMacro = target - FirstMacroTag;
        if (targetMacro >= 0 && targetMacro < static_cast<std::int32_t>(Macros) &&
            (spreading & (MacroChain{1} << targetMacro)) != 0) {
            continue;
        }
        const double sensitivity = static_cast<double>(float{sensitivities[macro][slot]});
        const double offset = (static_cast<double>(value) - 0.5) * 4.0 * (sensitivity - 0.5);
        Write(target, static_cast<float>(offset), MacroOffset, spreading);
    }
}

std::string CDeviceDSP::GetRouting(int group) {
    if (group < 0 || group >= DeviceGroups) return {};
    return routing[static_cast<std::size_t>(group)].text;
}

void CDeviceDSP::SetRouting(std::string_view text, int group) {
    if (group < 0 || group >= DeviceGroups) return;
    routing[static_cast<std::size_t>(group)].Set(text);
}

} // namespace KAV
