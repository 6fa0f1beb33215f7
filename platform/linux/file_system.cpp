#include "platform/file_system.h"

#include <algorithm>
#include <cerrno>
#include <cstdlib>
#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <type_traits>
#include <unistd.h>

namespace KAV::Platform {

namespace {

template<typename Call>
auto Retry(Call call) noexcept { // a call interrupted by a signal of the host hasn't failed
    auto result = call();
    while (result < 0 && errno == EINTR) result = call();
    return result;
}

int Descriptor(IFileSystem::Handle file) noexcept {
    return static_cast<int>(file);
}

bool IsFile(int descriptor, struct stat& status) noexcept {
    return fstat(descriptor, &status) == 0 && S_ISREG(status.st_mode);
}

/// The most that is passed to one call.
constexpr std::size_t LongestPiece = std::size_t{1} << 30;

class CSystemFiles final : public IFileSystem {
public:
    EKind Kind(const std::filesystem::path& path) noexcept override {
        struct stat status {};
        if (stat(path.c_str(), &status) != 0) return EKind::Missing;
        if (S_ISREG(status.st_mode)) return EKind::File;
        return S_ISDIR(status.st_mode) ? EKind::Folder : EKind::Other;
    }

    std::filesystem::path Resolve(const std::filesystem::path& path) noexcept override {
        char* const resolved = realpath(path.c_str(), nullptr);
        std::filesystem::path result;
        try {
            if (resolved != nullptr) result = resolved;
        } catch (...) { // no memory: nothing to report
            result.clear();
        }
        free(resolved);
        return result;
    }

    bool IsWritable(const std::filesystem::path& file) noexcept override {
        return faccessat(AT_FDCWD, file.c_str(), W_OK, AT_EACCESS) == 0;
    }

    bool MakeFolder(const std::filesystem::path& folder) noexcept override {
        return mkdir(folder.c_str(), 0700) == 0 || (errno == EEXIST && Kind(folder) == EKind::Folder);
    }

    Handle OpenToRead(const std::filesystem::path& file) noexcept override {
        // Otherwise opening a pipe would wait for its writer.
        const int descriptor =
            Retry([&] { return open(file.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK | O_NOCTTY); });
        struct stat status {};
        if (descriptor >= 0 && !IsFile(descriptor, status)) {
            close(descriptor);
            return NoFile;
        }
        return descriptor;
    }

    Handle CreateNew(const std::filesystem::path& file, const std::filesystem::path* like) noexcept override {
        struct stat status {};
        const bool alike = like != nullptr && stat(like->c_str(), &status) == 0;
        const int descriptor =
            Retry([&] { return open(file.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0666); });
        if (descriptor >= 0 && alike && fchmod(descriptor, status.st_mode & 0777u) != 0) {
            close(descriptor);
            unlink(file.c_str());
            return NoFile;
        }
        return descriptor;
    }

    Handle OpenAlone(const std::filesystem::path& file) noexcept override {
        // The folder may be one in which anyone can plant files: accept no link, no pipe and no file of
        // another user.
        const int descriptor = Retry([&] {
            return open(
                file.c_str(), O_RDWR | O_CREAT | O_CLOEXEC | O_NOFOLLOW | O_NONBLOCK | O_NOCTTY, 0600);
        });
        if (descriptor < 0) return NoFile;
        struct stat status {};
        if (!IsFile(descriptor, status) || status.st_uid != geteuid() || status.st_nlink != 1 ||
            fchmod(descriptor, 0600) != 0 || flock(descriptor, LOCK_EX | LOCK_NB) != 0) {
            close(descriptor);
            return NoFile;
        }
        return descriptor;
    }

    bool Size(Handle file, std::uint64_t& bytes) noexcept override {
        struct stat status {};
        if (fstat(Descriptor(file), &status) != 0 || status.st_size < 0) return false;
        bytes = static_cast<std::uint64_t>(status.st_size);
        return true;
    }

    std::size_t Read(Handle file, void* data, std::size_t bytes) noexcept override {
        std::size_t done = 0;
        while (done < bytes) {
            const auto piece = Retry([&] {
                return read(
                    Descriptor(file), static_cast<char*>(data) + done, std::min(bytes - done, LongestPiece));
            });
            if (piece <= 0) break;
            done += static_cast<std::size_t>(piece);
        }
        return done;
    }

    std::size_t Write(Handle file, const void* data, std::size_t bytes) noexcept override {
        std::size_t done = 0;
        while (done < bytes) {
            const auto piece = Retry([&] {
                return write(Descriptor(file), static_cast<const char*>(data) + done,
                    std::min(bytes - done, LongestPiece));
            });
            if (piece <= 0) break;
            done += static_cast<std::size_t>(piece);
        }
        return done;
    }

    bool Clear(Handle file) noexcept override {
        return ftruncate(Descriptor(file), 0) == 0 && lseek(Descriptor(file), 0, SEEK_SET) == 0;
    }

    bool Flush(Handle file) noexcept override {
        return Retry([&] { return fsync(Descriptor(file)); }) == 0;
    }

    bool Close(Handle file) noexcept override {
        return close(Descriptor(file)) == 0 || errno == EINTR; // after a signal it is closed nevertheless
    }

    bool Replace(const std::filesystem::path& from, const std::filesystem::path& to) noexcept override {
        return rename(from.c_str(), to.c_str()) == 0;
    }

    bool Remove(const std::filesystem::path& file) noexcept override { return unlink(file.c_str()) == 0; }

    bool FlushFolder(const std::filesystem::path& folder) noexcept override {
        const int descriptor =
            Retry([&] { return open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC); });
        if (descriptor < 0) return false;
        const bool flushed = Flush(descriptor);
        close(descriptor);
        return flushed;
    }
};

} // namespace

IFileSystem& SystemFiles() noexcept {
    static_assert(std::is_trivially_destructible_v<CSystemFiles>);
    static CSystemFiles files;
    return files;
}

} // namespace KAV::Platform
