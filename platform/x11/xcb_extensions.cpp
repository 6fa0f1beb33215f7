#include "platform/x11/xcb_extensions.h"

#include "platform/dl/symbol.h"

#include <dlfcn.h>

namespace KAV::Platform {

namespace {

void FindShm(void* library, SXcbExtensions& xcb) noexcept {
    if (library == nullptr || !FindSymbol(library, "xcb_shm_query_version", xcb.shm_query_version) ||
        !FindSymbol(library, "xcb_shm_query_version_reply", xcb.shm_query_version_reply) ||
        !FindSymbol(library, "xcb_shm_attach_checked", xcb.shm_attach_checked) ||
        !FindSymbol(library, "xcb_shm_detach", xcb.shm_detach) ||
        !FindSymbol(library, "xcb_shm_put_image", xcb.shm_put_image) ||
        !FindSymbol(library, "xcb_shm_id", xcb.shm_id)) {
        xcb.shm_id = nullptr;
    }
}

void FindXkb(void* library, SXcbExtensions& xcb) noexcept {
    if (library == nullptr || !FindSymbol(library, "xcb_xkb_select_events", xcb.xkb_select_events) ||
        !FindSymbol(library, "xcb_xkb_id", xcb.xkb_id)) {
        xcb.xkb_id = nullptr;
    }
}

SXcbExtensions LoadExtensions() noexcept {
    SXcbExtensions xcb{};
    FindShm(dlopen("libxcb-shm.so.0", RTLD_NOW | RTLD_LOCAL), xcb);
    FindXkb(dlopen("libxcb-xkb.so.1", RTLD_NOW | RTLD_LOCAL), xcb);
    return xcb;
}

} // namespace

const SXcbExtensions& XcbExtensions() noexcept {
    static const SXcbExtensions xcb = LoadExtensions();
    return xcb;
}

} // namespace KAV::Platform
