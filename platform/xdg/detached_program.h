#pragma once

#include <string>
#include <string_view>
#include <vector>

/// Programs of the desktop, found where the user's shell would find them. Only for the Linux part of this
/// folder.
namespace KAV::Platform {

/// The program of that name in the absolute folders of PATH; empty if there is none.
std::string FindProgram(std::string_view name);

/// Starts a program by its absolute path and doesn't wait for it. It inherits nothing from the host:
/// terminal, session, descriptors, signals, priority and the host's own libraries. A thread of ours waits for
/// its end, so that no zombie is left. The host's memory isn't copied, not even for a moment, so other
/// threads get no page faults. False if it can't be started. Throws std::bad_alloc, or std::system_error if
/// the thread can't be created.
bool StartDetached(const std::string& program, std::vector<std::string> arguments);

} // namespace KAV::Platform
