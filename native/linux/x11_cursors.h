#pragma once

#include "gui/window.h"
#include "native/linux/x11_display.h"

#include <array>
#include <optional>

struct xcb_cursor_context_t;

namespace KAV::Native {

/// The pointers of the user's desktop over a window. Threads: the window's.
class CX11Cursors final {
public:
    /// The display must outlive it.
    explicit CX11Cursors(CX11Display& display) noexcept : _display(display) {}
    ~CX11Cursors();
    CX11Cursors(const CX11Cursors&) = delete;
    CX11Cursors& operator=(const CX11Cursors&) = delete;

    void Set(xcb_window_t window, GUI::ECursor cursor);

private:
    xcb_cursor_t Load(GUI::ECursor cursor);

    CX11Display& _display;
    xcb_cursor_context_t* _context = nullptr; // null: nothing has been loaded yet
    std::array<std::optional<xcb_cursor_t>, 3> _loaded;
    std::optional<GUI::ECursor> _shown;
};

} // namespace KAV::Native
