#include "native/linux/x11_pointer.h"

namespace KAV::Native {

using Platform::Xcb;

namespace {

// Buttons by the display's numbers: 2 is the middle one, 6 and 7 turn the wheel sideways.
constexpr std::uint8_t LeftButton = 1;
constexpr std::uint8_t RightButton = 3;
constexpr std::uint8_t WheelUp = 4;
constexpr std::uint8_t WheelDown = 5;

std::uint32_t FlagOf(std::uint8_t button) noexcept {
    if (button == LeftButton) return GUI::MouseLeft;
    if (button == RightButton) return GUI::MouseRight;
    return 0;
}

} // namespace

std::uint32_t CX11Pointer::Flags() const noexcept {
    return (_modifiers.IsShiftDown() ? GUI::MouseShift : 0u) |
           (_modifiers.IsControlDown() ? GUI::MouseControl : 0u);
}

void CX11Pointer::OnPress(const xcb_button_press_event_t& event, GUI::IWindowClient& client) {
    if (event.detail == WheelUp || event.detail == WheelDown) {
        client.OnWheel(event.detail == WheelUp ? 1.0f : -1.0f, Flags() | _held);
        return;
    }
    const auto button = FlagOf(event.detail);
    if (button == 0) return;
    _held |= button;
    client.OnPress(event.event_x, event.event_y, Flags() | _held, event.time);
}

void CX11Pointer::OnRelease(const xcb_button_release_event_t& event, GUI::IWindowClient& client) {
    const auto button = FlagOf(event.detail);
    if ((_held & button) == 0) return;
    _held &= ~button;
    client.OnRelease(event.event_x, event.event_y, Flags() | button);
    TellLeave(client);
}

void CX11Pointer::OnMove(const xcb_motion_notify_event_t& event, GUI::IWindowClient& client) {
    client.OnMove(event.event_x, event.event_y, Flags() | _held);
}

void CX11Pointer::OnCross(const xcb_enter_notify_event_t& event, GUI::IWindowClient& client) {
    // Other clients' grabs, such as a window manager's on a press, move no pointer.
    if (event.mode == XCB_NOTIFY_MODE_GRAB) return;
    _isOutside = (event.response_type & 0x7Fu) == XCB_LEAVE_NOTIFY;
    TellLeave(client);
}

void CX11Pointer::TellLeave(GUI::IWindowClient& client) {
    if (!_isOutside || !_tracksLeave || _held != 0) return;
    _tracksLeave = false;
    client.OnLeave();
}

void CX11Pointer::Cancel(GUI::IWindowClient& client) {
    if (_held == 0) return;
    _held = 0;
    client.OnCancel();
}

void CX11Pointer::Capture(bool capture) noexcept {
    auto* const connection = _display.Connection();
    if (capture && _held == 0 && !_isGrabbed) {
        constexpr std::uint16_t events = XCB_EVENT_MASK_BUTTON_PRESS | XCB_EVENT_MASK_BUTTON_RELEASE |
                                         XCB_EVENT_MASK_POINTER_MOTION | XCB_EVENT_MASK_ENTER_WINDOW |
                                         XCB_EVENT_MASK_LEAVE_WINDOW;
        const auto asked = Xcb()->grab_pointer(connection, 0, _window, events, XCB_GRAB_MODE_ASYNC,
            XCB_GRAB_MODE_ASYNC, XCB_WINDOW_NONE, XCB_CURSOR_NONE, _display.Time());
        Xcb()->discard_reply(connection, asked.sequence);
        _isGrabbed = true;
    } else if (!capture && _isGrabbed) {
        Xcb()->ungrab_pointer(connection, XCB_CURRENT_TIME);
        _isGrabbed = false;
    }
}

} // namespace KAV::Native
