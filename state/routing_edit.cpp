// The user puts a routing together.

#include "patch/routing_files.h"
#include "state/device_state.h"
#include "utils/text.h"

#include <string>
#include <utility>

namespace KAV {

void CDeviceState::BeginRoutingEdit() {
    const Turn turn(_turns);
    if (_routingEdit || !_panel.canEditRouting) return;
    const int group = _device.GetCurrentGroup();
    _routingEdit = SRoutingEdit{++_routingEdits, group, _device.GetRouting(group), false};
    for (std::size_t n = 0; n < _panel.labels.size(); ++n) {
        if (_panel.labels[n].empty()) _panel.labels[n] = Utils::ToUtf16(std::to_string(n + 1));
    }
    _panel.isRoutingEdited = true;
    _panel.Touch();
}

void CDeviceState::FinishRoutingEdit(std::span<const bool, SPanelState::Channels> on) {
    SShownRouting shown;
    std::uint32_t number = 0;
    {
        const Turn turn(_turns);
        if (!_routingEdit || std::exchange(_routingEdit->asks, true)) return;
        number = _routingEdit->number;
        shown = ShownRouting(turn, on);
    }
    const bool isAsked = _questions.AskToSave(
        RoutingQuestion(), u"kvt", [this, number, shown = std::move(shown)](std::u16string_view chosen) {
            {
                Turn turn(_turns);
                const bool goesOn = _routingEdit && _routingEdit->number == number;
                if (goesOn) chosen.empty() ? CancelRoutingEdit(turn) : EndRoutingEdit(turn);
            }
            if (!chosen.empty()) SaveRoutingAs(chosen, shown);
        });
    if (!isAsked) CancelRoutingEdit(); // otherwise the instance may have ended
}

void CDeviceState::CancelRoutingEdit() {
    Turn turn(_turns);
    CancelRoutingEdit(turn);
}

void CDeviceState::CancelRoutingEdit(Turn& turn) {
    if (!_routingEdit) return;
    const auto begun = std::move(*_routingEdit);
    EndRoutingEdit(turn);
    SetRouting(turn, begun.text, begun.group);
}

void CDeviceState::EndRoutingEdit() {
    const Turn turn(_turns);
    EndRoutingEdit(turn);
}

void CDeviceState::EndRoutingEdit(const Turn& turn) {
    if (!_routingEdit) return;
    _routingEdit.reset();
    _panel.isRoutingEdited = false;
    _panel.Touch();
    ShowRouting(turn);
}

} // namespace KAV
