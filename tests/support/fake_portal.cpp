#include "tests/support/fake_portal.h"

#include "tests/support/dialog_script.h"
#include "tests/support/file_text.h"
#include "tests/support/scratch_home.h"

#include <chrono>
#include <csignal>
#include <cstdlib>
#include <filesystem>
#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>
#include <utility>

namespace KAV::Tests {

namespace {

constexpr const char* Daemon = "/usr/bin/dbus-daemon";
constexpr const char* RequestInterface = "org.freedesktop.portal.Request";

DBusConnection* Connect(const std::string& address) {
    DBusConnection* const connection = dbus_connection_open_private(address.c_str(), nullptr);
    if (connection == nullptr || dbus_bus_register(connection, nullptr) == 0) std::abort();
    dbus_connection_set_exit_on_disconnect(connection, 0);
    return connection;
}

/// The socket is there before the bus listens to it.
bool Accepts(const std::string& address) {
    DBusConnection* const connection = dbus_connection_open_private(address.c_str(), nullptr);
    if (connection == nullptr) return false;
    dbus_connection_close(connection);
    dbus_connection_unref(connection);
    return true;
}

void Disconnect(DBusConnection* connection) {
    dbus_connection_flush(connection);
    dbus_connection_close(connection);
    dbus_connection_unref(connection);
}

/// The values as a text: containers in brackets, an array of bytes as its letters.
std::string Dump(DBusMessageIter& place) {
    std::string text;
    for (int type = 0; (type = dbus_message_iter_get_arg_type(&place)) != DBUS_TYPE_INVALID;
         dbus_message_iter_next(&place)) {
        if (type != DBUS_TYPE_BYTE && !text.empty()) text += ' ';
        DBusBasicValue value{};
        if (dbus_type_is_basic(type) != 0) dbus_message_iter_get_basic(&place, &value);
        DBusMessageIter inside{};
        if (dbus_type_is_container(type) != 0) dbus_message_iter_recurse(&place, &inside);
        switch (type) {
        case DBUS_TYPE_STRING:
            text.append("'").append(value.str).append("'");
            break;
        case DBUS_TYPE_UINT32:
            text += std::to_string(value.u32);
            break;
        case DBUS_TYPE_BOOLEAN:
            text += value.bool_val != 0 ? "true" : "false";
            break;
        case DBUS_TYPE_BYTE:
            text += value.byt != 0 ? static_cast<char>(value.byt) : '0';
            break;
        case DBUS_TYPE_DICT_ENTRY:
            text += Dump(inside);
            break;
        case DBUS_TYPE_VARIANT:
            text.append("=").append(Dump(inside));
            break;
        default:
            text.append("(").append(Dump(inside)).append(")");
        }
    }
    return text;
}

std::string OptionOf(const std::string& dump, const std::string& name) {
    const auto start = "'" + name + "' ='";
    const auto at = dump.find(start);
    if (at == std::string::npos) return {};
    const auto begin = at + start.size();
    return dump.substr(begin, dump.find('\'', begin) - begin);
}

} // namespace

CPrivateSession::CPrivateSession() {
    const auto folder = ScratchFolder();
    const auto socket = (folder / "bus").string();
    _address = "unix:path=" + socket;
    WriteText(
        folder / "bus.conf", "<busconfig><type>session</type><listen>" + _address +
                                 "</listen><policy context=\"default\"><allow send_destination=\"*\"/>"
                                 "<allow receive_sender=\"*\"/><allow own=\"*\"/></policy></busconfig>");
    const auto option = "--config-file=" + (folder / "bus.conf").string();
    _daemon = fork();
    if (_daemon == 0) {
        execl(Daemon, Daemon, option.c_str(), "--nofork", "--nopidfile", nullptr);
        _exit(1);
    }
    EXPECT_TRUE(Eventually([this] { return Accepts(_address); }));
    setenv("DBUS_SESSION_BUS_ADDRESS", _address.c_str(), 1);
}

CPrivateSession::~CPrivateSession() {
    End();
    unsetenv("DBUS_SESSION_BUS_ADDRESS");
    std::filesystem::remove(ScratchFolder() / "bus");
}

bool CPrivateSession::IsInstalled() {
    return access(Daemon, X_OK) == 0;
}

void CPrivateSession::End() {
    if (_daemon <= 0) return;
    kill(_daemon, SIGKILL);
    waitpid(_daemon, nullptr, 0);
    _daemon = -1;
}

void CPrivateSession::Stop() {
    kill(_daemon, SIGSTOP);
}

CFakePortal::CFakePortal(const CPrivateSession& session, SPortalManners manners)
    : _manners(std::move(manners)), _connection(Connect(session.Address())) {
    if (dbus_bus_request_name(_connection, "org.freedesktop.portal.Desktop", 0, nullptr) !=
        DBUS_REQUEST_NAME_REPLY_PRIMARY_OWNER)
        std::abort();
    _thread = std::thread([this] { Run(); });
}

CFakePortal::~CFakePortal() {
    _ends = true;
    _thread.join();
    Disconnect(_connection);
}

std::string CFakePortal::NextCall() {
    std::unique_lock lock(_mutex);
    if (!_changed.wait_for(lock, std::chrono::seconds(60), [this] { return !_calls.empty(); })) return "none";
    const auto call = _calls.front();
    _calls.erase(_calls.begin());
    return call;
}

std::string CFakePortal::Handle() {
    const std::scoped_lock lock(_mutex);
    return _handle;
}

std::string CFakePortal::Asker() {
    const std::scoped_lock lock(_mutex);
    return _asker;
}

void CFakePortal::Run() {
    while (!_ends && dbus_connection_read_write(_connection, 10) != 0) {
        while (DBusMessage* const message = dbus_connection_pop_message(_connection)) {
            if (dbus_message_get_type(message) == DBUS_MESSAGE_TYPE_METHOD_CALL) Handle(*message);
            dbus_message_unref(message);
        }
    }
}

void CFakePortal::Handle(DBusMessage& call) {
    DBusMessage* reply = nullptr;
    if (dbus_message_has_member(&call, "Get") != 0) {
        if (!_manners.answersVersion) return;
        if (_manners.hasFiles) {
            reply = dbus_message_new_method_return(&call);
            DBusMessageIter place{};
            DBusMessageIter value{};
            const dbus_uint32_t version = 3;
            dbus_message_iter_init_append(reply, &place);
            dbus_message_iter_open_container(&place, DBUS_TYPE_VARIANT, "u", &value);
            dbus_message_iter_append_basic(&value, DBUS_TYPE_UINT32, &version);
            dbus_message_iter_close_container(&place, &value);
        } else {
            reply = dbus_message_new_error(&call, DBUS_ERROR_UNKNOWN_INTERFACE, "no such interface");
        }
    } else if (dbus_message_has_member(&call, "OpenFile") != 0 ||
               dbus_message_has_member(&call, "SaveFile") != 0) {
        Ask(call);
    } else {
        Note(std::string(dbus_message_get_member(&call)) + " " + dbus_message_get_path(&call));
        reply = dbus_message_new_method_return(&call);
    }
    if (reply == nullptr) return;
    dbus_connection_send(_connection, reply, nullptr);
    dbus_message_unref(reply);
}

void CFakePortal::Ask(DBusMessage& call) {
    DBusMessageIter place{};
    dbus_message_iter_init(&call, &place);
    const auto arguments = Dump(place);
    std::string sender = dbus_message_get_sender(&call);
    auto handle = _manners.otherHandle;
    if (handle.empty()) {
        auto name = sender.substr(1);
        name.replace(name.find('.'), 1, "_");
        handle =
            "/org/freedesktop/portal/desktop/request/" + name + "/" + OptionOf(arguments, "handle_token");
    }
    {
        const std::scoped_lock lock(_mutex);
        _handle = handle;
        _asker = sender;
    }
    if (_manners.answersEarly) Respond(handle, sender.c_str());
    if (_manners.answersQuestion) {
        DBusMessage* const reply = dbus_message_new_method_return(&call);
        const char* const path = handle.c_str();
        dbus_message_append_args(reply, DBUS_TYPE_OBJECT_PATH, &path, DBUS_TYPE_INVALID);
        dbus_connection_send(_connection, reply, nullptr);
        dbus_message_unref(reply);
    }
    Note(std::string(dbus_message_get_member(&call)) + " " + arguments);
    if (!_manners.answersEarly) Respond(handle, nullptr);
}

void CFakePortal::Respond(const std::string& handle, const char* asker) {
    if (!_manners.respond) return;
    DBusMessage* const response = dbus_message_new_signal(handle.c_str(), RequestInterface, "Response");
    if (asker != nullptr) dbus_message_set_destination(response, asker);
    _manners.respond(*response);
    dbus_connection_send(_connection, response, nullptr);
    dbus_message_unref(response);
}

void CFakePortal::Note(const std::string& call) {
    const std::scoped_lock lock(_mutex);
    _calls.push_back(call);
    _changed.notify_all();
}

std::function<void(DBusMessage& response)> ChosenAddresses(
    unsigned code, std::vector<std::string> addresses) {
    return [code, addresses = std::move(addresses)](DBusMessage& response) {
        DBusMessageIter place{};
        DBusMessageIter results{};
        DBusMessageIter entry{};
        DBusMessageIter value{};
        DBusMessageIter texts{};
        const dbus_uint32_t number = code;
        const char* const name = "uris";
        dbus_message_iter_init_append(&response, &place);
        dbus_message_iter_append_basic(&place, DBUS_TYPE_UINT32, &number);
        dbus_message_iter_open_container(&place, DBUS_TYPE_ARRAY, "{sv}", &results);
        dbus_message_iter_open_container(&results, DBUS_TYPE_DICT_ENTRY, nullptr, &entry);
        dbus_message_iter_append_basic(&entry, DBUS_TYPE_STRING, &name);
        dbus_message_iter_open_container(&entry, DBUS_TYPE_VARIANT, "as", &value);
        dbus_message_iter_open_container(&value, DBUS_TYPE_ARRAY, "s", &texts);
        for (const auto& address : addresses) {
            const char* const text = address.c_str();
            dbus_message_iter_append_basic(&texts, DBUS_TYPE_STRING, &text);
        }
        dbus_message_iter_close_container(&value, &texts);
        dbus_message_iter_close_container(&entry, &value);
        dbus_message_iter_close_container(&results, &entry);
        dbus_message_iter_close_container(&place, &results);
    };
}

void ForgeResponse(const CPrivateSession& session, const std::string& handle, const std::string& asker,
    const std::string& address) {
    DBusConnection* const connection = Connect(session.Address());
    DBusMessage* const response = dbus_message_new_signal(handle.c_str(), RequestInterface, "Response");
    dbus_message_set_destination(response, asker.c_str());
    ChosenAddresses(0, {address})(*response);
    dbus_connection_send(connection, response, nullptr);
    dbus_message_unref(response);
    Disconnect(connection);
}

} // namespace KAV::Tests
