#include "platform/x11/raise_windows.h"

#include "platform/x11/display_thread.h"
#include "platform/x11/xcb_library.h"

#include <cstdint>
#include <cstring>
#include <string_view>
#include <unistd.h>
#include <vector>

namespace KAV::Platform {

namespace {

/// The 32-bit values of a property; none if it has another form.
std::vector<std::uint32_t> Values(
    xcb_connection_t* connection, xcb_window_t window, std::string_view name, xcb_atom_t type) {
    constexpr std::uint32_t most = 0x4000;
    const auto cookie = Xcb()->get_property(connection, 0, window, Atom(connection, name), type, 0, most);
    const XReply<xcb_get_property_reply_t> reply(Xcb()->get_property_reply(connection, cookie, nullptr));
    if (reply == nullptr || reply->format != 32) return {};
    const auto bytes = static_cast<std::size_t>(Xcb()->get_property_value_length(reply.get()));
    std::vector<std::uint32_t> values(bytes / sizeof(std::uint32_t));
    if (!values.empty())
        std::memcpy(
            values.data(), Xcb()->get_property_value(reply.get()), values.size() * sizeof(std::uint32_t));
    return values;
}

bool IsOf(xcb_connection_t* connection, xcb_window_t window, pid_t process) {
    const auto owner = Values(connection, window, "_NET_WM_PID", XCB_ATOM_CARDINAL);
    if (owner.size() != 1) return false;
    const auto number = static_cast<pid_t>(owner[0]);
    return number == process || getsid(number) == process;
}

/// As a pager would, which window managers obey although the user was active in another program.
void Activate(xcb_connection_t* connection, xcb_window_t root, xcb_window_t window) {
    constexpr std::uint32_t pager = 2;
    xcb_client_message_event_t event{};
    event.response_type = XCB_CLIENT_MESSAGE;
    event.format = 32;
    event.window = window;
    event.type = Atom(connection, "_NET_ACTIVE_WINDOW");
    event.data.data32[0] = pager;
    constexpr std::uint32_t windowManager =
        XCB_EVENT_MASK_SUBSTRUCTURE_REDIRECT | XCB_EVENT_MASK_SUBSTRUCTURE_NOTIFY;
    Xcb()->send_event(connection, 0, root, windowManager, reinterpret_cast<const char*>(&event));
}

void RaiseOn(const std::string& display, pid_t process) {
    const auto connection = ConnectToDisplay(display);
    const auto* const screen = connection != nullptr ? FirstScreen(connection.get()) : nullptr;
    if (screen == nullptr) return;
    for (const auto window : Values(connection.get(), screen->root, "_NET_CLIENT_LIST", XCB_ATOM_WINDOW)) {
        if (IsOf(connection.get(), window, process)) Activate(connection.get(), screen->root, window);
    }
    // The answer to a last question shows that the display has all of them.
    Atom(connection.get(), "_NET_ACTIVE_WINDOW");
}

} // namespace

void RaiseWindowsOf(pid_t process, const char* display) noexcept {
    try {
        RunOnDisplayThread(display, [process](const std::string& name) { RaiseOn(name, process); });
    } catch (...) { // no memory or no thread: it stays where it is
        return;
    }
}

} // namespace KAV::Platform
