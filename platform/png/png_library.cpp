#include "platform/png/png_library.h"

#include "platform/dl/symbol.h"

#include <dlfcn.h>
#include <optional>

namespace KAV::Platform {

namespace {

std::optional<SPng> Load() noexcept {
    void* const library = dlopen("libpng16.so.16", RTLD_NOW | RTLD_LOCAL);
    SPng png{};
    if (library == nullptr ||
        !FindSymbol(library, "png_image_begin_read_from_memory", png.image_begin_read_from_memory) ||
        !FindSymbol(library, "png_image_finish_read", png.image_finish_read) ||
        !FindSymbol(library, "png_image_free", png.image_free))
        return std::nullopt;
    return png;
}

} // namespace

const SPng* Png() noexcept {
    static const std::optional<SPng> png = Load();
    return png ? &*png : nullptr;
}

} // namespace KAV::Platform
