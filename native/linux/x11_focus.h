#pragma once

#include "native/linux/x11_ancestors.h"
#include "native/linux/x11_display.h"

#include <cstdint>
#include <optional>

namespace KAV::Native {

/// The keyboard focus of the editor's window: taken, defended once, and given back.
///
/// The first press in a host's window that wasn't active makes a window manager activate it, and the focus
/// goes to the host's window shortly before or after our request: then we lose it again, or the request,
/// whose time is older than that change, is ignored without any event. So 0.1 s after a request we ask who
/// has it.
///
/// Threads: the window's.
class CX11Focus final {
public:
    /// Both must outlive it.
    CX11Focus(CX11Display& display, const CX11Ancestors& ancestors, xcb_window_t window) noexcept
        : _display(display), _ancestors(ancestors), _window(window) {}

    /// Takes it with the time of the user's last event.
    void Take(std::uint32_t nowMs);
    /// To the window that had it before it was first taken, if it is still ours.
    void GiveBack();

    /// True if the focus has gone to another window for good.
    bool OnEvent(const xcb_generic_event_t& event);
    /// When OnTime() is due; false: never.
    bool NextTime(std::uint32_t& timeMs) const noexcept;
    /// As OnEvent().
    bool OnTime(std::uint32_t nowMs);

private:
    xcb_window_t Owner() const;

    CX11Display& _display;
    const CX11Ancestors& _ancestors;
    xcb_window_t _window;
    std::optional<xcb_window_t> _before;   // that had it before the first request
    std::optional<std::uint32_t> _checkMs; // when to ask who has it
};

} // namespace KAV::Native
