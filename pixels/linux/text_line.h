#pragma once

#include "pixels/lettering.h"
#include "pixels/linux/typefaces.h"

#include <cstddef>
#include <vector>

namespace KAV::Pixels {

/// A glyph of a line, in ems from its beginning.
struct SPlacedGlyph {
    CTypefaces::SGlyph glyph;
    float left = 0.0f;
    float right = 0.0f; ///< where the next one stands, but for kerning
};

/// Sets the characters of a text one after the other: from left to right, letter by letter. Scripts that join
/// their letters or run from right to left aren't shaped.
class CTextWalk final {
public:
    /// Both live longer.
    CTextWalk(CTypefaces& typefaces, const STextLine& line) noexcept : _typefaces(typefaces), _line(line) {}

    /// To the first or the next character. False after the last one.
    bool Next();
    const SPlacedGlyph& Glyph() const noexcept { return _placed; }
    bool IsBlank() const noexcept;
    std::size_t FirstUnit() const noexcept { return _first; } ///< of the text
    std::size_t EndUnit() const noexcept { return _end; }

    /// Where `glyph` would be if it came next.
    SPlacedGlyph After(const CTypefaces::SGlyph& glyph) const;

private:
    CTypefaces& _typefaces;
    const STextLine& _line;
    SPlacedGlyph _placed;
    std::size_t _first = 0;
    std::size_t _end = 0;
    char32_t _character = 0;
};

/// What is seen of a line in its box: the glyphs, by their places in pixels of the picture.
struct SSetLine {
    std::vector<SPlacedGlyph> glyphs;
    float left = 0.0f; ///< pixels: where the first one stands
    std::int64_t baseline = 0;
};

/// Shortens and aligns a line.
SSetLine SetLine(CTypefaces& typefaces, const STextLine& line);

/// The sum of the advances, in ems.
float WidthOf(CTypefaces& typefaces, const STextLine& line);

} // namespace KAV::Pixels
