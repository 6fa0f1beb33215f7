#include "native/linux/x11_keyboard.h"

#include "platform/x11/xcb_extensions.h"
#include "platform/x11/xcb_library.h"
#include "utils/text.h"

#include <array>
#include <cstdlib>
#include <cstring>

namespace KAV::Native {

namespace {

using Platform::Xcb;
using Platform::Xkb;
using Platform::XkbOwned;

/// The language of the texts that the user types. The host's own locale is of no use: many hosts keep "C".
const char* TypingLocale() noexcept {
    for (const char* const name : {"LC_ALL", "LC_CTYPE", "LANG"}) {
        const char* const value = std::getenv(name);
        if (value != nullptr && *value != '\0') return value;
    }
    return "C";
}

XkbOwned<xkb_compose_state> NewCompose(xkb_context* context) {
    const XkbOwned<xkb_compose_table> table(
        Xkb()->compose_table_new_from_locale(context, TypingLocale(), XKB_COMPOSE_COMPILE_NO_FLAGS));
    if (table == nullptr) return nullptr;
    return XkbOwned<xkb_compose_state>(Xkb()->compose_state_new(table.get(), XKB_COMPOSE_STATE_NO_FLAGS));
}

/// The keymap of the display; a plain one if it can't be had there.
XkbOwned<xkb_keymap> KeymapOf(xkb_context* context, xcb_connection_t* connection, bool hasExtension) {
    XkbOwned<xkb_keymap> keymap;
    const auto device = hasExtension ? Xkb()->x11_get_core_keyboard_device_id(connection) : -1;
    if (device >= 0)
        keymap.reset(
            Xkb()->x11_keymap_new_from_device(context, connection, device, XKB_KEYMAP_COMPILE_NO_FLAGS));
    if (keymap == nullptr)
        keymap.reset(Xkb()->keymap_new_from_names(context, nullptr, XKB_KEYMAP_COMPILE_NO_FLAGS));
    return keymap;
}

/// The letter 'A' to 'Z' that a key has in a layout without any modifier; 0: none.
char16_t LetterOf(xkb_keymap* keymap, xkb_keycode_t key, xkb_layout_index_t layout) {
    const xkb_keysym_t* symbols = nullptr;
    if (Xkb()->keymap_key_get_syms_by_level(keymap, key, layout, 0, &symbols) != 1) return 0;
    const xkb_keysym_t symbol = symbols[0];
    if (symbol >= XKB_KEY_a && symbol <= XKB_KEY_z) return static_cast<char16_t>(u'A' + (symbol - XKB_KEY_a));
    if (symbol >= XKB_KEY_A && symbol <= XKB_KEY_Z) return static_cast<char16_t>(u'A' + (symbol - XKB_KEY_A));
    return 0;
}

bool HasLatin(xkb_keymap* keymap, xkb_layout_index_t layout) {
    for (auto key = Xkb()->keymap_min_keycode(keymap); key <= Xkb()->keymap_max_keycode(keymap); ++key) {
        if (LetterOf(keymap, key, layout) != 0) return true;
    }
    return false;
}

/// The first layout with Latin letters; the number of layouts if there is none.
xkb_layout_index_t FirstLatin(xkb_keymap* keymap) {
    const auto count = Xkb()->keymap_num_layouts(keymap);
    xkb_layout_index_t layout = 0;
    while (layout < count && !HasLatin(keymap, layout)) ++layout;
    return layout;
}

XkbOwned<xkb_keymap> PlainKeymap(xkb_context* context) {
    xkb_rule_names names{};
    names.rules = "evdev";
    names.model = "pc105";
    names.layout = "us";
    return XkbOwned<xkb_keymap>(Xkb()->keymap_new_from_names(context, &names, XKB_KEYMAP_COMPILE_NO_FLAGS));
}

/// A character as text; empty for control characters, which are no text.
std::u16string TextOf(std::uint32_t character) {
    constexpr std::uint32_t firstText = 0x20;
    constexpr std::uint32_t del = 0x7F;
    constexpr std::uint32_t firstAfterControls = 0xA0;
    if (character < firstText || (character >= del && character < firstAfterControls)) return {};
    constexpr std::uint32_t firstPair = 0x10000;
    if (character < firstPair) return {static_cast<char16_t>(character)};
    return {static_cast<char16_t>(0xD800 + ((character - firstPair) >> 10)),
        static_cast<char16_t>(0xDC00 + ((character - firstPair) & 0x3FF))};
}

} // namespace

CX11Keyboard::CX11Keyboard(xcb_connection_t* connection)
    : _connection(connection), _context(Xkb()->context_new(XKB_CONTEXT_NO_ENVIRONMENT_NAMES)) {
    if (_context == nullptr) return;
    _compose = NewCompose(_context.get());
    SelectEvents();
    State();
}

/// A client that uses the keyboard's extension gets no other word of new layouts.
void CX11Keyboard::SelectEvents() {
    const auto* const extension = Xcb()->get_extension_data(_connection, Platform::XcbExtensions().xkb_id);
    if (extension == nullptr || extension->present == 0) return;
    if (Xkb()->x11_setup_xkb_extension(_connection, XKB_X11_MIN_MAJOR_XKB_VERSION,
            XKB_X11_MIN_MINOR_XKB_VERSION, XKB_X11_SETUP_XKB_EXTENSION_NO_FLAGS, nullptr, nullptr, nullptr,
            nullptr) == 0)
        return;
    _layoutEvents = extension->first_event;
    constexpr std::uint16_t coreKeyboard = 0x100;
    constexpr std::uint16_t events = 1u | 2u; // another keyboard, another keymap
    constexpr std::uint16_t parts = 0xFF;     // of a keymap: all
    Platform::XcbExtensions().xkb_select_events(
        _connection, coreKeyboard, events, 0, events, parts, parts, nullptr);
}

void CX11Keyboard::OnEvent(const xcb_generic_event_t& event) noexcept {
    const auto type = event.response_type & 0x7Fu;
    // A change is several events; the layouts are read when the next key needs them.
    if (type == XCB_MAPPING_NOTIFY || (_layoutEvents != 0 && type == _layoutEvents)) _isOld = true;
}

xkb_state* CX11Keyboard::State() {
    if (_isOld && _context != nullptr) Reload();
    return _state.get();
}

void CX11Keyboard::Reload() {
    _isOld = false;
    _keymap = KeymapOf(_context.get(), _connection, _layoutEvents != 0);
    _state.reset(_keymap != nullptr ? Xkb()->state_new(_keymap.get()) : nullptr);
    _latinLayout = _keymap != nullptr ? FirstLatin(_keymap.get()) : 0;
    const bool hasLatin = _keymap != nullptr && _latinLayout < Xkb()->keymap_num_layouts(_keymap.get());
    if (hasLatin) {
        _latinKeymap.reset();
    } else {
        _latinKeymap = PlainKeymap(_context.get());
    }
    _lastEvent.reset();
}

void CX11Keyboard::ResetCompose() noexcept {
    if (_compose != nullptr) Xkb()->compose_state_reset(_compose.get());
}

STypedKey CX11Keyboard::Typed(const xcb_key_press_event_t& event) {
    if (_lastEvent && std::memcmp(&*_lastEvent, &event, sizeof(event)) == 0) return _lastKey;
    STypedKey key;
    key.down = (event.response_type & 0x7Fu) == XCB_KEY_PRESS;
    key.shift = (event.state & XCB_MOD_MASK_SHIFT) != 0;
    key.control = (event.state & XCB_MOD_MASK_CONTROL) != 0;
    key.alt = (event.state & XCB_MOD_MASK_1) != 0;
    key.symbol = Symbol(event);
    key.latin = Latin(event.detail);
    if (key.down) Compose(key);
    _lastEvent = event;
    _lastKey = key;
    return key;
}

std::uint32_t CX11Keyboard::Symbol(const xcb_key_press_event_t& event) {
    if (State() == nullptr) return XKB_KEY_NoSymbol;
    UpdateState(event.state);
    return Xkb()->state_key_get_one_sym(_state.get(), event.detail);
}

bool CX11Keyboard::IsLeftControl(std::uint8_t key) {
    return State() != nullptr &&
           Xkb()->state_key_get_one_sym(_state.get(), xkb_keycode_t{key}) == XKB_KEY_Control_L;
}

/// An event's state has the modifiers, and in two of its bits the layout that is in use.
void CX11Keyboard::UpdateState(std::uint16_t eventState) {
    constexpr std::uint16_t modifiers = 0xFF;
    constexpr unsigned layoutBits = 13;
    Xkb()->state_update_mask(
        _state.get(), eventState & modifiers, 0, 0, 0, 0, (std::uint32_t{eventState} >> layoutBits) & 3u);
}

void CX11Keyboard::Compose(STypedKey& key) {
    const bool isText = !key.control && !key.alt;
    if (_compose == nullptr ||
        Xkb()->compose_state_feed(_compose.get(), key.symbol) == XKB_COMPOSE_FEED_IGNORED) {
        if (isText) key.text = TextOf(Xkb()->keysym_to_utf32(key.symbol));
        return;
    }
    switch (Xkb()->compose_state_get_status(_compose.get())) {
    case XKB_COMPOSE_COMPOSING:
        break;
    case XKB_COMPOSE_CANCELLED:
        ResetCompose();
        break;
    case XKB_COMPOSE_COMPOSED: {
        std::array<char, 256> text{};
        Xkb()->compose_state_get_utf8(_compose.get(), text.data(), text.size());
        key.text = Utils::ToUtf16(text.data());
        key.symbol = Xkb()->compose_state_get_one_sym(_compose.get());
        ResetCompose();
        break;
    }
    case XKB_COMPOSE_NOTHING:
        if (isText) key.text = TextOf(Xkb()->keysym_to_utf32(key.symbol));
        break;
    }
}

char16_t CX11Keyboard::Latin(xkb_keycode_t key) const {
    if (_latinKeymap != nullptr) return LetterOf(_latinKeymap.get(), key, 0);
    if (_state == nullptr) return 0;
    const auto layout = Xkb()->state_key_get_layout(_state.get(), key);
    if (layout != XKB_LAYOUT_INVALID && HasLatin(_keymap.get(), layout))
        return LetterOf(_keymap.get(), key, layout);
    return LetterOf(_keymap.get(), key, _latinLayout);
}

} // namespace KAV::Native
