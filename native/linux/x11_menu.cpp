#include "native/linux/x11_menu.h"

#include "native/menu_model.h"
#include "native/menu_painter.h"
#include "pixels/lettering.h"
#include "utils/clock.h"

#include <algorithm>
#include <array>
#include <exception>
#include <optional>
#include <utility>
#include <vector>
#include <xkbcommon/xkbcommon-keysyms.h>

namespace KAV::Native {

namespace {

using Platform::SArea;
using Platform::Xcb;
using Platform::XReply;

constexpr std::uint32_t PollMs = 100; // between attempts to grab, and looks for fonts that were found

constexpr std::uint32_t PointerEvents =
    XCB_EVENT_MASK_BUTTON_PRESS | XCB_EVENT_MASK_BUTTON_RELEASE | XCB_EVENT_MASK_POINTER_MOTION;
constexpr std::uint32_t WindowEvents = PointerEvents | XCB_EVENT_MASK_EXPOSURE | XCB_EVENT_MASK_LEAVE_WINDOW;

std::optional<EMenuKey> MenuKeyOf(std::uint32_t symbol) noexcept {
    switch (symbol) {
    case XKB_KEY_Up:
    case XKB_KEY_KP_Up:
        return EMenuKey::Up;
    case XKB_KEY_Down:
    case XKB_KEY_KP_Down:
        return EMenuKey::Down;
    case XKB_KEY_Left:
    case XKB_KEY_KP_Left:
        return EMenuKey::Left;
    case XKB_KEY_Right:
    case XKB_KEY_KP_Right:
        return EMenuKey::Right;
    case XKB_KEY_Home:
    case XKB_KEY_KP_Home:
        return EMenuKey::Home;
    case XKB_KEY_End:
    case XKB_KEY_KP_End:
        return EMenuKey::End;
    case XKB_KEY_Page_Up:
    case XKB_KEY_KP_Page_Up:
        return EMenuKey::PageUp;
    case XKB_KEY_Page_Down:
    case XKB_KEY_KP_Page_Down:
        return EMenuKey::PageDown;
    case XKB_KEY_Return:
    case XKB_KEY_KP_Enter:
        return EMenuKey::Enter;
    case XKB_KEY_Escape:
        return EMenuKey::Escape;
    default:
        return std::nullopt;
    }
}

/// A window on the display, and what it shows.
struct SMenuWindow {
    std::uint32_t id = 0; // of its level
    xcb_window_t window = 0;
    SArea place;
    std::optional<std::uint32_t> painted; // the revision
};

class CMenu final : public CX11Menu {
public:
    CMenu(CX11Display& display, xcb_window_t owner, const GUI::Menu& menu,
        std::unique_ptr<Pixels::CLettering> lettering, Ended ended)
        : _display(display), _owner(owner), _menu(menu), _lettering(std::move(lettering)),
          _painter(*_lettering, MenuMetrics(display.DotsPerInch())), _ended(std::move(ended)) {
        std::int32_t x = 0;
        std::int32_t y = 0;
        const bool isHeld = FindPointer(x, y);
        _model.emplace(_menu, MenuMetrics(_display.DotsPerInch()), _display.MonitorAt(x, y),
            [this](const GUI::Menu& items) { return _painter.WidthOf(items); });
        _model->Open(x, y, isHeld);
        ShowWindows();
        Grab();
    }
    ~CMenu() override {
        if (_hasPointer) Xcb()->ungrab_pointer(_display.Connection(), XCB_CURRENT_TIME);
        if (_hasKeyboard) Xcb()->ungrab_keyboard(_display.Connection(), XCB_CURRENT_TIME);
        HideWindows(0);
        _display.Flush();
    }

    bool OnEvent(const xcb_generic_event_t& event) override;
    bool NextTime(std::uint32_t& timeMs) const override;
    void OnTime(std::uint32_t nowMs) override;

private:
    bool FindPointer(std::int32_t& x, std::int32_t& y);
    void Grab();
    void OnPress(const xcb_button_press_event_t& event);
    void OnRelease(const xcb_button_release_event_t& event);
    void OnMove(const xcb_motion_notify_event_t& event);
    void OnKey(const xcb_key_press_event_t& event);
    bool OnExpose(xcb_window_t window);
    void Update();
    void End(std::uint32_t command);
    void ShowWindows() noexcept;
    void ShowWindow(const SMenuLevel& level, SMenuWindow& window);
    void HideWindows(std::size_t from) noexcept;

