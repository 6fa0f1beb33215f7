#include "platform/xkb/xkb_library.h"

#include "platform/dl/symbol.h"

#include <dlfcn.h>
#include <optional>

namespace KAV::Platform {

namespace {

bool FindKeys(void* library, SXkb& xkb) noexcept {
    return FindSymbol(library, "xkb_context_new", xkb.context_new) &&
           FindSymbol(library, "xkb_context_unref", xkb.context_unref) &&
           FindSymbol(library, "xkb_keymap_new_from_names", xkb.keymap_new_from_names) &&
           FindSymbol(library, "xkb_keymap_unref", xkb.keymap_unref) &&
           FindSymbol(library, "xkb_keymap_num_layouts", xkb.keymap_num_layouts) &&
           FindSymbol(library, "xkb_keymap_min_keycode", xkb.keymap_min_keycode) &&
           FindSymbol(library, "xkb_keymap_max_keycode", xkb.keymap_max_keycode) &&
           FindSymbol(library, "xkb_keymap_key_get_syms_by_level", xkb.keymap_key_get_syms_by_level) &&
           FindSymbol(library, "xkb_state_new", xkb.state_new) &&
           FindSymbol(library, "xkb_state_unref", xkb.state_unref) &&
           FindSymbol(library, "xkb_state_update_mask", xkb.state_update_mask) &&
           FindSymbol(library, "xkb_state_key_get_one_sym", xkb.state_key_get_one_sym) &&
           FindSymbol(library, "xkb_state_key_get_layout", xkb.state_key_get_layout) &&
           FindSymbol(library, "xkb_keysym_to_utf32", xkb.keysym_to_utf32) &&
           FindSymbol(library, "xkb_compose_table_new_from_locale", xkb.compose_table_new_from_locale) &&
           FindSymbol(library, "xkb_compose_table_unref", xkb.compose_table_unref) &&
           FindSymbol(library, "xkb_compose_state_new", xkb.compose_state_new) &&
           FindSymbol(library, "xkb_compose_state_unref", xkb.compose_state_unref) &&
           FindSymbol(library, "xkb_compose_state_feed", xkb.compose_state_feed) &&
           FindSymbol(library, "xkb_compose_state_reset", xkb.compose_state_reset) &&
           FindSymbol(library, "xkb_compose_state_get_status", xkb.compose_state_get_status) &&
           FindSymbol(library, "xkb_compose_state_get_utf8", xkb.compose_state_get_utf8) &&
           FindSymbol(library, "xkb_compose_state_get_one_sym", xkb.compose_state_get_one_sym);
}

bool FindDevice(void* library, SXkb& xkb) noexcept {
    return FindSymbol(library, "xkb_x11_setup_xkb_extension", xkb.x11_setup_xkb_extension) &&
           FindSymbol(library, "xkb_x11_get_core_keyboard_device_id", xkb.x11_get_core_keyboard_device_id) &&
           FindSymbol(library, "xkb_x11_keymap_new_from_device", xkb.x11_keymap_new_from_device);
}

std::optional<SXkb> LoadXkb() noexcept {
    void* const keys = dlopen("libxkbcommon.so.0", RTLD_NOW | RTLD_LOCAL);
    void* const device = dlopen("libxkbcommon-x11.so.0", RTLD_NOW | RTLD_LOCAL);
    SXkb xkb{};
    if (keys == nullptr || device == nullptr || !FindKeys(keys, xkb) || !FindDevice(device, xkb))
        return std::nullopt;
    return xkb;
}

} // namespace

const SXkb* Xkb() noexcept {
    static const std::optional<SXkb> xkb = LoadXkb();
    return xkb ? &*xkb : nullptr;
}

} // namespace KAV::Platform
