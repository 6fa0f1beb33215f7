#include "native/linux/x11_file_list.h"

#include "native/linux/file_list_disk.h"
#include "native/linux/file_list_model.h"
#include "native/linux/file_list_painter.h"
#include "native/linux/x11_clipboard.h"
#include "platform/xdg/xdg_folders.h"
#include "utils/clock.h"
#include "utils/text.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <deque>
#include <exception>
#include <string_view>
#include <utility>
#include <xkbcommon/xkbcommon-keysyms.h>

namespace KAV::Native {

namespace {

using Platform::SArea;
using Platform::Xcb;
using EMove = CLineEditor::EMove;
using EPart = CFileListPainter::EPart;
using EState = CFileListModel::EState;

constexpr std::uint32_t BlinkMs = 530;
constexpr std::uint32_t DoubleClickMs = 500;
constexpr std::ptrdiff_t WheelRows = 3;
constexpr std::size_t MostUnheard = 100;
constexpr std::uint8_t WheelUp = 4;
constexpr std::uint8_t WheelDown = 5;

constexpr std::uint32_t Events = XCB_EVENT_MASK_EXPOSURE | XCB_EVENT_MASK_STRUCTURE_NOTIFY |
                                 XCB_EVENT_MASK_BUTTON_PRESS | XCB_EVENT_MASK_BUTTON_RELEASE |
                                 XCB_EVENT_MASK_KEY_PRESS | XCB_EVENT_MASK_KEY_RELEASE;

} // namespace

/// An open list.
struct CX11FileList::SParts {
    SParts(CX11FileList& list, const Platform::SFileRequest& request,
        std::unique_ptr<Pixels::CLettering> letters)
        : display(list._display), lettering(std::move(letters)), painter(*lettering, display.DotsPerInch()),
          disk(
              [this, &list] {
                  OnDisk();
                  list.Finish(); // last: it may end this
              },
              list._beforeReading),
          model(request, Platform::HomeFolder().string(), disk) {
        MakeWindow();
        display.ResetCompose();
        Show();
    }
    ~SParts() {
        display.Clipboard().Forget();
        display.ResetCompose();
        Xcb()->destroy_window(display.Connection(), window);
        display.Flush();
    }
    SParts(const SParts&) = delete;
    SParts& operator=(const SParts&) = delete;

    void MakeWindow();
    void SetText(const char* property, xcb_atom_t type, std::string_view text);
    void SetAtom(const char* property, xcb_atom_t type, std::uint32_t value);
    void Show() noexcept;
    void ShowSelected() noexcept;
    void Scroll(std::ptrdiff_t rows) noexcept;
    void TakeFocus() const noexcept;
    bool OnEvent(const xcb_generic_event_t& event);
    void OnDisk(); ///< it has answered
    bool HasDecided() const noexcept {
        return model.State() == EState::Chosen || model.State() == EState::Cancelled;
    }
    void OnInput(std::function<void()> act, bool cancels);
    void OnKey(const STypedKey& key);
    bool OnMoveKey(const STypedKey& key);
    void OnNameKey(const STypedKey& key);
    void OnPress(const xcb_button_press_event_t& event);
    void OnRow(std::size_t row, xcb_timestamp_t time);

