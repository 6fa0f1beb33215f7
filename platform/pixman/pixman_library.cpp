#include "platform/pixman/pixman_library.h"

#include "platform/dl/symbol.h"

#include <dlfcn.h>
#include <optional>

namespace KAV::Platform {

namespace {

bool FindAll(void* library, SPixman& pixman) noexcept {
    return FindSymbol(library, "pixman_version_string", pixman.version_string) &&
           FindSymbol(library, "pixman_image_create_bits_no_clear", pixman.image_create_bits_no_clear) &&
           FindSymbol(library, "pixman_image_create_solid_fill", pixman.image_create_solid_fill) &&
           FindSymbol(library, "pixman_image_unref", pixman.image_unref) &&
           FindSymbol(library, "pixman_image_set_component_alpha", pixman.image_set_component_alpha) &&
           FindSymbol(library, "pixman_image_set_repeat", pixman.image_set_repeat) &&
           FindSymbol(library, "pixman_image_composite32", pixman.image_composite32);
}

std::optional<SPixman> Load() noexcept {
    void* const library = dlopen("libpixman-1.so.0", RTLD_NOW | RTLD_LOCAL);
    SPixman pixman{};
    if (library == nullptr || !FindAll(library, pixman)) return std::nullopt;
    return pixman;
}

} // namespace

const SPixman* Pixman() noexcept {
    static const std::optional<SPixman> pixman = Load();
    return pixman ? &*pixman : nullptr;
}

} // namespace KAV::Platform
