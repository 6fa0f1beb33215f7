#include "platform/file_identity.h"

#include <sys/stat.h>

namespace KAV::Platform {

std::optional<SFileIdentity> IdentityOf(const std::filesystem::path& path) noexcept {
    struct stat status {};
    if (stat(path.c_str(), &status) != 0) return std::nullopt;
    return SFileIdentity{status.st_dev, status.st_ino};
}

} // namespace KAV::Platform
