#include "platform/curl/curl_library.h"

#include "platform/dl/symbol.h"

#include <dlfcn.h>
#include <optional>

namespace KAV::Platform {

namespace {

bool FindAll(void* library, SCurl& curl) noexcept {
    return FindSymbol(library, "curl_global_init", curl.global_init) &&
           FindSymbol(library, "curl_easy_init", curl.easy_init) &&
           FindSymbol(library, "curl_easy_setopt", curl.easy_setopt) &&
           FindSymbol(library, "curl_easy_cleanup", curl.easy_cleanup) &&
           FindSymbol(library, "curl_slist_append", curl.slist_append) &&
           FindSymbol(library, "curl_slist_free_all", curl.slist_free_all) &&
           FindSymbol(library, "curl_multi_init", curl.multi_init) &&
           FindSymbol(library, "curl_multi_add_handle", curl.multi_add_handle) &&
           FindSymbol(library, "curl_multi_perform", curl.multi_perform) &&
           FindSymbol(library, "curl_multi_poll", curl.multi_poll) &&
           FindSymbol(library, "curl_multi_info_read", curl.multi_info_read) &&
           FindSymbol(library, "curl_multi_remove_handle", curl.multi_remove_handle) &&
           FindSymbol(library, "curl_multi_cleanup", curl.multi_cleanup);
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
