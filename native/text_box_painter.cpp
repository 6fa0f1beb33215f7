#include "native/text_box_painter.h"

#include "native/paint.h"

#include <algorithm>
#include <cmath>
#include <iterator>

namespace KAV::Native {

namespace {

// The colours of the panel's pictures.
constexpr std::uint32_t Ground = 0xFF111316;
constexpr std::uint32_t Edge = 0xFF6B737C;
constexpr std::uint32_t Marked = 0xFF42657A;
constexpr std::uint32_t Ink = 0xFFE4E7EA;
constexpr std::uint32_t Caret = 0xFFF4F0E4;

constexpr std::int32_t PlainHeight = 15; // at 96 dots per inch, with text of 11 pixels
constexpr float PlainText = 11.0f;

} // namespace

CTextBoxPainter::CTextBoxPainter(Pixels::CLettering& lettering, std::int32_t width, std::int32_t height)
    : _lettering(lettering), _width(std::max(width, 1)), _height(std::max(height, 1)),
      _unit(std::max((_height + PlainHeight / 2) / PlainHeight, 1)), _margin(3 * _unit),
      _pixels(std::max(std::round(static_cast<float>(_height) * PlainText / PlainHeight), 1.0f)) {}

Pixels::STextLine CTextBoxPainter::LineOf(const std::u16string& text) const {
    Pixels::STextLine line;
    line.text = text;
    line.pixels = _pixels;
    line.align = 3;
    line.colour = Ink;
    line.height = _height;
    return line;
}

std::int32_t CTextBoxPainter::Gap(std::size_t position) const noexcept {
    const float gap = _gaps.empty() ? 0.0f : _gaps[std::min(position, _gaps.size() - 1)];
    constexpr float most = 1e9f; // far wider than any text that can be typed
    return static_cast<std::int32_t>(std::lround(std::min(gap, most)));
}

/// Moves the text no further than it takes to show the caret, and leaves no room free that it could use.
void CTextBoxPainter::Scroll(const CLineEditor& line) noexcept {
    const std::int32_t room = std::max(_width - 2 * _margin - _unit, 0);
    const std::int32_t text = Gap(line.Text().size());
    if (text <= room) {
        _left = (room - text) / 2;
        return;
    }
    const std::int32_t caret = Gap(line.Caret());
    _left = std::clamp(_left, -caret, room - caret);
    _left = std::clamp(_left, room - text, 0);
}

Pixels::SBitmap CTextBoxPainter::Paint(const CLineEditor& line, bool caretShown) {
    if (_text != line.Text() || _gaps.size() != _text.size() + 1) {
        _gaps = _lettering.Gaps(LineOf(line.Text()));
        if (_gaps.empty()) _gaps.push_back(0.0f);
        _text = line.Text();
    }
    Scroll(line);
    auto inner = Pixels::TransparentBitmap(std::max(_width - 2 * _margin, 0), _height);
    const std::int32_t first = _left + Gap(line.First());
    if (line.HasSelection())
        Fill(inner, {first, 2 * _unit, _left + Gap(line.Last()) - first, _height - 4 * _unit}, Marked);
    PaintText(inner, line.Text());
    if (caretShown) Fill(inner, {_left + Gap(line.Caret()), 2 * _unit, _unit, _height - 4 * _unit}, Caret);

    auto to = Pixels::TransparentBitmap(_width, _height);
    const Platform::SArea whole{0, 0, _width, _height};
    Fill(to, whole, Ground);
    Overlay(to, inner, _margin, 0);
    Frame(to, whole, _unit, Edge);
    return to;
}

/// Only the characters that are visible, because a text may be thousands of them long.
void CTextBoxPainter::PaintText(Pixels::SBitmap& inner, const std::u16string& text) {
    const auto begin = static_cast<float>(-_left);
    const auto end = static_cast<float>(inner.width - _left);
    const auto after = std::upper_bound(_gaps.begin(), _gaps.end(), begin);
    auto first = static_cast<std::size_t>(std::max<std::ptrdiff_t>(after - _gaps.begin() - 1, 0));
    const auto past = std::upper_bound(_gaps.begin(), _gaps.end(), end);
    const auto last = std::min(static_cast<std::size_t>(past - _gaps.begin()), text.size());
    while (first > 0 && _gaps[first - 1] == _gaps[first]) --first; // not the second half of a character
    if (first >= last) return;
    auto line = LineOf(text.substr(first, last - first));
    line.left = _left + Gap(first);
    line.width = std::max(inner.width - line.left, 0);
    _lettering.Draw(line, inner);
}

std::size_t CTextBoxPainter::PositionAt(std::int32_t x) const noexcept {
    const auto place = static_cast<float>(x - _margin - _left);
    const auto after = std::lower_bound(_gaps.begin(), _gaps.end(), place);
    if (after == _gaps.begin()) return 0;
    if (after == _gaps.end()) return _gaps.size() - 1;
    const auto before = std::prev(after);
    const auto nearest = place - *before < *after - place ? before : after;
    return static_cast<std::size_t>(std::lower_bound(_gaps.begin(), _gaps.end(), *nearest) - _gaps.begin());
}

} // namespace KAV::Native
