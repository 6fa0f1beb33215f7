#include "platform/interrupt.h"

#include "platform/posix/interrupt_event.h"

#include <atomic>
#include <cerrno>
#include <csignal>
#include <cstdint>
#include <sys/eventfd.h>
#include <unistd.h>

namespace KAV::Platform {

namespace {

std::atomic<EInterrupt> interrupt{EInterrupt::None};
std::atomic<int> event{-1};
static_assert(std::atomic<EInterrupt>::is_always_lock_free && std::atomic<int>::is_always_lock_free,
    "a signal handler may only use lock-free values");

EInterrupt KindOf(int signal) noexcept {
    switch (signal) {
    case SIGTERM:
        return EInterrupt::Termination;
    case SIGHUP:
        return EInterrupt::HangUp;
    default:
        return EInterrupt::User;
    }
}

extern "C" void NoteInterrupt(int signal) {
    const int before = errno; // of the call that the signal has interrupted
    Interrupt(KindOf(signal));
    errno = before;
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
    event = eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK);
    for (const int signal : {SIGINT, SIGTERM, SIGHUP}) Watch(signal);
    std::signal(SIGXFSZ, SIG_IGN);
}

bool Interrupted() noexcept {
    return InterruptKind() != EInterrupt::None;
}

EInterrupt InterruptKind() noexcept {
    return interrupt.load(std::memory_order_relaxed);
}

void Interrupt(EInterrupt kind) noexcept {
    auto none = EInterrupt::None;
    interrupt.compare_exchange_strong(none, kind);
    const std::uint64_t one = 1;
    [[maybe_unused]] const auto written = write(event, &one, sizeof(one)); // ends waits
}

int InterruptEvent() noexcept {
    return event;
}

} // namespace KAV::Platform
