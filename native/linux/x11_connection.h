#pragma once

#include "platform/x11/xcb_library.h"

#include <functional>
#include <map>
#include <string>
#include <string_view>
#include <utility>

namespace KAV::Native {

/// A connection to an X11 display, with the numbers of its names and the time of the user's last event.
/// Threads: the window's.
class CX11Connection final {
public:
    /// `connection` isn't null.
    explicit CX11Connection(Platform::XConnection connection) noexcept : _connection(std::move(connection)) {}
    CX11Connection(const CX11Connection&) = delete;
    CX11Connection& operator=(const CX11Connection&) = delete;

    xcb_connection_t* Connection() const noexcept { return _connection.get(); }
    xcb_atom_t Atom(std::string_view name); ///< asked for once
    xcb_timestamp_t Time() const noexcept { return _time; }
    void SetTime(xcb_timestamp_t time) noexcept { _time = time; }
    /// Sends what is in the buffer.
    void Flush() const noexcept;

private:
    Platform::XConnection _connection;
    std::map<std::string, xcb_atom_t, std::less<>> _atoms;
    xcb_timestamp_t _time = XCB_CURRENT_TIME;
};

} // namespace KAV::Native
