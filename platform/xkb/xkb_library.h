#pragma once

#include <memory>
#include <xkbcommon/xkbcommon-compose.h>
#include <xkbcommon/xkbcommon-x11.h>
#include <xkbcommon/xkbcommon.h>

/// The libraries that turn keys into texts by the user's keyboard layouts, loaded when they are first needed.
/// Only for the Linux part of this folder. Any thread.
namespace KAV::Platform {

/// The libraries' functions, under their names there.
struct SXkb {
    decltype(&xkb_context_new) context_new;
    decltype(&xkb_context_unref) context_unref;
    decltype(&xkb_keymap_new_from_names) keymap_new_from_names;
    decltype(&xkb_keymap_unref) keymap_unref;
    decltype(&xkb_keymap_num_layouts) keymap_num_layouts;
    decltype(&xkb_keymap_min_keycode) keymap_min_keycode;
    decltype(&xkb_keymap_max_keycode) keymap_max_keycode;
    decltype(&xkb_keymap_key_get_syms_by_level) keymap_key_get_syms_by_level;
    decltype(&xkb_state_new) state_new;
    decltype(&xkb_state_unref) state_unref;
    decltype(&xkb_state_update_mask) state_update_mask;
    decltype(&xkb_state_key_get_one_sym) state_key_get_one_sym;
    decltype(&xkb_state_key_get_layout) state_key_get_layout;
    decltype(&xkb_keysym_to_utf32) keysym_to_utf32;
    decltype(&xkb_compose_table_new_from_locale) compose_table_new_from_locale;
    decltype(&xkb_compose_table_unref) compose_table_unref;
    decltype(&xkb_compose_state_new) compose_state_new;
    decltype(&xkb_compose_state_unref) compose_state_unref;
    decltype(&xkb_compose_state_feed) compose_state_feed;
    decltype(&xkb_compose_state_reset) compose_state_reset;
    decltype(&xkb_compose_state_get_status) compose_state_get_status;
    decltype(&xkb_compose_state_get_utf8) compose_state_get_utf8;
    decltype(&xkb_compose_state_get_one_sym) compose_state_get_one_sym;

    decltype(&xkb_x11_setup_xkb_extension) x11_setup_xkb_extension;
    decltype(&xkb_x11_get_core_keyboard_device_id) x11_get_core_keyboard_device_id;
    decltype(&xkb_x11_keymap_new_from_device) x11_keymap_new_from_device;
};

/// The functions, for the life of the process; null if a library is missing or incomplete.
const SXkb* Xkb() noexcept;

struct SXkbEnd {
    void operator()(xkb_context* context) const noexcept { Xkb()->context_unref(context); }
    void operator()(xkb_keymap* keymap) const noexcept { Xkb()->keymap_unref(keymap); }
    void operator()(xkb_state* state) const noexcept { Xkb()->state_unref(state); }
    void operator()(xkb_compose_table* table) const noexcept { Xkb()->compose_table_unref(table); }
    void operator()(xkb_compose_state* state) const noexcept { Xkb()->compose_state_unref(state); }
};
template<typename T>
using XkbOwned = std::unique_ptr<T, SXkbEnd>;

} // namespace KAV::Platform
