#pragma once

#include "utils/still_there.h"

#include <atomic>
#include <functional>
#include <mutex>
#include <thread>
#include <vector>

namespace KAV::Utils {

class CTurn;

/// Hears that a turn ends, as the last thing that happens in it.
class ITurnEnd {
public:
    virtual void OnTurnEnd(CTurn& turn) = 0;

protected:
    ITurnEnd() = default;
    ~ITurnEnd() = default;
};

/// Whose turn it is, of the threads that share something. It lives as long as what they share.
class CTurns final {
public:
    CTurns() = default;
    CTurns(const CTurns&) = delete;
    CTurns& operator=(const CTurns&) = delete;

    /// Whom to call at the end of each turn; null: nobody. It is called until another one is set.
    void SetEnd(const CTurn& turn, ITurnEnd* end) noexcept;
    /// Whether what is shared still exists; for CStillThere's threads.
    CStillThere Watch() const noexcept { return _life.Watch(); }

private:
    friend class CTurn;

    CLife _life;
    std::mutex _mutex;
    std::atomic<std::thread::id> _owner; // of _mutex; a thread finds its own identifier here or any other
    ITurnEnd* _end = nullptr;            // within a turn
    std::vector<std::function<void()>> _then; // within a turn
};

/// One turn, while it lives: the other threads wait for its end. A turn that begins within one of the same
/// thread is part of it. An operation that takes a turn says by that what it needs.
///
/// Only what is shared is read and written in a turn. The host, the user, files and the window system may
/// keep a caller waiting for a thread that waits for its turn: they come before it, or follow by Then().
class CTurn final {
public:
    explicit CTurn(CTurns& turns);
    ~CTurn();
    CTurn(const CTurn&) = delete;
    CTurn& operator=(const CTurn&) = delete;

    /// Called on this thread when the outermost turn has ended, in the order in which they were given.
    /// `what` may begin turns; it doesn't throw. It may even end what is shared, as a box can whose messages
    /// include the host's: whatever was to follow after it is then dropped.
    void Then(std::function<void()> what);

private:
    friend class CTurns;

    CTurns& _turns;
    bool _isPart; // of a turn that began before
};

} // namespace KAV::Utils
