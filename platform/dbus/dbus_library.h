#pragma once

#include <dbus/dbus.h>

/// The client library of the desktop's message bus, loaded when a file is first asked for: linking it would
/// keep our library from loading on systems without it. Only for the Linux part of this folder. Any thread.
namespace KAV::Platform {

/// The library's functions, under their names there.
struct SDBus {
    decltype(&dbus_threads_init_default) threads_init_default;
    decltype(&dbus_connection_open_private) connection_open_private;
    decltype(&dbus_connection_set_exit_on_disconnect) connection_set_exit_on_disconnect;
    decltype(&dbus_connection_set_change_sigpipe) connection_set_change_sigpipe;
    decltype(&dbus_connection_get_is_connected) connection_get_is_connected;
    decltype(&dbus_connection_get_unix_fd) connection_get_unix_fd;
    decltype(&dbus_connection_send) connection_send;
    decltype(&dbus_connection_read_write) connection_read_write;
    decltype(&dbus_connection_pop_message) connection_pop_message;
    decltype(&dbus_connection_close) connection_close;
    decltype(&dbus_connection_unref) connection_unref;
    decltype(&dbus_message_new_method_call) message_new_method_call;
    decltype(&dbus_message_unref) message_unref;
    decltype(&dbus_message_get_type) message_get_type;
    decltype(&dbus_message_get_reply_serial) message_get_reply_serial;
    decltype(&dbus_message_is_signal) message_is_signal;
    decltype(&dbus_message_get_path) message_get_path;
    decltype(&dbus_message_get_sender) message_get_sender;
    decltype(&dbus_message_iter_init) message_iter_init;
    decltype(&dbus_message_iter_init_append) message_iter_init_append;
    decltype(&dbus_message_iter_append_basic) message_iter_append_basic;
    decltype(&dbus_message_iter_open_container) message_iter_open_container;
    decltype(&dbus_message_iter_close_container) message_iter_close_container;
    decltype(&dbus_message_iter_get_arg_type) message_iter_get_arg_type;
    decltype(&dbus_message_iter_get_basic) message_iter_get_basic;
    decltype(&dbus_message_iter_recurse) message_iter_recurse;
    decltype(&dbus_message_iter_next) message_iter_next;
};

/// The functions, for the life of the process; null if the library is missing or incomplete.
const SDBus* DBus() noexcept;

} // namespace KAV::Platform
