#pragma once

#include <fontconfig/fontconfig.h>

/// The library that knows the system's fonts, loaded when a text has a character that our own typeface lacks.
/// Its global state is the host's too: we use a configuration of our own, and FcFini() is never called. Only
/// for Linux. Any thread, but a configuration belongs to one.
namespace KAV::Platform {

/// The library's functions, under their names there.
struct SFontconfig {
    decltype(&::FcInitLoadConfigAndFonts) init_load_config_and_fonts;
    decltype(&::FcConfigDestroy) config_destroy;
    decltype(&::FcConfigSubstitute) config_substitute;
    decltype(&::FcDefaultSubstitute) default_substitute;
    decltype(&::FcPatternCreate) pattern_create;
    decltype(&::FcPatternDestroy) pattern_destroy;
    decltype(&::FcPatternAddString) pattern_add_string;
    decltype(&::FcPatternGetString) pattern_get_string;
    decltype(&::FcPatternGetInteger) pattern_get_integer;
    decltype(&::FcPatternGetBool) pattern_get_bool;
    decltype(&::FcPatternGetCharSet) pattern_get_char_set;
    decltype(&::FcCharSetHasChar) char_set_has_char;
    decltype(&::FcFontSort) font_sort;
    decltype(&::FcFontSetDestroy) font_set_destroy;
};

/// The functions, for the life of the process; null if the library is missing or too old.
const SFontconfig* Fontconfig() noexcept;

} // namespace KAV::Platform
