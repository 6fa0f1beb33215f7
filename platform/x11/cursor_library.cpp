#include "platform/x11/cursor_library.h"

#include "platform/dl/symbol.h"

#include <dlfcn.h>
#include <optional>

namespace KAV::Platform {

namespace {

std::optional<SXcbCursor> LoadCursors() noexcept {
    void* const library = dlopen("libxcb-cursor.so.0", RTLD_NOW | RTLD_LOCAL);
    SXcbCursor cursor{};
    if (library == nullptr || !FindSymbol(library, "xcb_cursor_context_new", cursor.context_new) ||
        !FindSymbol(library, "xcb_cursor_load_cursor", cursor.load_cursor) ||
        !FindSymbol(library, "xcb_cursor_context_free", cursor.context_free))
        return std::nullopt;
    return cursor;
}

} // namespace

const SXcbCursor* XcbCursor() noexcept {
    static const std::optional<SXcbCursor> cursor = LoadCursors();
    return cursor ? &*cursor : nullptr;
}

} // namespace KAV::Platform
