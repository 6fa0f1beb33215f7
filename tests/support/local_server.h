#pragma once

#include <atomic>
#include <cstdint>
#include <functional>
#include <memory>
#include <mutex>
#include <string>
#include <string_view>
#include <thread>
#include <vector>

namespace KAV::Tests {

/// The server's end of one connection.
class CConnection final {
public:
    CConnection(std::intptr_t socket, const std::atomic<bool>& serving);
    ~CConnection();
    CConnection(const CConnection&) = delete;
    CConnection& operator=(const CConnection&) = delete;

    std::string ReadRequest();         ///< head and body; less if the client disconnects first
    bool Send(std::string_view bytes); ///< false if the client has disconnected or the test ends
    /// A response with its length, and further lines for the head.
    void Answer(int status, std::string_view body, std::string_view head = {});
    void Reset();       ///< ends the connection as a crash would
    bool AwaitItsEnd(); ///< true if the client disconnects; false if the test ends first
    void Pause(int ms) const;
    bool Serves() const { return _serving; } ///< whether the test is still running

private:
    std::intptr_t _socket;
    const std::atomic<bool>& _serving;
};

/// A server on the loopback that treats each connection, one after another, as the test says.
class CLocalServer final {
public:
    using Behaviour = std::function<void(CConnection&, const std::string& request)>;

    /// `readsFirst`: requests are read before `behaviour` is called; otherwise it gets the bare connection.
    explicit CLocalServer(Behaviour behaviour, bool readsFirst = true);
    ~CLocalServer();
    CLocalServer(const CLocalServer&) = delete;
    CLocalServer& operator=(const CLocalServer&) = delete;

    std::uint16_t Port() const noexcept { return _port; }
    std::u16string Origin() const; ///< "http://127.0.0.1:PORT"
    std::vector<std::string> Requests() const;
    /// Waits for that many requests, at most a minute.
    std::vector<std::string> AwaitRequests(std::size_t count) const;

private:
    void Serve();

    Behaviour _behaviour;
    bool _readsFirst;
    std::uint16_t _port = 0;
    std::intptr_t _listener; // binding it determines the port
    std::atomic<bool> _serving{true};
    mutable std::mutex _mutex;
    std::vector<std::string> _requests; // under the mutex
    std::thread _thread;
};

/// A port on the loopback where no server listens.
std::uint16_t FreePort();

} // namespace KAV::Tests
