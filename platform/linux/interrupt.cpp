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

/// A signal that was ignored when the program started stays ignored: nohup and background jobs of shells rely
/// on that.
void Watch(int signal) noexcept {
    struct sigaction action {};
    if (sigaction(signal, nullptr, &action) != 0 || action.sa_handler == SIG_IGN) return;
    action.sa_handler = NoteInterrupt;
    action.sa_flags = SA_RESTART | static_cast<int>(SA_RESETHAND);
    sigaction(signal, &action, nullptr);
}

} // namespace

void WatchInterrupt() noexcept {
    for (const int signal : {SIGINT, SIGTERM, SIGHUP}) Watch(signal);
    std::signal(SIGXFSZ, SIG_IGN);
}

bool Interrupted() noexcept {
    return interrupted.load(std::memory_order_relaxed);
}

} // namespace KAV::Platform
