#include "native/linux/x11_ancestors.h"

#include <algorithm>
#include <utility>

namespace KAV::Native {

using Platform::Xcb;
using Platform::XReply;

namespace {

constexpr std::uint32_t Watched = XCB_EVENT_MASK_STRUCTURE_NOTIFY | XCB_EVENT_MASK_PROPERTY_CHANGE;
constexpr int DeepestTree = 64; // a chain that changes while it is read could be endless

bool Has(const auto& windows, xcb_window_t id) {
    return std::any_of(windows.begin(), windows.end(), [id](const auto& window) { return window.id == id; });
}

} // namespace

CX11Ancestors::CX11Ancestors(CX11Display& display, xcb_window_t window)
    : _display(display), _state(display.Atom("WM_STATE")), _windows{{window, false}} {
    Find();
}

bool CX11Ancestors::OnEvent(const xcb_generic_event_t& event) {
    switch (event.response_type & 0x7Fu) {
    case XCB_MAP_NOTIFY:
        return SetMapped(reinterpret_cast<const xcb_map_notify_event_t&>(event).window, true);
    case XCB_UNMAP_NOTIFY:
        return SetMapped(reinterpret_cast<const xcb_unmap_notify_event_t&>(event).window, false);
    case XCB_REPARENT_NOTIFY:
        if (!Has(_windows, reinterpret_cast<const xcb_reparent_notify_event_t&>(event).window)) return false;
        Find();
        return true;
    case XCB_PROPERTY_NOTIFY: {
        // A window manager marks a window some time after it was mapped.
        const auto& property = reinterpret_cast<const xcb_property_notify_event_t&>(event);
        if (property.atom != _state || !Has(_windows, property.window)) return false;
        const auto before = _hostWindow;
        FindHostWindow();
        return _hostWindow != before;
    }
    default:
        return false;
    }
}

bool CX11Ancestors::AreMapped() const noexcept {
    return std::all_of(
        _windows.begin(), _windows.end(), [](const SWindow& window) { return window.isMapped; });
}

bool CX11Ancestors::IsInHost(xcb_window_t window) const {
    return _hostWindow != 0 && Lies(window, _hostWindow);
}

bool CX11Ancestors::IsInEditor(xcb_window_t window) const {
    return Lies(window, _windows[0].id);
}

/// Each window is watched before it is asked for its parent and whether it is mapped, so that a change after
/// the answer is an event.
void CX11Ancestors::Find() {
    auto* const connection = _display.Connection();
    std::vector<SWindow> found;
    xcb_window_t id = _windows[0].id;
    for (int depth = 0; id != 0 && id != _display.Root() && depth < DeepestTree; ++depth) {
        if (depth > 0) Xcb()->change_window_attributes(connection, id, XCB_CW_EVENT_MASK, &Watched);
        const XReply<xcb_get_window_attributes_reply_t> attributes(Xcb()->get_window_attributes_reply(
            connection, Xcb()->get_window_attributes(connection, id), nullptr));
        const bool isMapped = attributes != nullptr && attributes->map_state != XCB_MAP_STATE_UNMAPPED;
        found.push_back({id, isMapped});
        id = ParentOf(id);
    }
    found.swap(_windows);
    for (const auto& before : found) {
        constexpr std::uint32_t nothing = 0;
        if (!Has(_windows, before.id))
            Xcb()->change_window_attributes(connection, before.id, XCB_CW_EVENT_MASK, &nothing);
    }
    FindHostWindow();
}

void CX11Ancestors::FindHostWindow() {
    _hostWindow = _windows.size() > 1 ? _windows.back().id : 0;
    for (std::size_t n = 1; n < _windows.size(); ++n) {
        const XReply<xcb_get_property_reply_t> state(Xcb()->get_property_reply(_display.Connection(),
            Xcb()->get_property(_display.Connection(), 0, _windows[n].id, _state, XCB_ATOM_ANY, 0, 0),
            nullptr));
        if (state == nullptr || state->type == XCB_ATOM_NONE) continue;
        _hostWindow = _windows[n].id;
        return;
    }
}

bool CX11Ancestors::SetMapped(xcb_window_t window, bool mapped) {
    const auto found =
        std::find_if(_windows.begin(), _windows.end(), [window](const SWindow& w) { return w.id == window; });
    return found != _windows.end() && std::exchange(found->isMapped, mapped) != mapped;
}

bool CX11Ancestors::Lies(xcb_window_t window, xcb_window_t in) const {
    constexpr xcb_window_t lastThatIsNone = XCB_INPUT_FOCUS_POINTER_ROOT;
    for (int depth = 0; window > lastThatIsNone && depth < DeepestTree; ++depth) {
        if (window == in) return true;
        window = ParentOf(window);
    }
    return false;
}

xcb_window_t CX11Ancestors::ParentOf(xcb_window_t window) const {
    const XReply<xcb_query_tree_reply_t> tree(Xcb()->query_tree_reply(
        _display.Connection(), Xcb()->query_tree(_display.Connection(), window), nullptr));
    return tree != nullptr ? tree->parent : 0;
}

} // namespace KAV::Native
