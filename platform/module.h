#pragma once

#include <filesystem>

/// Dynamic libraries of the process.
namespace KAV::Platform {

/// The library that this code was linked into, as the system names it; it is the key for finding the
/// library's own file. Never null. Any thread.
void* ThisModule() noexcept;

/// That library's own file, absolute. Empty when the system doesn't tell; on Windows also when its path is
/// longer than the 260 characters that programs there expect. Any thread.
std::filesystem::path ModuleFile();

/// Runs `function` when that library leaves a process that goes on without it, and nothing of the library
/// runs any more: for what the system would otherwise keep open for a library that is gone. Windows runs it
/// at the end of the process as well, when all other threads have been ended wherever they were. Linux:
/// never, since the library stays until the end of the process. Any thread.
void AtUnload(void (*function)()) noexcept;

} // namespace KAV::Platform
