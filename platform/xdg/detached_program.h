#pragma once

#include "platform/xdg/spawned_program.h"

#include <string>
#include <vector>

/// Programs of the desktop that run on their own. Only for the Linux part of this folder.
namespace KAV::Platform {

/// Starts a program as SpawnProgram() does, at an ordinary priority, and doesn't wait for it. A thread of
/// ours waits for its end, so that no zombie is left. False if it can't be started. Throws std::bad_alloc, or
/// std::system_error if the thread can't be created.
bool StartDetached(const std::string& program, std::vector<std::string> arguments, CEnvironment environment);

} // namespace KAV::Platform
