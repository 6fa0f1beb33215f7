#pragma once

#include "gui/window.h"
#include "native/linux/x11_display.h"

#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <string_view>

namespace KAV::Native {

/// One line of text over the editor, in a child of its window, drawn by us: caret, selection, mouse, arrows
/// with Shift and Control, Home, End, Backspace, Delete, Control+A, C, V, X, the user's layout and compose
/// sequences. Opens with all of its text selected. It has the focus of its own window's parent: keys come as
/// events of the editor's window.
///
/// Return, and the loss of the focus, commit: `committed` is called once, from inside OnEvent(), and may
/// destroy it. Escape does nothing. A press in the editor is not its business: the editor closes it. Pasting
/// waits for nothing: what the owner of the clipboard sends within a second is put in when it comes.
/// Threads: the window's.
class CX11TextBox : public IX11Overlay {
public:
    /// Null if it can't be drawn. `numbersOnly`: other characters than GUI::CEdit::IsTypable() lets through
    /// are dropped, typed and pasted alike.
    static std::unique_ptr<CX11TextBox> Open(CX11Display& display, xcb_window_t owner,
        const GUI::SPixelRect& place, std::u16string_view text, bool numbersOnly,
        std::function<void()> committed);

    virtual std::u16string Text() const = 0;
    /// The editor's window has lost the focus to another one.
    virtual void OnFocusLost() = 0;
};

} // namespace KAV::Native
