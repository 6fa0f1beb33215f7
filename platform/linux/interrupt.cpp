#include "platform/interrupt.h"

#include <atomic>
#include <csignal>

namespace KAV::Platform {

namespace {

std::atomic<bool> interrupted{false};
static_assert(std::atomic<bool>::is_always_lock_free, "a signal handler may only use a lock-free flag");

extern "C" void NoteInterrupt(int) {
    interrupted.store(true, std::memory_order_relaxed);
}

} // namespace

void WatchInterrupt() noexcept {
    struct sigaction action {};
    action.sa_handler = NoteInterrupt;
    action.sa_flags = SA_RESTART | static_cast<int>(SA_RESETHAND);
    sigaction(SIGINT, &action, nullptr);
    sigaction(SIGTERM, &action, nullptr);
    std::signal(SIGXFSZ, SIG_IGN);
}

bool Interrupted() noexcept {
    return interrupted.load(std::memory_order_relaxed);
}

} // namespace KAV::Platform
