#include "platform/dbus/dbus_library.h"

#include "platform/dl/symbol.h"

#include <dlfcn.h>
#include <optional>

namespace KAV::Platform {

namespace {

bool FindAll(void* library, SDBus& dbus) noexcept {
    return FindSymbol(library, "dbus_threads_init_default", dbus.threads_init_default) &&
           FindSymbol(library, "dbus_connection_open_private", dbus.connection_open_private) &&
           FindSymbol(
               library, "dbus_connection_set_exit_on_disconnect", dbus.connection_set_exit_on_disconnect) &&
           FindSymbol(library, "dbus_connection_set_change_sigpipe", dbus.connection_set_change_sigpipe) &&
           FindSymbol(library, "dbus_connection_get_is_connected", dbus.connection_get_is_connected) &&
           FindSymbol(library, "dbus_connection_get_unix_fd", dbus.connection_get_unix_fd) &&
           FindSymbol(library, "dbus_connection_send", dbus.connection_send) &&
           FindSymbol(library, "dbus_connection_read_write", dbus.connection_read_write) &&
           FindSymbol(library, "dbus_connection_pop_message", dbus.connection_pop_message) &&
           FindSymbol(library, "dbus_connection_close", dbus.connection_close) &&
           FindSymbol(library, "dbus_connection_unref", dbus.connection_unref) &&
           FindSymbol(library, "dbus_message_new_method_call", dbus.message_new_method_call) &&
           FindSymbol(library, "dbus_message_unref", dbus.message_unref) &&
           FindSymbol(library, "dbus_message_get_type", dbus.message_get_type) &&
           FindSymbol(library, "dbus_message_get_reply_serial", dbus.message_get_reply_serial) &&
           FindSymbol(library, "dbus_message_is_signal", dbus.message_is_signal) &&
           FindSymbol(library, "dbus_message_get_path", dbus.message_get_path) &&
           FindSymbol(library, "dbus_message_get_sender", dbus.message_get_sender) &&
           FindSymbol(library, "dbus_message_iter_init", dbus.message_iter_init) &&
           FindSymbol(library, "dbus_message_iter_init_append", dbus.message_iter_init_append) &&
           FindSymbol(library, "dbus_message_iter_append_basic", dbus.message_iter_append_basic) &&
           FindSymbol(library, "dbus_message_iter_open_container", dbus.message_iter_open_container) &&
           FindSymbol(library, "dbus_message_iter_close_container", dbus.message_iter_close_container) &&
           FindSymbol(library, "dbus_message_iter_get_arg_type", dbus.message_iter_get_arg_type) &&
           FindSymbol(library, "dbus_message_iter_get_basic", dbus.message_iter_get_basic) &&
           FindSymbol(library, "dbus_message_iter_recurse", dbus.message_iter_recurse) &&
           FindSymbol(library, "dbus_message_iter_next", dbus.message_iter_next);
}

std::optional<SDBus> Load() noexcept {
    void* const library = dlopen("libdbus-1.so.3", RTLD_NOW | RTLD_LOCAL);
    SDBus dbus{};
    if (library == nullptr || !FindAll(library, dbus) || dbus.threads_init_default() == 0)
        return std::nullopt;
    return dbus;
}

} // namespace

const SDBus* DBus() noexcept {
    static const std::optional<SDBus> dbus = Load();
    return dbus ? &*dbus : nullptr;
}

} // namespace KAV::Platform