    CX11Display& display;
    std::unique_ptr<Pixels::CLettering> lettering;
    CFileListPainter painter;
    CFileListDisk disk;
    CFileListModel model;
    std::string shown;                         // the folder that the last picture showed
    std::deque<std::function<void()>> unheard; // keys and presses that came while the disk was asked
    std::function<void(const std::string&)> answered;
    xcb_window_t window = 0;
    std::size_t first = 0; // the entry in the first row
    bool caretShown = true;
    std::uint32_t blinkMs = 0;
    std::size_t pressed = CFileListModel::None; // the entry of the last press, and its time
    xcb_timestamp_t pressTime = 0;
};

void CX11FileList::SParts::SetText(const char* property, xcb_atom_t type, std::string_view text) {
    Xcb()->change_property(display.Connection(), XCB_PROP_MODE_REPLACE, window, display.Atom(property), type,
        8, static_cast<std::uint32_t>(text.size()), text.data());
}

void CX11FileList::SParts::SetAtom(const char* property, xcb_atom_t type, std::uint32_t value) {
    Xcb()->change_property(
        display.Connection(), XCB_PROP_MODE_REPLACE, window, display.Atom(property), type, 32, 1, &value);
}

void CX11FileList::SParts::MakeWindow() {
    std::int32_t x = 0;
    std::int32_t y = 0;
    display.Pointer(x, y);
    const auto monitor = display.MonitorAt(x, y);
    const SArea place{0, 0, std::clamp(painter.FirstWidth(), 1, std::max(monitor.width, 1)),
        std::clamp(painter.FirstHeight(), 1, std::max(monitor.height, 1))};
    window = display.MakeWindow(display.Root(),
        {monitor.left + (monitor.width - place.width) / 2, monitor.top + (monitor.height - place.height) / 2,
            place.width, place.height},
        Events, false);
    painter.Resize(place.width, place.height);
    SetText("WM_NAME", XCB_ATOM_STRING, model.Request().title);
    SetText("_NET_WM_NAME", display.Atom("UTF8_STRING"), model.Request().title);
    SetAtom("_NET_WM_WINDOW_TYPE", XCB_ATOM_ATOM, display.Atom("_NET_WM_WINDOW_TYPE_DIALOG"));
    SetAtom("WM_PROTOCOLS", XCB_ATOM_ATOM, display.Atom("WM_DELETE_WINDOW"));
    if (const auto host = static_cast<std::uint32_t>(model.Request().hostWindow); host != 0)
        SetAtom("WM_TRANSIENT_FOR", XCB_ATOM_WINDOW, host);
    Xcb()->map_window(display.Connection(), window);
}

void CX11FileList::SParts::TakeFocus() const noexcept {
    Xcb()->set_input_focus(display.Connection(), XCB_INPUT_FOCUS_POINTER_ROOT, window, display.Time());
}

void CX11FileList::SParts::Show() noexcept {
    try {
        const auto rows = painter.VisibleRows();
        const auto count = model.Entries().size();
        first = std::min(first, count > rows ? count - rows : 0);
        display.Put(window, painter.Paint(model, first, caretShown));
        display.Flush();
    } catch (const std::exception&) { // no memory: it shows what it showed
        return;
    }
}

void CX11FileList::SParts::ShowSelected() noexcept {
    if (std::exchange(shown, model.Folder()) != model.Folder()) first = 0;
    const auto rows = painter.VisibleRows();
    const auto selected = model.Selected();
    if (selected == CFileListModel::None) {
        first = std::min(first, model.Entries().size());
    } else if (selected < first) {
        first = selected;
    } else if (selected >= first + rows) {
        first = selected - rows + 1;
    }
    caretShown = true;
    blinkMs = Utils::TickMs() + BlinkMs;
    Show();
}

void CX11FileList::SParts::Scroll(std::ptrdiff_t rows) noexcept {
    const auto place = static_cast<std::ptrdiff_t>(first) + rows;
    first = static_cast<std::size_t>(std::max(place, std::ptrdiff_t{0}));
    Show();
}

bool CX11FileList::SParts::OnEvent(const xcb_generic_event_t& event) {
    switch (event.response_type & 0x7Fu) {
    case XCB_KEY_PRESS:
    case XCB_KEY_RELEASE: {
        const auto& key = reinterpret_cast<const xcb_key_press_event_t&>(event);
        if (key.event != window) return false;
        display.SetTime(key.time);
        const auto typed = display.Typed(key);
        OnInput([this, typed] { OnKey(typed); }, typed.down && typed.symbol == XKB_KEY_Escape);
        return true;
    }
    case XCB_BUTTON_PRESS: {
        const auto& press = reinterpret_cast<const xcb_button_press_event_t&>(event);
        if (press.event != window) return false;
        display.SetTime(press.time);
        OnInput([this, press] { OnPress(press); },
            press.detail == XCB_BUTTON_INDEX_1 &&
                painter.PartAt(press.event_x, press.event_y) == EPart::Cancel);
        return true;
    }
    case XCB_BUTTON_RELEASE:
        return reinterpret_cast<const xcb_button_release_event_t&>(event).event == window;
    case XCB_EXPOSE:
        if (reinterpret_cast<const xcb_expose_event_t&>(event).window != window) return false;
        Show();
        return true;
    case XCB_MAP_NOTIFY: // before it is viewable it can't have the focus; a window manager gives it, too
        if (reinterpret_cast<const xcb_map_notify_event_t&>(event).window != window) return false;
        TakeFocus();
        Show();
        return true;
    case XCB_CONFIGURE_NOTIFY: {
        const auto& change = reinterpret_cast<const xcb_configure_notify_event_t&>(event);
        if (change.window != window) return false;
        painter.Resize(change.width, change.height);
        ShowSelected();
        return true;
    }
    case XCB_DESTROY_NOTIFY: // by another program
        if (reinterpret_cast<const xcb_destroy_notify_event_t&>(event).window != window) return false;
        model.Cancel(); // the question
        model.Cancel();
        return true;
    case XCB_CLIENT_MESSAGE: {
        const auto& message = reinterpret_cast<const xcb_client_message_event_t&>(event);
        if (message.window != window) return false;
        if (message.data.data32[0] == display.Atom("WM_DELETE_WINDOW")) {
            model.Cancel(); // the question
            model.Cancel();
        }
        return true;
    }
    default:
        return false;
    }
}

/// The user may go on typing while the disk is slow. Only the wait itself can be cancelled at once.
void CX11FileList::SParts::OnInput(std::function<void()> act, bool cancels) {
    if (cancels) unheard.clear();
    if (cancels || !model.IsWaiting()) {
        act();
    } else if (unheard.size() < MostUnheard) {
        unheard.push_back(std::move(act));
    }
}

void CX11FileList::SParts::OnDisk() {
    ShowSelected();
    while (!model.IsWaiting() && !HasDecided() && !unheard.empty()) {
        const auto act = std::move(unheard.front());
        unheard.pop_front();
        act();
    }
}

void CX11FileList::SParts::OnKey(const STypedKey& key) {
    if (!key.down) return;
    switch (key.symbol) {
    case XKB_KEY_Return:
    case XKB_KEY_KP_Enter:
        model.Accept();
        break;
    case XKB_KEY_Escape:
        model.Cancel();
        break;
    case XKB_KEY_Tab:
    case XKB_KEY_ISO_Left_Tab:
        model.NextFilter();
        break;
    default:
        if (model.State() == EState::Open && !OnMoveKey(key)) OnNameKey(key);
    }
    ShowSelected();
}

bool CX11FileList::SParts::OnMoveKey(const STypedKey& key) {
    const auto page = static_cast<std::ptrdiff_t>(painter.VisibleRows());
    const auto all = static_cast<std::ptrdiff_t>(model.Entries().size());
    const bool types = model.Request().saves; // then Home and End belong to the name
    switch (key.symbol) {
    case XKB_KEY_Up:
    case XKB_KEY_KP_Up:
        if (key.alt) {
            model.Up();
        } else {
            model.Move(-1);
        }
        return true;
    case XKB_KEY_Down:
    case XKB_KEY_KP_Down:
        model.Move(1);
        return true;
    case XKB_KEY_Page_Up:
    case XKB_KEY_KP_Page_Up:
        model.Move(-page);
        return true;
    case XKB_KEY_Page_Down:
    case XKB_KEY_KP_Page_Down:
        model.Move(page);
        return true;
    case XKB_KEY_Home:
    case XKB_KEY_KP_Home:
        if (!types) model.Move(-all);
        return !types;
    case XKB_KEY_End:
    case XKB_KEY_KP_End:
        if (!types) model.Move(all);
        return !types;
    case XKB_KEY_BackSpace:
        if (!types) model.Up();
        return !types;
    default:
        return false;
    }
}

void CX11FileList::SParts::OnNameKey(const STypedKey& key) {
    if (!model.Request().saves) {
        if (!key.control && !key.alt) model.Seek(Utils::ToUtf8(key.text));
        return;
    }
    auto& name = model.Name();
    switch (key.symbol) {
    case XKB_KEY_Left:
    case XKB_KEY_KP_Left:
        return name.Move(key.control ? EMove::WordLeft : EMove::Left, key.shift);
    case XKB_KEY_Right:
    case XKB_KEY_KP_Right:
        return name.Move(key.control ? EMove::WordRight : EMove::Right, key.shift);
    case XKB_KEY_Home:
    case XKB_KEY_KP_Home:
        return name.Move(EMove::Home, key.shift);
    case XKB_KEY_End:
    case XKB_KEY_KP_End:
        return name.Move(EMove::End, key.shift);
    case XKB_KEY_BackSpace:
        return name.Erase(key.control ? EMove::WordLeft : EMove::Left);
    case XKB_KEY_Delete:
    case XKB_KEY_KP_Delete:
        return name.Erase(key.control ? EMove::WordRight : EMove::Right);
    default:
        break;
    }
    if (key.control && key.latin == u'A') return name.SelectAll();
    if (key.control && key.latin == u'C' && name.HasSelection())
        return display.Clipboard().Copy(name.Selected());
    if (key.control && key.latin == u'V') {
        display.Clipboard().Paste([this](const std::u16string& text) {
            model.Name().Type(text);
            ShowSelected();
        });
        return;
    }
    if (!key.control && !key.alt) name.Type(key.text);
}

void CX11FileList::SParts::OnPress(const xcb_button_press_event_t& event) {
    if (event.detail == WheelUp) return Scroll(-WheelRows);
    if (event.detail == WheelDown) return Scroll(WheelRows);
    if (event.detail != XCB_BUTTON_INDEX_1) return;
    TakeFocus();
    switch (painter.PartAt(event.event_x, event.event_y)) {
    case EPart::List:
        OnRow(first + painter.RowAt(event.event_y), event.time);
        break;
    case EPart::Name:
        if (model.State() == EState::Open && model.Request().saves)
            model.Name().MoveTo(
                painter.NamePositionAt(event.event_x), (event.state & XCB_MOD_MASK_SHIFT) != 0);
        break;
    case EPart::Filter:
        model.NextFilter();
        break;
    case EPart::Accept:
        model.Accept();
        break;
    case EPart::Cancel:
        model.Cancel();
        break;
    case EPart::None:
        break;
    }
    ShowSelected();
}

void CX11FileList::SParts::OnRow(std::size_t row, xcb_timestamp_t time) {
    const bool isDouble = pressed == row && time - pressTime <= DoubleClickMs;
    pressed = isDouble ? CFileListModel::None : row; // a third press is a first one again
    pressTime = time;
    if (isDouble) {
        model.Activate(row);
    } else {
        model.Select(row);
    }
}

CX11FileList::CX11FileList(CX11Display& display, std::function<void()> beforeReading)
    : _display(display), _beforeReading(std::move(beforeReading)) {}

CX11FileList::~CX11FileList() = default;

bool CX11FileList::Open(
    const Platform::SFileRequest& request, std::function<void(const std::string& path)> answered) noexcept {
    try {
        auto lettering = Pixels::CLettering::Create();
        if (lettering == nullptr || _display.IsLost()) return false;
        _parts = std::make_unique<SParts>(*this, request, std::move(lettering));
        _parts->answered = std::move(answered);
        return true;
    } catch (const std::exception&) { // no memory
        _parts = nullptr;
        return false;
    }
}

void CX11FileList::Raise() noexcept {
    if (_parts == nullptr) return;
    const std::uint32_t above = XCB_STACK_MODE_ABOVE;
    Xcb()->configure_window(_display.Connection(), _parts->window, XCB_CONFIG_WINDOW_STACK_MODE, &above);
    _parts->TakeFocus();
    _display.Flush();
}

void CX11FileList::Close() noexcept {
    _parts = nullptr;
}

bool CX11FileList::OnEvent(const xcb_generic_event_t& event) {
    if (_parts == nullptr) return false;
    const bool isOurs = _parts->OnEvent(event);
    Finish();
    return isOurs;
}

void CX11FileList::Finish() {
    if (_parts == nullptr || !_parts->HasDecided()) return;
    const auto answered = std::move(_parts->answered);
    const auto path = _parts->model.State() == EState::Chosen ? _parts->model.Path() : std::string();
    _parts = nullptr;
    answered(path);
}

bool CX11FileList::NextTime(std::uint32_t& timeMs) const {
    if (_parts == nullptr) return false;
    timeMs = _parts->blinkMs;
    return true;
}

void CX11FileList::OnTime(std::uint32_t nowMs) {
    if (_parts == nullptr || static_cast<std::int32_t>(nowMs - _parts->blinkMs) < 0) return;
    _parts->caretShown = !_parts->caretShown;
    _parts->blinkMs = nowMs + BlinkMs;
    if (_parts->lettering->HasNewGlyphs()) _parts->painter.Forget();
    _parts->Show();
}

xcb_window_t CX11FileList::Window() const noexcept {
    return _parts != nullptr ? _parts->window : 0;
}

} // namespace KAV::Native
