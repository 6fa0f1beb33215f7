#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

namespace KAV::Native {

/// One line of text that is being typed: its characters, the caret, and the selection between the caret and
/// an anchor. Positions count UTF-16 units and never lie inside a surrogate pair. Throws std::bad_alloc; then
/// the text is unchanged. Threads: one.
class CLineEditor final {
public:
    enum class EMove : std::uint8_t { Left, Right, WordLeft, WordRight, Home, End };

    /// More than this isn't typed or pasted.
    static constexpr std::size_t MostUnits = 32767;

    /// With all of the text selected and the caret at its end. `numbersOnly`: only what
    /// GUI::CEdit::IsTypable() lets through can be typed.
    CLineEditor(std::u16string_view text, bool numbersOnly);

    /// Puts a text in the selection's place. Control characters, line ends and broken surrogates are dropped.
    /// False if nothing is left of it: then nothing changes.
    bool Type(std::u16string_view text);
    void Move(EMove to, bool select);
    void MoveTo(std::size_t position, bool select);
    /// The selection, or without one what lies between the caret and where that move leads.
    void Erase(EMove to);
    void SelectAll() noexcept;
    /// The word at that position, or the blanks or signs there.
    void SelectWord(std::size_t position);

    const std::u16string& Text() const noexcept { return _text; }
    std::size_t Caret() const noexcept { return _caret; }
    std::size_t First() const noexcept { return _caret < _anchor ? _caret : _anchor; } ///< of the selection
    std::size_t Last() const noexcept { return _caret < _anchor ? _anchor : _caret; }
    bool HasSelection() const noexcept { return _caret != _anchor; }
    std::u16string Selected() const { return _text.substr(First(), Last() - First()); }

private:
    std::size_t Target(EMove to) const noexcept;
    std::size_t Before(std::size_t position) const noexcept;
    std::size_t After(std::size_t position) const noexcept;
    std::u16string Typable(std::u16string_view text) const;

    std::u16string _text;
    std::size_t _caret = 0;
    std::size_t _anchor = 0;
    bool _numbersOnly = false;
};

} // namespace KAV::Native
