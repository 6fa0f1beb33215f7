#include "platform/file_identity.h"

#include <windows.h>

namespace KAV::Platform {

std::optional<SFileIdentity> IdentityOf(const std::filesystem::path& path) noexcept {
    // Folders can only be opened with this flag.
    const HANDLE file = CreateFileW(path.c_str(), 0, FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE,
        nullptr, OPEN_EXISTING, FILE_FLAG_BACKUP_SEMANTICS, nullptr);
    if (file == INVALID_HANDLE_VALUE) return std::nullopt;
    BY_HANDLE_FILE_INFORMATION information{};
    const bool isKnown = GetFileInformationByHandle(file, &information) != 0;
    CloseHandle(file);
    if (!isKnown) return std::nullopt;
    return SFileIdentity{information.dwVolumeSerialNumber,
        std::uint64_t{information.nFileIndexHigh} << 32 | information.nFileIndexLow};
}

} // namespace KAV::Platform
