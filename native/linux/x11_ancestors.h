#pragma once

#include "native/linux/x11_display.h"

#include <vector>

namespace KAV::Native {

/// The windows that the editor's lies in, from itself up to the child of the root. Hosts put the window that
/// they give an editor into others later, and hide one of those, about which the editor's own window hears
/// nothing. So each of them is watched. Threads: the window's.
class CX11Ancestors final {
public:
    /// The display must outlive it.
    CX11Ancestors(CX11Display& display, xcb_window_t window);

    /// True if the event has changed what is said below.
    bool OnEvent(const xcb_generic_event_t& event);

    /// All of them are mapped, so that the window can be seen.
    bool AreMapped() const noexcept;
    /// The host's top-level window: the one that a window manager knows, else the child of the root. 0: there
    /// is none, the editor's window is on the root itself.
    xcb_window_t HostWindow() const noexcept { return _hostWindow; }
    /// Whether a window is the host's top-level one or lies in it.
    bool IsInHost(xcb_window_t window) const;
    /// Whether a window is the editor's or lies in it.
    bool IsInEditor(xcb_window_t window) const;

private:
    struct SWindow {
        xcb_window_t id = 0;
        bool isMapped = false;
    };

    void Find();
    void FindHostWindow();
    bool SetMapped(xcb_window_t window, bool mapped);
    bool Lies(xcb_window_t window, xcb_window_t in) const;
    xcb_window_t ParentOf(xcb_window_t window) const;

    CX11Display& _display;
    xcb_atom_t _state;
    std::vector<SWindow> _windows; // the editor's first
    xcb_window_t _hostWindow = 0;
};

} // namespace KAV::Native
