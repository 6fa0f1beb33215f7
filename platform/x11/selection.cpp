#include "platform/x11/selection.h"

#include <array>
#include <cerrno>
#include <chrono>
#include <cstring>
#include <poll.h>
#include <sys/eventfd.h>
#include <thread>
#include <unistd.h>
#include <utility>

namespace KAV::Platform {

namespace {

using XEvent = XReply<xcb_generic_event_t>;

constexpr auto LongestWait = std::chrono::seconds(1); // for another program's answer

xcb_window_t MakeWindow(xcb_connection_t* connection) {
    const auto* const screen = FirstScreen(connection);
    if (screen == nullptr) return 0;
    const xcb_window_t window = Xcb()->generate_id(connection);
    Xcb()->create_window(connection, 0, window, screen->root, 0, 0, 1, 1, 0, XCB_WINDOW_CLASS_INPUT_ONLY,
        XCB_COPY_FROM_PARENT, 0, nullptr); // never shown
    return window;
}

/// Waits until the deadline for a connection's next event; null when none arrived or the connection broke.
XEvent NextEvent(xcb_connection_t* connection, std::chrono::steady_clock::time_point deadline) {
    while (true) {
        XEvent event(Xcb()->poll_for_event(connection));
        if (event != nullptr || Xcb()->connection_has_error(connection) != 0) return event;
        const auto left = std::chrono::duration_cast<std::chrono::milliseconds>(
            deadline - std::chrono::steady_clock::now());
        if (left.count() <= 0) return nullptr;
        pollfd wait{Xcb()->get_file_descriptor(connection), POLLIN, 0};
        poll(&wait, 1, static_cast<int>(left.count()));
    }
}

/// The answer to our request for the selection has arrived.
bool Answered(xcb_connection_t* connection) {
    const auto deadline = std::chrono::steady_clock::now() + LongestWait;
    while (const auto event = NextEvent(connection, deadline)) {
        if ((event->response_type & 0x7Fu) != XCB_SELECTION_NOTIFY) continue;
        return reinterpret_cast<const xcb_selection_notify_event_t*>(event.get())->property != XCB_ATOM_NONE;
    }
    return false;
}

SBytes Property(xcb_connection_t* connection, xcb_window_t window, xcb_atom_t property, xcb_atom_t type) {
    constexpr std::uint32_t allWords = 0x1FFFFFFF;
    const auto cookie = Xcb()->get_property(connection, 1, window, property, type, 0, allWords);
    const XReply<xcb_get_property_reply_t> reply(Xcb()->get_property_reply(connection, cookie, nullptr));
    if (reply == nullptr || reply->type != type || reply->format != 8) return {};
    const int length = Xcb()->get_property_value_length(reply.get());
    if (length <= 0) return {};
    SBytes bytes = NewBytes(static_cast<std::size_t>(length));
    if (bytes.data != nullptr)
        std::memcpy(bytes.data.get(), Xcb()->get_property_value(reply.get()), bytes.size);
    return bytes;
}

/// How many bytes fit into one request that changes a property.
std::size_t LargestProperty(xcb_connection_t* connection) {
    constexpr std::size_t head = 64;
    return std::size_t{Xcb()->get_maximum_request_length(connection)} * 4 - head;
}

} // namespace

std::shared_ptr<CSelectionOwner> CSelectionOwner::Create(
    const std::string& display, const std::string& format, std::vector<char> data) {
    auto connection = ConnectToDisplay(display);
    if (connection == nullptr || data.size() > LargestProperty(connection.get())) return nullptr;
    std::shared_ptr<CSelectionOwner> owner(
        new CSelectionOwner(std::move(connection), format, std::move(data)));
    if (!owner->TakeSelection()) return nullptr;
    std::thread([owner] { owner->Serve(); }).detach();
    return owner;
}

CSelectionOwner::CSelectionOwner(XConnection connection, const std::string& format, std::vector<char> data)
    : _connection(std::move(connection)), _data(std::move(data)), _window(MakeWindow(_connection.get())),
      _selection(Atom(_connection.get(), "CLIPBOARD")), _targets(Atom(_connection.get(), "TARGETS")),
      _format(Atom(_connection.get(), format)), _wake(eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK)) {}

