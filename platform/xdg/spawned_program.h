#pragma once

#include "platform/xdg/environment.h"

#include <string>
#include <string_view>
#include <sys/types.h>
#include <vector>

/// Programs of the desktop, found where the user's shell would find them, and started. Only for the Linux
/// part of this folder.
namespace KAV::Platform {

/// The program of that name in the absolute folders of PATH; empty if there is none.
std::string FindProgram(std::string_view name, const CEnvironment& environment);

/// Starts a program by its absolute path and returns its process number, which is also that of its session
/// and process group; -1 if it can't be started. Its standard output goes to the descriptor `output`, or
/// nowhere if that is -1. Otherwise it inherits nothing from the host: terminal, session, descriptors,
/// signals and the host's own libraries. The priority is that of this thread. The host's memory isn't copied,
/// not even for a moment, so other threads get no page faults. Throws std::bad_alloc.
pid_t SpawnProgram(const std::string& program, std::vector<std::string> arguments, CEnvironment environment,
    int output = -1);

/// Gives up a raised priority that this thread may have inherited from the one that started it, so that the
/// programs it starts don't inherit it in turn.
void TakeOrdinaryPriority() noexcept;

/// Waits for the end of one program and for no other child, because those are the host's, and returns its
/// status as waitpid() does; -1 if the host has taken it.
int Reap(pid_t program) noexcept;

} // namespace KAV::Platform
