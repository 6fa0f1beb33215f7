#include "state/error_boxes.h"

#include "utils/dialogs.h"
#include "utils/product.h"
#include "utils/session_log.h"

#include <algorithm>
#include <utility>

namespace KAV {

void CErrorBoxes::BeginCreation() {
    const Utils::CTurn turn(_turns);
    _isCreating = true;
}

void CErrorBoxes::EndCreation() {
    {
        const Utils::CTurn turn(_turns);
        _isCreating = false;
    }
    if (!Utils::Dialogs().ErrorsWait()) ShowHeld();
}

void CErrorBoxes::BeginWork() {
    const Utils::CTurn turn(_turns);
    _isAtWork = Utils::Dialogs().ErrorsWait();
}

void CErrorBoxes::EndWork() {
    const Utils::CTurn turn(_turns);
    _isAtWork = false;
}

void CErrorBoxes::Tell(std::u16string text) {
    Utils::CTurn turn(_turns);
    if (_isAtWork) {
        _held.push_back(std::move(text));
        return;
    }
    if (!_isCreating) {
        turn.Then([text = std::move(text)] { Utils::Dialogs().ShowError(Utils::ProductName, text); });
        return;
    }
    if (std::ranges::find(_held, text) != _held.end()) return;
    if (Utils::Dialogs().ErrorsWait()) turn.Then([text] { Utils::LogLine(u"Error=" + text); });
    _held.push_back(std::move(text));
}

void CErrorBoxes::ShowHeld() {
    Utils::CTurn turn(_turns);
    if (_isAtWork) return;
    for (auto& text : std::exchange(_held, {}))
        turn.Then([text = std::move(text)] { Utils::Dialogs().ShowError(Utils::ProductName, text); });
}

} // namespace KAV
