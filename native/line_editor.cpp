#include "native/line_editor.h"

#include "gui/edit.h"

#include <algorithm>

namespace KAV::Native {

namespace {

enum class EKind : std::uint8_t { Blank, Word, Sign };

bool IsHigh(char16_t unit) noexcept {
    return (unit & 0xFC00u) == 0xD800u;
}
bool IsLow(char16_t unit) noexcept {
    return (unit & 0xFC00u) == 0xDC00u;
}

/// Control characters, and those that end a line or a paragraph.
bool IsControl(char16_t unit) noexcept {
    constexpr char16_t lineEnd = 0x2028;
    constexpr char16_t paragraphEnd = 0x2029;
    return unit < u' ' || (unit >= 0x7F && unit < 0xA0) || unit == lineEnd || unit == paragraphEnd;
}

EKind KindOf(char16_t unit) noexcept {
    constexpr char16_t ideographicSpace = 0x3000;
    if (unit <= u' ' || unit == 0xA0 || unit == ideographicSpace) return EKind::Blank;
    const bool isAscii = unit < 0x80;
    const bool isDigit = unit >= u'0' && unit <= u'9';
    const auto lower = static_cast<char16_t>(unit | 0x20u);
    const bool isLetter = lower >= u'a' && lower <= u'z';
    return !isAscii || isDigit || isLetter || unit == u'_' ? EKind::Word : EKind::Sign;
}

} // namespace

CLineEditor::CLineEditor(std::u16string_view text, bool numbersOnly)
    : _text(text), _caret(text.size()), _numbersOnly(numbersOnly) {}

std::u16string CLineEditor::Typable(std::u16string_view text) const {
    std::u16string typable;
    for (std::size_t n = 0; n < text.size(); ++n) {
        const char16_t unit = text[n];
        if (IsControl(unit) || (_numbersOnly && !GUI::CEdit::IsTypable(unit)) || IsLow(unit)) continue;
        if (!IsHigh(unit)) {
            typable += unit;
        } else if (n + 1 < text.size() && IsLow(text[n + 1])) {
            typable.append(text.substr(n++, 2));
        }
    }
    return typable;
}

bool CLineEditor::Type(std::u16string_view text) {
    auto typed = Typable(text);
    const std::size_t kept = _text.size() - (Last() - First());
    std::size_t room = MostUnits - std::min(kept, MostUnits);
    if (typed.size() > room) {
        if (room > 0 && IsHigh(typed[room - 1])) --room;
        typed.resize(room);
    }
    if (typed.empty()) return false;
    const std::size_t first = First();
    _text.replace(first, Last() - first, typed);
    _caret = _anchor = first + typed.size();
    return true;
}

std::size_t CLineEditor::Before(std::size_t position) const noexcept {
    if (position == 0) return 0;
    const bool isPair = position > 1 && IsLow(_text[position - 1]) && IsHigh(_text[position - 2]);
    return position - (isPair ? 2 : 1);
}

std::size_t CLineEditor::After(std::size_t position) const noexcept {
    if (position >= _text.size()) return _text.size();
    const bool isPair = position + 1 < _text.size() && IsHigh(_text[position]) && IsLow(_text[position + 1]);
    return position + (isPair ? 2 : 1);
}

/// Words: from a place to the beginning of the word before or after it.
std::size_t CLineEditor::Target(EMove to) const noexcept {
    std::size_t place = _caret;
    switch (to) {
    case EMove::Left:
        return Before(place);
    case EMove::Right:
        return After(place);
    case EMove::Home:
        return 0;
    case EMove::End:
        return _text.size();
    case EMove::WordLeft:
        while (place > 0 && KindOf(_text[place - 1]) == EKind::Blank) --place;
        if (place == 0) return 0;
        for (const auto kind = KindOf(_text[place - 1]); place > 0 && KindOf(_text[place - 1]) == kind;)
            --place;
        return place;
    case EMove::WordRight:
        if (place == _text.size()) return place;
        for (const auto kind = KindOf(_text[place]); place < _text.size() && KindOf(_text[place]) == kind;)
            ++place;
        while (place < _text.size() && KindOf(_text[place]) == EKind::Blank) ++place;
        return place;
    }
    return place;
}

void CLineEditor::Move(EMove to, bool select) {
    // Without Shift an arrow only leaves the selection, on its side.
    if (!select && HasSelection() && to == EMove::Left) return MoveTo(First(), false);
    if (!select && HasSelection() && to == EMove::Right) return MoveTo(Last(), false);
    MoveTo(Target(to), select);
}

void CLineEditor::MoveTo(std::size_t position, bool select) {
    _caret = std::min(position, _text.size());
    if (_caret > 0 && _caret < _text.size() && IsLow(_text[_caret]) && IsHigh(_text[_caret - 1])) --_caret;
    if (!select) _anchor = _caret;
}

void CLineEditor::Erase(EMove to) {
    if (!HasSelection()) Move(to, true);
    const std::size_t first = First();
    _text.erase(first, Last() - first);
    _caret = _anchor = first;
}

void CLineEditor::SelectAll() noexcept {
    _anchor = 0;
    _caret = _text.size();
}

void CLineEditor::SelectWord(std::size_t position) {
    if (_text.empty()) return;
    std::size_t first = std::min(position, _text.size() - 1);
    std::size_t last = first;
    const auto kind = KindOf(_text[first]);
    while (first > 0 && KindOf(_text[first - 1]) == kind) --first;
    while (last < _text.size() && KindOf(_text[last]) == kind) ++last;
    _anchor = first;
    _caret = last;
}

} // namespace KAV::Native
