#pragma once

/// Requests from outside to end the program.
namespace KAV::Platform {

/// From now on Ctrl-C, the end of the terminal and the system's polite request to end only set a flag, so
/// that the program can tidy up. A second request of the same kind ends the process at once, should the
/// program hang. Where the system would end a program that writes past its file size limit, the write fails
/// instead.
void WatchInterrupt() noexcept;

/// Such a request has come. Any thread.
bool Interrupted() noexcept;

} // namespace KAV::Platform
