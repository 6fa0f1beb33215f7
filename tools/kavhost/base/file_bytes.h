#pragma once

#include <filesystem>
#include <string>

namespace KAV::Host {

/// A file's bytes. Throws CFailure if the file is missing, not a plain file, empty, unreadable, or larger
/// than any state of an effect.
std::string ReadFileBytes(const std::filesystem::path& file);

} // namespace KAV::Host
