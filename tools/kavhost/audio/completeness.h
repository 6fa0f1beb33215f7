#pragma once

#include <cstdint>
#include <filesystem>
#include <string>

namespace KAV::Host {

/// What is missing of an audio file of which `frames` frames could be read, by what the file itself says of
/// its length, in words; empty if nothing is, or if the format doesn't tell. Streams of unknown length, as
/// programs write them into pipes, count as complete.
std::string MissingPart(const std::filesystem::path& file, std::uint64_t frames);

} // namespace KAV::Host
