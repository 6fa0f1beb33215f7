#pragma once

#include <cstdlib>
#include <memory>
#include <string>
#include <string_view>
#include <xcb/randr.h>
#include <xcb/xcb.h>
#include <xcb/xcbext.h>

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
    decltype(&xcb_screen_next) screen_next;
    decltype(&xcb_screen_allowed_depths_iterator) screen_allowed_depths_iterator;
    decltype(&xcb_depth_next) depth_next;
    decltype(&xcb_depth_visuals_iterator) depth_visuals_iterator;
    decltype(&xcb_visualtype_next) visualtype_next;
    decltype(&xcb_setup_pixmap_formats_iterator) setup_pixmap_formats_iterator;
    decltype(&xcb_format_next) format_next;
    decltype(&xcb_get_maximum_request_length) get_maximum_request_length;
    decltype(&xcb_get_file_descriptor) get_file_descriptor;
    decltype(&xcb_get_extension_data) get_extension_data;
    decltype(&xcb_generate_id) generate_id;
    decltype(&xcb_flush) flush;
    decltype(&xcb_poll_for_event) poll_for_event;
    decltype(&xcb_poll_for_reply) poll_for_reply;
    decltype(&xcb_discard_reply) discard_reply;
    decltype(&xcb_request_check) request_check;
    decltype(&xcb_send_event) send_event;

    decltype(&xcb_create_window) create_window;
    decltype(&xcb_create_window_checked) create_window_checked;
    decltype(&xcb_destroy_window) destroy_window;
    decltype(&xcb_map_window) map_window;
    decltype(&xcb_unmap_window) unmap_window;
    decltype(&xcb_configure_window) configure_window;
    decltype(&xcb_change_window_attributes) change_window_attributes;
    decltype(&xcb_get_window_attributes) get_window_attributes;
    decltype(&xcb_get_window_attributes_reply) get_window_attributes_reply;
    decltype(&xcb_get_geometry) get_geometry;
    decltype(&xcb_get_geometry_reply) get_geometry_reply;
    decltype(&xcb_query_tree) query_tree;
    decltype(&xcb_query_tree_reply) query_tree_reply;
    decltype(&xcb_clear_area) clear_area;
    decltype(&xcb_create_colormap) create_colormap;
    decltype(&xcb_free_colormap) free_colormap;
    decltype(&xcb_create_gc) create_gc;
    decltype(&xcb_put_image) put_image;

    decltype(&xcb_intern_atom) intern_atom;
    decltype(&xcb_intern_atom_reply) intern_atom_reply;
    decltype(&xcb_set_selection_owner) set_selection_owner;
    decltype(&xcb_get_selection_owner) get_selection_owner;
    decltype(&xcb_get_selection_owner_reply) get_selection_owner_reply;
    decltype(&xcb_convert_selection) convert_selection;
    decltype(&xcb_change_property) change_property;
    decltype(&xcb_delete_property) delete_property;
    decltype(&xcb_get_property) get_property;
    decltype(&xcb_get_property_reply) get_property_reply;
    decltype(&xcb_get_property_value) get_property_value;
    decltype(&xcb_get_property_value_length) get_property_value_length;

    decltype(&xcb_query_pointer) query_pointer;
    decltype(&xcb_query_pointer_reply) query_pointer_reply;
    decltype(&xcb_query_keymap) query_keymap;
    decltype(&xcb_query_keymap_reply) query_keymap_reply;
    decltype(&xcb_get_input_focus) get_input_focus;
    decltype(&xcb_get_input_focus_reply) get_input_focus_reply;
    decltype(&xcb_set_input_focus) set_input_focus;
    decltype(&xcb_set_input_focus_checked) set_input_focus_checked;
    decltype(&xcb_grab_pointer) grab_pointer;
    decltype(&xcb_grab_pointer_reply) grab_pointer_reply;
    decltype(&xcb_ungrab_pointer) ungrab_pointer;
    decltype(&xcb_grab_keyboard) grab_keyboard;
    decltype(&xcb_grab_keyboard_reply) grab_keyboard_reply;
    decltype(&xcb_ungrab_keyboard) ungrab_keyboard;
    decltype(&xcb_free_cursor) free_cursor;

    decltype(&xcb_randr_get_screen_info) randr_get_screen_info; ///< null: that library is missing
    decltype(&xcb_randr_get_screen_info_reply) randr_get_screen_info_reply;
    decltype(&xcb_randr_get_monitors) randr_get_monitors;
    decltype(&xcb_randr_get_monitors_reply) randr_get_monitors_reply;
    decltype(&xcb_randr_get_monitors_monitors_iterator) randr_get_monitors_monitors_iterator;
    decltype(&xcb_randr_monitor_info_next) randr_monitor_info_next;
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
