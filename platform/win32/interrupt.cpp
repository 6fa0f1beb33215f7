#include "platform/interrupt.h"

#include <atomic>
#include <windows.h>

namespace KAV::Platform {

namespace {

std::atomic<EInterrupt> interrupt{EInterrupt::None};

EInterrupt KindOf(DWORD event) noexcept {
    switch (event) {
    case CTRL_C_EVENT:
    case CTRL_BREAK_EVENT:
        return EInterrupt::User;
    case CTRL_CLOSE_EVENT:
        return EInterrupt::HangUp;
    default:
        return EInterrupt::Termination;
    }
}

BOOL WINAPI NoteInterrupt(DWORD event) { // called on a thread of the system
    const auto kind = KindOf(event);
    auto none = EInterrupt::None;
    if (!interrupt.compare_exchange_strong(none, kind)) return FALSE;
    // The process ends when the handler of these events returns, so this pause lets the program clean up.
    if (kind != EInterrupt::User) Sleep(4000);
    return TRUE;
}

} // namespace

void WatchInterrupt() noexcept {
    SetConsoleCtrlHandler(NoteInterrupt, TRUE);
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
}

} // namespace KAV::Platform
