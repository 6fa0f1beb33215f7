#include "tests/editor/host_loop.h"

#include <chrono>
#include <condition_variable>
#include <deque>
#include <future>
#include <mutex>
#include <utility>

namespace KAV::Tests {

struct CHostLoop::SParts {
    int idleHz = 0;
    std::function<void()> idle;
    std::mutex mutex;
    std::condition_variable hasWork;
    std::deque<std::function<void()>> work; // under the lock
    bool ends = false;                      // under the lock
    std::thread thread;

    void Serve() {
        using namespace std::chrono;
        const auto pause = idleHz > 0 ? microseconds(1'000'000 / idleHz) : microseconds(seconds(1));
        auto next = steady_clock::now() + pause;
        std::unique_lock lock(mutex);
        while (!ends || !work.empty()) {
            if (work.empty()) hasWork.wait_until(lock, next, [this] { return ends || !work.empty(); });
            if (!work.empty()) {
                const auto first = std::move(work.front());
                work.pop_front();
                lock.unlock();
                first();
                lock.lock();
            }
            if (steady_clock::now() < next) continue;
            next += pause;
            lock.unlock();
            if (idleHz > 0) idle();
            lock.lock();
        }
    }
};

CHostLoop::CHostLoop(int idleHz, std::function<void()> idle) : _parts(std::make_unique<SParts>()) {
    _parts->idleHz = idleHz;
    _parts->idle = std::move(idle);
    _parts->thread = std::thread([parts = _parts.get()] { parts->Serve(); });
}

CHostLoop::~CHostLoop() {
    {
        const std::scoped_lock lock(_parts->mutex);
        _parts->ends = true;
        _parts->hasWork.notify_all();
    }
    _parts->thread.join();
}

void CHostLoop::Run(const std::function<void()>& work) {
    std::promise<void> isDone;
    {
        const std::scoped_lock lock(_parts->mutex);
        _parts->work.emplace_back([&] {
            work();
            isDone.set_value();
        });
        _parts->hasWork.notify_all();
    }
    isDone.get_future().wait();
}

std::thread::id CHostLoop::Thread() const noexcept {
    return _parts->thread.get_id();
}

} // namespace KAV::Tests
