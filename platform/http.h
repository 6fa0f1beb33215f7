#pragma once

#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <string>

/// One exchange over HTTP or HTTPS, by the library that the system offers: loaded at the first call, because
/// an instance that makes no request should not bring network code into its host's process.
namespace KAV::Platform {

struct SHttpRequest {
    bool secure = false;    ///< HTTPS; certificates are always checked
    std::string host;       ///< letters, digits, '.', '-' and '_'
    std::uint16_t port = 0; ///< above 0
    std::string path;       ///< begins with '/', with the query; visible ASCII
    std::string body;       ///< UTF-8; empty: GET, otherwise POST as a form
    std::string agent;      ///< UTF-8; empty: none is named
    /// PEM file of the authorities to trust instead of the system's; empty: the system's. Windows
    /// always uses its own.
    std::filesystem::path authorities;
    std::uint32_t timeLimitMs = 0; ///< for all of it; 1..10000
};

/// What precedes a response's body.
struct SHttpHead {
    std::int32_t status = 0;
    std::string encoding; ///< Content-Encoding; empty: none
    std::string location; ///< Location; empty: none
};

/// Receives a response, on the thread that requests it.
class IHttpReceiver {
public:
    /// Polled at least every 50 ms while the exchange runs; false cancels it.
    virtual bool KeepGoing() noexcept = 0;
    /// Once, before any bytes. False ends the exchange.
    virtual bool Begin(const SHttpHead& head) noexcept = 0;
    /// The next bytes as the server sent them. False ends the exchange.
    virtual bool Take(const char* data, std::size_t size) noexcept = 0;

protected:
    ~IHttpReceiver() = default;
};

enum class EHttpEnd {
    Whole,    ///< the whole response arrived
    CutShort, ///< it began, and the connection or the server ended it early
    Refused,  ///< the receiver ended it
    Failed,   ///< no response began, or it took too long
};

struct SHttpResult {
    EHttpEnd end = EHttpEnd::Failed;
    std::int32_t error = 0; ///< the library's own error number; 0: no error
};

/// Sends the request and passes its response to `receiver`; follows no redirect, keeps no cookie, and gives
/// up after 256 KB of head. Blocks up to the time limit, whatever the server does. Windows: the system's
/// client runs on a thread of its own, which may outlive the call until that client notices that its handles
/// are closed. Any thread but the audio thread; nothing throws.
SHttpResult ExchangeHttp(const SHttpRequest& request, IHttpReceiver& receiver) noexcept;

} // namespace KAV::Platform
