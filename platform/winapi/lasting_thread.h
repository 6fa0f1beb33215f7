#pragma once

#include <functional>

/// Only for the Windows part of this folder.
namespace KAV::Platform {

/// Runs `work` on a thread that is never waited for. This library stays in the process until it has ended,
/// even if the host unloads it meanwhile. `work` owns everything that it touches and throws nothing. False if
/// the thread can't be created.
bool StartLastingThread(std::function<void()> work);

} // namespace KAV::Platform
