#include "platform/x11/screen.h"

#include "platform/x11/display_thread.h"
#include "platform/x11/xcb_library.h"

#include <charconv>
#include <string_view>

namespace KAV::Platform {

namespace {

/// The first monitor stands in where none is marked as the primary one.
int PrimaryWidth(const xcb_randr_get_monitors_reply_t& monitors) {
    auto monitor = Xcb()->randr_get_monitors_monitors_iterator(&monitors);
    int width = monitor.rem > 0 ? monitor.data->width : 0;
    for (; monitor.rem > 0; Xcb()->randr_monitor_info_next(&monitor)) {
        if (monitor.data->primary != 0) width = monitor.data->width;
    }
    return width;
}

void AskMonitors(xcb_connection_t* connection, xcb_window_t root, SDisplay& display) {
    if (Xcb()->randr_get_screen_info == nullptr) return;
    const XReply<xcb_randr_get_monitors_reply_t> monitors(
        Xcb()->randr_get_monitors_reply(connection, Xcb()->randr_get_monitors(connection, root, 1), nullptr));
    if (monitors != nullptr && monitors->nMonitors > 0) {
        display.monitors = static_cast<int>(monitors->nMonitors);
        display.primaryWidth = PrimaryWidth(*monitors);
    }
    const XReply<xcb_randr_get_screen_info_reply_t> screen(Xcb()->randr_get_screen_info_reply(
        connection, Xcb()->randr_get_screen_info(connection, root), nullptr));
    if (screen != nullptr) display.refreshHz = screen->rate;
}

SDisplay Ask(const std::string& name) {
    SDisplay display;
    const auto connection = ConnectToDisplay(name);
    const auto* const screen = connection != nullptr ? FirstScreen(connection.get()) : nullptr;
    if (screen == nullptr) return display;
    display.monitors = 1;
    display.width = screen->width_in_pixels;
    display.height = screen->height_in_pixels;
    display.primaryWidth = display.width;
    display.dotsPerInch = DotsPerInch(connection.get(), screen->root);
    display.scalePercent = (display.dotsPerInch * 100 + 48) / 96;
    AskMonitors(connection.get(), screen->root, display);
    return display;
}

} // namespace

int DotsPerInch(xcb_connection_t* connection, xcb_window_t root) {
    constexpr int usual = 96;
    constexpr std::uint32_t words = 0x10000;
    const auto cookie =
        Xcb()->get_property(connection, 0, root, XCB_ATOM_RESOURCE_MANAGER, XCB_ATOM_STRING, 0, words);
    const XReply<xcb_get_property_reply_t> reply(Xcb()->get_property_reply(connection, cookie, nullptr));
    if (reply == nullptr || Xcb()->get_property_value_length(reply.get()) <= 0) return usual;
    const std::string_view lines(static_cast<const char*>(Xcb()->get_property_value(reply.get())),
        static_cast<std::size_t>(Xcb()->get_property_value_length(reply.get())));
    constexpr std::string_view name = "Xft.dpi:";
    const auto line = lines.find(name);
    if (line == std::string_view::npos) return usual;
    const auto value = lines.find_first_not_of(" \t", line + name.size());
    if (value == std::string_view::npos) return usual;
    int dots = usual;
    std::from_chars(lines.data() + value, lines.data() + lines.size(), dots);
    return dots > 0 && dots < 10000 ? dots : usual;
}

SDisplay ScreenOfDisplay(std::chrono::milliseconds limit) {
    return AskDisplay<SDisplay>(Ask, limit).value_or(SDisplay{});
}

} // namespace KAV::Platform
