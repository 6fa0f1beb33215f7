#include "platform/curl/curl_library.h"

#include <dlfcn.h>
#include <optional>

namespace KAV::Platform {

namespace {

template<typename Function>
bool Find(void* library, const char* name, Function& function) noexcept {
    function = reinterpret_cast<Function>(dlsym(library, name));
    return function != nullptr;
}

bool FindAll(void* library, SCurl& curl) noexcept {
    return Find(library, "curl_global_init", curl.global_init) &&
           Find(library, "curl_easy_init", curl.easy_init) &&
           Find(library, "curl_easy_setopt", curl.easy_setopt) &&
           Find(library, "curl_easy_cleanup", curl.easy_cleanup) &&
           Find(library, "curl_slist_append", curl.slist_append) &&
           Find(library, "curl_slist_free_all", curl.slist_free_all) &&
           Find(library, "curl_multi_init", curl.multi_init) &&
           Find(library, "curl_multi_add_handle", curl.multi_add_handle) &&
           Find(library, "curl_multi_perform", curl.multi_perform) &&
           Find(library, "curl_multi_poll", curl.multi_poll) &&
           Find(library, "curl_multi_info_read", curl.multi_info_read) &&
           Find(library, "curl_multi_remove_handle", curl.multi_remove_handle) &&
           Find(library, "curl_multi_cleanup", curl.multi_cleanup);
}

std::optional<SCurl> Load() noexcept {
    for (const char* const name : {"libcurl.so.4", "libcurl-gnutls.so.4"}) {
        void* const library = dlopen(name, RTLD_NOW | RTLD_LOCAL);
        SCurl curl{};
        if (library != nullptr && FindAll(library, curl) && curl.global_init(CURL_GLOBAL_DEFAULT) == CURLE_OK)
            return curl;
    }
    return std::nullopt;
}

} // namespace

const SCurl* Curl() noexcept {
    static const std::optional<SCurl> curl = Load();
    return curl ? &*curl : nullptr;
}

} // namespace KAV::Platform
