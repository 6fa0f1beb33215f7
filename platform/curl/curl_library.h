#pragma once

#define CURL_DISABLE_DEPRECATION // the older form of an option is used where the newer one is missing
#define CURL_DISABLE_TYPECHECK   // it knows the functions by their names only
#include <curl/curl.h>

/// The client library for HTTP, loaded when it is first needed: linking it would bring it, TLS and a dozen
/// other libraries into every host, and our library would not load on systems without it. It is never
/// unloaded, nor cleaned up globally, because the host may use the same one. Only for the Linux part of this
/// folder. Any thread.
namespace KAV::Platform {

/// The library's functions, under their names there.
struct SCurl {
    decltype(&::curl_global_init) global_init;
    decltype(&::curl_easy_init) easy_init;
    decltype(&::curl_easy_setopt) easy_setopt;
    decltype(&::curl_easy_cleanup) easy_cleanup;
    decltype(&::curl_slist_append) slist_append;
    decltype(&::curl_slist_free_all) slist_free_all;
    decltype(&::curl_multi_init) multi_init;
    decltype(&::curl_multi_add_handle) multi_add_handle;
    decltype(&::curl_multi_perform) multi_perform;
    decltype(&::curl_multi_poll) multi_poll;
    decltype(&::curl_multi_info_read) multi_info_read;
    decltype(&::curl_multi_remove_handle) multi_remove_handle;
    decltype(&::curl_multi_cleanup) multi_cleanup;
};

/// The functions, for the life of the process; null when the library is missing or too old.
const SCurl* Curl() noexcept;

} // namespace KAV::Platform
