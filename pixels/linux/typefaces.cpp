#include "pixels/linux/typefaces.h"

#include "platform/resource.h"

#include <array>
#include <cmath>
#include <cstdlib>
#include <new>
#include <string_view>

namespace KAV::Pixels {

namespace {

constexpr std::array<std::string_view, 4> StyleFiles{"DejaVuSansCondensed.ttf",
    "DejaVuSansCondensed-Bold.ttf", "DejaVuSansCondensed-Oblique.ttf", "DejaVuSansCondensed-BoldOblique.ttf"};
constexpr FT_UInt Box = 0;      // the glyph of a font for what it doesn't have
constexpr float Sixty4 = 64.0f; // what the library counts pixels in
constexpr FT_Pos Quarter = 16;

// Hinting, chosen by eye from captions at 8 to 18 pixels. Without any, bars and the tops of letters smear
// over two rows at 8 to 10 pixels. Full hinting moves stems to whole pixels: letters stand unevenly, and a
// line grows by up to 6 % against its own width at other sizes. The light one changes heights alone, so rows
// are crisp while letters keep their shapes and distances, provided they may stand at fractions of a pixel.
constexpr FT_Int32 Hinting = FT_LOAD_TARGET_LIGHT | FT_LOAD_NO_BITMAP;

void* Allocate(FT_Memory, long size) {
    return std::malloc(static_cast<std::size_t>(size));
}
void Free(FT_Memory, void* block) {
    std::free(block);
}
void* Reallocate(FT_Memory, long, long size, void* block) {
    return std::realloc(block, static_cast<std::size_t>(size));
}

FT_Memory PlainMemory() noexcept {
    static FT_MemoryRec_ memory{nullptr, Allocate, Free, Reallocate};
    return &memory;
}

bool IsControl(char32_t c) noexcept {
    return c < 0x20 || (c >= 0x7F && c < 0xA0) || c == 0x2028 || c == 0x2029;
}

/// Joiners, directions, variants of the letter before, tags.
bool IsInvisible(char32_t c) noexcept {
    return c == 0xAD || (c >= 0x200B && c <= 0x200F) || (c >= 0x202A && c <= 0x202E) ||
           (c >= 0x2060 && c <= 0x206F) || (c >= 0xFE00 && c <= 0xFE0F) || c == 0xFEFF ||
           (c >= 0xE0000 && c <= 0xE0FFF);
}

/// Not a character of any font: half of a surrogate pair, or what Unicode keeps free for ever.
bool IsNone(char32_t c) noexcept {
    return (c >= 0xD800 && c <= 0xDFFF) || (c & 0xFFFE) == 0xFFFE || (c >= 0xFDD0 && c <= 0xFDEF);
}

float InEms(const CTypefaces::SFace& face, FT_Pos units) noexcept {
    return static_cast<float>(units) / static_cast<float>(face.face->units_per_EM);
}

} // namespace

CTypefaces::CTypefaces(const Platform::SFreeType& freeType, CGlyphSearch& search) noexcept
    : _freeType(freeType), _search(search) {}

CTypefaces::~CTypefaces() {
    if (_library != nullptr) _freeType.done_library(_library); // and with it all faces
}

bool CTypefaces::Succeeded(FT_Error error) {
    if (FT_ERROR_BASE(error) == FT_Err_Out_Of_Memory) throw std::bad_alloc();
    return error == FT_Err_Ok;
}

bool CTypefaces::Prepare() {
    if (!Succeeded(_freeType.new_library(PlainMemory(), &_library))) return false;
    _freeType.add_default_modules(_library);
    const auto* const face = Open(SStyle());
    if (face == nullptr) return false;
    _ascent = InEms(*face, face->face->ascender);
    _descent = -InEms(*face, face->face->descender);
    return true;
}

CTypefaces::SFace* CTypefaces::Open(SStyle style) {
    const std::size_t number = (style.bold ? 1U : 0U) + (style.italic ? 2U : 0U);
    auto& face = _styles[number];
    if (face.face != nullptr) return &face;
    const auto bytes = Platform::Resource(StyleFiles[number]);
    FT_Face made = nullptr;
    if (!Succeeded(
            _freeType.new_memory_face(_library, bytes.data(), static_cast<FT_Long>(bytes.size()), 0, &made)))
        return nullptr;
    face.face = made;
    return &face;
}

CTypefaces::SFace* CTypefaces::Open(const SFontFile& file) {
    const auto [entry, isNew] = _helpers.try_emplace(file);
    auto& face = entry->second;
    if (!isNew) return face.face != nullptr ? &face : nullptr;
    FT_Face made = nullptr;
    if (!Succeeded(_freeType.new_face(_library, file.path.c_str(), file.index, &made))) return nullptr;
    if (!FT_IS_SCALABLE(made) || FT_HAS_COLOR(made) || made->units_per_EM == 0) {
        _freeType.done_face(made);
        return nullptr;
    }
    face.face = made;
    return &face;
}

// Glyphs

CTypefaces::SGlyph CTypefaces::FirstOf(const CGlyphSearch::Fonts& fonts, char32_t character) {
    for (const auto* const font : fonts) {
        auto* const face = Open(*font);
        if (face == nullptr) continue;
        const FT_UInt index = _freeType.get_char_index(face->face, character);
        // A damaged file may be found out only here.
        if (index != Box && Succeeded(_freeType.load_glyph(face->face, index, FT_LOAD_NO_SCALE)))
            return {face, index};
    }
    return {};
}

CTypefaces::SGlyph CTypefaces::HelpedOut(char32_t character) {
    const auto known = _helped.find(character);
    if (known != _helped.end()) return known->second;
    const auto* const fonts = _search.FontsWith(character);
    if (fonts == nullptr) {
        _awaited.insert(character);
        return {};
    }
    return _helped.emplace(character, FirstOf(*fonts, character)).first->second;
}

CTypefaces::SGlyph CTypefaces::GlyphOf(char32_t character, SStyle style) {
    if (IsInvisible(character)) return {};
    auto* const plain = Open(SStyle());
    auto* const styled = Open(style);
    auto* const face = styled != nullptr ? styled : plain;
    if (IsNone(character)) return {face, Box};
    if (IsControl(character)) character = U' ';
    for (auto* const own : {face, plain}) {
        const FT_UInt index = _freeType.get_char_index(own->face, character);
        if (index != Box) return {own, index};
    }
    const auto helped = HelpedOut(character);
    return helped.face != nullptr ? helped : SGlyph{face, Box};
}

bool CTypefaces::HasNewGlyphs() {
    const auto answers = _search.Answers();
    if (answers == _answers) return false;
    _answers = answers;
    bool found = false;
    for (const auto character : _awaited) {
        if (_search.FontsWith(character) == nullptr) return false; // one change for all
        found = HelpedOut(character).face != nullptr || found;
    }
    _awaited.clear();
    return found;
}

// Their measures

float CTypefaces::Advance(SGlyph glyph) const {
    FT_Fixed advance = 0;
    if (glyph.face == nullptr ||
        !Succeeded(_freeType.get_advance(glyph.face->face, glyph.index, FT_LOAD_NO_SCALE, &advance)))
        return 0.0f;
    return InEms(*glyph.face, advance);
}

float CTypefaces::Kerning(SGlyph left, SGlyph right) const {
    FT_Vector kerning{};
    if (left.face == nullptr || left.face != right.face ||
        !Succeeded(
            _freeType.get_kerning(left.face->face, left.index, right.index, FT_KERNING_UNSCALED, &kerning)))
        return 0.0f;
    return InEms(*left.face, kerning.x);
}

// Their pictures

FT_GlyphSlot CTypefaces::Render(SGlyph glyph, float pixels, int quarters) const {
    if (glyph.face == nullptr) return nullptr;
    auto& [face, size] = *glyph.face;
    const auto wanted = static_cast<FT_F26Dot6>(std::lround(pixels * Sixty4));
    if (wanted == 0) return nullptr;
    if (size != wanted) {
        size = 0;
        if (!Succeeded(_freeType.set_char_size(face, 0, wanted, 0, 0))) return nullptr;
        size = wanted;
    }
    if (!Succeeded(_freeType.load_glyph(face, glyph.index, Hinting))) return nullptr;
    const auto slot = face->glyph;
    if (slot->format != FT_GLYPH_FORMAT_OUTLINE) return nullptr;
    _freeType.outline_translate(&slot->outline, static_cast<FT_Pos>(quarters) * Quarter, 0);
    if (!Succeeded(_freeType.render_glyph(slot, FT_RENDER_MODE_NORMAL))) return nullptr;
    return slot->bitmap.pixel_mode == FT_PIXEL_MODE_GRAY ? slot : nullptr;
}

} // namespace KAV::Pixels
