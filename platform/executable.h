#pragma once

#include <filesystem>

namespace KAV::Platform {

/// The program's own file, absolute and with links resolved. Empty when the system does not tell.
std::filesystem::path ExecutableFile();

} // namespace KAV::Platform
