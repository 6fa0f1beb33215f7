#pragma once

#include <cstring>
#include <xcb/xcb.h>

namespace KAV::Tests {

/// An event as the client library hands it out: it is longer than the event that the display sends, so a
/// reference to the latter can't stand for it.
template<typename TEvent>
xcb_generic_event_t Generic(const TEvent& event) noexcept {
    xcb_generic_event_t generic{};
    static_assert(sizeof(event) <= sizeof(generic));
    std::memcpy(&generic, &event, sizeof(event));
    return generic;
}

} // namespace KAV::Tests
