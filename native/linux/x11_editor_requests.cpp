// What the editor asks of its window.

#include "native/linux/x11_editor_window.h"
#include "utils/clock.h"

#include <algorithm>
#include <array>
#include <utility>

namespace KAV::Native {

using Platform::Xcb;
using Platform::XReply;

namespace {

constexpr std::uint32_t EditorEvents =
    XCB_EVENT_MASK_EXPOSURE | XCB_EVENT_MASK_STRUCTURE_NOTIFY | XCB_EVENT_MASK_VISIBILITY_CHANGE |
    XCB_EVENT_MASK_BUTTON_PRESS | XCB_EVENT_MASK_BUTTON_RELEASE | XCB_EVENT_MASK_POINTER_MOTION |
    XCB_EVENT_MASK_ENTER_WINDOW | XCB_EVENT_MASK_LEAVE_WINDOW | XCB_EVENT_MASK_KEY_PRESS |
    XCB_EVENT_MASK_KEY_RELEASE | XCB_EVENT_MASK_FOCUS_CHANGE | XCB_EVENT_MASK_PROPERTY_CHANGE;

/// A side of a window as the display takes it.
std::uint32_t Side(std::int32_t size) noexcept {
    return static_cast<std::uint32_t>(std::clamp(size, 1, 0x7FFF));
}

/// For hosts whose parent is the socket of a toolkit: version, and whether the window is to be mapped.
void TellSocket(CX11Display& display, xcb_window_t window, bool isMapped) {
    const std::array<std::uint32_t, 2> info{0, isMapped ? 1u : 0u};
    const auto name = display.Atom("_XEMBED_INFO");
    Xcb()->change_property(
        display.Connection(), XCB_PROP_MODE_REPLACE, window, name, name, 32, info.size(), info.data());
}

/// The same hosts size the window by these hints, and make it 1 x 1 without them.
void TellSize(CX11Display& display, xcb_window_t window, std::int32_t width, std::int32_t height) {
    constexpr std::uint32_t hasSize = 8;
    constexpr std::uint32_t hasLeast = 16;
    constexpr std::uint32_t hasBase = 256;
    std::array<std::uint32_t, 18> hints{hasSize | hasLeast | hasBase};
    for (const std::size_t place : {3u, 5u, 15u}) { // size, least size, base size
        hints.at(place) = Side(width);
        hints.at(place + 1) = Side(height);
    }
    Xcb()->change_property(display.Connection(), XCB_PROP_MODE_REPLACE, window, XCB_ATOM_WM_NORMAL_HINTS,
        XCB_ATOM_WM_SIZE_HINTS, 32, hints.size(), hints.data());
}

void SetSize(CX11Display& display, xcb_window_t window, std::int32_t width, std::int32_t height) {
    const std::array<std::uint32_t, 2> size{Side(width), Side(height)};
    Xcb()->configure_window(
        display.Connection(), window, XCB_CONFIG_WINDOW_WIDTH | XCB_CONFIG_WINDOW_HEIGHT, size.data());
}

std::int32_t ScreenNumber(const CX11Display& display) noexcept {
    std::int32_t number = 0;
    for (auto screens = Xcb()->setup_roots_iterator(Xcb()->get_setup(display.Connection())); screens.rem > 0;
         Xcb()->screen_next(&screens), ++number) {
        if (screens.data->root == display.Root()) return number;
    }
    return 0;
}

bool Exists(CX11Display& display, xcb_window_t window) {
    const XReply<xcb_get_geometry_reply_t> reply(Xcb()->get_geometry_reply(
        display.Connection(), Xcb()->get_geometry(display.Connection(), window), nullptr));
    return reply != nullptr;
}

} // namespace

std::unique_ptr<CX11Window> CX11Window::Create(const std::string& display, xcb_window_t parent,
    std::int32_t width, std::int32_t height, std::u16string& reason) {
    auto connected = CX11Display::Connect(display, parent, reason);
    if (connected == nullptr) return nullptr;
    const auto window = connected->MakeWindow(parent, {0, 0, width, height}, EditorEvents, false);
    TellSocket(*connected, window, false);
    TellSize(*connected, window, width, height);
    if (!Exists(*connected, window)) {
        reason = u"the display can't create a window";
        return nullptr;
    }
    auto made = std::make_unique<CX11EditorWindow>(std::move(connected), parent, window);
    if (made->IsUsable()) return made;
    reason = u"the system can't create a timer";
    return nullptr;
}

void CX11EditorWindow::End() noexcept {
    _client = nullptr;
    if (auto* const loop = std::exchange(_loop, nullptr)) loop->SetFileList(nullptr);
    _menu.reset();
    _box.reset();
    const auto window = std::exchange(_window, xcb_window_t{0});
    if (window == 0 || _isGone || _display->IsLost()) return;
    _pointer.Capture(false);
    _focus.GiveBack();
    Xcb()->destroy_window(_display->Connection(), window);
    // The host may go on with its own window as soon as ours isn't there.
    Exists(*_display, window);
}

void CX11EditorWindow::Show(bool show) noexcept {
    TellSocket(*_display, _window, show);
    if (show) {
        Xcb()->map_window(_display->Connection(), _window);
    } else {
        Xcb()->unmap_window(_display->Connection(), _window);
    }
    _display->Flush();
}

void CX11EditorWindow::Resize(std::int32_t width, std::int32_t height) noexcept {
    TellSize(*_display, _window, width, height);
    SetSize(*_display, _window, width, height);
    _display->Flush();
}

void CX11EditorWindow::ResizeParent(std::int32_t width, std::int32_t height) noexcept {
    SetSize(*_display, _parent, width, height);
    _display->Flush();
}

void CX11EditorWindow::Capture(bool capture) noexcept {
    _pointer.Capture(capture);
}

void CX11EditorWindow::SetCursor(GUI::ECursor cursor) noexcept {
    _cursors.Set(_window, cursor);
}

void CX11EditorWindow::Focus() noexcept {
    _focus.Take(Utils::TickMs());
}

void CX11EditorWindow::ShowMenu(const GUI::Menu& menu) noexcept {
    CloseMenu();
    if (!IsThere() || IsModal() || _isHidden) return;
    try {
        _menu = CX11Menu::Open(*_display, _window, menu, [this](std::uint32_t command) {
            _hasMenuEnded = true;
            _command = command;
        });
    } catch (...) { // no memory: no menu
    }
}

void CX11EditorWindow::CloseMenu() noexcept {
    _menu.reset();
    _hasMenuEnded = false;
    _command = 0;
}

bool CX11EditorWindow::OpenTextBox(
    const GUI::SPixelRect& place, std::u16string_view text, bool numbersOnly) noexcept {
    CloseTextBox();
    if (!IsThere() || IsModal() || _isHidden) return false;
    try {
        _display->ResetCompose();
        _box = CX11TextBox::Open(*_display, _window, place, text, numbersOnly, [this] { _isTyped = true; });
        if (_box != nullptr) Focus();
    } catch (...) { // no memory: no box
    }
    return _box != nullptr;
}

std::u16string CX11EditorWindow::BoxText() const {
    return _box != nullptr ? _box->Text() : std::u16string();
}

void CX11EditorWindow::CloseTextBox() noexcept {
    _box.reset();
    _isTyped = false;
}

bool CX11EditorWindow::Put(const std::uint32_t* pixels, std::int32_t stride, std::int32_t width,
    std::int32_t height, std::span<const Platform::SArea> areas) noexcept {
    try {
        if (!_isGone && _window != 0 && CanBeSeen() && _picture.Put(pixels, stride, width, height, areas))
            return true;
    } catch (...) { // no memory: as if the display were busy
    }
    _isPictureDue = true;
    return false;
}

Platform::SSystemWindow CX11EditorWindow::System() const noexcept {
    if (_isGone || _window == 0) return {};
    return {_display->Connection(), ScreenNumber(*_display), _window, _display->Visual()};
}

void CX11EditorWindow::SetDrawnWindow(std::uint32_t window) noexcept {
    _drawnWindow = window;
    if (window != 0) _picture.Forget();
}

} // namespace KAV::Native
