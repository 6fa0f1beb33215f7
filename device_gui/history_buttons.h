#pragma once

#include "device_gui/xxx_gui.h"
#include "gui/button_mom.h"
#include "panel/layout.h"

namespace KAV {

/// A step through the history. While there is none in its direction the button does nothing and shows the
/// middle one of its three frames. Threads: the window's.
class CBtnUndoRedo : public GUI::CButtonMom {
public:
    CBtnUndoRedo(CXXXGUI& a_piGUI, Panel::EClass a_nRow, bool a_bUndo);

    void OnClick() override;
    /// The history may have changed.
    void ShowHistory();

    bool IsUndo() const noexcept { return _bUndo; }

private:
    bool _bUndo;
};

class CUndo final : public CBtnUndoRedo {
public:
    explicit CUndo(CXXXGUI& a_piGUI) : CBtnUndoRedo(a_piGUI, Panel::EClass::Undo, true) {}
};

class CRedo final : public CBtnUndoRedo {
public:
    explicit CRedo(CXXXGUI& a_piGUI) : CBtnUndoRedo(a_piGUI, Panel::EClass::Redo, false) {}
};

} // namespace KAV
