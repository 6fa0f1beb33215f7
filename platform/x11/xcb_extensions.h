#pragma once

#include <cstdint>
#include <xcb/shm.h>
#include <xcb/xcb.h>
#include <xcb/xcbext.h>

/// The client libraries of the X11 extensions that an editor's window needs, loaded when the first one opens.
/// Only for the Linux part of this folder. Any thread.
namespace KAV::Platform {

/// Their functions, under their names there.
struct SXcbExtensions {
    /// The keyboard's; null: that library is missing. Its header isn't included, because a member there has
    /// the name of a word of this language.
    xcb_extension_t* xkb_id;
    xcb_void_cookie_t (*xkb_select_events)(xcb_connection_t* connection, std::uint16_t device,
        std::uint16_t affected, std::uint16_t cleared, std::uint16_t selected, std::uint16_t affectedParts,
        std::uint16_t parts, const void* details);
    decltype(&xcb_shm_id) shm_id; ///< null: that library is missing
    decltype(&xcb_shm_query_version) shm_query_version;
    decltype(&xcb_shm_query_version_reply) shm_query_version_reply;
    decltype(&xcb_shm_attach_checked) shm_attach_checked;
    decltype(&xcb_shm_detach) shm_detach;
    decltype(&xcb_shm_put_image) shm_put_image;
};

/// The functions, for the life of the process.
const SXcbExtensions& XcbExtensions() noexcept;

} // namespace KAV::Platform
