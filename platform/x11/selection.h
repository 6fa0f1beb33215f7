#pragma once

#include "platform/whole_file.h"
#include "platform/x11/xcb_library.h"

#include <memory>
#include <string>
#include <vector>

/// The CLIPBOARD selection of the display, with a private format as its target.
namespace KAV::Platform {

/// Owns the selection with a window of its own and sends the data to any program that requests it, from a
/// thread that lives until another program takes the selection or End() is called. That thread is never
/// waited for, because the display may have stopped: it owns this object together with the caller.
/// Threads: Create() on a display thread, whose blocked signals the object's own thread inherits; End() on
/// any. The object's own thread only reads what never changes after Create().
class CSelectionOwner final {
public:
    /// Null if there is no display, it refuses, or the data is more than it takes in one request.
    static std::shared_ptr<CSelectionOwner> Create(
        const std::string& display, const std::string& format, std::vector<char> data);
    ~CSelectionOwner();
    CSelectionOwner(const CSelectionOwner&) = delete;
    CSelectionOwner& operator=(const CSelectionOwner&) = delete;

    void End() const noexcept;

private:
    CSelectionOwner(XConnection connection, const std::string& format, std::vector<char> data);
    bool TakeSelection();
    void Serve() noexcept;
    bool Handle(const xcb_generic_event_t& event);
    void Answer(const xcb_selection_request_event_t& request);
    bool Provide(const xcb_selection_request_event_t& request);

    XConnection _connection;
    std::vector<char> _data;
    xcb_window_t _window = 0;
    xcb_atom_t _selection = 0;
    xcb_atom_t _targets = 0;
    xcb_atom_t _format = 0;
    int _wake = -1; // an event descriptor: readable when the thread has to end
};

/// The data of the selection's current owner in that format. Null if there is no display or no owner, or the
/// owner doesn't have that format or sends nothing within a second. On a display thread.
SBytes ReadSelection(const std::string& display, const std::string& format);

} // namespace KAV::Platform
