#pragma once

#include <cstdlib>
#include <memory>
#include <string>
#include <string_view>
#include <xcb/randr.h>
#include <xcb/xcb.h>

/// The X11 client library, loaded when it is first needed: a system without a display may lack it, and
/// linking it would keep our library from loading there. It is XCB and not Xlib, because Xlib's error
/// handlers end the process when the display goes away. Only for the Linux part of this folder. Any thread.
namespace KAV::Platform {

/// The library's functions, under their names there.
struct SXcb {
    decltype(&xcb_connect) connect;
    decltype(&xcb_connection_has_error) connection_has_error;
    decltype(&xcb_disconnect) disconnect;
    decltype(&xcb_get_setup) get_setup;
    decltype(&xcb_setup_roots_iterator) setup_roots_iterator;
    decltype(&xcb_get_maximum_request_length) get_maximum_request_length;
    decltype(&xcb_get_file_descriptor) get_file_descriptor;
    decltype(&xcb_generate_id) generate_id;
    decltype(&xcb_flush) flush;
    decltype(&xcb_poll_for_event) poll_for_event;
    decltype(&xcb_create_window) create_window;
    decltype(&xcb_intern_atom) intern_atom;
    decltype(&xcb_intern_atom_reply) intern_atom_reply;
    decltype(&xcb_set_selection_owner) set_selection_owner;
    decltype(&xcb_get_selection_owner) get_selection_owner;
    decltype(&xcb_get_selection_owner_reply) get_selection_owner_reply;
    decltype(&xcb_convert_selection) convert_selection;
    decltype(&xcb_change_property) change_property;
    decltype(&xcb_get_property) get_property;
    decltype(&xcb_get_property_reply) get_property_reply;
    decltype(&xcb_get_property_value) get_property_value;
    decltype(&xcb_get_property_value_length) get_property_value_length;
    decltype(&xcb_send_event) send_event;

    decltype(&xcb_randr_get_screen_info) randr_get_screen_info; ///< null: that library is missing
    decltype(&xcb_randr_get_screen_info_reply) randr_get_screen_info_reply;
    decltype(&xcb_randr_get_monitors) randr_get_monitors;
    decltype(&xcb_randr_get_monitors_reply) randr_get_monitors_reply;
};

/// The functions, for the life of the process; null if the library is missing or incomplete.
const SXcb* Xcb();

struct SDisconnect {
    void operator()(xcb_connection_t* connection) const noexcept { Xcb()->disconnect(connection); }
};
using XConnection = std::unique_ptr<xcb_connection_t, SDisconnect>;

/// Memory from the library is freed by the C library's function.
struct SFree {
    void operator()(void* reply) const noexcept { free(reply); }
};
template<typename T>
using XReply = std::unique_ptr<T, SFree>;

/// A new connection to that display; null if it refuses. Waits for the display without limit, as do the
/// functions below, so call them on a display thread.
XConnection ConnectToDisplay(const std::string& display);

/// The first screen of a connection.
const xcb_screen_t* FirstScreen(xcb_connection_t* connection);

/// The display's number for a name; 0 on failure.
xcb_atom_t Atom(xcb_connection_t* connection, std::string_view name);

} // namespace KAV::Platform
