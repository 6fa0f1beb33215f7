#pragma once

#include <cstdint>
#include <filesystem>
#include <string>

namespace KAV::Host {

/// Larger than any state of an effect.
inline constexpr std::uintmax_t LargestState = 64 << 20;
/// The largest patch or routing that editors read.
inline constexpr std::uintmax_t LargestPatch = 16 << 20;

/// A file's bytes. Throws CFailure if the file is missing, not a plain file, empty, unreadable, or larger
/// than `most`.
std::string ReadFileBytes(const std::filesystem::path& file, std::uintmax_t most = LargestState);

} // namespace KAV::Host
