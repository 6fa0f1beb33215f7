#pragma once

#include "native/linux/typed_key.h"
#include "platform/xkb/xkb_library.h"

#include <cstdint>
#include <optional>
#include <string>

namespace KAV::Native {

/// The keyboard of a display: its layouts, and the compose sequences of the user's language. What isn't to be
/// had, such as sequences for an unknown language, is left out. Threads: the window's.
class CX11Keyboard final {
public:
    /// The connection must outlive it. The libraries of the keyboard are there.
    explicit CX11Keyboard(xcb_connection_t* connection);

    /// What a key event means. Presses compose, so each is to be passed once and in order; the same event
    /// again right after itself gives the same answer.
    STypedKey Typed(const xcb_key_press_event_t& event);
    /// The keysym of a key by that event's layout and modifiers.
    std::uint32_t Symbol(const xcb_key_press_event_t& event);
    /// Whether that key is the left Control key, by the layout that is in use.
    bool IsLeftControl(std::uint8_t key);
    void ResetCompose() noexcept;
    /// For every event of the connection: after one that says that there are other layouts, those count.
    void OnEvent(const xcb_generic_event_t& event) noexcept;

private:
    void SelectEvents();
    void Reload();
    xkb_state* State();
    void UpdateState(std::uint16_t eventState);
    void Compose(STypedKey& key);
    char16_t Latin(xkb_keycode_t key) const;

    xcb_connection_t* _connection;
    std::uint8_t _layoutEvents = 0; // the type of the events about layouts; 0: they don't come
    bool _isOld = true;             // the layouts have to be read
    Platform::XkbOwned<xkb_context> _context;
    Platform::XkbOwned<xkb_keymap> _keymap;
    Platform::XkbOwned<xkb_state> _state;
    Platform::XkbOwned<xkb_compose_state> _compose;  // null: no sequences
    Platform::XkbOwned<xkb_keymap> _latinKeymap;     // for users without a layout of Latin letters
    xkb_layout_index_t _latinLayout = 0;             // the first one with such letters
    std::optional<xcb_key_press_event_t> _lastEvent; // and what it meant
    STypedKey _lastKey;
};

} // namespace KAV::Native
