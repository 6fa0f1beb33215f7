#pragma once

#include <functional>

/// For the Windows part of this folder alone.
namespace KAV::Platform {

/// Runs `work` on a thread that nobody waits for. This library stays in the process until it has ended, even
/// if the host unloads it meanwhile. `work` owns all that it touches and throws nothing. False when there is
/// no thread.
bool StartLastingThread(std::function<void()> work);

} // namespace KAV::Platform
