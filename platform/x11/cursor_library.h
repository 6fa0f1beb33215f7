#pragma once

#include <xcb/xcb_cursor.h>

/// The library of the desktop's pointers, loaded when it is first needed. Only for the Linux part of this
/// folder. Any thread.
namespace KAV::Platform {

/// The library's functions, under their names there.
struct SXcbCursor {
    decltype(&xcb_cursor_context_new) context_new;
    decltype(&xcb_cursor_load_cursor) load_cursor;
    decltype(&xcb_cursor_context_free) context_free;
};

/// The functions, for the life of the process; null if the library is missing or incomplete.
const SXcbCursor* XcbCursor() noexcept;

} // namespace KAV::Platform
