#include "native/linux/x11_clipboard.h"

#include "utils/clock.h"
#include "utils/text.h"

#include <array>
#include <cstring>
#include <exception>
#include <utility>

namespace KAV::Native {

namespace {

using Platform::Xcb;
using Platform::XReply;

/// Latin-1, the form that STRING has. Other characters become question marks.
std::string ToLatin1(std::u16string_view text) {
    std::string bytes;
    for (const char16_t unit : text) {
        if ((unit & 0xFC00u) == 0xDC00u) continue; // the second half of a character
        bytes += unit < 0x100 ? static_cast<char>(unit) : '?';
    }
    return bytes;
}

std::u16string FromLatin1(std::string_view bytes) {
    std::u16string text;
    for (const char byte : bytes) text += static_cast<char16_t>(static_cast<unsigned char>(byte));
    return text;
}

} // namespace

CX11Clipboard::CX11Clipboard(CX11Connection& display, xcb_window_t root)
    : _display(display), _selection(display.Atom("CLIPBOARD")), _targets(display.Atom("TARGETS")),
      _utf8(display.Atom("UTF8_STRING")), _incremental(display.Atom("INCR")) {
    auto* const connection = _display.Connection();
    const std::uint32_t events = XCB_EVENT_MASK_PROPERTY_CHANGE;
    _window = Xcb()->generate_id(connection);
    Xcb()->create_window(connection, 0, _window, root, -1, -1, 1, 1, 0, XCB_WINDOW_CLASS_INPUT_ONLY,
        XCB_COPY_FROM_PARENT, XCB_CW_EVENT_MASK, &events);
}

void CX11Clipboard::Copy(std::u16string_view text) {
    constexpr std::size_t head = 64;
    const std::size_t most = std::size_t{Xcb()->get_maximum_request_length(_display.Connection())} * 4 - head;
    const auto bytes = Utils::ToUtf8(text);
    if (bytes.empty() || bytes.size() > most) return;
    _text = text;
    auto* const connection = _display.Connection();
    Xcb()->set_selection_owner(connection, _window, _selection, _display.Time());
    const XReply<xcb_get_selection_owner_reply_t> reply(Xcb()->get_selection_owner_reply(
        connection, Xcb()->get_selection_owner(connection, _selection), nullptr));
    _isOwner = reply != nullptr && reply->owner == _window;
}

void CX11Clipboard::Paste(Pasted pasted) {
    if (_isOwner) {
        _pasted = nullptr;
        pasted(_text);
        return;
    }
    _pasted = std::move(pasted);
    _askedMs = Utils::TickMs();
    // An answer that comes too late is then not taken for that of the next request.
    constexpr std::uint32_t properties = 16;
    _property = _display.Atom("KAV_PASTED_" + std::to_string(_asked++ % properties));
    _target = _utf8;
    Convert();
}

void CX11Clipboard::Convert() {
    _partsType = 0;
    _parts.clear();
    auto* const connection = _display.Connection();
    Xcb()->delete_property(connection, _window, _property);
    Xcb()->convert_selection(connection, _window, _selection, _target, _property, _display.Time());
    _display.Flush();
}

bool CX11Clipboard::IsWaiting() const noexcept {
    return _pasted != nullptr && Utils::TickMs() - _askedMs <= LongestMs;
}

void CX11Clipboard::OnEvent(const xcb_generic_event_t& event) noexcept {
    try {
        Handle(event);
    } catch (const std::exception&) {
        _pasted = nullptr;
    }
}

void CX11Clipboard::Handle(const xcb_generic_event_t& event) {
    switch (event.response_type & 0x7Fu) {
    case XCB_SELECTION_REQUEST: {
        const auto& request = reinterpret_cast<const xcb_selection_request_event_t&>(event);
        if (request.owner == _window) OnRequest(request);
        break;
    }
    case XCB_SELECTION_CLEAR:
        if (reinterpret_cast<const xcb_selection_clear_event_t&>(event).owner != _window) break;
        _isOwner = false;
        _text.clear();
        break;
    case XCB_SELECTION_NOTIFY: {
        const auto& answer = reinterpret_cast<const xcb_selection_notify_event_t&>(event);
        if (answer.requestor == _window) OnAnswer(answer);
        break;
    }
    case XCB_PROPERTY_NOTIFY: {
        const auto& change = reinterpret_cast<const xcb_property_notify_event_t&>(event);
        if (change.window == _window) OnPart(change);
        break;
    }
    default:
        break;
    }
}

void CX11Clipboard::OnAnswer(const xcb_selection_notify_event_t& event) {
    if (!IsWaiting() || event.target != _target) return;
    if (event.property == XCB_ATOM_NONE) {
        if (std::exchange(_target, XCB_ATOM_STRING) == _utf8) Convert(); // older programs
        return;
    }
    if (event.property != _property) return;
    std::string bytes;
    const auto type = TakeProperty(bytes);
    if (type == _incremental) {
        _partsType = _target; // the parts come as changes of the property
    } else {
        Deliver(type, bytes);
    }
}

void CX11Clipboard::OnPart(const xcb_property_notify_event_t& event) {
    if (_partsType == 0 || !IsWaiting() || event.atom != _property || event.state != XCB_PROPERTY_NEW_VALUE)
        return;
    std::string bytes;
    const auto type = TakeProperty(bytes);
    if (type == 0 || _parts.size() + bytes.size() > MostBytes) {
        _partsType = 0;
    } else if (bytes.empty()) {
        _partsType = 0;
        Deliver(type, std::exchange(_parts, {}));
    } else {
        _parts += bytes;
    }
}

xcb_atom_t CX11Clipboard::TakeProperty(std::string& bytes) {
    auto* const connection = _display.Connection();
    const auto cookie = Xcb()->get_property(
        connection, 1, _window, _property, XCB_GET_PROPERTY_TYPE_ANY, 0, std::uint32_t{MostBytes / 4});
    const XReply<xcb_get_property_reply_t> reply(Xcb()->get_property_reply(connection, cookie, nullptr));
    if (reply == nullptr || reply->bytes_after != 0) return 0;
    const int length = Xcb()->get_property_value_length(reply.get());
    if (reply->format == 8 && length > 0) {
        bytes.assign(static_cast<const char*>(Xcb()->get_property_value(reply.get())),
            static_cast<std::size_t>(length));
    }
    return reply->type;
}

void CX11Clipboard::Deliver(xcb_atom_t type, const std::string& bytes) {
    const auto pasted = std::exchange(_pasted, nullptr);
    if (type == _utf8) {
        pasted(Utils::ToUtf16Repaired(bytes));
    } else if (type == XCB_ATOM_STRING) {
        pasted(FromLatin1(bytes));
    }
}

void CX11Clipboard::OnRequest(const xcb_selection_request_event_t& event) {
    std::array<char, 32> message{}; // every event has this size on the wire
    xcb_selection_notify_event_t answer{};
    answer.response_type = XCB_SELECTION_NOTIFY;
    answer.time = event.time;
    answer.requestor = event.requestor;
    answer.selection = event.selection;
    answer.target = event.target;
    answer.property = Provide(event) ? event.property : xcb_atom_t{XCB_ATOM_NONE};
    std::memcpy(message.data(), &answer, sizeof(answer));
    Xcb()->send_event(_display.Connection(), 0, event.requestor, XCB_EVENT_MASK_NO_EVENT, message.data());
    _display.Flush();
}

bool CX11Clipboard::Provide(const xcb_selection_request_event_t& event) {
    if (!_isOwner || event.selection != _selection || event.property == XCB_ATOM_NONE) return false;
    auto* const connection = _display.Connection();
    if (event.target == _targets) {
        const std::array<xcb_atom_t, 3> offered{_targets, _utf8, XCB_ATOM_STRING};
        Xcb()->change_property(connection, XCB_PROP_MODE_REPLACE, event.requestor, event.property,
            XCB_ATOM_ATOM, 32, static_cast<std::uint32_t>(offered.size()), offered.data());
        return true;
    }
    if (event.target != _utf8 && event.target != XCB_ATOM_STRING) return false;
    const auto bytes = event.target == _utf8 ? Utils::ToUtf8(_text) : ToLatin1(_text);
    Xcb()->change_property(connection, XCB_PROP_MODE_REPLACE, event.requestor, event.property, event.target,
        8, static_cast<std::uint32_t>(bytes.size()), bytes.data());
    return true;
}

} // namespace KAV::Native
