#include "platform/window_loop.h"

#include <utility>

namespace KAV::Platform {

namespace {

// With a destructor it would hold the library until the host's thread ends, and the thread would hang there:
// mingw-w64 frees the library under the lock that its unloading takes.
thread_local constinit CWindowLoop* ofThisThread = nullptr;

} // namespace

CWindowLoop::CWindowLoop(std::function<void()> wake) : _wake(std::move(wake)) {}

std::shared_ptr<CWindowLoop> CWindowLoop::OfThisThread() noexcept {
    return ofThisThread != nullptr ? ofThisThread->weak_from_this().lock() : nullptr;
}

void CWindowLoop::SetOfThisThread(CWindowLoop* loop) noexcept {
    ofThisThread = loop;
}

bool CWindowLoop::Post(std::function<void()> work) {
    const std::scoped_lock lock(_mutex);
    if (!_wake) return false;
    _posted.push_back(std::move(work));
    _wake();
    return true;
}

void CWindowLoop::RunPosted() {
    std::vector<std::function<void()>> posted;
    {
        const std::scoped_lock lock(_mutex);
        posted.swap(_posted);
    }
    for (const auto& work : posted) {
        if (HasEnded()) return; // by the work before
        work();
    }
}

bool CWindowLoop::HasEnded() {
    const std::scoped_lock lock(_mutex);
    return !_wake;
}

void CWindowLoop::End() noexcept {
    while (auto* const modal = std::exchange(_modal, nullptr)) modal->Cancel(); // its answer may ask again
    std::vector<std::function<void()>> dropped; // destroyed without the lock: it may own anything
    {
        const std::scoped_lock lock(_mutex);
        _wake = nullptr;
        dropped.swap(_posted);
    }
}

} // namespace KAV::Platform
