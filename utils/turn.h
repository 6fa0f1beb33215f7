#pragma once

#include "utils/still_there.h"

#include <atomic>
#include <functional>
#include <mutex>
#include <thread>
#include <vector>

namespace KAV::Utils {

class CTurn;

/// Is called at the end of a turn, as its last step.
class ITurnEnd {
public:
    virtual void OnTurnEnd(CTurn& turn) = 0;

protected:
    ITurnEnd() = default;
    ~ITurnEnd() = default;
};

/// The lock by which threads take turns with the data that they share. It lives as long as that data.
class CTurns final {
public:
    CTurns() = default;
    CTurns(const CTurns&) = delete;
    CTurns& operator=(const CTurns&) = delete;

    /// Sets what is called at the end of each turn until another one is set; null: nothing.
    void SetEnd(const CTurn& turn, ITurnEnd* end) noexcept;
    /// Whether what is shared still exists; for CStillThere's threads.
    CStillThere Watch() const noexcept { return _life.Watch(); }

private:
    friend class CTurn;

    CLife _life;
    std::mutex _mutex;
    std::atomic<std::thread::id>
        _owner;               // of _mutex; a thread finds either its own identifier here or a different one
    ITurnEnd* _end = nullptr; // accessed within a turn
    std::vector<std::function<void()>> _then; // accessed within a turn
};

/// One turn, for the lifetime of the object: other threads wait for its end. A turn that begins within one of
/// the same thread is part of it. An operation that needs a turn takes one as an argument.
///
/// Only shared data is read and written in a turn. The host, the user, files and the window system may block
/// on a thread that itself waits for its turn, so calls to them come before the turn or follow it by Then().
class CTurn final {
public:
    explicit CTurn(CTurns& turns);
    ~CTurn();
    CTurn(const CTurn&) = delete;
    CTurn& operator=(const CTurn&) = delete;

    /// Runs `what` on this thread when the outermost turn has ended, in the order of the calls. `what` may
    /// begin turns; it doesn't throw. It may even end what is shared, as a box can whose messages include the
    /// host's: whatever was to follow after it is then dropped.
    void Then(std::function<void()> what);

private:
    friend class CTurns;

    CTurns& _turns;
    bool _isPart; // of a turn that began before
};

} // namespace KAV::Utils
