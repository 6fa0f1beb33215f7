#include "platform/module.h"

#include <dlfcn.h>

namespace KAV::Platform {

void* ThisModule() noexcept {
    static const char anchor = 0; // any address of ours will do
    Dl_info info{};
    dladdr(&anchor, &info);
    return info.dli_fbase;
}

} // namespace KAV::Platform
