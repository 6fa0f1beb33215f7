#include "platform/x11/xcb_library.h"

#include "platform/dl/symbol.h"

#include <dlfcn.h>
#include <optional>

namespace KAV::Platform {

namespace {

bool FindCore(void* library, SXcb& xcb) noexcept {
    return FindSymbol(library, "xcb_connect", xcb.connect) &&
           FindSymbol(library, "xcb_connection_has_error", xcb.connection_has_error) &&
           FindSymbol(library, "xcb_disconnect", xcb.disconnect) &&
           FindSymbol(library, "xcb_get_setup", xcb.get_setup) &&
           FindSymbol(library, "xcb_setup_roots_iterator", xcb.setup_roots_iterator) &&
           FindSymbol(library, "xcb_get_maximum_request_length", xcb.get_maximum_request_length) &&
           FindSymbol(library, "xcb_get_file_descriptor", xcb.get_file_descriptor) &&
           FindSymbol(library, "xcb_generate_id", xcb.generate_id) &&
           FindSymbol(library, "xcb_flush", xcb.flush) &&
           FindSymbol(library, "xcb_poll_for_event", xcb.poll_for_event) &&
           FindSymbol(library, "xcb_create_window", xcb.create_window) &&
           FindSymbol(library, "xcb_intern_atom", xcb.intern_atom) &&
           FindSymbol(library, "xcb_intern_atom_reply", xcb.intern_atom_reply) &&
           FindSymbol(library, "xcb_set_selection_owner", xcb.set_selection_owner) &&
           FindSymbol(library, "xcb_get_selection_owner", xcb.get_selection_owner) &&
           FindSymbol(library, "xcb_get_selection_owner_reply", xcb.get_selection_owner_reply) &&
           FindSymbol(library, "xcb_convert_selection", xcb.convert_selection) &&
           FindSymbol(library, "xcb_change_property", xcb.change_property) &&
           FindSymbol(library, "xcb_get_property", xcb.get_property) &&
           FindSymbol(library, "xcb_get_property_reply", xcb.get_property_reply) &&
           FindSymbol(library, "xcb_get_property_value", xcb.get_property_value) &&
           FindSymbol(library, "xcb_get_property_value_length", xcb.get_property_value_length) &&
           FindSymbol(library, "xcb_send_event", xcb.send_event);
}

void FindMonitors(void* library, SXcb& xcb) noexcept {
    if (library == nullptr ||
        !FindSymbol(library, "xcb_randr_get_screen_info_reply", xcb.randr_get_screen_info_reply) ||
        !FindSymbol(library, "xcb_randr_get_monitors", xcb.randr_get_monitors) ||
        !FindSymbol(library, "xcb_randr_get_monitors_reply", xcb.randr_get_monitors_reply) ||
        !FindSymbol(library, "xcb_randr_get_screen_info", xcb.randr_get_screen_info)) {
        xcb.randr_get_screen_info = nullptr;
    }
}

std::optional<SXcb> Load() noexcept {
    void* const library = dlopen("libxcb.so.1", RTLD_NOW | RTLD_LOCAL);
    SXcb xcb{};
    if (library == nullptr || !FindCore(library, xcb)) return std::nullopt;
    FindMonitors(dlopen("libxcb-randr.so.0", RTLD_NOW | RTLD_LOCAL), xcb);
    return xcb;
}

} // namespace

const SXcb* Xcb() {
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
