#pragma once

/// Requests from outside to end the program.
namespace KAV::Platform {

enum class EInterrupt {
    None,
    User,        ///< Ctrl-C
    HangUp,      ///< the terminal was closed
    Termination, ///< the system, or another program, asks for the end
    ClosedPipe   ///< the program that reads our output has ended
};

/// From now on Ctrl-C, the end of the terminal and the system's request to terminate only set a flag, so that
/// the program can clean up. A second request of the same kind ends the process at once, in case the program
/// hangs. A write past the file size limit fails, where the system would otherwise end the program.
void WatchInterrupt() noexcept;

/// Whether such a request has arrived. Any thread.
bool Interrupted() noexcept;

/// The first request that has arrived.
EInterrupt InterruptKind() noexcept;

/// Makes a request of the program's own.
void Interrupt(EInterrupt kind) noexcept;

} // namespace KAV::Platform
