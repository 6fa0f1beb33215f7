// The history of an editor: each operation is a turn, because patches are also loaded on threads of the
// host's.

#include "gui/gui.h"

#include <utility>

namespace KAV::GUI {

void CGUI::EnableHistory(bool a_bEnable) {
    const Utils::CTurn turn(_piTurns);
    CHistory::EnableHistory(a_bEnable);
}

bool CGUI::IsHistoryEnabled() const {
    const Utils::CTurn turn(_piTurns);
    return CHistory::IsHistoryEnabled();
}

void CGUI::AddRecord(std::unique_ptr<IHistory> a_piRecord) {
    const Utils::CTurn turn(_piTurns);
    CHistory::AddRecord(std::move(a_piRecord));
}

void CGUI::Undo() {
    const Utils::CTurn turn(_piTurns);
    CHistory::Undo();
}

void CGUI::Redo() {
    const Utils::CTurn turn(_piTurns);
    CHistory::Redo();
}

bool CGUI::CanUndo() const {
    const Utils::CTurn turn(_piTurns);
    return CHistory::CanUndo();
}

bool CGUI::CanRedo() const {
    const Utils::CTurn turn(_piTurns);
    return CHistory::CanRedo();
}

std::size_t CGUI::Records() const {
    const Utils::CTurn turn(_piTurns);
    return CHistory::Records();
}

} // namespace KAV::GUI
