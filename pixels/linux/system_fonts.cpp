#include "pixels/linux/glyph_search.h"
#include "platform/fontconfig/fontconfig_library.h"

#include <new>

namespace KAV::Pixels {

namespace {

using Platform::SFontconfig;

constexpr unsigned VariableFont = 0x80000000; // in an index: it has no style until one is chosen

struct SEnd {
    void operator()(FcConfig* config) const noexcept { Platform::Fontconfig()->config_destroy(config); }
    void operator()(FcPattern* pattern) const noexcept { Platform::Fontconfig()->pattern_destroy(pattern); }
    void operator()(FcFontSet* fonts) const noexcept { Platform::Fontconfig()->font_set_destroy(fonts); }
};
using Config = std::unique_ptr<FcConfig, SEnd>;
using Pattern = std::unique_ptr<FcPattern, SEnd>;
using FontSet = std::unique_ptr<FcFontSet, SEnd>;

const FcChar8* Bytes(const char* text) noexcept {
    return reinterpret_cast<const FcChar8*>(text);
}

/// All fonts in the order in which they go with the editor's typeface and the user's language.
FontSet AllFonts(const SFontconfig& fontconfig, FcConfig* config) {
    const Pattern pattern(fontconfig.pattern_create());
    if (pattern == nullptr) throw std::bad_alloc();
    for (const char* const family : {"DejaVu Sans Condensed", "sans-serif"})
        fontconfig.pattern_add_string(pattern.get(), FC_FAMILY, Bytes(family));
    fontconfig.config_substitute(config, pattern.get(), FcMatchPattern);
    fontconfig.default_substitute(pattern.get());
    FcResult result = FcResultMatch;
    return FontSet(fontconfig.font_sort(config, pattern.get(), FcFalse, nullptr, &result));
}

class CSystemFonts final : public IFontFinder {
public:
    explicit CSystemFonts(const SFontconfig& fontconfig)
        : _fontconfig(fontconfig), _config(fontconfig.init_load_config_and_fonts()),
          _fonts(_config != nullptr ? AllFonts(fontconfig, _config.get()) : nullptr) {}

    std::vector<SFontFile> FontsWith(char32_t character) override {
        std::vector<SFontFile> found;
        if (_fonts == nullptr) return found;
        for (int n = 0; n < _fonts->nfont; ++n) {
            FcPattern* const font = _fonts->fonts[n];
            if (Has(*font, character) && !Is(*font, FC_COLOR) && Is(*font, FC_OUTLINE)) {
                auto file = FileOf(*font);
                if (!file.path.empty()) found.push_back(std::move(file));
            }
        }
        return found;
    }

private:
    bool Has(FcPattern& font, char32_t character) const {
        FcCharSet* characters = nullptr;
        return _fontconfig.pattern_get_char_set(&font, FC_CHARSET, 0, &characters) == FcResultMatch &&
               _fontconfig.char_set_has_char(characters, character) != FcFalse;
    }
    bool Is(FcPattern& font, const char* property) const {
        FcBool value = FcFalse;
        return _fontconfig.pattern_get_bool(&font, property, 0, &value) == FcResultMatch && value == FcTrue;
    }
    SFontFile FileOf(FcPattern& font) const {
        SFontFile file;
        FcChar8* path = nullptr;
        if (_fontconfig.pattern_get_string(&font, FC_FILE, 0, &path) == FcResultMatch)
            file.path = reinterpret_cast<const char*>(path);
        if (_fontconfig.pattern_get_integer(&font, FC_INDEX, 0, &file.index) == FcResultMatch &&
            (static_cast<unsigned>(file.index) & VariableFont) != 0)
            file.index &= 0xFFFF;
        return file;
    }

    const SFontconfig& _fontconfig;
    const Config _config; // our own; the current one is the host's
    const FontSet _fonts;
};

} // namespace

std::unique_ptr<IFontFinder> FindSystemFonts() {
    const auto* const fontconfig = Platform::Fontconfig();
    if (fontconfig == nullptr) return nullptr;
    return std::make_unique<CSystemFonts>(*fontconfig);
}

} // namespace KAV::Pixels
