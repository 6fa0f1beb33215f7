#pragma once

#include <condition_variable>
#include <cstddef>
#include <deque>
#include <exception>
#include <functional>
#include <mutex>
#include <system_error>
#include <thread>
#include <utility>

namespace KAV::Host {

/// A step of a pipeline: works on items one after the other, on a thread of its own. If the system has no
/// more threads, the work is done by those who put the items, with the same results.
/// Threads: one puts, and makes and ends the object; the work runs on another.
template<typename ITEM>
class CWorkLine final {
public:
    /// Up to `mostWaiting` items wait while another one is worked on.
    CWorkLine(std::size_t mostWaiting, std::function<void(ITEM)> work)
        : _work(std::move(work)), _mostWaiting(mostWaiting) {
        try {
            _thread = std::thread([this] { Run(); });
        } catch (const std::system_error&) {}
    }

    /// Drops the items that wait; returns when the work on the last one has ended.
    ~CWorkLine() {
        if (!_thread.joinable()) return;
        {
            const std::lock_guard lock(_mutex);
            _waiting.clear();
            _isEnding = true;
        }
        _changed.notify_all();
        _thread.join();
    }

    CWorkLine(const CWorkLine&) = delete;
    CWorkLine& operator=(const CWorkLine&) = delete;

    /// Waits while too many items wait. Throws what the work on an earlier item has thrown; there is no work
    /// after that.
    void Put(ITEM item) {
        if (!_thread.joinable()) return _work(std::move(item));
        {
            std::unique_lock lock(_mutex);
            _changed.wait(lock, [this] { return _waiting.size() < _mostWaiting || _error; });
            if (_error) std::rethrow_exception(_error);
            _waiting.push_back(std::move(item));
        }
        _changed.notify_all();
    }

    /// Returns when all work has been done, or throws what it has thrown. The last call.
    void Finish() {
        if (!_thread.joinable()) return;
        {
            const std::lock_guard lock(_mutex);
            _isEnding = true;
        }
        _changed.notify_all();
        _thread.join();
        if (_error) std::rethrow_exception(_error);
    }

private:
    void Run() noexcept {
        for (;;) {
            std::unique_lock lock(_mutex);
            _changed.wait(lock, [this] { return !_waiting.empty() || _isEnding; });
            if (_waiting.empty()) return;
            ITEM item = std::move(_waiting.front());
            _waiting.pop_front();
            lock.unlock();
            _changed.notify_all();
            try {
                _work(std::move(item));
            } catch (...) {
                lock.lock();
                _error = std::current_exception();
                _waiting.clear();
                lock.unlock();
                _changed.notify_all();
                return;
            }
        }
    }

    std::function<void(ITEM)> _work;
    std::size_t _mostWaiting;
    std::mutex _mutex;
    std::condition_variable _changed;
    std::deque<ITEM> _waiting;
    bool _isEnding = false; ///< no more items come
    std::exception_ptr _error;
    std::thread _thread; ///< none if the system had no more
};

} // namespace KAV::Host
