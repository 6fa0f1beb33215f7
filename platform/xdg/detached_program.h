#pragma once

#include <string>
#include <string_view>
#include <vector>

/// Programs of the desktop, found where the user's shell would find them. For the Linux part of this folder
/// alone.
namespace KAV::Platform {

/// The program of that name in the absolute folders of PATH; empty when there is none.
std::string FindProgram(std::string_view name);

/// Starts a program by its absolute path in a process that nobody waits for, and leaves nothing of the host
/// behind: terminal, descriptors, signals, priority, libraries of the host's own. False when it can't be
/// started. Throws std::bad_alloc.
bool StartDetached(const std::string& program, std::vector<std::string> arguments);

} // namespace KAV::Platform
