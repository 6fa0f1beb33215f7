#pragma once

#include <filesystem>
#include <sndfile.h>

namespace KAV::Host {

/// Opens a file for reading, whatever characters its name has. Null if the library can't;
/// sf_strerror(nullptr) says why.
SNDFILE* OpenSound(const std::filesystem::path& file, SF_INFO& info);

} // namespace KAV::Host
