#include "platform/xdg/portal_dialog.h"

#include "platform/dbus/dbus_library.h"
#include "platform/xdg/dialog_program.h"

#include <array>
#include <atomic>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <deque>
#include <memory>
#include <new>
#include <poll.h>
#include <sys/stat.h>
#include <unistd.h>
#include <utility>
#include <vector>

namespace KAV::Platform {

namespace {

constexpr int ReplyMs = 2000;
constexpr const char* Portal = "org.freedesktop.portal.Desktop";
constexpr const char* PortalPath = "/org/freedesktop/portal/desktop";
constexpr const char* Chooser = "org.freedesktop.portal.FileChooser";
constexpr const char* Request = "org.freedesktop.portal.Request";
constexpr const char* Bus = "org.freedesktop.DBus";

struct SUnref {
    void operator()(DBusMessage* message) const noexcept { DBus()->message_unref(message); }
};
using Message = std::unique_ptr<DBusMessage, SUnref>;

/// Most functions of the library fail only without memory.
void Must(dbus_bool_t succeeded) {
    if (succeeded == 0) throw std::bad_alloc();
}

/// Arguments of a call that is being written, or the inside of one of them.
class CWriter final {
public:
    explicit CWriter(DBusMessage* message) { DBus()->message_iter_init_append(message, &_place); }
    CWriter(const CWriter&) = delete;
    CWriter& operator=(const CWriter&) = delete;

    void Text(const std::string& text) {
        const char* const letters = text.c_str();
        Must(DBus()->message_iter_append_basic(&_place, DBUS_TYPE_STRING, &letters));
    }
    void Number(dbus_uint32_t number) {
        Must(DBus()->message_iter_append_basic(&_place, DBUS_TYPE_UINT32, &number));
    }
    void Truth(bool truth) {
        const dbus_bool_t value = truth ? 1 : 0;
        Must(DBus()->message_iter_append_basic(&_place, DBUS_TYPE_BOOLEAN, &value));
    }
    /// A path, with the zero that ends it.
    void Bytes(const std::string& text) {
        Inside(DBUS_TYPE_ARRAY, "y", [&text](CWriter& bytes) {
            for (std::size_t n = 0; n <= text.size(); ++n)
                Must(DBus()->message_iter_append_basic(&bytes._place, DBUS_TYPE_BYTE, &text.c_str()[n]));
        });
    }
    /// `signature` is that of an array's elements or of a variant's value; null otherwise.
    template<typename Write>
    void Inside(int type, const char* signature, const Write& write) {
        CWriter inside;
        Must(DBus()->message_iter_open_container(&_place, type, signature, &inside._place));
        write(inside);
        Must(DBus()->message_iter_close_container(&_place, &inside._place));
    }
    template<typename Write>
    void Option(const char* name, const char* signature, const Write& write) {
        Inside(DBUS_TYPE_DICT_ENTRY, nullptr, [&](CWriter& entry) {
            entry.Text(name);
            entry.Inside(DBUS_TYPE_VARIANT, signature, write);
        });
    }

private:
    CWriter() = default; // its place is opened later

    DBusMessageIter _place{};
};

/// The value at this place as a text; empty if it is none.
std::string TextAt(DBusMessageIter& place, int type = DBUS_TYPE_STRING) {
    if (DBus()->message_iter_get_arg_type(&place) != type) return {};
    const char* text = nullptr;
    DBus()->message_iter_get_basic(&place, &text);
    return text;
}

std::string FirstText(DBusMessage* message, int type = DBUS_TYPE_STRING) {
    DBusMessageIter place{};
    return DBus()->message_iter_init(message, &place) != 0 ? TextAt(place, type) : std::string();
}

/// A function of another program on the bus.
struct SCall {
    const char* name;
    const char* path;
    const char* interface;
    const char* method;
};

/// A connection that no other user of the library in this process shares.
class CPrivateBus final {
public:
    CPrivateBus(const std::string& address, const CDialogControl& control)
        : _control(control), _connection(Open(address)) {}
    ~CPrivateBus() {
        if (_connection == nullptr) return;
        DBus()->connection_close(_connection);
        DBus()->connection_unref(_connection);
    }
    CPrivateBus(const CPrivateBus&) = delete;
    CPrivateBus& operator=(const CPrivateBus&) = delete;

