#include "native/linux/x11_focus.h"

namespace KAV::Native {

using Platform::Xcb;
using Platform::XReply;

namespace {

constexpr std::uint32_t CheckAfterMs = 100;

} // namespace

void CX11Focus::Take(std::uint32_t nowMs) {
    if (!_before) {
        const auto owner = Owner();
        if (owner != _window) _before = owner;
    }
    // Not to the parent when the window is hidden: without a window manager the focus would then be nowhere,
    // and the host would get no more keys.
    Xcb()->set_input_focus(_display.Connection(), XCB_INPUT_FOCUS_POINTER_ROOT, _window, _display.Time());
    _checkMs = nowMs + CheckAfterMs;
}

void CX11Focus::GiveBack() {
    _checkMs.reset();
    if (!_before || !_ancestors.IsInEditor(Owner())) return;
    auto* const connection = _display.Connection();
    const xcb_window_t before =
        *_before != XCB_INPUT_FOCUS_NONE ? *_before : xcb_window_t{XCB_INPUT_FOCUS_POINTER_ROOT};
    const XReply<xcb_generic_error_t> error(Xcb()->request_check(connection,
        Xcb()->set_input_focus_checked(connection, XCB_INPUT_FOCUS_POINTER_ROOT, before, XCB_CURRENT_TIME)));
    if (error == nullptr || _ancestors.HostWindow() == 0) return;
    Xcb()->set_input_focus(
        connection, XCB_INPUT_FOCUS_POINTER_ROOT, _ancestors.HostWindow(), XCB_CURRENT_TIME);
}

bool CX11Focus::OnEvent(const xcb_generic_event_t& event) {
    if ((event.response_type & 0x7Fu) != XCB_FOCUS_OUT) return false;
    const auto& lost = reinterpret_cast<const xcb_focus_out_event_t&>(event);
    if (lost.event != _window || lost.detail == XCB_NOTIFY_DETAIL_POINTER ||
        lost.detail == XCB_NOTIFY_DETAIL_INFERIOR)
        return false;
    // A grab borrows the keyboard.
    if (lost.mode == XCB_NOTIFY_MODE_GRAB || lost.mode == XCB_NOTIFY_MODE_UNGRAB) return false;
    return !_checkMs; // until then it isn't known
}

bool CX11Focus::NextTime(std::uint32_t& timeMs) const noexcept {
    if (!_checkMs) return false;
    timeMs = *_checkMs;
    return true;
}

bool CX11Focus::OnTime(std::uint32_t nowMs) {
    if (!_checkMs || static_cast<std::int32_t>(nowMs - *_checkMs) < 0) return false;
    _checkMs.reset();
    const auto owner = Owner();
    if (_ancestors.IsInEditor(owner)) return false;
    if (!_ancestors.IsInHost(owner)) return true;
    Xcb()->set_input_focus(_display.Connection(), XCB_INPUT_FOCUS_POINTER_ROOT, _window, XCB_CURRENT_TIME);
    return false;
}

xcb_window_t CX11Focus::Owner() const {
    const XReply<xcb_get_input_focus_reply_t> reply(Xcb()->get_input_focus_reply(
        _display.Connection(), Xcb()->get_input_focus(_display.Connection()), nullptr));
    return reply != nullptr ? reply->focus : xcb_window_t{XCB_INPUT_FOCUS_NONE};
}

} // namespace KAV::Native
