#pragma once

#include <sys/types.h>

namespace KAV::Platform {

/// Asks the window manager of that display (null: there is none) to bring the windows of this process, and of
/// those that belong to its session, to the front. Does nothing without a window manager, or if the display
/// doesn't answer in time. Any thread that may wait for three seconds.
void RaiseWindowsOf(pid_t process, const char* display) noexcept;

} // namespace KAV::Platform
