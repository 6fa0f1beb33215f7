#pragma once

#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <string>

/// One exchange over HTTP or HTTPS, by the library that the system offers: loaded at the first call, since an
/// instance that asks nobody shall not bring the network into its host's process.
namespace KAV::Platform {

struct SHttpRequest {
    bool secure = false;    ///< HTTPS; certificates are always checked
    std::string host;       ///< letters, digits, '.', '-' and '_'
    std::uint16_t port = 0; ///< above 0
    std::string path;       ///< begins with '/', with the query; visible ASCII
    std::string body;       ///< UTF-8; empty: GET, otherwise POST as a form
    std::string agent;      ///< UTF-8; empty: none is named
    /// PEM file of the authorities to trust in place of the system's; empty: those. Windows has its own
    /// alone.
    std::filesystem::path authorities;
    std::uint32_t timeLimitMs = 0; ///< for all of it; 1..10000
};

/// What comes before an answer's bytes.
struct SHttpHead {
    std::int32_t status = 0;
    std::string encoding; ///< Content-Encoding; empty: none
    std::string location; ///< Location; empty: none
};

/// Takes an answer, on the thread that asks for it.
class IHttpReceiver {
public:
    /// Polled at least every 50 ms while the exchange runs; false cancels it.
    virtual bool GoesOn() noexcept = 0;
    /// Once, before any bytes. False ends the exchange.
    virtual bool Begin(const SHttpHead& head) noexcept = 0;
    /// The next bytes as the server sent them. False ends the exchange.
    virtual bool Take(const char* data, std::size_t size) noexcept = 0;

protected:
    ~IHttpReceiver() = default;
};

enum class EHttpEnd {
    Whole,    ///< all of the answer came
    CutShort, ///< it began, and the connection or the server broke it off
    Refused,  ///< the receiver ended it
    Failed,   ///< no answer began, or it took too long
};

struct SHttpResult {
    EHttpEnd end = EHttpEnd::Failed;
    std::int32_t error = 0; ///< the library's own number for what went wrong; 0: nothing did
};

/// Sends the request and hands its answer to `receiver`; follows no redirect, keeps no cookie, and gives up
/// after 256 KB of head. Blocks up to the time limit, whatever the server does. Windows: the system's client
/// runs on a thread of its own, which may outlive the call for as long as that client takes to notice that
/// its handles are closed. Any thread but the audio thread; nothing throws.
SHttpResult ExchangeHttp(const SHttpRequest& request, IHttpReceiver& receiver) noexcept;

} // namespace KAV::Platform