    CX11Display& _display;
    xcb_window_t _owner;
    GUI::Menu _menu;
    std::unique_ptr<Pixels::CLettering> _lettering;
    CMenuPainter _painter;
    Ended _ended;                      // null: it has been called
    std::optional<CMenuModel> _model;  // never empty after the constructor
    std::vector<SMenuWindow> _windows; // one for each level of the model
    bool _hasPointer = false;
    bool _hasKeyboard = false;
    std::uint32_t _pollMs = Utils::TickMs() + PollMs;
    std::uint8_t _closing = 0; // the button whose press has closed it and that is still down; 0: it is open
};

/// True if a button is down there. In the corner if the pointer is on another screen.
bool CMenu::FindPointer(std::int32_t& x, std::int32_t& y) {
    auto* const connection = _display.Connection();
    const XReply<xcb_query_pointer_reply_t> reply(
        Xcb()->query_pointer_reply(connection, Xcb()->query_pointer(connection, _display.Root()), nullptr));
    if (reply == nullptr || reply->same_screen == 0) return false;
    x = reply->root_x;
    y = reply->root_y;
    return (reply->mask & (XCB_BUTTON_MASK_1 | XCB_BUTTON_MASK_2 | XCB_BUTTON_MASK_3)) != 0;
}

/// With the editor's window, which stays when the menu's windows go: so the release of a press that closes
/// the menu comes here as well.
void CMenu::Grab() {
    auto* const connection = _display.Connection();
    if (!_hasPointer) {
        const auto cookie =
            Xcb()->grab_pointer(connection, 1, _owner, static_cast<std::uint16_t>(PointerEvents),
                XCB_GRAB_MODE_ASYNC, XCB_GRAB_MODE_ASYNC, 0, 0, XCB_CURRENT_TIME);
        const XReply<xcb_grab_pointer_reply_t> reply(Xcb()->grab_pointer_reply(connection, cookie, nullptr));
        _hasPointer = reply != nullptr && reply->status == XCB_GRAB_STATUS_SUCCESS;
    }
    if (!_hasKeyboard) {
        const auto cookie = Xcb()->grab_keyboard(
            connection, 1, _owner, XCB_CURRENT_TIME, XCB_GRAB_MODE_ASYNC, XCB_GRAB_MODE_ASYNC);
        const XReply<xcb_grab_keyboard_reply_t> reply(
            Xcb()->grab_keyboard_reply(connection, cookie, nullptr));
        _hasKeyboard = reply != nullptr && reply->status == XCB_GRAB_STATUS_SUCCESS;
    }
}

bool CMenu::OnEvent(const xcb_generic_event_t& event) {
    if (_ended == nullptr) return false;
    switch (event.response_type & 0x7Fu) {
    // These may end it.
    case XCB_KEY_PRESS:
    case XCB_KEY_RELEASE:
        OnKey(reinterpret_cast<const xcb_key_press_event_t&>(event));
        return true;
    case XCB_BUTTON_PRESS:
        OnPress(reinterpret_cast<const xcb_button_press_event_t&>(event));
        return true;
    case XCB_BUTTON_RELEASE:
        OnRelease(reinterpret_cast<const xcb_button_release_event_t&>(event));
        return true;
    case XCB_MOTION_NOTIFY:
        OnMove(reinterpret_cast<const xcb_motion_notify_event_t&>(event));
        return true;
    case XCB_LEAVE_NOTIFY: {
        const auto& leave = reinterpret_cast<const xcb_leave_notify_event_t&>(event);
        const bool isOurs = std::any_of(_windows.begin(), _windows.end(),
            [&leave](const SMenuWindow& window) { return window.window == leave.event; });
        if (isOurs && leave.mode == XCB_NOTIFY_MODE_NORMAL && _closing == 0) {
            _model->Move(leave.root_x, leave.root_y, Utils::TickMs());
            ShowWindows();
        }
        return isOurs;
    }
    case XCB_EXPOSE:
        return OnExpose(reinterpret_cast<const xcb_expose_event_t&>(event).window);
    default:
        return false;
    }
}

void CMenu::OnPress(const xcb_button_press_event_t& event) {
    constexpr std::uint8_t wheelUp = 4;
    constexpr std::uint8_t wheelDown = 5;
    constexpr std::uint8_t lastWheel = 7;
    _display.SetTime(event.time);
    if (_closing != 0) return;
    if (event.detail == wheelUp || event.detail == wheelDown) {
        _model->Wheel(event.root_x, event.root_y, event.detail == wheelUp ? 1 : -1, Utils::TickMs());
        ShowWindows();
    } else if (event.detail < wheelUp || event.detail > lastWheel) {
        _model->Press(event.root_x, event.root_y, Utils::TickMs());
        if (_model->IsOver()) {
            _closing = event.detail;
            HideWindows(0);
            _display.Flush();
        } else {
            ShowWindows();
        }
    }
}

void CMenu::OnRelease(const xcb_button_release_event_t& event) {
    constexpr std::uint8_t wheelUp = 4;
    constexpr std::uint8_t lastWheel = 7;
    _display.SetTime(event.time);
    if (_closing != 0) {
        if (event.detail == _closing) End(0);
        return;
    }
    if (event.detail >= wheelUp && event.detail <= lastWheel) return;
    _model->Release(event.root_x, event.root_y);
    Update();
}

void CMenu::OnMove(const xcb_motion_notify_event_t& event) {
    if (_closing != 0) return;
    _model->Move(event.root_x, event.root_y, Utils::TickMs());
    ShowWindows();
}

void CMenu::OnKey(const xcb_key_press_event_t& event) {
    _display.SetTime(event.time);
    const auto typed = _display.Typed(event);
    const auto key = typed.down ? MenuKeyOf(typed.symbol) : std::nullopt;
    if (!key || _closing != 0) return;
    _model->Key(*key);
    Update();
}

bool CMenu::OnExpose(xcb_window_t window) {
    for (auto& shown : _windows) {
        if (shown.window != window) continue;
        shown.painted.reset();
        ShowWindows();
        return true;
    }
    return false;
}

bool CMenu::NextTime(std::uint32_t& timeMs) const {
    timeMs = _pollMs;
    std::uint32_t modelMs = 0;
    if (_model->NextTime(modelMs) && static_cast<std::int32_t>(modelMs - timeMs) < 0) timeMs = modelMs;
    return true;
}

void CMenu::OnTime(std::uint32_t nowMs) {
    if (_closing != 0 || _ended == nullptr) return;
    _model->OnTime(nowMs);
    if (static_cast<std::int32_t>(nowMs - _pollMs) >= 0) {
        _pollMs = nowMs + PollMs;
        Grab(); // another program may have let go
        if (_lettering->HasNewGlyphs()) {
            _painter.Forget();
            _model->Measure();
        }
    }
    ShowWindows();
}

void CMenu::Update() {
    if (_model->IsOver()) {
        End(_model->Command());
    } else {
        ShowWindows();
    }
}

/// The last thing that happens to it: the callback may destroy it.
void CMenu::End(std::uint32_t command) {
    HideWindows(0);
    _display.Flush();
    if (const auto ended = std::exchange(_ended, nullptr)) ended(command);
}

void CMenu::HideWindows(std::size_t from) noexcept {
    while (_windows.size() > from) {
        Xcb()->destroy_window(_display.Connection(), _windows.back().window);
        _windows.pop_back();
    }
}

/// Makes the display show what the model has.
void CMenu::ShowWindows() noexcept {
    try {
        const auto& levels = _model->Levels();
        for (std::size_t n = 0; n < levels.size(); ++n) {
            if (n < _windows.size() && _windows[n].id != levels[n].id) HideWindows(n);
            if (n == _windows.size()) _windows.push_back({levels[n].id, 0, {}, std::nullopt});
            ShowWindow(levels[n], _windows[n]);
        }
        HideWindows(levels.size());
    } catch (const std::exception&) { // no memory: it shows what it showed
    }
    _display.Flush();
}

void CMenu::ShowWindow(const SMenuLevel& level, SMenuWindow& window) {
    auto* const connection = _display.Connection();
    if (window.window == 0) {
        window.window = _display.MakeWindow(_display.Root(), level.place, WindowEvents, true);
        const xcb_atom_t kind = _display.Atom("_NET_WM_WINDOW_TYPE_POPUP_MENU");
        Xcb()->change_property(connection, XCB_PROP_MODE_REPLACE, window.window,
            _display.Atom("_NET_WM_WINDOW_TYPE"), XCB_ATOM_ATOM, 32, 1, &kind);
        Xcb()->map_window(connection, window.window);
    } else if (window.place != level.place) {
        const std::array<std::uint32_t, 4> place{static_cast<std::uint32_t>(level.place.left),
            static_cast<std::uint32_t>(level.place.top), static_cast<std::uint32_t>(level.place.width),
            static_cast<std::uint32_t>(level.place.height)};
        Xcb()->configure_window(connection, window.window,
            XCB_CONFIG_WINDOW_X | XCB_CONFIG_WINDOW_Y | XCB_CONFIG_WINDOW_WIDTH | XCB_CONFIG_WINDOW_HEIGHT,
            place.data());
    }
    window.place = level.place;
    if (window.painted == level.revision) return;
    _display.Put(window.window, _painter.Paint(level));
    window.painted = level.revision;
}

} // namespace

std::unique_ptr<CX11Menu> CX11Menu::Open(
    CX11Display& display, xcb_window_t owner, const GUI::Menu& menu, Ended ended) {
    if (menu.empty()) return nullptr;
    auto lettering = Pixels::CLettering::Create();
    if (lettering == nullptr) return nullptr;
    return std::make_unique<CMenu>(display, owner, menu, std::move(lettering), std::move(ended));
}

} // namespace KAV::Native
