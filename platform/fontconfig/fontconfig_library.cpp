#include "platform/fontconfig/fontconfig_library.h"

#include "platform/dl/symbol.h"

#include <dlfcn.h>
#include <optional>

namespace KAV::Platform {

namespace {

bool FindAll(void* library, SFontconfig& fontconfig) noexcept {
    return FindSymbol(library, "FcInitLoadConfigAndFonts", fontconfig.init_load_config_and_fonts) &&
           FindSymbol(library, "FcConfigDestroy", fontconfig.config_destroy) &&
           FindSymbol(library, "FcConfigSubstitute", fontconfig.config_substitute) &&
           FindSymbol(library, "FcDefaultSubstitute", fontconfig.default_substitute) &&
           FindSymbol(library, "FcPatternCreate", fontconfig.pattern_create) &&
           FindSymbol(library, "FcPatternDestroy", fontconfig.pattern_destroy) &&
           FindSymbol(library, "FcPatternAddString", fontconfig.pattern_add_string) &&
           FindSymbol(library, "FcPatternGetString", fontconfig.pattern_get_string) &&
           FindSymbol(library, "FcPatternGetInteger", fontconfig.pattern_get_integer) &&
           FindSymbol(library, "FcPatternGetBool", fontconfig.pattern_get_bool) &&
           FindSymbol(library, "FcPatternGetCharSet", fontconfig.pattern_get_char_set) &&
           FindSymbol(library, "FcCharSetHasChar", fontconfig.char_set_has_char) &&
           FindSymbol(library, "FcFontSort", fontconfig.font_sort) &&
           FindSymbol(library, "FcFontSetDestroy", fontconfig.font_set_destroy);
}

std::optional<SFontconfig> Load() noexcept {
    void* const library = dlopen("libfontconfig.so.1", RTLD_NOW | RTLD_LOCAL);
    SFontconfig fontconfig{};
    if (library == nullptr || !FindAll(library, fontconfig)) return std::nullopt;
    return fontconfig;
}

} // namespace

const SFontconfig* Fontconfig() noexcept {
    static const std::optional<SFontconfig> fontconfig = Load();
    return fontconfig ? &*fontconfig : nullptr;
}

} // namespace KAV::Platform
