#pragma once

#include "utils/shared.h"

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <string_view>

namespace KAV::Utils {

/// A request beside its address, and what became of it.
struct HttpOptions {
    std::u16string body;  ///< sent as a form by POST, in UTF-8; empty: GET
    std::u16string agent; ///< what the client calls itself; empty: nothing
    /// Path of a PEM file of the authorities to trust in place of the system's; empty: those. Without effect
    /// on Windows, which knows its own alone.
    std::u16string authorities;
    const CShared<bool>* goesOn = nullptr; ///< cleared by any thread to end the request; null: nobody will

    std::int32_t status = 0; ///< out: of the last answer; 0: none came
    std::int32_t error = 0;  ///< out: what the system's client calls its failure; 0: it had none
};

/// The longest answer, in bytes, as sent and after inflation.
inline constexpr std::size_t LongestAnswer = 16u << 20;

/// Asks for a web resource and waits for it, ten seconds at most for all of it. The answer's bytes, with two
/// zero bytes behind them; null, with a size of 0, for any status but 200, a longer answer, or when none
/// began. An answer that breaks off gives what came of it, and `options->error` says so if the system told;
/// an answer of gzip is inflated, and gives what can be.
///
/// Follows five redirects at most, and none from https to http. `options` may be null. Any thread but the
/// audio thread; nothing throws.
std::unique_ptr<char[]> HttpGet(std::u16string_view url, std::size_t& size, HttpOptions* options) noexcept;

} // namespace KAV::Utils
