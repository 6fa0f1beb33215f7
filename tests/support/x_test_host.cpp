#include "tests/support/x_test_host.h"

#include <array>
#include <cstdlib>
#include <cstring>
#include <gtest/gtest.h>
#include <xcb/xfixes.h>
#include <xcb/xtest.h>

namespace KAV::Tests {

namespace {

struct SFreeReply {
    void operator()(void* reply) const noexcept { std::free(reply); }
};
template<typename T>
using Reply = std::unique_ptr<T, SFreeReply>;

constexpr std::uint32_t Events = XCB_EVENT_MASK_KEY_PRESS | XCB_EVENT_MASK_KEY_RELEASE |
                                 XCB_EVENT_MASK_BUTTON_PRESS | XCB_EVENT_MASK_BUTTON_RELEASE |
                                 XCB_EVENT_MASK_STRUCTURE_NOTIFY | XCB_EVENT_MASK_FOCUS_CHANGE;

/// The first visual of a depth that has pixels 0xRRGGBB.
xcb_visualid_t VisualOfDepth(const xcb_screen_t* screen, std::uint8_t depth) {
    for (auto depths = xcb_screen_allowed_depths_iterator(screen); depths.rem > 0; xcb_depth_next(&depths)) {
        if (depths.data->depth != depth) continue;
        for (auto visuals = xcb_depth_visuals_iterator(depths.data); visuals.rem > 0;
             xcb_visualtype_next(&visuals)) {
            if (visuals.data->_class == XCB_VISUAL_CLASS_TRUE_COLOR && visuals.data->red_mask == 0xFF0000)
                return visuals.data->visual_id;
        }
    }
    return 0;
}

} // namespace

CXTestHost::CXTestHost() : CXTestHost(SOptions{}) {}

CXTestHost::CXTestHost(const SOptions& options)
    : _display(options.without, options.screen), _name(std::getenv("DISPLAY")),
      _connection(xcb_connect(_name.c_str(), nullptr)) {
    EXPECT_EQ(xcb_connection_has_error(_connection), 0);
    _screen = xcb_setup_roots_iterator(xcb_get_setup(_connection)).data;
    _depth = options.depth != 0 ? options.depth : _screen->root_depth;
    _visual = options.depth != 0 ? VisualOfDepth(_screen, options.depth) : _screen->root_visual;
    EXPECT_NE(_visual, 0u) << "no visual of this depth";
    _colormap = xcb_generate_id(_connection);
    xcb_create_colormap(_connection, XCB_COLORMAP_ALLOC_NONE, _colormap, _screen->root, _visual);
    const auto width = options.width + 40;
    const auto height = options.height + 50;
    if (options.isFramed) _frame = MakeWindow(Root(), 100, 80, width + 10, height + 30);
    _top =
        _frame != 0 ? MakeWindow(_frame, 5, 20, width, height) : MakeWindow(Root(), 100, 80, width, height);
    _parent = MakeWindow(_top, 20, 30, options.width, options.height);
    if (options.redirects) {
        const std::uint32_t events = Events | XCB_EVENT_MASK_SUBSTRUCTURE_REDIRECT;
        xcb_change_window_attributes(_connection, _parent, XCB_CW_EVENT_MASK, &events);
    }
    if (options.hasManager) MarkAsTop(_top);
    Show(_parent, true);
    Show(_top, true);
    if (_frame != 0) Show(_frame, true);
}

CXTestHost::~CXTestHost() {
    xcb_disconnect(_connection);
}

xcb_window_t CXTestHost::Editor() {
    const auto children = Children(_parent);
    return children.size() == 1 ? children[0] : 0;
}

xcb_window_t CXTestHost::MakeWindow(xcb_window_t parent, std::int32_t x, std::int32_t y, std::int32_t width,
    std::int32_t height, bool overrideRedirect) {
    const xcb_window_t window = xcb_generate_id(_connection);
    constexpr std::uint32_t grey = 0xFF808080;
    const std::array<std::uint32_t, 5> values{grey, grey, overrideRedirect ? 1u : 0u, Events, _colormap};
    xcb_create_window(_connection, _depth, window, parent, static_cast<std::int16_t>(x),
        static_cast<std::int16_t>(y), static_cast<std::uint16_t>(width), static_cast<std::uint16_t>(height),
        0, XCB_WINDOW_CLASS_INPUT_OUTPUT, _visual,
        XCB_CW_BACK_PIXEL | XCB_CW_BORDER_PIXEL | XCB_CW_OVERRIDE_REDIRECT | XCB_CW_EVENT_MASK |
            XCB_CW_COLORMAP,
        values.data());
    Sync();
    return window;
}

void CXTestHost::Show(xcb_window_t window, bool show) {
    if (show) {
        xcb_map_window(_connection, window);
    } else {
        xcb_unmap_window(_connection, window);
    }
    Sync();
}

void CXTestHost::Resize(xcb_window_t window, std::int32_t width, std::int32_t height) {
    const std::array<std::uint32_t, 2> values{
        static_cast<std::uint32_t>(width), static_cast<std::uint32_t>(height)};
    xcb_configure_window(
        _connection, window, XCB_CONFIG_WINDOW_WIDTH | XCB_CONFIG_WINDOW_HEIGHT, values.data());
    Sync();
}

void CXTestHost::Raise(xcb_window_t window) {
    const std::uint32_t above = XCB_STACK_MODE_ABOVE;
    xcb_configure_window(_connection, window, XCB_CONFIG_WINDOW_STACK_MODE, &above);
    Sync();
}

void CXTestHost::Destroy(xcb_window_t window) {
    xcb_destroy_window(_connection, window);
    Sync();
}

void CXTestHost::Reparent(xcb_window_t window, xcb_window_t parent, std::int32_t x, std::int32_t y) {
    xcb_reparent_window(
        _connection, window, parent, static_cast<std::int16_t>(x), static_cast<std::int16_t>(y));
    Sync();
}

void CXTestHost::MarkAsTop(xcb_window_t window) {
    const std::array<std::uint32_t, 2> normal{1, 0};
    const auto state = Atom("WM_STATE");
    xcb_change_property(
        _connection, XCB_PROP_MODE_REPLACE, window, state, state, 32, normal.size(), normal.data());
    Sync();
}

bool CXTestHost::IsViewable(xcb_window_t window) {
    const Reply<xcb_get_window_attributes_reply_t> reply(xcb_get_window_attributes_reply(
        _connection, xcb_get_window_attributes(_connection, window), nullptr));
    return reply != nullptr && reply->map_state == XCB_MAP_STATE_VIEWABLE;
}

bool CXTestHost::Exists(xcb_window_t window) {
    const Reply<xcb_get_window_attributes_reply_t> reply(xcb_get_window_attributes_reply(
        _connection, xcb_get_window_attributes(_connection, window), nullptr));
    return reply != nullptr;
}

std::vector<xcb_window_t> CXTestHost::Children(xcb_window_t window) {
    const Reply<xcb_query_tree_reply_t> reply(
        xcb_query_tree_reply(_connection, xcb_query_tree(_connection, window), nullptr));
    if (reply == nullptr) return {};
    const auto* const children = xcb_query_tree_children(reply.get());
    return {children, children + xcb_query_tree_children_length(reply.get())};
}

CXTestHost::SPlace CXTestHost::Place(xcb_window_t window) {
    const Reply<xcb_get_geometry_reply_t> reply(
        xcb_get_geometry_reply(_connection, xcb_get_geometry(_connection, window), nullptr));
    if (reply == nullptr) return {};
    return {reply->x, reply->y, reply->width, reply->height, reply->depth};
}

xcb_visualid_t CXTestHost::VisualOf(xcb_window_t window) {
    const Reply<xcb_get_window_attributes_reply_t> reply(xcb_get_window_attributes_reply(
        _connection, xcb_get_window_attributes(_connection, window), nullptr));
    return reply != nullptr ? reply->visual : 0;
}

std::vector<std::uint32_t> CXTestHost::Property(xcb_window_t window, const std::string& name) {
    constexpr std::uint32_t words = 64;
    const Reply<xcb_get_property_reply_t> reply(xcb_get_property_reply(
        _connection, xcb_get_property(_connection, 0, window, Atom(name), XCB_ATOM_ANY, 0, words), nullptr));
    if (reply == nullptr || reply->format != 32) return {};
    const auto* const values = static_cast<const std::uint32_t*>(xcb_get_property_value(reply.get()));
    return {values, values + xcb_get_property_value_length(reply.get()) / 4};
}

xcb_atom_t CXTestHost::Atom(const std::string& name) {
    const Reply<xcb_intern_atom_reply_t> reply(xcb_intern_atom_reply(_connection,
        xcb_intern_atom(_connection, 0, static_cast<std::uint16_t>(name.size()), name.c_str()), nullptr));
    return reply != nullptr ? reply->atom : 0;
}

int CXTestHost::Answer() {
    ReadEvents();
    std::vector<std::function<void()>> requests;
    requests.swap(_requests);
    for (const auto& request : requests) request();
    Sync();
    return static_cast<int>(requests.size());
}

void CXTestHost::Focus(xcb_window_t window) {
    xcb_set_input_focus(_connection, XCB_INPUT_FOCUS_POINTER_ROOT, window, XCB_CURRENT_TIME);
    Sync();
}

xcb_window_t CXTestHost::Focused() {
    const Reply<xcb_get_input_focus_reply_t> reply(
        xcb_get_input_focus_reply(_connection, xcb_get_input_focus(_connection), nullptr));
    return reply != nullptr ? reply->focus : 0;
}

std::uint8_t CXTestHost::FocusReverts() {
    const Reply<xcb_get_input_focus_reply_t> reply(
        xcb_get_input_focus_reply(_connection, xcb_get_input_focus(_connection), nullptr));
    return reply != nullptr ? reply->revert_to : 0xFF;
}

void CXTestHost::FakeInput(std::uint8_t type, std::uint8_t detail, std::int32_t x, std::int32_t y) {
    xcb_test_fake_input(_connection, type, detail, XCB_CURRENT_TIME, Root(), static_cast<std::int16_t>(x),
        static_cast<std::int16_t>(y), 0);
    Sync();
}

void CXTestHost::MoveTo(std::int32_t x, std::int32_t y) {
    const Reply<xcb_translate_coordinates_reply_t> origin(xcb_translate_coordinates_reply(
        _connection, xcb_translate_coordinates(_connection, _parent, Root(), 0, 0), nullptr));
    FakeInput(XCB_MOTION_NOTIFY, 0, origin->dst_x + x, origin->dst_y + y);
}

void CXTestHost::Press(int button) {
    FakeInput(XCB_BUTTON_PRESS, static_cast<std::uint8_t>(button));
}

void CXTestHost::Release(int button) {
    FakeInput(XCB_BUTTON_RELEASE, static_cast<std::uint8_t>(button));
}

void CXTestHost::Click(int button) {
    Press(button);
    Release(button);
}

void CXTestHost::Key(std::uint32_t symbol, bool down) {
    const auto code = KeyCode(symbol);
    EXPECT_NE(code, 0) << "no key has the symbol " << symbol;
    FakeInput(down ? XCB_KEY_PRESS : XCB_KEY_RELEASE, code);
}

void CXTestHost::Type(std::uint32_t symbol) {
    Key(symbol, true);
    Key(symbol, false);
}

std::uint8_t CXTestHost::KeyCode(std::uint32_t symbol) {
    const auto* const setup = xcb_get_setup(_connection);
    const auto count = static_cast<std::uint8_t>(setup->max_keycode - setup->min_keycode + 1);
    const Reply<xcb_get_keyboard_mapping_reply_t> reply(xcb_get_keyboard_mapping_reply(
        _connection, xcb_get_keyboard_mapping(_connection, setup->min_keycode, count), nullptr));
    const auto* const symbols = xcb_get_keyboard_mapping_keysyms(reply.get());
    for (int level = 0; level < reply->keysyms_per_keycode; ++level) {
        for (int key = 0; key < count; ++key) {
            if (symbols[key * reply->keysyms_per_keycode + level] == symbol)
                return static_cast<std::uint8_t>(setup->min_keycode + key);
        }
    }
    return 0;
}

std::uint32_t CXTestHost::Pixel(xcb_window_t window, std::int32_t x, std::int32_t y) {
    const auto pixels = Pixels(window, x, y, 1, 1);
    return pixels.empty() ? 0 : pixels[0];
}

std::vector<std::uint32_t> CXTestHost::Pixels(
    xcb_window_t window, std::int32_t x, std::int32_t y, std::int32_t width, std::int32_t height) {
    const Reply<xcb_get_image_reply_t> reply(xcb_get_image_reply(_connection,
        xcb_get_image(_connection, XCB_IMAGE_FORMAT_Z_PIXMAP, window, static_cast<std::int16_t>(x),
            static_cast<std::int16_t>(y), static_cast<std::uint16_t>(width),
            static_cast<std::uint16_t>(height), ~0u),
        nullptr));
    if (reply == nullptr) return {};
    std::vector<std::uint32_t> pixels(static_cast<std::size_t>(width) * static_cast<std::size_t>(height));
    std::memcpy(pixels.data(), xcb_get_image_data(reply.get()), pixels.size() * sizeof(pixels[0]));
    return pixels;
}

CXTestHost::SPointerLook CXTestHost::PointerLook() {
    xcb_discard_reply(_connection, xcb_xfixes_query_version(_connection, 4, 0).sequence);
    const Reply<xcb_xfixes_get_cursor_image_reply_t> reply(
        xcb_xfixes_get_cursor_image_reply(_connection, xcb_xfixes_get_cursor_image(_connection), nullptr));
    if (reply == nullptr) return {};
    const auto* const pixels = xcb_xfixes_get_cursor_image_cursor_image(reply.get());
    SPointerLook look;
    look.pixels.assign(pixels, pixels + xcb_xfixes_get_cursor_image_cursor_image_length(reply.get()));
    std::int32_t left = reply->width;
    std::int32_t right = -1;
    std::int32_t top = reply->height;
    std::int32_t bottom = -1;
    for (std::int32_t n = 0; n < reply->width * reply->height; ++n) {
        constexpr std::uint32_t halfOpaque = 0x80000000;
        if (look.pixels[static_cast<std::size_t>(n)] < halfOpaque) continue;
        left = std::min(left, n % reply->width);
        right = std::max(right, n % reply->width);
        top = std::min(top, n / reply->width);
        bottom = std::max(bottom, n / reply->width);
    }
    look.width = right - left + 1;
    look.height = bottom - top + 1;
    return look;
}

std::vector<CXTestHost::SKey> CXTestHost::Keys() {
    Sync();
    return _keys;
}

std::vector<CXTestHost::SButton> CXTestHost::Buttons() {
    Sync();
    return _buttons;
}

int CXTestHost::Count(std::uint8_t type) {
    Sync();
    return static_cast<int>(std::count(_types.begin(), _types.end(), type));
}

void CXTestHost::Sync() {
    const Reply<xcb_get_input_focus_reply_t> reply(
        xcb_get_input_focus_reply(_connection, xcb_get_input_focus(_connection), nullptr));
    ReadEvents();
}

void CXTestHost::ReadEvents() {
    while (const Reply<xcb_generic_event_t> event{xcb_poll_for_event(_connection)}) {
        const auto type = static_cast<std::uint8_t>(event->response_type & 0x7Fu);
        _types.push_back(type);
        switch (type) {
        case XCB_KEY_PRESS:
        case XCB_KEY_RELEASE: {
            const auto& key = reinterpret_cast<const xcb_key_press_event_t&>(*event);
            _keys.push_back({key.event, key.detail, key.state, type == XCB_KEY_PRESS,
                (event->response_type & 0x80u) != 0});
            break;
        }
        case XCB_BUTTON_PRESS:
        case XCB_BUTTON_RELEASE: {
            const auto& button = reinterpret_cast<const xcb_button_press_event_t&>(*event);
            _buttons.push_back({button.event, button.detail, type == XCB_BUTTON_PRESS, button.time});
            break;
        }
        case XCB_MAP_REQUEST: {
            const auto window = reinterpret_cast<const xcb_map_request_event_t&>(*event).window;
            _requests.emplace_back([this, window] { xcb_map_window(_connection, window); });
            break;
        }
        case XCB_CONFIGURE_REQUEST: {
            const auto request = reinterpret_cast<const xcb_configure_request_event_t&>(*event);
            _requests.emplace_back(
                [this, request] { Resize(request.window, request.width, request.height); });
            break;
        }
        default:
            break;
        }
    }
}

} // namespace KAV::Tests
