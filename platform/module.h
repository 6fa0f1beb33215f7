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

} // namespace KAV::Platform
