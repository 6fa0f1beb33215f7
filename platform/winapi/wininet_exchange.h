#pragma once

#include "platform/http.h"

#include <condition_variable>
#include <cstdint>
#include <mutex>
#include <optional>
#include <string>
#include <vector>
#include <windows.h>

/// Only for the Windows part of this folder.
namespace KAV::Platform {

/// One exchange through the system's client, whose calls block and have no overall time limit until the head
/// of a response has arrived. So it runs on its own thread, and another thread fetches the results and may
/// abandon it at any time.
/// Threads: Run() on the exchange's own thread; everything else on the requesting thread. Both own the
/// object.
class CWinInetExchange final {
public:
    explicit CWinInetExchange(SHttpRequest request);
    CWinInetExchange(const CWinInetExchange&) = delete;
    CWinInetExchange& operator=(const CWinInetExchange&) = delete;

    void Run() noexcept;

    /// What has arrived since the last call.
    struct SNews {
        std::optional<SHttpHead> head;     ///< once, before any bytes
        std::string bytes;                 ///< as the server sent them
        std::optional<SHttpResult> result; ///< the end of the exchange, with or after the last bytes
    };
    /// Waits for news for up to this time.
    SNews Await(std::uint32_t ms);
    /// Ends the exchange from outside by closing its handles, so that its calls fail. Nothing is fetched
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
    std::condition_variable _news; // for the requesting thread
    std::condition_variable _room; // for the exchange's thread
    // guarded by the mutex
    std::vector<void*> _handles; // the library's, in order of creation
    bool _givenUp = false;
    SNews _come;
};

} // namespace KAV::Platform
