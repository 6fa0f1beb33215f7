#pragma once

#include <string>
#include <string_view>
#include <vector>

/// Programs of the desktop, found where the user's shell would find them. For the Linux part of this folder
/// alone.
namespace KAV::Platform {

/// The program of that name in the absolute folders of PATH; empty when there is none.
std::string FindProgram(std::string_view name);

/// Starts a program by its absolute path and doesn't wait for it. Nothing of the host is left to it:
/// terminal, session, descriptors, signals, priority, libraries of the host's own. A thread of ours waits for
/// its end, so that no zombie is left. The host's memory isn't copied, not even for a moment: other threads
/// go on without a page fault. False when it can't be started. Throws std::bad_alloc, or std::system_error
/// when there is no thread.
bool StartDetached(const std::string& program, std::vector<std::string> arguments);

} // namespace KAV::Platform
