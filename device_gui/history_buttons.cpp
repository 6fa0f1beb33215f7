#include "device_gui/history_buttons.h"

#include "device_gui/row_info.h"

namespace KAV {

CBtnUndoRedo::CBtnUndoRedo(CXXXGUI& a_piGUI, Panel::EClass a_nRow, bool a_bUndo)
    : CButtonMom(a_piGUI, InfoOf(Panel::RowOf(a_nRow))), _bUndo(a_bUndo) {
    bInteractive = false; // there is no step yet
}

void CBtnUndoRedo::OnClick() {
    if (_bUndo) {
        Root().Undo();
    } else {
        Root().Redo();
    }
}

void CBtnUndoRedo::ShowHistory() {
    SetInteractive(_bUndo ? Root().CanUndo() : Root().CanRedo());
}

} // namespace KAV
