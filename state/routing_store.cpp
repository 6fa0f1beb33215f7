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
    const auto text = _device.GetRouting(_device.GetCurrentGroup());
    if (!text.empty()) {
        const std::size_t entries = std::min(RoutingEntryCount(text), _panel.labels.size());
        Utils::CPieces names(RoutingValue(text, "<ch_names"), RoutingSeparator);
        for (std::size_t n = 0; n < _panel.labels.size(); ++n) {
            if (n >= entries)
                SetParam(turn, static_cast<std::int32_t>(n) + 1, 0.0f, Normalized | GroupRelative);
            _panel.Put(_panel.labels[n], names.Next() ? Utils::ToUtf16(names.Piece()) : std::u16string());
        }
        _panel.Put(_panel.entries, entries);
    }
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
    if (!allGroups) {
        SetRouting(turn, text, -1);
        return;
    }
    for (int group = 0; group < _device.GetGroupCount(); ++group) SetRouting(turn, text, group);
}

void CDeviceState::ChooseRouting(std::int32_t index, std::u16string name) {
    {
        const Turn turn(_turns);
        index = _panel.routing.Find(index, name);
        if (_panel.routing.Choose(index)) _panel.Touch();
        if (index < 0) return;
    }
    SetRouting(ReadRoutingFile(name), -1);
}

void CDeviceState::SaveRouting(std::u16string_view path, std::span<const bool, SPanelState::Channels> on) {
    SShownRouting shown;
    std::ranges::copy(on, shown.on.begin());
    {
        const Turn turn(_turns);
        shown.group = _device.GetCurrentGroup();
        std::ranges::transform(_panel.labels, shown.labels.begin(), Utils::ToUtf8);
    }
    if (!path.empty()) {
        SaveRoutingAs(path, shown);
        return;
    }
    _questions.AskToSave({u"KAV Routing File||*.kvt", RoutingName() + u" (User)", RoutingFolder()}, u"kvt",
        [this, shown = std::move(shown)](std::u16string_view chosen) {
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
    // By its name: its place may be another's by now.
    if (isListed) SetRouting(ReadRoutingFile(title), shown.group);
}

} // namespace KAV
