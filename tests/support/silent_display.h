#pragma once

#include <atomic>
#include <thread>
#include <vector>

namespace KAV::Tests {

/// A display that accepts every client and then stops responding, for the process and its children during the
/// object's lifetime. After a minute it disconnects, so that a client that waits for ever fails its test
/// soon. Linux only.
class CSilentDisplay final {
public:
    enum class ESays { Nothing, AGreeting };

    /// With a greeting a client gets as far as its first query.
    explicit CSilentDisplay(ESays says = ESays::Nothing);
    ~CSilentDisplay();
    CSilentDisplay(const CSilentDisplay&) = delete;
    CSilentDisplay& operator=(const CSilentDisplay&) = delete;

    int Clients() const noexcept { return _clients; }   ///< all clients so far
    bool HasHungUp() const noexcept { return _hungUp; } ///< the minute is over
    void HangUp() noexcept { _hangUp = true; }          ///< ends the existing connections, and continues

private:
    void Serve();
    void Greet(int client) const;

    ESays _says;
    int _listener;
    std::vector<int> _open; // the thread's own
    std::atomic<int> _clients{0};
    std::atomic<bool> _hungUp{false};
    std::atomic<bool> _hangUp{false};
    std::atomic<bool> _serving{true};
    std::thread _thread;
};

} // namespace KAV::Tests
