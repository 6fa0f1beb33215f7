// Routings of groups, and as files.

#include "device/value_flags.h"
#include "patch/patch_files.h"
#include "patch/routing_files.h"
#include "routing/routing_document.h"
#include "state/device_state.h"
#include "utils/marked_text.h"
#include "utils/path.h"
#include "utils/text.h"

#include <algorithm>
#include <array>

namespace KAV {

std::string CDeviceState::GetRouting(int group) {
    const Turn turn(_turns);
    return _device.GetRouting(group < 0 ? _device.GetCurrentGroup() : group);
}

void CDeviceState::SetRouting(std::string_view text, int group) {
    Turn turn(_turns);
    SetRouting(turn, text, group);
}

void CDeviceState::SetRouting(Turn& turn, std::string_view text, int group) {
    if (text.empty()) return;
    const int current = _device.GetCurrentGroup();
    _device.SetRouting(text, group < 0 ? current : group);
    if (group < 0 || group == current) ApplyRouting(turn);
}

void CDeviceState::ApplyRouting() {
    Turn turn(_turns);
    ApplyRouting(turn);
}

void CDeviceState::ApplyRouting(Turn& turn) {
    if (_routingEdit) return;
    const auto text = _device.GetRouting(_device.GetCurrentGroup());
    if (!text.empty()) {
        for (std::size_t n = RoutingEntryCount(text); n < _panel.labels.size(); ++n)
            SetParam(turn, static_cast<std::int32_t>(n) + 1, 0.0f, Normalized | GroupRelative);
    }
    ShowRouting(turn);
}

void CDeviceState::ShowRouting(const Turn&) {
    const auto text = _device.GetRouting(_device.GetCurrentGroup());
    if (!text.empty()) {
        Utils::CPieces names(RoutingValue(text, "<ch_names"), RoutingSeparator);
        for (auto& label : _panel.labels)
            _panel.Put(label, names.Next() ? Utils::ToUtf16(names.Piece()) : std::u16string());
        _panel.Put(_panel.entries, std::min(RoutingEntryCount(text), _panel.labels.size()));
    }
    _panel.Put(_panel.canEditRouting, RoutingType(RoutingValue(text, "<type")) != ERoutingType::MidSide);
    if (_panel.routing.Show(Utils::ToUtf16(RoutingValue(text, "<name")))) _panel.Touch();
}

std::u16string CDeviceState::RoutingName() {
    const Turn turn(_turns);
    return _panel.routing.Name();
}

void CDeviceState::SelectRouting(std::int32_t index, bool allGroups) {
    std::u16string name;
    {
        const Turn turn(_turns);
        if (index < 0 || index >= _panel.routing.Count()) return;
        name = _panel.routing.Names()[static_cast<std::size_t>(index)];
    }
    const auto text = ReadRoutingFile(name);
    Turn turn(_turns);
    TakeRouting(turn, text, allGroups);
}

void CDeviceState::TakeRouting(Turn& turn, std::string_view text, bool allGroups) {
    if (text.empty()) return;
    EndRoutingEdit(turn);
    if (!allGroups) {
        SetRouting(turn, text, -1);
        return;
    }
    for (int group = 0; group < _device.GetGroupCount(); ++group) SetRouting(turn, text, group);
}

void CDeviceState::ChooseRouting(std::int32_t index, std::u16string name, bool allGroups) {
    {
        const Turn turn(_turns);
        if (_panel.routing.Find(index, name) < 0) return; // the user's list is being replaced
    }
    const auto text = ReadRoutingFile(name);
    Turn turn(_turns);
    if (text.empty()) {
        _panel.Touch(); // the widget that shows the choice goes back to what it was
        return;
    }
    EndRoutingEdit(turn); // first: it shows the routing that is there now
    if (_panel.routing.Choose(_panel.routing.Find(index, name))) _panel.Touch();
    TakeRouting(turn, text, allGroups);
}

CDeviceState::SShownRouting CDeviceState::ShownRouting(
    const Turn&, std::span<const bool, SPanelState::Channels> on) const {
    SShownRouting shown;
    shown.group = _device.GetCurrentGroup();
    std::ranges::transform(_panel.labels, shown.labels.begin(), Utils::ToUtf8);
    std::ranges::copy(on, shown.on.begin());
    shown.patches = _patches;
    return shown;
}

Utils::SFileQuestion CDeviceState::RoutingQuestion() {
    return {u"KAV Routing File||*.kvt", RoutingName() + u" (User)", RoutingFolder()};
}

void CDeviceState::SaveRouting(std::u16string_view path, std::span<const bool, SPanelState::Channels> on) {
    SShownRouting shown;
    {
        const Turn turn(_turns);
        shown = ShownRouting(turn, on);
    }
    if (!path.empty()) {
        SaveRoutingAs(path, shown);
        return;
    }
    _questions.AskToSave(
        RoutingQuestion(), u"kvt", [this, shown = std::move(shown)](std::u16string_view chosen) {
            if (!chosen.empty()) SaveRoutingAs(chosen, shown);
        });
}

void CDeviceState::SaveRoutingAs(std::u16string_view path, const SShownRouting& shown) {
    const auto target = WithExtension(path, u"kvt");
    const auto title = FileTitle(target);
    std::array<SRoutingButton, SPanelState::Channels> buttons;
    for (std::size_t n = 0; n < buttons.size(); ++n) buttons[n] = {shown.labels[n], shown.on[n]};
    WriteUserFile(target, WriteRoutingDocument(Utils::ToUtf8(Utils::GetFileName(target)), buttons));
    auto names = RoutingNames();
    const bool isListed = std::ranges::find(names, title) != names.end();
    {
        const Turn turn(_turns);
        const auto name = _panel.routing.Name();
        _panel.routing.SetNames(std::move(names));
        _panel.routing.Show(name); // the list is new, the routing isn't
        ++_panel.routingScans;
        _panel.Touch();
    }
    if (!isListed) return;
    const auto text = ReadRoutingFile(title); // by its name: its place may be another's by now
    Turn turn(_turns);
    if (_patches == shown.patches) SetRouting(turn, text, shown.group);
}

} // namespace KAV
