#pragma once

#include <ft2build.h> // must be the first: the names of the others are its macros
#include FT_FREETYPE_H
#include FT_ADVANCES_H
#include FT_MODULE_H
#include FT_OUTLINE_H
#include FT_SYSTEM_H

/// The library that reads fonts and draws their glyphs, loaded when the first editor opens: an instance
/// without one needs no text. It is never unloaded. Only for Linux. Any thread; a library object and what is
/// made of it belong to one thread.
namespace KAV::Platform {

/// The library's functions, under their names there. A library object is made with New_Library and
/// Add_Default_Modules and not with Init_FreeType, which would take properties from the user's environment:
/// text looks the same on every machine.
struct SFreeType {
    decltype(&::FT_New_Library) new_library;
    decltype(&::FT_Add_Default_Modules) add_default_modules;
    decltype(&::FT_Done_Library) done_library;
    decltype(&::FT_New_Memory_Face) new_memory_face;
    decltype(&::FT_New_Face) new_face;
    decltype(&::FT_Done_Face) done_face;
    decltype(&::FT_Set_Char_Size) set_char_size;
    decltype(&::FT_Get_Char_Index) get_char_index;
    decltype(&::FT_Get_Advance) get_advance;
    decltype(&::FT_Get_Kerning) get_kerning;
    decltype(&::FT_Load_Glyph) load_glyph;
    decltype(&::FT_Outline_Translate) outline_translate;
    decltype(&::FT_Render_Glyph) render_glyph;
};

/// The functions, for the life of the process; null if the library is missing or too old.
const SFreeType* FreeType() noexcept;

} // namespace KAV::Platform
