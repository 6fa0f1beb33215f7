#pragma once

#include <filesystem>

namespace KAV::Platform {

/// The program's own file, absolute and with links resolved. Empty if the system doesn't provide it.
std::filesystem::path ExecutableFile();

} // namespace KAV::Platform
