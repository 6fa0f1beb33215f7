#include "tools/kavhost/screen/host_window.h"

#include "tools/kavhost/base/errors.h"
#include "tools/kavhost/screen/users_display.h"

#include <algorithm>
#include <array>
#include <cstdlib>
#include <cstring>
#include <poll.h>
#include <string_view>
#include <xcb/xcb.h>

namespace KAV::Host {

namespace {

struct SFreeReply {
    void operator()(void* reply) const noexcept { std::free(reply); }
};
template<typename T>
using Reply = std::unique_ptr<T, SFreeReply>;

struct SDisconnect {
    void operator()(xcb_connection_t* connection) const noexcept { xcb_disconnect(connection); }
};

constexpr std::uint32_t TopEvents = XCB_EVENT_MASK_KEY_PRESS | XCB_EVENT_MASK_BUTTON_PRESS |
                                    XCB_EVENT_MASK_BUTTON_RELEASE | XCB_EVENT_MASK_BUTTON_1_MOTION |
                                    XCB_EVENT_MASK_EXPOSURE | XCB_EVENT_MASK_STRUCTURE_NOTIFY;

constexpr std::uint32_t Background = 0x141618;
constexpr std::uint8_t SentMark = 0x80; ///< of events that another client has sent

/// The protocol's names of keys.
enum EKeySymbol : std::uint32_t {
    KeySpace = ' ',
    KeyL = 'l',
    KeyEscape = 0xFF1B,
    KeyHome = 0xFF50,
    KeyLeft = 0xFF51,
    KeyRight = 0xFF53,
    KeyPadHome = 0xFF95,
    KeyPadLeft = 0xFF96,
    KeyPadRight = 0xFF98,
};

EHostKey KeyOf(std::uint32_t symbol) noexcept {
    switch (symbol) {
    case KeySpace:
        return EHostKey::Space;
    case KeyL:
        return EHostKey::L;
    case KeyEscape:
        return EHostKey::Escape;
    case KeyHome:
    case KeyPadHome:
        return EHostKey::Home;
    case KeyLeft:
    case KeyPadLeft:
        return EHostKey::Left;
    case KeyRight:
    case KeyPadRight:
        return EHostKey::Right;
    default:
        return EHostKey::Other;
    }
}

/// The record of the property WM_NORMAL_HINTS.
struct SSizeHints {
    std::uint32_t flags = 0x30; ///< smallest and largest size
    std::array<std::int32_t, 4> unused{};
    std::int32_t leastWidth = 0, leastHeight = 0, mostWidth = 0, mostHeight = 0;
    std::array<std::int32_t, 9> rest{};
};
static_assert(sizeof(SSizeHints) == 18 * 4);

xcb_atom_t Atom(xcb_connection_t* connection, std::string_view name) {
    const auto cookie = xcb_intern_atom(connection, 0, static_cast<std::uint16_t>(name.size()), name.data());
    const Reply<xcb_intern_atom_reply_t> reply(xcb_intern_atom_reply(connection, cookie, nullptr));
    return reply != nullptr ? reply->atom : xcb_atom_t{XCB_ATOM_NONE};
}

std::uint16_t Side(std::int32_t pixels) noexcept {
    return static_cast<std::uint16_t>(std::clamp(pixels, 1, 0x7FFF));
}

} // namespace

struct CHostWindow::SNative {
    std::unique_ptr<xcb_connection_t, SDisconnect> owner;
    xcb_connection_t* connection = nullptr;
    const xcb_screen_t* screen = nullptr;
    xcb_window_t top = 0;
    xcb_window_t parent = 0; ///< of the editor
    xcb_gcontext_t pen = 0;
    xcb_atom_t protocols = 0, deletion = 0;
    SSize editor;
    std::int32_t stripHeight = 0;
    SSize whole; ///< what the window manager has made of them
    Reply<xcb_get_keyboard_mapping_reply_t> keys;
    std::uint8_t firstKey = 0;

    SSize Wanted() const noexcept { return {editor.width, editor.height + stripHeight}; }
    std::int32_t StripTop() const noexcept { return std::max(whole.height - stripHeight, 0); }

