#pragma once

#include "pixels/linux/glyph_search.h"
#include "platform/freetype/freetype_library.h"

#include <array>
#include <cstdint>
#include <map>
#include <memory>
#include <unordered_map>
#include <unordered_set>

namespace KAV::Pixels {

/// The editor's typeface and the fonts of the system that help out, and the glyphs in them. Lengths are in
/// ems unless they are called pixels: they don't depend on the size, so a text keeps its proportions.
///
/// Threads: one, which is that of all calls. All that can fail for lack of memory throws std::bad_alloc.
class CTypefaces final {
public:
    struct SFace {
        FT_Face face = nullptr;
        FT_F26Dot6 size = 0; ///< that it is set to
    };
    /// A glyph of one face. Without a face it shows nothing and takes no room.
    struct SGlyph {
        SFace* face = nullptr;
        FT_UInt index = 0;
    };
    struct SStyle {
        bool bold = false;
        bool italic = false;
    };

    /// Both live longer.
    CTypefaces(const Platform::SFreeType& freeType, CGlyphSearch& search) noexcept;
    ~CTypefaces();
    CTypefaces(const CTypefaces&) = delete;
    CTypefaces& operator=(const CTypefaces&) = delete;

    /// Before anything else, once. False: the typeface can't be read, and nothing else may be called.
    bool Prepare();

    /// What stands for a character. Controls are blanks; marks that only direct the layout are nothing. A box
    /// stands for what no font has, for half of a pair, and for what is still being looked for.
    SGlyph GlyphOf(char32_t character, SStyle style);
    /// Whether fonts have been found for characters that a box stands for: once, when nothing is being looked
    /// for any more.
    bool HasNewGlyphs();

    float Ascent() const noexcept { return _ascent; } ///< of a line, the same for all styles
    float Descent() const noexcept { return _descent; }
    float Advance(SGlyph glyph) const;
    /// What is added to the advance between two glyphs that follow each other; mostly below 0.
    float Kerning(SGlyph left, SGlyph right) const;

    /// The picture of a glyph, so many quarters of a pixel to the right of its place: grey, valid until the
    /// next call. Null if it has none.
    FT_GlyphSlot Render(SGlyph glyph, float pixels, int quarters) const;

private:
    SFace* Open(SStyle style);
    SFace* Open(const SFontFile& file);
    /// In the fonts that may have it: without a face if none really does.
    SGlyph FirstOf(const CGlyphSearch::Fonts& fonts, char32_t character);
    SGlyph HelpedOut(char32_t character);
    static bool Succeeded(FT_Error error);

    const Platform::SFreeType& _freeType;
    CGlyphSearch& _search;
    FT_Library _library = nullptr;
    float _ascent = 0.0f;
    float _descent = 0.0f;
    std::array<SFace, 4> _styles;                 // bold 1, italic 2; those that have been used
    std::map<SFontFile, SFace> _helpers;          // without a face: it can't be used
    std::unordered_map<char32_t, SGlyph> _helped; // what they have; without a face: nothing
    std::unordered_set<char32_t> _awaited;        // what is being looked for
    std::uint32_t _answers = 0;                   // that HasNewGlyphs() has seen
};

} // namespace KAV::Pixels
