#pragma once

#include <filesystem>

/// Dynamic libraries of the process.
namespace KAV::Platform {

/// The library that this code was linked into, as the system names it; it is the key for finding the
/// library's own file. Never null. Any thread.
void* ThisModule() noexcept;

/// That library's own file, absolute. Empty if the system doesn't report it; on Windows also if its path is
/// longer than the 260 characters that programs there expect. Any thread.
std::filesystem::path ModuleFile();

/// Runs `function` when that library is unloaded from a process that continues, when no code of the library
/// runs any more: for resources that the system would otherwise keep open. Windows also runs it at the end of
/// the process, after all other threads have been terminated wherever they were. Linux: never, because the
/// library stays until the end of the process. Any thread.
void AtUnload(void (*function)()) noexcept;

} // namespace KAV::Platform
