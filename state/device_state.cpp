#include "state/device_state.h"

#include "device/parameter_table.h"
#include "device/value_flags.h"
#include "panel/layout.h"
#include "patch/patch_files.h"
#include "patch/routing_files.h"
#include "utils/text.h"

#include <algorithm>
#include <limits>

namespace KAV {

namespace {

constexpr std::int32_t LargestWidth =
    std::numeric_limits<std::int16_t>::max(); // the host's record has 16 bits

/// Gives each place the text of its button.
void NameAsOnPanel(std::span<std::u16string> names, Panel::EClass button) {
    for (std::size_t n = 0; n < names.size(); ++n)
        names[n] = Utils::ToUtf16(Panel::RowOf(button, static_cast<int>(n)).text);
}

} // namespace

CDeviceState::CDeviceState(CXXXDSP& device, IDeviceControls& controls, IHostRoad& host)
    : _device(device), _controls(controls), _host(host) {
    NameAsOnPanel(_panel.groupNames, Panel::EClass::FxBtn);
    NameAsOnPanel(_panel.macroNames, Panel::EClass::MacroBtn);
    const auto name = _panel.routing.Name();
    _panel.routing.SetNames(RoutingNames());
    _panel.routing.Show(name); // none is selected yet
    ++_panel.routingScans;
    _panel.patch.SetNames(PatchNames());
    _panel.Touch();
}

CDeviceState::~CDeviceState() {
    _queue->End();
}

void CDeviceState::SetParam(Turn& turn, std::int32_t tag, float value, std::uint32_t flags) {
    _device.SetParam(tag, value, flags);
    const std::int32_t changed = _controls.ResolveTag(tag, flags);
    const std::int32_t index = HostIndexOf(changed);
    if (index != NoHostIndex) ReportValue(turn, index, _device.GetParam(changed, Normalized | BaseValue));
}

void CDeviceState::SetParameter(std::int32_t tag, float normal) {
    Turn turn(_turns);
    SetParam(turn, tag, normal, Normalized | GroupRelative);
}

void CDeviceState::SelectGroup(int group, bool copy) {
    Turn turn(_turns);
    EndRoutingEdit(turn);
    const int from = _device.GetCurrentGroup();
    _controls.SetCurrentGroup(group);
    if (copy) CopyGroup(from, group);
    ApplyRouting(turn);
}

// The host

void CDeviceState::ReportBegin(std::int32_t index) {
    Turn turn(_turns);
    _queue->PushBegin(index);
    TellHostAfter(turn);
}

void CDeviceState::ReportValue(std::int32_t index, float normal) {
    Turn turn(_turns);
    ReportValue(turn, index, normal);
}

void CDeviceState::ReportValue(Turn& turn, std::int32_t index, float normal) {
    _queue->PushValue(index, normal);
    TellHostAfter(turn);
}

void CDeviceState::ReportEnd(std::int32_t index) {
    Turn turn(_turns);
    _queue->PushEnd(index);
    TellHostAfter(turn);
}

void CDeviceState::ReportLatency(std::int32_t samples) {
    const Turn turn(_turns);
    _queue->PushLatency(samples);
}

void CDeviceState::ReportSize(std::int32_t width, std::int32_t height) {
    const Turn turn(_turns);
    _queue->PushSize(width, height);
}

void CDeviceState::TellHostAfter(Turn& turn) noexcept {
    if (_tellsHost) return;
    const auto tell = [this] {
        {
            const Turn again(_turns); // turns of other threads may have begun since
            _tellsHost = false;
        }
        if (_quietThread.load() == std::this_thread::get_id()) return;
        TellHost(CHostQueue::EOccasion::Turn);
    };
    try {
        turn.Then(tell);
        _tellsHost = true;
    } catch (...) { // no memory: the host hears of it after a later turn, or in its next idle call
        return;
    }
}

void CDeviceState::TellHost(CHostQueue::EOccasion occasion) {
    const auto queue = _queue; // the host may end the instance
    queue->Empty(_host, occasion);
}

std::function<void()> CDeviceState::DirectCall() {
    return [queue = _queue, &host = _host] { queue->Empty(host, CHostQueue::EOccasion::Direct); };
}

// What the user names and sets

void CDeviceState::NameGroup(std::size_t group, std::u16string_view name) {
    const Turn turn(_turns);
    if (group < _panel.groupNames.size()) _panel.Put(_panel.groupNames[group], name);
}

void CDeviceState::NameMacro(std::size_t macro, std::u16string_view name) {
    const Turn turn(_turns);
    if (macro < _panel.macroNames.size()) _panel.Put(_panel.macroNames[macro], name);
}

void CDeviceState::NameChannel(std::size_t channel, std::u16string_view name) {
    const Turn turn(_turns);
    if (_routingEdit && channel < _panel.labels.size()) _panel.Put(_panel.labels[channel], name);
}

void CDeviceState::AssignMacro(std::size_t macro, std::int32_t tag, float sensitivity) {
    const Turn turn(_turns);
    if (macro < CMacro::Macros) _device.AssignMacro(macro, tag, sensitivity);
}

void CDeviceState::ResizeTo(std::int32_t width, std::int32_t height) {
    if (width <= 0 || height <= 0) return;
    const Turn turn(_turns);
    _hasSize = true;
    _panel.Put(_panel.width, std::clamp(width, LeastWidth, LargestWidth));
    _panel.Put(_panel.height, std::min(height, LargestWidth));
}

void CDeviceState::ResizeToWidth(std::int32_t width) {
    // In single precision, which rounds: 754 has to give 553, though the aspect is a little above 754 / 553.
    ResizeTo(width, static_cast<std::int32_t>(static_cast<float>(width) / Aspect));
}

bool CDeviceState::HasSize() {
    const Turn turn(_turns);
    return _hasSize;
}

void CDeviceState::BeginWithWidth(std::int32_t width) {
    const Turn turn(_turns);
    if (!_hasSize) ResizeToWidth(width);
}

} // namespace KAV