    DBusConnection* Get() const noexcept { return _connection; }
    bool IsConnected() const { return DBus()->connection_get_is_connected(_connection) != 0; }

    /// The reply; null if it is an error or doesn't come in time. The library's own waiting has no limit
    /// while a bus doesn't take anything.
    template<typename Write>
    Message Call(const SCall& to, const Write& write) {
        const Message call(DBus()->message_new_method_call(to.name, to.path, to.interface, to.method));
        Must(call != nullptr ? 1 : 0);
        CWriter arguments(call.get());
        write(arguments);
        dbus_uint32_t serial = 0;
        Must(DBus()->connection_send(_connection, call.get(), &serial));
        return ReplyTo(serial);
    }
    /// The next message that has come; null: none yet.
    Message Next() {
        if (_kept.empty()) return Message(DBus()->connection_pop_message(_connection));
        auto message = std::move(_kept.front());
        _kept.pop_front();
        return message;
    }
    /// Waits for messages or for `control`. False when the connection is gone.
    bool Wait() {
        int socket = -1;
        if (DBus()->connection_get_unix_fd(_connection, &socket) == 0) return false;
        std::array<pollfd, 2> waits{{{_control.Descriptor(), POLLIN, 0}, {socket, POLLIN, 0}}};
        poll(waits.data(), waits.size(), -1);
        DBus()->connection_read_write(_connection, 0);
        return true;
    }

private:
    static DBusConnection* Open(const std::string& address) {
        // The library would otherwise make the whole process ignore SIGPIPE, and end it with the connection.
        DBus()->connection_set_change_sigpipe(0);
        auto* const connection = DBus()->connection_open_private(address.c_str(), nullptr);
        if (connection != nullptr) DBus()->connection_set_exit_on_disconnect(connection, 0);
        return connection;
    }

    Message ReplyTo(dbus_uint32_t serial) {
        constexpr int stepMs = 20;
        const auto end = std::chrono::steady_clock::now() + std::chrono::milliseconds(ReplyMs);
        while (std::chrono::steady_clock::now() < end) {
            while (Message message{DBus()->connection_pop_message(_connection)}) {
                if (DBus()->message_get_reply_serial(message.get()) != serial) {
                    _kept.push_back(std::move(message));
                } else if (DBus()->message_get_type(message.get()) == DBUS_MESSAGE_TYPE_METHOD_RETURN) {
                    return message;
                } else {
                    return nullptr;
                }
            }
            if (DBus()->connection_read_write(_connection, stepMs) == 0) return nullptr;
        }
        return nullptr;
    }

