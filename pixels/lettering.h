#pragma once

#include "pixels/bitmap.h"

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

namespace KAV::Pixels {

/// One line of text, and its box in pixels of the picture it is drawn into.
struct STextLine {
    std::u16string text;
    float pixels = 0.0f; ///< size of the typeface: its em square
    bool bold = false;
    bool italic = false;
    bool ellipsis = false;    ///< a text that is too wide is shortened and ends in one
    std::int32_t align = 4;   ///< 3 x row + column: 0 is top left, 4 the middle, 8 bottom right
    std::uint32_t colour = 0; ///< 0xAARRGGBB
    std::int32_t left = 0, top = 0, width = 0, height = 0;

    bool operator==(const STextLine&) const = default;
};

struct STextSize {
    float width = 0.0f, height = 0.0f;

    bool operator==(const STextSize&) const = default;
};

/// Draws text in the editor's own typeface, which comes with the library, so that it looks the same on every
/// machine. Characters that this typeface lacks come from the system's fonts, which are searched on another
/// thread: a box stands for them until they are found.
///
/// Threads: one, which is that of all calls. Nothing of it is shared.
class CLettering {
public:
    CLettering() = default;
    virtual ~CLettering() = default;
    CLettering(const CLettering&) = delete;
    CLettering& operator=(const CLettering&) = delete;

    /// Null if the font library is missing (platform/freetype) or there is no memory.
    static std::unique_ptr<CLettering> Create();

    /// Draws over a premultiplied picture, within the line's box. Throws std::bad_alloc.
    virtual void Draw(const STextLine& line, SBitmap& to) = 0;
    /// The size of the text in one line, whatever its box: the sum of its advances, and the typeface's line
    /// height.
    virtual STextSize Measure(const STextLine& line) = 0;
    /// The x of the gap before each UTF-16 unit, and after the last one: text.size() + 1 places, from 0, for
    /// a caret. Units of one character share theirs.
    virtual std::vector<float> Gaps(const STextLine& line) = 0;
    /// Whether fonts have been found since the last call: texts with boxes in them can be drawn better now.
    virtual bool HasNewGlyphs() = 0;
};

} // namespace KAV::Pixels
