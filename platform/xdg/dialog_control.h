#pragma once

#include <atomic>
#include <mutex>
#include <sys/types.h>

/// What another thread wants of a dialog that is up. Only for the Linux part of this folder.
namespace KAV::Platform {

/// Threads: any.
class CDialogControl final {
public:
    CDialogControl(); ///< throws std::system_error if there is no descriptor left
    ~CDialogControl();
    CDialogControl(const CDialogControl&) = delete;
    CDialogControl& operator=(const CDialogControl&) = delete;

    // The one who asked
    void Raise() noexcept;
    void End() noexcept; ///< kills the program at once

    // The thread that waits for the dialog
    int Descriptor() const noexcept { return _event; } ///< readable once Raise() or End() was called
    bool IsEnded() const noexcept { return _ended; }
    /// Whether Raise() was called since the last time. Descriptor() isn't readable any more.
    bool TakeRaise() noexcept;
    /// The program that End() kills, with all that it has started; it leads a process group. If the dialog
    /// has ended already, the program is killed at once.
    void SetProgram(pid_t program) noexcept;
    /// To be called before the program is reaped: its number may then become another's.
    void ForgetProgram() noexcept { SetProgram(-1); }

private:
    int _event;
    std::atomic<bool> _ended{false};
    std::atomic<bool> _raise{false};
    std::mutex _mutex;
    pid_t _program = -1; // under the lock; -1: none
};

} // namespace KAV::Platform
