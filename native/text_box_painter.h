#pragma once

#include "native/line_editor.h"
#include "pixels/bitmap.h"
#include "pixels/lettering.h"

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

namespace KAV::Native {

/// How a text box looks: the text in the middle, or, if it is too long, the part of it where the caret is.
/// Throws std::bad_alloc. Threads: that of the lettering.
class CTextBoxPainter final {
public:
    /// A box of this size in pixels, 1 by 1 or more.
    CTextBoxPainter(Pixels::CLettering& lettering, std::int32_t width, std::int32_t height);

    /// The box, opaque.
    Pixels::SBitmap Paint(const CLineEditor& line, bool caretShown);
    /// The position in the text nearest to an x in the box, as it was painted last. x may lie outside.
    std::size_t PositionAt(std::int32_t x) const noexcept;

    /// Fonts have been found: the widths of characters are no longer true.
    void Forget() noexcept { _gaps.clear(); }

private:
    Pixels::STextLine LineOf(const std::u16string& text) const;
    std::int32_t Gap(std::size_t position) const noexcept;
    void Scroll(const CLineEditor& line) noexcept;
    void PaintText(Pixels::SBitmap& inner, const std::u16string& text);

    Pixels::CLettering& _lettering;
    std::int32_t _width;
    std::int32_t _height;
    std::int32_t _unit;   // the width of the frame and of the caret
    std::int32_t _margin; // from the box's edge to the place of the text
    float _pixels;
    std::u16string _text; // that _gaps are of
    std::vector<float> _gaps = {0.0f};
    std::int32_t _left = 0; // of the text in its place; below 0 if it is scrolled
};

} // namespace KAV::Native
