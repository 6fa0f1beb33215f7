#include "pixels/linux/text_line.h"

#include <cmath>

namespace KAV::Pixels {

namespace {

constexpr char32_t Ellipsis = 0x2026;
constexpr float Tolerance = 1.0f / 1024.0f; // pixels
constexpr float Overhang = 1.0f;            // ems by which ink leaves its advance at most

bool IsHighSurrogate(char16_t unit) noexcept {
    return (unit & 0xFC00) == 0xD800;
}

bool IsLowSurrogate(char16_t unit) noexcept {
    return (unit & 0xFC00) == 0xDC00;
}

CTypefaces::SStyle StyleOf(const STextLine& line) noexcept {
    return {line.bold, line.italic};
}

/// The part of the box, in ems.
float BoxWidth(const STextLine& line) noexcept {
    return static_cast<float>(line.width) / line.pixels;
}

/// The shortened text with its ellipsis; empty if the whole text has room.
std::vector<SPlacedGlyph> Shortened(CTypefaces& typefaces, const STextLine& line) {
    const auto ellipsis = typefaces.GlyphOf(Ellipsis, StyleOf(line));
    // A box that is as wide as the text, to the last bit, has room for it.
    const float room = BoxWidth(line) + Tolerance / line.pixels;
    CTextWalk walk(typefaces, line);
    std::vector<SPlacedGlyph> glyphs;
    std::size_t kept = 0; // that have room together with the ellipsis
    SPlacedGlyph end = walk.After(ellipsis);
    while (walk.Next()) {
        if (walk.Glyph().right > room) {
            glyphs.resize(kept);
            glyphs.push_back(end);
            return glyphs;
        }
        glyphs.push_back(walk.Glyph());
        const auto next = walk.After(ellipsis);
        if (next.right <= room && !walk.IsBlank()) {
            kept = glyphs.size();
            end = next;
        }
    }
    return {};
}

/// Those that show in the box. The others would only take time.
std::vector<SPlacedGlyph> Visible(CTypefaces& typefaces, const STextLine& line, float left) {
    std::vector<SPlacedGlyph> glyphs;
    const float right = BoxWidth(line) + Overhang;
    for (CTextWalk walk(typefaces, line); walk.Next() && left + walk.Glyph().left < right;) {
        if (left + walk.Glyph().right > -Overhang) glyphs.push_back(walk.Glyph());
    }
    return glyphs;
}

} // namespace

bool CTextWalk::Next() {
    const auto& text = _line.text;
    if (_end >= text.size()) return false;
    _first = _end;
    const char16_t unit = text[_end++];
    _character = unit;
    if (IsHighSurrogate(unit) && _end < text.size() && IsLowSurrogate(text[_end]))
        _character = 0x10000 + ((char32_t{unit} & 0x3FF) << 10U) + (text[_end++] & 0x3FF);
    _placed = After(_typefaces.GlyphOf(_character, StyleOf(_line)));
    return true;
}

bool CTextWalk::IsBlank() const noexcept {
    return _character <= U' ' || _character == 0xA0;
}

SPlacedGlyph CTextWalk::After(const CTypefaces::SGlyph& glyph) const {
    const float left = _placed.right + _typefaces.Kerning(_placed.glyph, glyph);
    return {glyph, left, left + _typefaces.Advance(glyph)};
}

float WidthOf(CTypefaces& typefaces, const STextLine& line) {
    CTextWalk walk(typefaces, line);
    while (walk.Next()) {}
    return walk.Glyph().right;
}

SSetLine SetLine(CTypefaces& typefaces, const STextLine& line) {
    constexpr float half = 0.5f;
    const int row = line.align / 3;
    const int column = line.align % 3;
    SSetLine set;
    float width = 0.0f;
    if (line.ellipsis) {
        set.glyphs = Shortened(typefaces, line);
        if (!set.glyphs.empty()) width = set.glyphs.back().right;
    }
    if (set.glyphs.empty()) {
        if (column != 0) width = WidthOf(typefaces, line);
        set.glyphs = Visible(typefaces, line, static_cast<float>(column) * half * (BoxWidth(line) - width));
    }
    set.left = static_cast<float>(line.left) +
               static_cast<float>(column) * half * (static_cast<float>(line.width) - width * line.pixels);
    // By the typeface and not by the ink: texts of one size stand still whatever letters they have.
    const float height = (typefaces.Ascent() + typefaces.Descent()) * line.pixels;
    const float top = static_cast<float>(row) * half * (static_cast<float>(line.height) - height);
    set.baseline = line.top + std::llround(top + typefaces.Ascent() * line.pixels);
    return set;
}

} // namespace KAV::Pixels
