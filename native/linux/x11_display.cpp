#include "native/linux/x11_display.h"

#include "native/linux/x11_clipboard.h"
#include "native/linux/x11_keyboard.h"
#include "platform/x11/cursor_library.h"
#include "platform/x11/screen.h"
#include "platform/x11/xcb_extensions.h"

#include <algorithm>
#include <array>
#include <cstring>
#include <limits>
#include <poll.h>
#include <utility>

namespace KAV::Native {

namespace {

using Platform::SArea;
using Platform::Xcb;
using Platform::XReply;

constexpr std::uint32_t OpaqueBlack = 0xFF000000;
constexpr std::uint8_t PixelBits = 32;

/// The first library that is missing; empty if all are there.
std::u16string MissingLibrary() {
    if (Xcb() == nullptr) return u"libxcb.so.1";
    if (Xcb()->randr_get_screen_info == nullptr) return u"libxcb-randr.so.0";
    if (Platform::XcbExtensions().shm_id == nullptr) return u"libxcb-shm.so.0";
    if (Platform::XcbExtensions().xkb_id == nullptr) return u"libxcb-xkb.so.1";
    if (Platform::XcbCursor() == nullptr) return u"libxcb-cursor.so.0";
    if (Platform::Xkb() == nullptr) return u"libxkbcommon.so.0, libxkbcommon-x11.so.0";
    return {};
}

/// The screen that a root window belongs to; null if there is none.
const xcb_screen_t* ScreenOf(xcb_connection_t* connection, xcb_window_t root) {
    for (auto screens = Xcb()->setup_roots_iterator(Xcb()->get_setup(connection)); screens.rem > 0;
         Xcb()->screen_next(&screens)) {
        if (screens.data->root == root) return screens.data;
    }
    return nullptr;
}

/// A depth and a visual of it.
struct SFormat {
    std::uint8_t depth = 0;
    xcb_visualid_t visual = 0;
};

/// Whether a depth's pixels have 32 bits in this machine's order of bytes.
bool HasOurPixels(const xcb_setup_t& setup, std::uint8_t depth) {
    if (setup.image_byte_order != XCB_IMAGE_ORDER_LSB_FIRST) return false;
    for (auto formats = Xcb()->setup_pixmap_formats_iterator(&setup); formats.rem > 0;
         Xcb()->format_next(&formats)) {
        if (formats.data->depth == depth) return formats.data->bits_per_pixel == PixelBits;
    }
    return false;
}

bool HasOurColours(const xcb_visualtype_t& visual) {
    return visual._class == XCB_VISUAL_CLASS_TRUE_COLOR && visual.red_mask == 0xFF0000 &&
           visual.green_mask == 0xFF00 && visual.blue_mask == 0xFF;
}

/// The format with this visual; without one, the first of 24 bits, then none. Only those whose pixels are
/// ours.
SFormat FindFormat(const xcb_setup_t& setup, const xcb_screen_t& screen, xcb_visualid_t wanted) {
    constexpr std::uint8_t usualDepth = 24;
    SFormat found;
    for (auto depths = Xcb()->screen_allowed_depths_iterator(&screen); depths.rem > 0;
         Xcb()->depth_next(&depths)) {
        if (!HasOurPixels(setup, depths.data->depth)) continue;
        for (auto visuals = Xcb()->depth_visuals_iterator(depths.data); visuals.rem > 0;
             Xcb()->visualtype_next(&visuals)) {
            if (!HasOurColours(*visuals.data)) continue;
            const SFormat format{depths.data->depth, visuals.data->visual_id};
            if (format.visual == wanted) return format;
            if (found.visual == 0 && format.depth == usualDepth) found = format;
        }
    }
    return found;
}

std::int32_t Distance(std::int32_t value, std::int32_t begin, std::int32_t size) noexcept {
    return std::max({begin - value, value - (begin + size - 1), 0});
}

} // namespace

struct CX11Display::SParts {
    explicit SParts(Platform::XConnection made) noexcept : connection(std::move(made)) {}

