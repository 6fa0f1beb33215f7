#pragma once

#include <cstdint>
#include <span>
#include <string_view>

namespace KAV::Platform {

/// The bytes of a file that is linked into this library: a picture of the panel, by its name in
/// resources/manifest.txt, or a style of the panel's typeface, by the name of its file. The case of ASCII
/// letters is ignored. They live as long as the library. No bytes: there is no such file; on Windows there is
/// none yet. Any thread.
std::span<const std::uint8_t> Resource(std::string_view name) noexcept;

/// The pages that lie wholly in these bytes of a resource leave this process's memory. The next read,
/// now or later, fetches them again from the library's file, or from the system's memory of it. Any
/// thread.
void RestResource(std::span<const std::uint8_t> bytes) noexcept;
/// The same for all resources, and the pages that two of them share.
void RestResources() noexcept;

} // namespace KAV::Platform
