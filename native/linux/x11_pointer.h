#pragma once

#include "gui/window.h"
#include "native/linux/x11_display.h"
#include "native/linux/x11_keys.h"

#include <cstdint>

namespace KAV::Native {

/// What the pointer does in the editor's window, told to the client. A drag lasts from a press to that
/// button's release, or until it is cancelled; then the release is not reported. Threads: the window's.
class CX11Pointer final {
public:
    /// Both must outlive it.
    CX11Pointer(CX11Display& display, const CX11Modifiers& modifiers, xcb_window_t window) noexcept
        : _display(display), _modifiers(modifiers), _window(window) {}

    void OnPress(const xcb_button_press_event_t& event, GUI::IWindowClient& client);
    void OnRelease(const xcb_button_release_event_t& event, GUI::IWindowClient& client);
    void OnMove(const xcb_motion_notify_event_t& event, GUI::IWindowClient& client);
    void OnCross(const xcb_enter_notify_event_t& event, GUI::IWindowClient& client);

    /// Ends a drag, if there is one.
    void Cancel(GUI::IWindowClient& client);
    bool IsDragging() const noexcept { return _held != 0; }

    /// All moves and releases come here. A held button sees to that already; without one the pointer is
    /// grabbed, and it doesn't matter much if that fails.
    void Capture(bool capture) noexcept;
    /// The client is to hear when the pointer leaves, once.
    void TrackLeave() noexcept { _tracksLeave = true; }
    /// Reports that it has left, if the client is to hear it and no drag holds it.
    void TellLeave(GUI::IWindowClient& client);

private:
    std::uint32_t Flags() const noexcept;

    CX11Display& _display;
    const CX11Modifiers& _modifiers;
    xcb_window_t _window;
    std::uint32_t _held = 0; // MouseLeft, MouseRight
    bool _isOutside = true;
    bool _tracksLeave = false;
    bool _isGrabbed = false;
};

} // namespace KAV::Native
