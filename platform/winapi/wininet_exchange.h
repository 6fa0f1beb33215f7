#pragma once

#include "platform/http.h"

#include <condition_variable>
#include <cstdint>
#include <mutex>
#include <optional>
#include <string>
#include <vector>
#include <windows.h>

/// For the Windows part of this folder alone.
namespace KAV::Platform {

/// One exchange by the system's client, whose calls wait for the server and know no limit over all before an
/// answer's head has come. So it runs on a thread of its own, and what comes is fetched by another, which may
/// give it up at any time.
/// Threads: Run() on its own; all else on the thread that asks. Both own the object.
class CWinInetExchange final {
public:
    explicit CWinInetExchange(SHttpRequest request);
    CWinInetExchange(const CWinInetExchange&) = delete;
    CWinInetExchange& operator=(const CWinInetExchange&) = delete;

    void Run() noexcept;

    /// What has come since the last call.
    struct SNews {
        std::optional<SHttpHead> head;     ///< once, before any bytes
        std::string bytes;                 ///< as the server sent them
        std::optional<SHttpResult> result; ///< the end, with or after the last bytes
    };
    /// Waits for news up to that time.
    SNews Await(std::uint32_t ms);
    /// Ends the exchange from outside: by its handles, without which its calls fail. Nothing is fetched
    /// afterwards.
    void GiveUp() noexcept;

private:
    SHttpResult Exchange();
    SHttpResult ReadBytes(void* request, std::uint64_t length);
    void* Keep(void* handle);
    bool Begin(SHttpHead head);
    bool Take(const char* data, std::size_t size);
    void CloseHandles() noexcept;

    const SHttpRequest _request;
    std::mutex _mutex;
    std::condition_variable _news; // for the one that asks
    std::condition_variable _room; // for the thread of its own
    // under the mutex
    std::vector<void*> _handles; // the library's, in the order in which they were made
    bool _givenUp = false;
    SNews _come;
};

} // namespace KAV::Platform
