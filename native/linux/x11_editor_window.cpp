#include "native/linux/x11_editor_window.h"

#include "utils/clock.h"

#include <algorithm>
#include <array>
#include <optional>
#include <poll.h>
#include <utility>

namespace KAV::Native {

using Platform::Xcb;
using Platform::XReply;

namespace {

constexpr int MostEvents = 256; // at once, so that a flood of them leaves room for ticks

template<typename TEvent>
const TEvent& As(const xcb_generic_event_t& event) noexcept {
    return reinterpret_cast<const TEvent&>(event);
}

std::uint32_t TypeOf(const xcb_generic_event_t& event) noexcept {
    return event.response_type & 0x7Fu;
}

bool IsButton(const xcb_generic_event_t& event) noexcept {
    return TypeOf(event) == XCB_BUTTON_PRESS || TypeOf(event) == XCB_BUTTON_RELEASE;
}

} // namespace

CX11EditorWindow::CX11EditorWindow(
    std::unique_ptr<CX11Display> display, xcb_window_t parent, xcb_window_t window)
    : _display(std::move(display)), _parent(parent), _window(window), _ancestors(*_display, window),
      _focus(*_display, _ancestors, window), _modifiers(*_display), _keys(*_display),
      _pointer(*_display, _modifiers, window), _cursors(*_display), _picture(*_display, window),
      _isHidden(!_ancestors.AreMapped()) {}

CX11EditorWindow::~CX11EditorWindow() {
    End();
}

void CX11EditorWindow::Begin(
    GUI::IWindowClient& client, Platform::CWindowLoop& loop, std::uint32_t framesPerSecond) {
    _client = &client;
    _loop = &loop;
    _loop->SetHostWindow(_ancestors.HostWindow());
    _loop->SetFileList(&_files);
    _timer.Start(framesPerSecond);
}

// A round

bool CX11EditorWindow::Round(int wake) noexcept {
    if (!IsThere()) return false;
    try {
        CheckModal();
        _display->Flush();
        const bool isBusy = HandleEvents();
        if (IsThere()) {
            _display->Flush();
            Wait(wake, isBusy);
            HandleEvents();
        }
        if (IsThere()) OnTimes();
        if (_timer.Take() && IsThere()) _client->OnTick(Utils::TickMs());
        if (IsThere()) _display->Flush();
    } catch (...) { // no memory: this event is lost
        CloseMenu();
    }
    return !IsGoneNow();
}

/// Handles what has been received, and reports whether that was anything.
bool CX11EditorWindow::HandleEvents() {
    int count = 0;
    while (count < MostEvents && IsThere()) {
        const XReply<xcb_generic_event_t> event(Xcb()->poll_for_event(_display->Connection()));
        if (event == nullptr) break;
        ++count;
        Handle(*event);
    }
    if (IsThere()) CheckPicture();
    return count > 0;
}

void CX11EditorWindow::Wait(int wake, bool isBusy) const {
    std::array<pollfd, 3> waits{
        {{_display->Descriptor(), POLLIN, 0}, {_timer.Descriptor(), POLLIN, 0}, {wake, POLLIN, 0}}};
    poll(waits.data(), waits.size(), isBusy ? 0 : TimeLeft());
}

/// Milliseconds until OnTimes() has something to do; -1: without limit.
int CX11EditorWindow::TimeLeft() const {
    std::optional<std::int32_t> left;
    const auto now = Utils::TickMs();
    const auto consider = [&](const auto& timed) {
        std::uint32_t time = 0;
        if (!timed.NextTime(time)) return;
        const auto wait = std::max(static_cast<std::int32_t>(time - now), 0);
        left = std::min(left.value_or(wait), wait);
    };
    consider(_focus);
    consider(_files);
    if (_menu != nullptr) consider(*_menu);
    if (_box != nullptr) consider(*_box);
    return left.value_or(-1);
}

void CX11EditorWindow::OnTimes() {
    const auto now = Utils::TickMs();
    const auto isDue = [now](const IX11Overlay& overlay) {
        std::uint32_t time = 0;
        return overlay.NextTime(time) && static_cast<std::int32_t>(now - time) >= 0;
    };
    _pointer.TellLeave(*_client);
    if (_focus.OnTime(now)) LoseFocus();
    if (isDue(_files)) _files.OnTime(now);
    if (_menu != nullptr && isDue(*_menu)) _menu->OnTime(now);
    if (_box != nullptr && isDue(*_box)) _box->OnTime(now);
    AfterOverlay();
}

/// What becomes modal ends what the user was doing.
void CX11EditorWindow::CheckModal() {
    const bool isModal = IsModal();
    if (std::exchange(_wasModal, isModal) == isModal || !isModal) return;
    CloseMenu();
    _pointer.Cancel(*_client);
}

/// After a refused picture the client has to draw again once there is room.
void CX11EditorWindow::CheckPicture() {
    _picture.TakeAnswers();
    if (!_isPictureDue || !CanBeSeen() || !_picture.IsFree()) return;
    _isPictureDue = false;
    _client->OnPaint();
}

bool CX11EditorWindow::IsGoneNow() noexcept {
    if (!_isGone && !_display->IsLost()) return false;
    _isGone = true;
    _menu.reset();
    _box.reset();
    if (auto* const loop = std::exchange(_loop, nullptr)) {
        if (auto* const modal = loop->Modal()) modal->Cancel(); // a list of files gets no more events
        loop->SetFileList(nullptr);
    }
    if (auto* const client = std::exchange(_client, nullptr)) client->OnGone();
    return true;
}

// Events

void CX11EditorWindow::Handle(const xcb_generic_event_t& event) {
    _display->OnEvent(event);
    _picture.OnEvent(event);
    CheckModal();
    NoteState(event);
    if (_files.OnEvent(event)) return;
    if (TypeOf(event) == XCB_KEY_PRESS || TypeOf(event) == XCB_KEY_RELEASE) {
        HandleKey(As<xcb_key_press_event_t>(event));
        return;
    }
    if (_ancestors.OnEvent(event)) OnAncestors();
    if (_focus.OnEvent(event)) LoseFocus();
    const bool isRefused = IsButton(event) && IsModal();
    if (!isRefused && TakeByOverlay(event)) return;
    if (IsThere()) HandleOwn(event);
    // The menu gets the release of the button that opened it.
    if (_menu != nullptr && IsThere()) _pointer.Cancel(*_client);
}

/// The time and the modifiers of the user's events.
void CX11EditorWindow::NoteState(const xcb_generic_event_t& event) {
    switch (TypeOf(event)) {
    case XCB_KEY_PRESS:
    case XCB_KEY_RELEASE:
        _display->SetTime(As<xcb_key_press_event_t>(event).time);
        break; // the modifiers follow when the key is known
    case XCB_BUTTON_PRESS:
    case XCB_BUTTON_RELEASE:
        _display->SetTime(As<xcb_button_press_event_t>(event).time);
        _modifiers.OnState(As<xcb_button_press_event_t>(event).state);
        break;
    case XCB_MOTION_NOTIFY:
        _modifiers.OnState(As<xcb_motion_notify_event_t>(event).state);
        break;
    case XCB_ENTER_NOTIFY:
    case XCB_LEAVE_NOTIFY:
        _modifiers.OnState(As<xcb_enter_notify_event_t>(event).state);
        break;
    default:
        break;
    }
}

bool CX11EditorWindow::TakeByOverlay(const xcb_generic_event_t& event) {
    bool isTaken = _menu != nullptr && _menu->OnEvent(event);
    if (!isTaken) isTaken = _box != nullptr && _box->OnEvent(event);
    AfterOverlay();
    return isTaken;
}

void CX11EditorWindow::AfterOverlay() {
    if (std::exchange(_hasMenuEnded, false)) {
        _menu.reset();
        const auto command = std::exchange(_command, 0);
        if (command != 0 && IsThere()) _client->OnCommand(command);
    }
    if (std::exchange(_isTyped, false) && IsThere()) _client->OnTyped();
}

void CX11EditorWindow::HandleKey(const xcb_key_press_event_t& event) {
    const auto key = _display->Typed(event);
    _modifiers.OnKey(key, event.state);
    const bool isOverlays = (_menu != nullptr || _box != nullptr) && !IsModal();
    std::uint32_t use = 0;
    if (!key.down && _keys.IsHandedOn(event)) {
        _keys.HandOn(event, _ancestors.HostWindow());
    } else if (!key.down) {
        const bool isKept = _keys.TakeKept(event, use);
        if (isOverlays) TakeByOverlay(reinterpret_cast<const xcb_generic_event_t&>(event));
        if (use != 0 && IsThere()) _client->OnKey(use, false);
        if (!isKept && !isOverlays) _keys.HandOn(event, _ancestors.HostWindow());
    } else if (isOverlays) {
        _keys.Keep(event, 0);
        TakeByOverlay(reinterpret_cast<const xcb_generic_event_t&>(event));
    } else {
        if (!IsModal()) use = CX11Keys::UseOf(key, _modifiers.IsLeftControlDown());
        if (use == 0) {
            _keys.HandOn(event, _ancestors.HostWindow());
            return;
        }
        _keys.Keep(event, use);
        _client->OnKey(use, true);
    }
}

void CX11EditorWindow::HandleOwn(const xcb_generic_event_t& event) {
    switch (TypeOf(event)) {
    case XCB_EXPOSE:
        HandleExpose(As<xcb_expose_event_t>(event));
        break;
    case XCB_VISIBILITY_NOTIFY:
        if (As<xcb_visibility_notify_event_t>(event).window == _window)
            _isCovered = As<xcb_visibility_notify_event_t>(event).state == XCB_VISIBILITY_FULLY_OBSCURED;
        break;
    case XCB_BUTTON_PRESS:
        if (As<xcb_button_press_event_t>(event).event == _window)
            HandlePress(As<xcb_button_press_event_t>(event));
        break;
    case XCB_BUTTON_RELEASE:
        if (As<xcb_button_release_event_t>(event).event == _window)
            _pointer.OnRelease(As<xcb_button_release_event_t>(event), *_client);
        break;
    case XCB_MOTION_NOTIFY:
        if (As<xcb_motion_notify_event_t>(event).event == _window)
            _pointer.OnMove(As<xcb_motion_notify_event_t>(event), *_client);
        break;
    case XCB_ENTER_NOTIFY:
    case XCB_LEAVE_NOTIFY:
        if (As<xcb_enter_notify_event_t>(event).event == _window &&
            !IsWithin(As<xcb_enter_notify_event_t>(event)))
            _pointer.OnCross(As<xcb_enter_notify_event_t>(event), *_client);
        break;
    case XCB_DESTROY_NOTIFY:
        if (As<xcb_destroy_notify_event_t>(event).window == _window) _isGone = true;
        break;
    default:
        break;
    }
}

void CX11EditorWindow::HandlePress(const xcb_button_press_event_t& event) {
    if (!IsModal()) {
        _pointer.OnPress(event, *_client);
    } else if (event.detail <= XCB_BUTTON_INDEX_3) {
        _loop->Modal()->Raise();
    }
}

/// The pointer goes to the child that a renderer draws into, or comes from it.
bool CX11EditorWindow::IsWithin(const xcb_enter_notify_event_t& event) const noexcept {
    return event.detail == XCB_NOTIFY_DETAIL_INFERIOR && _drawnWindow != 0 && _drawnWindow != _window;
}

void CX11EditorWindow::HandleExpose(const xcb_expose_event_t& event) {
    if (event.window != _window && (event.window != _drawnWindow || _drawnWindow == 0)) return;
    _picture.Repair({event.x, event.y, event.width, event.height});
    if (event.count == 0) _client->OnPaint();
}

void CX11EditorWindow::OnAncestors() {
    if (_loop != nullptr) _loop->SetHostWindow(_ancestors.HostWindow());
    const bool isHidden = !_ancestors.AreMapped();
    if (std::exchange(_isHidden, isHidden) == isHidden || !isHidden) return;
    // Hosts hide their window when the user closes it, and don't say more.
    CloseMenu();
    CloseTextBox();
    _pointer.Cancel(*_client);
}

void CX11EditorWindow::LoseFocus() {
    if (_box != nullptr) _box->OnFocusLost();
    AfterOverlay();
}

} // namespace KAV::Native