    CX11Connection connection;
    const xcb_screen_t* screen = nullptr; // of the connection
    SFormat format;
    xcb_colormap_t colormap = 0;
    std::int32_t dotsPerInch = 0;
    xcb_gcontext_t context = 0;         // 0: not made yet
    std::vector<std::uint8_t> rows;     // scratch, without gaps
    std::unique_ptr<CX11Keyboard> keys; // destroyed before the connection
    std::unique_ptr<CX11Clipboard> clipboard;
};

std::unique_ptr<CX11Display> CX11Display::Connect(
    const std::string& name, xcb_window_t parent, std::u16string& reason) {
    reason = MissingLibrary();
    if (!reason.empty()) return nullptr;
    auto made = Platform::ConnectToDisplay(name);
    if (made == nullptr) {
        reason = u"no connection to the display";
        return nullptr;
    }
    auto parts = std::make_unique<SParts>(std::move(made));
    xcb_connection_t* const connection = parts->connection.Connection();
    const auto placeAsked = Xcb()->get_geometry(connection, parent);
    const auto formatAsked = Xcb()->get_window_attributes(connection, parent);
    const XReply<xcb_get_geometry_reply_t> place(Xcb()->get_geometry_reply(connection, placeAsked, nullptr));
    const XReply<xcb_get_window_attributes_reply_t> attributes(
        Xcb()->get_window_attributes_reply(connection, formatAsked, nullptr));
    parts->screen = place != nullptr ? ScreenOf(connection, place->root) : nullptr;
    if (parts->screen == nullptr || attributes == nullptr) {
        reason = u"the host's window doesn't exist";
        return nullptr;
    }
    parts->format = FindFormat(*Xcb()->get_setup(connection), *parts->screen, attributes->visual);
    if (parts->format.visual == 0) {
        reason = u"the display has no pixels of 32 bits";
        return nullptr;
    }
    parts->colormap = parts->screen->default_colormap;
    if (parts->format.visual != parts->screen->root_visual) {
        parts->colormap = Xcb()->generate_id(connection);
        Xcb()->create_colormap(
            connection, XCB_COLORMAP_ALLOC_NONE, parts->colormap, parts->screen->root, parts->format.visual);
    }
    parts->dotsPerInch = Platform::DotsPerInch(connection, parts->screen->root);
    parts->keys = std::make_unique<CX11Keyboard>(connection);
    return std::unique_ptr<CX11Display>(new CX11Display(std::move(parts)));
}

CX11Display::CX11Display(std::unique_ptr<SParts> parts) noexcept : _parts(std::move(parts)) {}

CX11Display::~CX11Display() = default;

xcb_connection_t* CX11Display::Connection() const noexcept {
    return _parts->connection.Connection();
}

int CX11Display::Descriptor() const noexcept {
    return Xcb()->get_file_descriptor(Connection());
}

bool CX11Display::IsLost() const noexcept {
    if (Xcb()->connection_has_error(Connection()) != 0) return true;
    // A write to a connection that was shut down would raise a signal.
    pollfd state{Descriptor(), 0, 0};
    return poll(&state, 1, 0) > 0 && (state.revents & (POLLHUP | POLLERR | POLLNVAL)) != 0;
}

const xcb_screen_t& CX11Display::Screen() const noexcept {
    return *_parts->screen;
}

xcb_window_t CX11Display::Root() const noexcept {
    return _parts->screen->root;
}

std::uint8_t CX11Display::Depth() const noexcept {
    return _parts->format.depth;
}

xcb_visualid_t CX11Display::Visual() const noexcept {
    return _parts->format.visual;
}

xcb_colormap_t CX11Display::Colormap() const noexcept {
    return _parts->colormap;
}

xcb_atom_t CX11Display::Atom(std::string_view name) {
    return _parts->connection.Atom(name);
}

std::int32_t CX11Display::DotsPerInch() const noexcept {
    return _parts->dotsPerInch;
}

xcb_timestamp_t CX11Display::Time() const noexcept {
    return _parts->connection.Time();
}

void CX11Display::SetTime(xcb_timestamp_t time) noexcept {
    _parts->connection.SetTime(time);
}

xcb_window_t CX11Display::MakeWindow(
    xcb_window_t parent, const SArea& place, std::uint32_t events, bool overrideRedirect) const {
    const auto side = [](std::int32_t size) {
        constexpr std::int32_t largest = std::numeric_limits<std::int16_t>::max();
        return static_cast<std::uint16_t>(std::clamp(size, 1, largest));
    };
    const xcb_window_t window = Xcb()->generate_id(Connection());
    // In the order of the bits. What lies around the picture is black, and opaque where windows may be
    // transparent; the picture stays where it is while the window changes its size.
    const std::array<std::uint32_t, 6> values{
        OpaqueBlack, OpaqueBlack, XCB_GRAVITY_NORTH_WEST, overrideRedirect ? 1u : 0u, events, Colormap()};
    Xcb()->create_window(Connection(), Depth(), window, parent, static_cast<std::int16_t>(place.left),
        static_cast<std::int16_t>(place.top), side(place.width), side(place.height), 0,
        XCB_WINDOW_CLASS_INPUT_OUTPUT, Visual(),
        XCB_CW_BACK_PIXEL | XCB_CW_BORDER_PIXEL | XCB_CW_BIT_GRAVITY | XCB_CW_OVERRIDE_REDIRECT |
            XCB_CW_EVENT_MASK | XCB_CW_COLORMAP,
        values.data());
    return window;
}

void CX11Display::Put(xcb_window_t window, const Pixels::SBitmap& picture) {
    PutArea(window, picture.bytes.data(), picture.stride, {0, 0, picture.width, picture.height});
}

void CX11Display::PutArea(
    xcb_window_t window, const std::uint8_t* pixels, std::int32_t stride, const SArea& area) {
    if (area.width <= 0 || area.height <= 0) return;
    if (_parts->context == 0) {
        _parts->context = Xcb()->generate_id(Connection());
        Xcb()->create_gc(Connection(), _parts->context, window, 0, nullptr);
    }
    constexpr std::size_t head = 64;
    constexpr std::size_t words = 0x10000; // what every display takes; more would hold up others
    const std::size_t most =
        4 * std::min<std::size_t>(Xcb()->get_maximum_request_length(Connection()), words) - head;
    const auto bytes = static_cast<std::size_t>(area.width) * 4;
    const auto rows = static_cast<std::int32_t>(std::clamp<std::size_t>(most / bytes, 1, 0x7FFF));
    for (std::int32_t top = area.top; top < area.top + area.height; top += rows) {
        const std::int32_t count = std::min(rows, area.top + area.height - top);
        _parts->rows.resize(bytes * static_cast<std::size_t>(count));
        for (std::int32_t row = 0; row < count; ++row) {
            const auto* const from = pixels + static_cast<std::ptrdiff_t>(stride) * (top + row) +
                                     static_cast<std::ptrdiff_t>(area.left) * 4;
            std::memcpy(_parts->rows.data() + bytes * static_cast<std::size_t>(row), from, bytes);
        }
        Xcb()->put_image(Connection(), XCB_IMAGE_FORMAT_Z_PIXMAP, window, _parts->context,
            static_cast<std::uint16_t>(area.width), static_cast<std::uint16_t>(count),
            static_cast<std::int16_t>(area.left), static_cast<std::int16_t>(top), 0, Depth(),
            static_cast<std::uint32_t>(_parts->rows.size()), _parts->rows.data());
    }
}

std::vector<SArea> CX11Display::Monitors() const {
    std::vector<SArea> monitors;
    const XReply<xcb_randr_get_monitors_reply_t> reply(Xcb()->randr_get_monitors_reply(
        Connection(), Xcb()->randr_get_monitors(Connection(), Root(), 1), nullptr));
    if (reply != nullptr) {
        for (auto found = Xcb()->randr_get_monitors_monitors_iterator(reply.get()); found.rem > 0;
             Xcb()->randr_monitor_info_next(&found))
            monitors.push_back({found.data->x, found.data->y, found.data->width, found.data->height});
    }
    if (monitors.empty()) monitors.push_back({0, 0, Screen().width_in_pixels, Screen().height_in_pixels});
    return monitors;
}

SArea CX11Display::MonitorAt(std::int32_t x, std::int32_t y) const {
    const auto monitors = Monitors();
    return *std::min_element(monitors.begin(), monitors.end(), [&](const SArea& a, const SArea& b) {
        const auto away = [&](const SArea& area) {
            return Distance(x, area.left, area.width) + Distance(y, area.top, area.height);
        };
        return away(a) < away(b);
    });
}

bool CX11Display::Pointer(std::int32_t& x, std::int32_t& y) const {
    const XReply<xcb_query_pointer_reply_t> reply(
        Xcb()->query_pointer_reply(Connection(), Xcb()->query_pointer(Connection(), Root()), nullptr));
    if (reply == nullptr || reply->same_screen == 0) return false;
    x = reply->root_x;
    y = reply->root_y;
    return true;
}

STypedKey CX11Display::Typed(const xcb_key_press_event_t& event) {
    return _parts->keys->Typed(event);
}

bool CX11Display::IsLeftControlHeld() {
    const XReply<xcb_query_keymap_reply_t> reply(
        Xcb()->query_keymap_reply(Connection(), Xcb()->query_keymap(Connection()), nullptr));
    if (reply == nullptr) return false;
    for (std::size_t key = 8; key < 256; ++key) {
        const bool isHeld = (reply->keys[key / 8] >> (key % 8) & 1u) != 0;
        if (isHeld && _parts->keys->IsLeftControl(static_cast<std::uint8_t>(key))) return true;
    }
    return false;
}

void CX11Display::ResetCompose() noexcept {
    _parts->keys->ResetCompose();
}

CX11Clipboard& CX11Display::Clipboard() {
    if (_parts->clipboard == nullptr)
        _parts->clipboard = std::make_unique<CX11Clipboard>(_parts->connection, Root());
    return *_parts->clipboard;
}

void CX11Display::OnEvent(const xcb_generic_event_t& event) noexcept {
    _parts->keys->OnEvent(event);
    if (_parts->clipboard != nullptr) _parts->clipboard->OnEvent(event);
}

void CX11Display::Flush() noexcept {
    _parts->connection.Flush();
}

} // namespace KAV::Native