CSelectionOwner::~CSelectionOwner() {
    if (_wake >= 0) close(_wake);
}

void CSelectionOwner::End() const noexcept {
    eventfd_write(_wake, 1);
}

bool CSelectionOwner::TakeSelection() {
    if (_window == 0 || _selection == 0 || _targets == 0 || _format == 0 || _wake < 0) return false;
    Xcb()->set_selection_owner(_connection.get(), _window, _selection, XCB_CURRENT_TIME);
    const auto cookie = Xcb()->get_selection_owner(_connection.get(), _selection);
    const XReply<xcb_get_selection_owner_reply_t> reply(
        Xcb()->get_selection_owner_reply(_connection.get(), cookie, nullptr));
    return reply != nullptr && reply->owner == _window;
}

void CSelectionOwner::Serve() noexcept {
    try {
        while (true) {
            while (const XEvent event{Xcb()->poll_for_event(_connection.get())}) {
                if (!Handle(*event)) return;
            }
            if (Xcb()->connection_has_error(_connection.get()) != 0) return;
            std::array<pollfd, 2> waits{
                {{Xcb()->get_file_descriptor(_connection.get()), POLLIN, 0}, {_wake, POLLIN, 0}}};
            if (poll(waits.data(), waits.size(), -1) < 0 && errno != EINTR) return;
            if (waits[1].revents != 0) return;
        }
    } catch (...) { // no memory: the requesting program gets no answer
        return;
    }
}

bool CSelectionOwner::Handle(const xcb_generic_event_t& event) {
    switch (event.response_type & 0x7Fu) {
    case XCB_SELECTION_CLEAR:
        return false; // another program owns it from now on
    case XCB_SELECTION_REQUEST:
        Answer(reinterpret_cast<const xcb_selection_request_event_t&>(event));
        break;
    default:
        break;
    }
    return true;
}

void CSelectionOwner::Answer(const xcb_selection_request_event_t& request) {
    std::array<char, 32> message{}; // every event has this size on the wire
    xcb_selection_notify_event_t answer{};
    answer.response_type = XCB_SELECTION_NOTIFY;
    answer.time = request.time;
    answer.requestor = request.requestor;
    answer.selection = request.selection;
    answer.target = request.target;
    answer.property = Provide(request) ? request.property : xcb_atom_t{XCB_ATOM_NONE};
    std::memcpy(message.data(), &answer, sizeof(answer));
    Xcb()->send_event(_connection.get(), 0, request.requestor, XCB_EVENT_MASK_NO_EVENT, message.data());
    Xcb()->flush(_connection.get());
}

bool CSelectionOwner::Provide(const xcb_selection_request_event_t& request) {
    if (request.property == XCB_ATOM_NONE) return false;
    if (request.target == _targets) {
        const std::array<xcb_atom_t, 2> offered{_targets, _format};
        Xcb()->change_property(_connection.get(), XCB_PROP_MODE_REPLACE, request.requestor, request.property,
            XCB_ATOM_ATOM, 32, static_cast<std::uint32_t>(offered.size()), offered.data());
        return true;
    }
    if (request.target != _format) return false;
    Xcb()->change_property(_connection.get(), XCB_PROP_MODE_REPLACE, request.requestor, request.property,
        _format, 8, static_cast<std::uint32_t>(_data.size()), _data.data());
    return true;
}

SBytes ReadSelection(const std::string& display, const std::string& format) {
    const auto connection = ConnectToDisplay(display);
    if (connection == nullptr) return {};
    const xcb_window_t window = MakeWindow(connection.get());
    const xcb_atom_t selection = Atom(connection.get(), "CLIPBOARD");
    const xcb_atom_t target = Atom(connection.get(), format);
    const xcb_atom_t property = Atom(connection.get(), "KAV_CLIPBOARD");
    if (window == 0 || selection == 0 || target == 0 || property == 0) return {};
    Xcb()->convert_selection(connection.get(), window, selection, target, property, XCB_CURRENT_TIME);
    Xcb()->flush(connection.get());
    return Answered(connection.get()) ? Property(connection.get(), window, property, target) : SBytes{};
}

} // namespace KAV::Platform
