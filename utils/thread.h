#pragma once

#include "utils/shared.h"

#include <thread>

namespace KAV::Utils {

/// A thread that runs one operation of its client, once for each Start() and Stop(). The client outlives it.
/// Threads: the owner's thread creates, starts, stops and destroys it; `running` and `startNow` are read by
/// any thread.
class CThread final {
public:
    class IOnThread {
    public:
        /// Runs on the thread. Ends early once `thread->running` is false. An exception ends only the
        /// thread.
        virtual void OnThread(CThread* thread) = 0;

    protected:
        ~IOnThread() = default;
    };

    explicit CThread(IOnThread& client) noexcept : _client(client) {}
    ~CThread();
    CThread(const CThread&) = delete;
    CThread& operator=(const CThread&) = delete;

    /// Starts the thread, unless it has been started and not yet stopped, even if its operation has ended.
    /// Does nothing if the system can't create another thread.
    void Start() noexcept;
    /// Asks the operation to end and waits for it without limit. Called on the thread itself, it only asks.
    void Stop() noexcept;

    CShared<bool> running{false};  ///< set by Start(); cleared to ask the client to stop
    CShared<bool> startNow{false}; ///< set by the owner, who starts the thread at its own next step

private:
    IOnThread& _client;
    std::thread _handle;              // used only by the owner
    CShared<std::thread::id> _self{}; // the thread's own, set by it before anything else
};

} // namespace KAV::Utils
