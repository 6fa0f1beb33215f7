#pragma once

#include <filesystem>

namespace KAV::Host {

/// The system's folder for temporary files. Throws CFailure if there is none.
std::filesystem::path ScratchFolder();

} // namespace KAV::Host
