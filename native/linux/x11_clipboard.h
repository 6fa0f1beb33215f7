#pragma once

#include "native/linux/x11_connection.h"

#include <cstddef>
#include <cstdint>
#include <functional>
#include <string>
#include <string_view>

namespace KAV::Native {

/// Text to and from other programs by the CLIPBOARD of an X11 display. It belongs to one connection and waits
/// for nothing: what is asked for comes by events, and what was copied can be pasted elsewhere as long as the
/// connection lives. Then it is lost.
///
/// Threads: the window's. Copying and pasting throw std::bad_alloc.
class CX11Clipboard final {
public:
    using Pasted = std::function<void(std::u16string text)>;

    /// A paste that isn't answered within this time is dropped, whatever comes later.
    static constexpr std::uint32_t LongestMs = 1000;
    /// A longer text isn't pasted.
    static constexpr std::size_t MostBytes = 4u << 20u;

    CX11Clipboard(CX11Connection& display, xcb_window_t root);
    CX11Clipboard(const CX11Clipboard&) = delete;
    CX11Clipboard& operator=(const CX11Clipboard&) = delete;

    /// Offers a text. Nothing happens if it is empty or ill-formed, or the display takes the selection for
    /// another program.
    void Copy(std::u16string_view text);
    /// Asks for the text; an earlier request is forgotten. `pasted` is called at once if the text is our own,
    /// otherwise from OnEvent(), or never.
    void Paste(Pasted pasted);
    /// Forgets the request.
    void Forget() noexcept { _pasted = nullptr; }

    /// For every event of the connection. Without memory it gives no answer and takes none.
    void OnEvent(const xcb_generic_event_t& event) noexcept;

private:
    void Handle(const xcb_generic_event_t& event);
    void Convert();
    void OnAnswer(const xcb_selection_notify_event_t& event);
    void OnPart(const xcb_property_notify_event_t& event);
    void OnRequest(const xcb_selection_request_event_t& event);
    bool Provide(const xcb_selection_request_event_t& event);
    /// Takes what a property of our window holds and deletes it. The type; 0: it can't be used.
    xcb_atom_t TakeProperty(std::string& bytes);
    void Deliver(xcb_atom_t type, const std::string& bytes);
    bool IsWaiting() const noexcept;

    CX11Connection& _display;
    xcb_window_t _window = 0; // never shown
    xcb_atom_t _selection = 0, _targets = 0, _utf8 = 0, _incremental = 0;
    bool _isOwner = false;
    std::u16string _text; // what we offer

    Pasted _pasted; // null: nothing is asked for
    std::uint32_t _askedMs = 0;
    std::uint32_t _asked = 0;  // count of requests so far: each has its own property
    xcb_atom_t _target = 0;    // the form that is asked for
    xcb_atom_t _property = 0;  // where the answer goes
    xcb_atom_t _partsType = 0; // 0: it doesn't come in parts
    std::string _parts;
};

} // namespace KAV::Native
