#include "platform/executable.h"

namespace KAV::Platform {

std::filesystem::path ExecutableFile() {
    std::error_code error;
    return std::filesystem::read_symlink("/proc/self/exe", error);
}

} // namespace KAV::Platform