    void MakeWindows(const std::string& title);
    void SetName(const std::string& title) const;
    void FixSize() const;
    void PlaceEditor() const;
    void MovePointerAway() const;
    void ReadKeys();
    std::uint32_t SymbolOf(std::uint8_t code) const noexcept;
    std::optional<SWindowEvent> Translate(const xcb_generic_event_t& event);
    void CheckConnection() const;
};

void CHostWindow::SNative::CheckConnection() const {
    if (xcb_connection_has_error(connection) != 0) throw CFailure("the connection to the display was lost");
}

void CHostWindow::SNative::MakeWindows(const std::string& title) {
    top = xcb_generate_id(connection);
    const std::array<std::uint32_t, 2> look{Background, TopEvents};
    xcb_create_window(connection, screen->root_depth, top, screen->root, 0, 0, Side(whole.width),
        Side(whole.height), 0, XCB_WINDOW_CLASS_INPUT_OUTPUT, screen->root_visual,
        XCB_CW_BACK_PIXEL | XCB_CW_EVENT_MASK, look.data());
    SetName(title);
    xcb_change_property(connection, XCB_PROP_MODE_REPLACE, top, protocols, XCB_ATOM_ATOM, 32, 1, &deletion);
    FixSize();
    parent = xcb_generate_id(connection);
    xcb_create_window(connection, screen->root_depth, parent, top, 0, 0, Side(editor.width),
        Side(editor.height), 0, XCB_WINDOW_CLASS_INPUT_OUTPUT, screen->root_visual, XCB_CW_BACK_PIXEL,
        look.data());
    xcb_map_window(connection, parent);
    pen = xcb_generate_id(connection);
    xcb_create_gc(connection, pen, top, 0, nullptr);
}

void CHostWindow::SNative::SetName(const std::string& title) const {
    const auto length = static_cast<std::uint32_t>(title.size());
    xcb_change_property(connection, XCB_PROP_MODE_REPLACE, top, Atom(connection, "_NET_WM_NAME"),
        Atom(connection, "UTF8_STRING"), 8, length, title.data());
    xcb_change_property(
        connection, XCB_PROP_MODE_REPLACE, top, XCB_ATOM_WM_NAME, XCB_ATOM_STRING, 8, length, title.data());
    constexpr char names[] = "kavhost\0kavhost"; // both end with a zero
    xcb_change_property(
        connection, XCB_PROP_MODE_REPLACE, top, XCB_ATOM_WM_CLASS, XCB_ATOM_STRING, 8, sizeof(names), names);
}

/// An editor changes its size by itself, when the user drags its corner. A frame that could be dragged as
/// well would only surround it with empty space.
void CHostWindow::SNative::FixSize() const {
    const auto size = Wanted();
    SSizeHints hints;
    hints.leastWidth = hints.mostWidth = size.width;
    hints.leastHeight = hints.mostHeight = size.height;
    xcb_change_property(connection, XCB_PROP_MODE_REPLACE, top, XCB_ATOM_WM_NORMAL_HINTS,
        XCB_ATOM_WM_SIZE_HINTS, 32, sizeof(hints) / 4, &hints);
}

void CHostWindow::SNative::PlaceEditor() const {
    const auto x = std::max((whole.width - editor.width) / 2, 0);
    const auto y = std::max((StripTop() - editor.height) / 2, 0);
    const std::array<std::uint32_t, 4> place{static_cast<std::uint32_t>(x), static_cast<std::uint32_t>(y),
        Side(editor.width), Side(editor.height)};
    xcb_configure_window(connection, parent,
        XCB_CONFIG_WINDOW_X | XCB_CONFIG_WINDOW_Y | XCB_CONFIG_WINDOW_WIDTH | XCB_CONFIG_WINDOW_HEIGHT,
        place.data());
    xcb_flush(connection);
}

void CHostWindow::SNative::MovePointerAway() const {
    xcb_warp_pointer(connection, XCB_WINDOW_NONE, screen->root, 0, 0, 0, 0,
        static_cast<std::int16_t>(screen->width_in_pixels - 1),
        static_cast<std::int16_t>(screen->height_in_pixels - 1));
}

void CHostWindow::SNative::ReadKeys() {
    const auto* const setup = xcb_get_setup(connection);
    firstKey = setup->min_keycode;
    const auto count = static_cast<std::uint8_t>(setup->max_keycode - setup->min_keycode + 1);
    keys.reset(xcb_get_keyboard_mapping_reply(
        connection, xcb_get_keyboard_mapping(connection, firstKey, count), nullptr));
}

/// A letter in the first of the key's columns that has a Latin one, so that it is found in other layouts too;
/// otherwise what the first column has.
std::uint32_t CHostWindow::SNative::SymbolOf(std::uint8_t code) const noexcept {
    if (keys == nullptr || code < firstKey) return 0;
    const int columns = keys->keysyms_per_keycode;
    const int first = (code - firstKey) * columns;
    if (first + columns > xcb_get_keyboard_mapping_keysyms_length(keys.get())) return 0;
    const xcb_keysym_t* const symbols = xcb_get_keyboard_mapping_keysyms(keys.get()) + first;
    for (int column = 0; column < columns; ++column) {
        if (symbols[column] >= 'a' && symbols[column] <= 'z') return symbols[column];
    }
    return columns > 0 ? symbols[0] : 0;
}

std::optional<SWindowEvent> CHostWindow::SNative::Translate(const xcb_generic_event_t& event) {
    using enum SWindowEvent::EKind;
    const auto as = [&]<typename T>(T) { return reinterpret_cast<const T&>(event); };
    switch (event.response_type & ~SentMark) {
    case XCB_KEY_PRESS: {
        const auto key = as(xcb_key_press_event_t{});
        constexpr auto others = XCB_MOD_MASK_CONTROL | XCB_MOD_MASK_1 | XCB_MOD_MASK_4;
        if ((key.state & others) != 0) return std::nullopt;
        return SWindowEvent{Key, KeyOf(SymbolOf(key.detail))};
    }
    case XCB_BUTTON_PRESS:
    case XCB_BUTTON_RELEASE: {
        const auto button = as(xcb_button_press_event_t{});
        if (button.detail != XCB_BUTTON_INDEX_1) return std::nullopt;
        const bool isDown = (event.response_type & ~SentMark) == XCB_BUTTON_PRESS;
        return SWindowEvent{
            isDown ? Press : Release, EHostKey::Other, button.event_x, button.event_y - StripTop()};
    }
    case XCB_MOTION_NOTIFY: {
        const auto motion = as(xcb_motion_notify_event_t{});
        return SWindowEvent{Drag, EHostKey::Other, motion.event_x, motion.event_y - StripTop()};
    }
    case XCB_EXPOSE:
        return SWindowEvent{Redraw};
    case XCB_CONFIGURE_NOTIFY: {
        const auto place = as(xcb_configure_notify_event_t{});
        if (place.window != top || (place.width == whole.width && place.height == whole.height))
            return std::nullopt;
        whole = {place.width, place.height};
        PlaceEditor();
        return SWindowEvent{Redraw};
    }
    case XCB_MAPPING_NOTIFY:
        ReadKeys();
        return std::nullopt;
    case XCB_CLIENT_MESSAGE: {
        const auto message = as(xcb_client_message_event_t{});
        if (message.type != protocols || message.data.data32[0] != deletion) return std::nullopt;
        return SWindowEvent{Close};
    }
    case XCB_DESTROY_NOTIFY: // another program has killed it
        return SWindowEvent{Close};
    default:
        return std::nullopt;
    }
}

CHostWindow::CHostWindow(
    const std::string& title, const SSize& editor, std::int32_t stripHeight, EPlace place)
    : _native(std::make_unique<SNative>()) {
    auto& native = *_native;
    const auto display = UsersDisplay();
    native.owner.reset(xcb_connect(display.c_str(), nullptr));
    native.connection = native.owner.get();
    if (xcb_connection_has_error(native.connection) != 0) {
        throw CFailure(display.empty() ? "there is no display: DISPLAY is not set"
                                       : "the display " + display + " cannot be reached");
    }
    native.screen = xcb_setup_roots_iterator(xcb_get_setup(native.connection)).data;
    native.editor = editor;
    native.stripHeight = stripHeight;
    native.whole = native.Wanted();
    native.protocols = Atom(native.connection, "WM_PROTOCOLS");
    native.deletion = Atom(native.connection, "WM_DELETE_WINDOW");
    native.ReadKeys();
    native.MakeWindows(title);
    if (place == EPlace::OutOfView) native.MovePointerAway();
    // The editor, which has a connection of its own, must find its parent.
    const Reply<xcb_get_input_focus_reply_t> done(
        xcb_get_input_focus_reply(native.connection, xcb_get_input_focus(native.connection), nullptr));
    native.CheckConnection();
}

CHostWindow::~CHostWindow() = default;

std::uintptr_t CHostWindow::EditorParent() const noexcept {
    return _native->parent;
}

void CHostWindow::Show() {
    xcb_map_window(_native->connection, _native->top);
    xcb_flush(_native->connection);
}

void CHostWindow::Resize(const SSize& editor, std::int32_t stripHeight) {
    auto& native = *_native;
    native.editor = editor;
    native.stripHeight = stripHeight;
    native.whole = native.Wanted();
    native.FixSize();
    const std::array<std::uint32_t, 2> size{Side(native.whole.width), Side(native.whole.height)};
    xcb_configure_window(
        native.connection, native.top, XCB_CONFIG_WINDOW_WIDTH | XCB_CONFIG_WINDOW_HEIGHT, size.data());
    native.PlaceEditor();
}

void CHostWindow::Wait(int milliseconds) {
    pollfd waits{xcb_get_file_descriptor(_native->connection), POLLIN, 0};
    poll(&waits, 1, milliseconds);
}

std::optional<SWindowEvent> CHostWindow::Next() {
    for (;;) {
        const Reply<xcb_generic_event_t> event(xcb_poll_for_event(_native->connection));
        if (event == nullptr) break;
        if (const auto translated = _native->Translate(*event)) return translated;
    }
    _native->CheckConnection();
    return std::nullopt;
}

CHostWindow::SSize CHostWindow::Strip() const noexcept {
    return {_native->whole.width, std::min(_native->stripHeight, _native->whole.height)};
}

void CHostWindow::DrawStrip(const SPicture& picture) {
    auto& native = *_native;
    if (picture.pixels.empty()) return;
    const auto bytes = static_cast<std::uint32_t>(picture.pixels.size() * sizeof(std::uint32_t));
    // In rows that fit a request, however wide the window.
    const auto rowBytes = static_cast<std::uint32_t>(picture.width) * std::uint32_t{sizeof(std::uint32_t)};
    const auto most = xcb_get_maximum_request_length(native.connection) * 4 - 64;
    const auto rows = std::max<std::uint32_t>(most / rowBytes, 1);
    const auto* data = reinterpret_cast<const std::uint8_t*>(picture.pixels.data());
    const auto top = native.StripTop();
    for (std::uint32_t row = 0; row * rowBytes < bytes; row += rows) {
        const auto count = std::min<std::uint32_t>(rows, static_cast<std::uint32_t>(picture.height) - row);
        xcb_put_image(native.connection, XCB_IMAGE_FORMAT_Z_PIXMAP, native.top, native.pen,
            Side(picture.width), static_cast<std::uint16_t>(count), 0,
            static_cast<std::int16_t>(top + static_cast<std::int32_t>(row)), 0, native.screen->root_depth,
            count * rowBytes, data + std::size_t{row} * rowBytes);
    }
    xcb_flush(native.connection);
}

std::optional<SPicture> CHostWindow::EditorPicture() {
    auto& native = *_native;
    const Reply<xcb_get_image_reply_t> reply(xcb_get_image_reply(native.connection,
        xcb_get_image(native.connection, XCB_IMAGE_FORMAT_Z_PIXMAP, native.parent, 0, 0,
            Side(native.editor.width), Side(native.editor.height), ~0u),
        nullptr));
    native.CheckConnection();
    SPicture picture{native.editor.width, native.editor.height, {}};
    const auto count = static_cast<std::size_t>(picture.width) * static_cast<std::size_t>(picture.height);
    if (reply == nullptr || static_cast<std::size_t>(xcb_get_image_data_length(reply.get())) < count * 4)
        return std::nullopt;
    picture.pixels.resize(count);
    std::memcpy(picture.pixels.data(), xcb_get_image_data(reply.get()), count * 4);
    for (auto& pixel : picture.pixels) pixel &= 0xFFFFFF;
    return picture;
}

} // namespace KAV::Host