    const CDialogControl& _control;
    std::deque<Message> _kept; // came before a reply
    DBusConnection* _connection = nullptr;
};

void WriteFilters(CWriter& value, const SFileRequest& request) {
    value.Inside(DBUS_TYPE_ARRAY, "(sa(us))", [&](CWriter& filters) {
        for (const auto& filter : request.filters) {
            filters.Inside(DBUS_TYPE_STRUCT, nullptr, [&](CWriter& record) {
                record.Text(filter.title);
                record.Inside(DBUS_TYPE_ARRAY, "(us)", [&](CWriter& patterns) {
                    for (const auto& pattern : BothCases(filter)) {
                        patterns.Inside(DBUS_TYPE_STRUCT, nullptr, [&](CWriter& entry) {
                            entry.Number(0); // a pattern for names, not a type
                            entry.Text(pattern);
                        });
                    }
                });
            });
        }
    });
}

void WriteQuestion(CWriter& arguments, const SFileRequest& request, const std::string& token) {
    std::array<char, 32> parent{};
    if (request.hostWindow != 0)
        std::snprintf(
            parent.data(), parent.size(), "x11:%lx", static_cast<unsigned long>(request.hostWindow));
    arguments.Text(parent.data());
    arguments.Text(request.title);
    arguments.Inside(DBUS_TYPE_ARRAY, "{sv}", [&](CWriter& options) {
        options.Option("handle_token", "s", [&](CWriter& value) { value.Text(token); });
        options.Option("modal", "b", [](CWriter& value) { value.Truth(true); });
        if (!request.filters.empty())
            options.Option("filters", "a(sa(us))", [&](CWriter& value) { WriteFilters(value, request); });
        if (const auto folder = ExistingFolder(request); !folder.empty())
            options.Option("current_folder", "ay", [&](CWriter& value) { value.Bytes(folder); });
        if (const auto name = ProposedName(request); request.saves && !name.empty())
            options.Option("current_name", "s", [&](CWriter& value) { value.Text(name); });
    });
}

/// The addresses among the results; `place` is at the dictionary of them.
std::vector<std::string> Addresses(DBusMessageIter& place) {
    std::vector<std::string> addresses;
    if (DBus()->message_iter_get_arg_type(&place) != DBUS_TYPE_ARRAY) return addresses;
    DBusMessageIter entries{};
    DBus()->message_iter_recurse(&place, &entries);
    for (; DBus()->message_iter_get_arg_type(&entries) == DBUS_TYPE_DICT_ENTRY;
         DBus()->message_iter_next(&entries)) {
        DBusMessageIter entry{};
        DBusMessageIter value{};
        DBusMessageIter texts{};
        DBus()->message_iter_recurse(&entries, &entry);
        if (TextAt(entry) != "uris") continue;
        DBus()->message_iter_next(&entry);
        if (DBus()->message_iter_get_arg_type(&entry) != DBUS_TYPE_VARIANT) continue;
        DBus()->message_iter_recurse(&entry, &value);
        if (DBus()->message_iter_get_arg_type(&value) != DBUS_TYPE_ARRAY) continue;
        DBus()->message_iter_recurse(&value, &texts);
        for (; DBus()->message_iter_get_arg_type(&texts) == DBUS_TYPE_STRING;
             DBus()->message_iter_next(&texts))
            addresses.push_back(TextAt(texts));
    }
    return addresses;
}

SFileAnswer AnswerOfResponse(DBusMessage* response) {
    DBusMessageIter place{};
    if (DBus()->message_iter_init(response, &place) == 0 ||
        DBus()->message_iter_get_arg_type(&place) != DBUS_TYPE_UINT32)
        return {};
    dbus_uint32_t failure = 0;
    DBus()->message_iter_get_basic(&place, &failure);
    if (failure != 0) return {};
    DBus()->message_iter_next(&place);
    const auto addresses = Addresses(place);
    if (addresses.size() != 1) return {EFileAnswer::Unusable, {}};
    return AnswerOfAddress(addresses[0]);
}

/// Whether the message says that the portal has left the bus.
bool IsPortalsEnd(DBusMessage* message) {
    DBusMessageIter place{};
    if (DBus()->message_is_signal(message, Bus, "NameOwnerChanged") == 0 ||
        DBus()->message_iter_init(message, &place) == 0 || TextAt(place) != Portal)
        return false;
    DBus()->message_iter_next(&place);
    return !TextAt(place).empty(); // it had an owner, who has lost it
}

/// `portal` is its unique name: any other program of the session could send such a message.
SFileAnswer AwaitResponse(
    CPrivateBus& bus, const std::string& handle, const std::string& portal, CDialogControl& control) {
    for (;;) {
        while (const auto message = bus.Next()) {
            const auto is = [](const char* text, const std::string& other) {
                return text != nullptr && other == text;
            };
            if (DBus()->message_is_signal(message.get(), Request, "Response") != 0 &&
                is(DBus()->message_get_path(message.get()), handle) &&
                is(DBus()->message_get_sender(message.get()), portal))
                return AnswerOfResponse(message.get());
            if (IsPortalsEnd(message.get()) ||
                DBus()->message_is_signal(message.get(), DBUS_INTERFACE_LOCAL, "Disconnected") != 0)
                return {};
        }
        if (control.IsEnded()) {
            // A call whose caller leaves the bus at once may get lost.
            bus.Call({Portal, handle.c_str(), Request, "Close"}, [](CWriter&) {});
            return {};
        }
        control.TakeRaise(); // the portal has no way to raise its dialog
        if (!bus.Wait()) return {};
    }
}

/// Another name for each question of this process.
std::string NextToken() {
    static std::atomic<unsigned> last{0};
    return "kav_" + std::to_string(getpid()) + "_" + std::to_string(++last);
}

/// The portal's unique name if it has dialogs for files; empty otherwise.
std::string FindChooser(CPrivateBus& bus) {
    const auto reply =
        bus.Call({Portal, PortalPath, "org.freedesktop.DBus.Properties", "Get"}, [](CWriter& arguments) {
            arguments.Text(Chooser);
            arguments.Text("version");
        });
    const char* const sender = reply != nullptr ? DBus()->message_get_sender(reply.get()) : nullptr;
    return sender != nullptr ? sender : std::string();
}

bool Listen(CPrivateBus& bus) {
    const auto add = [&bus](const std::string& rule) {
        return bus.Call({Bus, "/org/freedesktop/DBus", Bus, "AddMatch"},
                   [&rule](CWriter& arguments) { arguments.Text(rule); }) != nullptr;
    };
    return add(std::string("type='signal',interface='") + Request + "',member='Response'") &&
           add(std::string("type='signal',sender='org.freedesktop.DBus',member='NameOwnerChanged',arg0='") +
               Portal + "'");
}

/// The value of a hexadecimal digit; -1: it is none.
int Digit(char letter) noexcept {
    if (letter >= '0' && letter <= '9') return letter - '0';
    if (letter >= 'a' && letter <= 'f') return letter - 'a' + 10;
    if (letter >= 'A' && letter <= 'F') return letter - 'A' + 10;
    return -1;
}

} // namespace

std::string SessionBusAddress() {
    const char* const address = std::getenv("DBUS_SESSION_BUS_ADDRESS");
    // The other kinds of addresses start programs, or lead to other machines.
    if (address != nullptr && *address != '\0') {
        const std::string first = std::string(address).substr(0, std::string_view(address).find(';'));
        return first.starts_with("unix:") ? first : std::string();
    }
    const char* const folder = std::getenv("XDG_RUNTIME_DIR");
    if (folder == nullptr || *folder != '/') return {};
    const auto path = std::string(folder) + "/bus";
    struct stat status {};
    const bool isBus = path.find_first_of(",;%=") == std::string::npos && stat(path.c_str(), &status) == 0 &&
                       S_ISSOCK(status.st_mode);
    return isBus ? "unix:path=" + path : std::string();
}

SFileAnswer AnswerOfAddress(std::string_view address) {
    SFileAnswer unusable{EFileAnswer::Unusable, {}};
    constexpr std::string_view scheme = "file://";
    if (!address.starts_with(scheme)) return unusable;
    address.remove_prefix(scheme.size());
    if (constexpr std::string_view here = "localhost"; address.starts_with(here))
        address.remove_prefix(here.size());
    std::string path;
    for (std::size_t n = 0; n < address.size(); ++n) {
        char letter = address[n];
        if (letter == '?' || letter == '#') return unusable; // the address of something else
        if (letter == '%') {
            const int high = n + 1 < address.size() ? Digit(address[n + 1]) : -1;
            const int low = n + 2 < address.size() ? Digit(address[n + 2]) : -1;
            if (high < 0 || low < 0) return unusable;
            letter = static_cast<char>(high * 16 + low);
            if (letter == '/') return unusable; // no name contains one
            n += 2;
        }
        path += letter;
    }
    return AnswerOfPath(std::move(path));
}

std::optional<SFileAnswer> AskPortal(
    const SFileRequest& request, const std::string& busAddress, CDialogControl& control) {
    if (busAddress.empty() || DBus() == nullptr) return std::nullopt;
    CPrivateBus bus(busAddress, control);
    if (bus.Get() == nullptr) return std::nullopt;
    const auto nothing = [](CWriter&) {};
    const auto hello = bus.Call({Bus, "/org/freedesktop/DBus", Bus, "Hello"}, nothing);
    if (hello == nullptr || FirstText(hello.get()).empty()) return std::nullopt;
    const auto portal = FindChooser(bus);
    if (portal.empty() || control.IsEnded() || !Listen(bus)) return std::nullopt;
    const auto token = NextToken();
    const auto reply = bus.Call({Portal, PortalPath, Chooser, request.saves ? "SaveFile" : "OpenFile"},
        [&](CWriter& arguments) { WriteQuestion(arguments, request, token); });
    const auto handle = reply != nullptr ? FirstText(reply.get(), DBUS_TYPE_OBJECT_PATH) : std::string();
    // Whatever the portal does later with a question that it hasn't taken in time: the end of the connection
    // closes it.
    if (handle.empty() && bus.IsConnected()) return std::nullopt;
    if (handle.empty()) return SFileAnswer{}; // the bus died with the question
    return AwaitResponse(bus, handle, portal, control);
}

} // namespace KAV::Platform
