#include "platform/freetype/freetype_library.h"

#include "platform/dl/symbol.h"

#include <dlfcn.h>
#include <optional>

namespace KAV::Platform {

namespace {

bool FindAll(void* library, SFreeType& freeType) noexcept {
    return FindSymbol(library, "FT_New_Library", freeType.new_library) &&
           FindSymbol(library, "FT_Add_Default_Modules", freeType.add_default_modules) &&
           FindSymbol(library, "FT_Done_Library", freeType.done_library) &&
           FindSymbol(library, "FT_New_Memory_Face", freeType.new_memory_face) &&
           FindSymbol(library, "FT_New_Face", freeType.new_face) &&
           FindSymbol(library, "FT_Done_Face", freeType.done_face) &&
           FindSymbol(library, "FT_Set_Char_Size", freeType.set_char_size) &&
           FindSymbol(library, "FT_Get_Char_Index", freeType.get_char_index) &&
           FindSymbol(library, "FT_Get_Advance", freeType.get_advance) &&
           FindSymbol(library, "FT_Get_Kerning", freeType.get_kerning) &&
           FindSymbol(library, "FT_Load_Glyph", freeType.load_glyph) &&
           FindSymbol(library, "FT_Outline_Translate", freeType.outline_translate) &&
           FindSymbol(library, "FT_Render_Glyph", freeType.render_glyph);
}

std::optional<SFreeType> Load() noexcept {
    void* const library = dlopen("libfreetype.so.6", RTLD_NOW | RTLD_LOCAL);
    SFreeType freeType{};
    if (library == nullptr || !FindAll(library, freeType)) return std::nullopt;
    return freeType;
}

} // namespace

const SFreeType* FreeType() noexcept {
    static const std::optional<SFreeType> freeType = Load();
    return freeType ? &*freeType : nullptr;
}

} // namespace KAV::Platform
