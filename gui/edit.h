#pragma once

#include "gui/widget.h"

#include <cstdint>

namespace KAV::GUI {

/// The text box of an editor: the value of a knob, or a name, is typed into it. The box itself is the
/// window's; it is open exactly while there is a target. It draws nothing.
///
/// What is typed takes effect with Enter, or when the box loses the focus. A press in the editor closes the
/// box without effect. Threads: the window's.
class CEdit final : public CWidget {
public:
    explicit CEdit(CGUI& a_piGUI);

    /// Opens the box over a widget, with all of its text selected: the whole text of a label, or with
    /// `a_bText` false the number of a value widget. Null closes the box. Nothing is open afterwards if the
    /// system can't.
    void Open(CWidget* a_piWidget, bool a_bText);
    /// Takes what has been typed over into the target, and closes the box. Nothing happens without a target.
    void Commit();
    /// Closes the box without effect.
    void Drop() noexcept;
    /// The widget is about to end.
    void Forget(const CWidget& a_piWidget) noexcept;

    /// Whether a box for numbers lets a character through. Enter isn't one: it ends the input.
    static constexpr bool IsTypable(char16_t a_nCharacter) noexcept {
        constexpr char16_t backspace = 8;
        constexpr char16_t formFeed = 12;
        return a_nCharacter == backspace || a_nCharacter == formFeed || a_nCharacter == u'-' ||
               a_nCharacter == u'k' || a_nCharacter == u'.' || (a_nCharacter >= u'0' && a_nCharacter <= u'9');
    }

    void Draw(std::uint32_t a_nMs) override;

    CWidget* piTarget = nullptr; ///< what the box is open for, not owned
    bool bText = false;          ///< a text is typed, not a number

private:
    SPixelRect BoxFor(const CWidget& a_piWidget) const noexcept;
};

} // namespace KAV::GUI
