#include "platform/x11/xcb_library.h"

#include "platform/dl/symbol.h"

#include <dlfcn.h>
#include <optional>

namespace KAV::Platform {

namespace {

bool FindConnection(void* library, SXcb& xcb) noexcept {
    return FindSymbol(library, "xcb_connect", xcb.connect) &&
           FindSymbol(library, "xcb_connection_has_error", xcb.connection_has_error) &&
           FindSymbol(library, "xcb_disconnect", xcb.disconnect) &&
           FindSymbol(library, "xcb_get_setup", xcb.get_setup) &&
           FindSymbol(library, "xcb_setup_roots_iterator", xcb.setup_roots_iterator) &&
           FindSymbol(library, "xcb_screen_next", xcb.screen_next) &&
           FindSymbol(library, "xcb_screen_allowed_depths_iterator", xcb.screen_allowed_depths_iterator) &&
           FindSymbol(library, "xcb_depth_next", xcb.depth_next) &&
           FindSymbol(library, "xcb_depth_visuals_iterator", xcb.depth_visuals_iterator) &&
           FindSymbol(library, "xcb_visualtype_next", xcb.visualtype_next) &&
           FindSymbol(library, "xcb_setup_pixmap_formats_iterator", xcb.setup_pixmap_formats_iterator) &&
           FindSymbol(library, "xcb_format_next", xcb.format_next) &&
           FindSymbol(library, "xcb_get_maximum_request_length", xcb.get_maximum_request_length) &&
           FindSymbol(library, "xcb_get_file_descriptor", xcb.get_file_descriptor) &&
           FindSymbol(library, "xcb_get_extension_data", xcb.get_extension_data) &&
           FindSymbol(library, "xcb_generate_id", xcb.generate_id) &&
           FindSymbol(library, "xcb_flush", xcb.flush) &&
           FindSymbol(library, "xcb_poll_for_event", xcb.poll_for_event) &&
           FindSymbol(library, "xcb_poll_for_reply", xcb.poll_for_reply) &&
           FindSymbol(library, "xcb_discard_reply", xcb.discard_reply) &&
           FindSymbol(library, "xcb_request_check", xcb.request_check) &&
           FindSymbol(library, "xcb_send_event", xcb.send_event);
}

bool FindWindows(void* library, SXcb& xcb) noexcept {
    return FindSymbol(library, "xcb_create_window", xcb.create_window) &&
           FindSymbol(library, "xcb_create_window_checked", xcb.create_window_checked) &&
           FindSymbol(library, "xcb_destroy_window", xcb.destroy_window) &&
           FindSymbol(library, "xcb_map_window", xcb.map_window) &&
           FindSymbol(library, "xcb_unmap_window", xcb.unmap_window) &&
           FindSymbol(library, "xcb_configure_window", xcb.configure_window) &&
           FindSymbol(library, "xcb_change_window_attributes", xcb.change_window_attributes) &&
           FindSymbol(library, "xcb_get_window_attributes", xcb.get_window_attributes) &&
           FindSymbol(library, "xcb_get_window_attributes_reply", xcb.get_window_attributes_reply) &&
           FindSymbol(library, "xcb_get_geometry", xcb.get_geometry) &&
           FindSymbol(library, "xcb_get_geometry_reply", xcb.get_geometry_reply) &&
           FindSymbol(library, "xcb_query_tree", xcb.query_tree) &&
           FindSymbol(library, "xcb_query_tree_reply", xcb.query_tree_reply) &&
           FindSymbol(library, "xcb_clear_area", xcb.clear_area) &&
           FindSymbol(library, "xcb_create_colormap", xcb.create_colormap) &&
           FindSymbol(library, "xcb_free_colormap", xcb.free_colormap) &&
           FindSymbol(library, "xcb_create_gc", xcb.create_gc) &&
           FindSymbol(library, "xcb_put_image", xcb.put_image);
}

bool FindProperties(void* library, SXcb& xcb) noexcept {
    return FindSymbol(library, "xcb_intern_atom", xcb.intern_atom) &&
           FindSymbol(library, "xcb_intern_atom_reply", xcb.intern_atom_reply) &&
           FindSymbol(library, "xcb_set_selection_owner", xcb.set_selection_owner) &&
           FindSymbol(library, "xcb_get_selection_owner", xcb.get_selection_owner) &&
           FindSymbol(library, "xcb_get_selection_owner_reply", xcb.get_selection_owner_reply) &&
           FindSymbol(library, "xcb_convert_selection", xcb.convert_selection) &&
           FindSymbol(library, "xcb_change_property", xcb.change_property) &&
           FindSymbol(library, "xcb_delete_property", xcb.delete_property) &&
           FindSymbol(library, "xcb_get_property", xcb.get_property) &&
           FindSymbol(library, "xcb_get_property_reply", xcb.get_property_reply) &&
           FindSymbol(library, "xcb_get_property_value", xcb.get_property_value) &&
           FindSymbol(library, "xcb_get_property_value_length", xcb.get_property_value_length);
}

bool FindInput(void* library, SXcb& xcb) noexcept {
    return FindSymbol(library, "xcb_query_pointer", xcb.query_pointer) &&
           FindSymbol(library, "xcb_query_pointer_reply", xcb.query_pointer_reply) &&
           FindSymbol(library, "xcb_query_keymap", xcb.query_keymap) &&
           FindSymbol(library, "xcb_query_keymap_reply", xcb.query_keymap_reply) &&
           FindSymbol(library, "xcb_get_input_focus", xcb.get_input_focus) &&
           FindSymbol(library, "xcb_get_input_focus_reply", xcb.get_input_focus_reply) &&
           FindSymbol(library, "xcb_set_input_focus", xcb.set_input_focus) &&
           FindSymbol(library, "xcb_set_input_focus_checked", xcb.set_input_focus_checked) &&
           FindSymbol(library, "xcb_grab_pointer", xcb.grab_pointer) &&
           FindSymbol(library, "xcb_grab_pointer_reply", xcb.grab_pointer_reply) &&
           FindSymbol(library, "xcb_ungrab_pointer", xcb.ungrab_pointer) &&
           FindSymbol(library, "xcb_grab_keyboard", xcb.grab_keyboard) &&
           FindSymbol(library, "xcb_grab_keyboard_reply", xcb.grab_keyboard_reply) &&
           FindSymbol(library, "xcb_ungrab_keyboard", xcb.ungrab_keyboard) &&
           FindSymbol(library, "xcb_free_cursor", xcb.free_cursor);
}

void FindRandr(void* library, SXcb& xcb) noexcept {
    if (library == nullptr ||
        !FindSymbol(library, "xcb_randr_get_screen_info_reply", xcb.randr_get_screen_info_reply) ||
        !FindSymbol(library, "xcb_randr_get_monitors", xcb.randr_get_monitors) ||
        !FindSymbol(library, "xcb_randr_get_monitors_reply", xcb.randr_get_monitors_reply) ||
        !FindSymbol(
            library, "xcb_randr_get_monitors_monitors_iterator", xcb.randr_get_monitors_monitors_iterator) ||
        !FindSymbol(library, "xcb_randr_monitor_info_next", xcb.randr_monitor_info_next) ||
        !FindSymbol(library, "xcb_randr_get_screen_info", xcb.randr_get_screen_info)) {
        xcb.randr_get_screen_info = nullptr;
    }
}

std::optional<SXcb> Load() noexcept {
    const auto open = [](const char* name) { return dlopen(name, RTLD_NOW | RTLD_LOCAL); };
    void* const library = open("libxcb.so.1");
    SXcb xcb{};
    if (library == nullptr || !FindConnection(library, xcb) || !FindWindows(library, xcb) ||
        !FindProperties(library, xcb) || !FindInput(library, xcb))
        return std::nullopt;
    FindRandr(open("libxcb-randr.so.0"), xcb);
    return xcb;
}

} // namespace

// Not inlined: the compiler would warn that the functions below, which are for those who have the library,
// might not have it.
[[gnu::noinline]] const SXcb* Xcb() {
    static const std::optional<SXcb> xcb = Load();
    return xcb ? &*xcb : nullptr;
}

XConnection ConnectToDisplay(const std::string& display) {
    XConnection connection(Xcb()->connect(display.c_str(), nullptr)); // never null; freed even after an error
    if (Xcb()->connection_has_error(connection.get()) != 0) connection.reset();
    return connection;
}

const xcb_screen_t* FirstScreen(xcb_connection_t* connection) {
    return Xcb()->setup_roots_iterator(Xcb()->get_setup(connection)).data;
}

xcb_atom_t Atom(xcb_connection_t* connection, std::string_view name) {
    if (name.size() > 0xFFFF) return XCB_ATOM_NONE;
    const auto cookie =
        Xcb()->intern_atom(connection, 0, static_cast<std::uint16_t>(name.size()), name.data());
    const XReply<xcb_intern_atom_reply_t> reply(Xcb()->intern_atom_reply(connection, cookie, nullptr));
    return reply != nullptr ? reply->atom : xcb_atom_t{XCB_ATOM_NONE};
}

} // namespace KAV::Platform
