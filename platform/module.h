#pragma once

/// Dynamic libraries of the process.
namespace KAV::Platform {

/// The library that this code was linked into, as the system names it; it is the key for finding the
/// library's own file. Never null. Any thread.
void* ThisModule() noexcept;

} // namespace KAV::Platform
