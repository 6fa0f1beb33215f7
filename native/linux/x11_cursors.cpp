#include "native/linux/x11_cursors.h"

#include "platform/x11/cursor_library.h"

#include <span>

namespace KAV::Native {

using Platform::Xcb;
using Platform::XcbCursor;

namespace {

/// Names of themes first; the last one is also in the display's own font, for desktops without a theme.
std::span<const char* const> NamesOf(GUI::ECursor cursor) noexcept {
    static constexpr std::array arrow{"left_ptr"};
    static constexpr std::array width{"ew-resize", "size_hor", "sb_h_double_arrow"};
    static constexpr std::array both{"nwse-resize", "size_fdiag", "bottom_right_corner"};
    switch (cursor) {
    case GUI::ECursor::SizeWidth:
        return width;
    case GUI::ECursor::SizeBoth:
        return both;
    case GUI::ECursor::Arrow:
        break;
    }
    return arrow;
}

} // namespace

CX11Cursors::~CX11Cursors() {
    if (_context != nullptr) XcbCursor()->context_free(_context);
}

void CX11Cursors::Set(xcb_window_t window, GUI::ECursor cursor) {
    if (_shown == cursor) return;
    _shown = cursor;
    auto& loaded = _loaded[static_cast<std::size_t>(cursor)];
    if (!loaded) loaded = Load(cursor);
    Xcb()->change_window_attributes(_display.Connection(), window, XCB_CW_CURSOR, &*loaded);
}

xcb_cursor_t CX11Cursors::Load(GUI::ECursor cursor) {
    if (_context == nullptr) {
        auto screen = _display.Screen(); // the library asks for one that it may change
        if (XcbCursor()->context_new(_display.Connection(), &screen, &_context) < 0) {
            _context = nullptr;
            return XCB_CURSOR_NONE;
        }
    }
    for (const char* const name : NamesOf(cursor)) {
        const auto loaded = XcbCursor()->load_cursor(_context, name);
        if (loaded != XCB_CURSOR_NONE) return loaded;
    }
    return XCB_CURSOR_NONE;
}

} // namespace KAV::Native
