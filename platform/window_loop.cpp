#include "platform/window_loop.h"

#include <utility>

namespace KAV::Platform {

namespace {

std::shared_ptr<CWindowLoop>& ThisThreads() noexcept {
    thread_local std::shared_ptr<CWindowLoop> loop;
    return loop;
}

} // namespace

CWindowLoop::CWindowLoop(std::function<void()> wake) : _wake(std::move(wake)) {}

std::shared_ptr<CWindowLoop> CWindowLoop::OfThisThread() noexcept {
    return ThisThreads();
}

void CWindowLoop::SetOfThisThread(std::shared_ptr<CWindowLoop> loop) noexcept {
    ThisThreads() = std::move(loop);
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
