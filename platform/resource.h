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

} // namespace KAV::Platform
