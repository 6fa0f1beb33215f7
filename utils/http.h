#pragma once

#include "utils/shared.h"

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <string_view>

namespace KAV::Utils {

/// A request without its address, and its result.
struct HttpOptions {
    std::u16string body;  ///< sent as a form by POST, in UTF-8; empty: GET
    std::u16string agent; ///< what the client calls itself; empty: nothing
    /// Path of a PEM file of the authorities to trust instead of the system's; empty: the system's. Without
    /// effect on Windows, which always uses its own.
    std::u16string authorities;
    const CShared<bool>* keepGoing = nullptr; ///< any thread clears it to end the request; may be null

    std::int32_t status = 0; ///< out: of the last response; 0: no response
    std::int32_t error = 0;  ///< out: the error number of the system's client; 0: no error
};

/// The longest response in bytes, as sent and after inflation.
inline constexpr std::size_t LongestAnswer = 16u << 20;

/// Requests a web resource and waits for it, ten seconds at most in total. Returns the bytes of the response,
/// followed by two zero bytes; null, with a size of 0, for any status but 200, a longer response, or no
/// response. A response that breaks off yields the part that arrived, and `options->error` says so if the
/// system reports it. A gzip response is inflated as far as possible.
///
/// Follows five redirects at most, and none from https to http. `options` may be null. Any thread but the
/// audio thread; nothing throws.
std::unique_ptr<char[]> HttpGet(std::u16string_view url, std::size_t& size, HttpOptions* options) noexcept;

} // namespace KAV::Utils
