#include "platform/interrupt.h"

#include <atomic>
#include <windows.h>

namespace KAV::Platform {

namespace {

std::atomic<bool> interrupted{false};

BOOL WINAPI NoteInterrupt(DWORD event) { // called on a thread of the system
    if (interrupted.exchange(true)) return FALSE;
    // The process ends when the handler of these events returns, so this pause lets the program clean up.
    if (event != CTRL_C_EVENT && event != CTRL_BREAK_EVENT) Sleep(4000);
    return TRUE;
}

} // namespace

void WatchInterrupt() noexcept {
    SetConsoleCtrlHandler(NoteInterrupt, TRUE);
}

bool Interrupted() noexcept {
    return interrupted.load(std::memory_order_relaxed);
}

} // namespace KAV::Platform
