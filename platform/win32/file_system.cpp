#include "platform/file_system.h"

#include <algorithm>
#include <type_traits>
#include <windows.h>

namespace KAV::Platform {

namespace {

/// The most that is passed to one call.
constexpr std::size_t LongestPiece = std::size_t{1} << 30;

HANDLE Native(IFileSystem::Handle file) noexcept {
    return reinterpret_cast<HANDLE>(file);
}

/// Whether this is a disk file; pipes and consoles have handles as well.
IFileSystem::Handle OnDisk(HANDLE file) noexcept {
    if (file == INVALID_HANDLE_VALUE) return IFileSystem::NoFile;
    if (GetFileType(file) != FILE_TYPE_DISK) {
        CloseHandle(file);
        return IFileSystem::NoFile;
    }
    return reinterpret_cast<IFileSystem::Handle>(file);
}

class CSystemFiles final : public IFileSystem {
public:
    EKind Kind(const std::filesystem::path& path) noexcept override {
        const DWORD attributes = GetFileAttributesW(path.c_str());
        if (attributes == INVALID_FILE_ATTRIBUTES) return EKind::Missing;
        if ((attributes & FILE_ATTRIBUTE_DIRECTORY) != 0) return EKind::Folder;
        return (attributes & FILE_ATTRIBUTE_DEVICE) != 0 ? EKind::Other : EKind::File;
    }

    std::filesystem::path Resolve(const std::filesystem::path& path) noexcept override {
        try {
            return path; // links are rare here, as most users may not create them
        } catch (...) {
            return {};
        }
    }

    bool IsWritable(const std::filesystem::path& file) noexcept override {
        const DWORD attributes = GetFileAttributesW(file.c_str());
        return attributes != INVALID_FILE_ATTRIBUTES && (attributes & FILE_ATTRIBUTE_READONLY) == 0;
    }

    bool MakeFolder(const std::filesystem::path& folder) noexcept override {
        return CreateDirectoryW(folder.c_str(), nullptr) != 0 || Kind(folder) == EKind::Folder;
    }

    Handle OpenToRead(const std::filesystem::path& file) noexcept override {
        return OnDisk(
            CreateFileW(file.c_str(), GENERIC_READ, FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE,
                nullptr, OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL, nullptr));
    }

    Handle CreateNew(const std::filesystem::path& file, const std::filesystem::path*) noexcept override {
        return OnDisk(
            CreateFileW(file.c_str(), GENERIC_WRITE, 0, nullptr, CREATE_NEW, FILE_ATTRIBUTE_NORMAL, nullptr));
    }

    Handle OpenAlone(const std::filesystem::path& file) noexcept override {
        return OnDisk(CreateFileW(file.c_str(), GENERIC_READ | GENERIC_WRITE, FILE_SHARE_READ, nullptr,
            OPEN_ALWAYS, FILE_ATTRIBUTE_NORMAL, nullptr));
    }

    bool Size(Handle file, std::uint64_t& bytes) noexcept override {
        LARGE_INTEGER size{};
        if (GetFileSizeEx(Native(file), &size) == 0 || size.QuadPart < 0) return false;
        bytes = static_cast<std::uint64_t>(size.QuadPart);
        return true;
    }

    std::size_t Read(Handle file, void* data, std::size_t bytes) noexcept override {
        std::size_t done = 0;
        while (done < bytes) {
            DWORD piece = 0;
            if (ReadFile(Native(file), static_cast<char*>(data) + done,
                    static_cast<DWORD>(std::min(bytes - done, LongestPiece)), &piece, nullptr) == 0 ||
                piece == 0) {
                break;
            }
            done += piece;
        }
        return done;
    }

    std::size_t Write(Handle file, const void* data, std::size_t bytes) noexcept override {
        std::size_t done = 0;
        while (done < bytes) {
            DWORD piece = 0;
            if (WriteFile(Native(file), static_cast<const char*>(data) + done,
                    static_cast<DWORD>(std::min(bytes - done, LongestPiece)), &piece, nullptr) == 0 ||
                piece == 0) {
                break;
            }
            done += piece;
        }
        return done;
    }

    bool Clear(Handle file) noexcept override {
        return SetFilePointerEx(Native(file), {}, nullptr, FILE_BEGIN) != 0 &&
               SetEndOfFile(Native(file)) != 0;
    }

    bool Flush(Handle file) noexcept override { return FlushFileBuffers(Native(file)) != 0; }

    bool Close(Handle file) noexcept override { return CloseHandle(Native(file)) != 0; }

    bool Replace(const std::filesystem::path& from, const std::filesystem::path& to) noexcept override {
        return MoveFileExW(from.c_str(), to.c_str(), MOVEFILE_REPLACE_EXISTING | MOVEFILE_WRITE_THROUGH) != 0;
    }

    bool Remove(const std::filesystem::path& file) noexcept override {
        return DeleteFileW(file.c_str()) != 0;
    }

    bool FlushFolder(const std::filesystem::path&) noexcept override {
        return true; // Replace() writes through to the disk
    }
};

} // namespace

IFileSystem& SystemFiles() noexcept {
    static_assert(std::is_trivially_destructible_v<CSystemFiles>);
    static CSystemFiles files;
    return files;
}

} // namespace KAV::Platform
