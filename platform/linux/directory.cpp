#include "platform/directory.h"

#include <dirent.h>
#include <fcntl.h>
#include <memory>
#include <string_view>
#include <sys/stat.h>
#include <utf8/checked.h>

namespace KAV::Platform {

namespace {

/// Adds a directory entry; queries its type only where the directory itself doesn't say it.
void Add(const dirent& entry, int folder, std::vector<SDirectoryEntry>& entries) {
    const std::string_view name = entry.d_name;
    if (name == "." || name == ".." || !utf8::is_valid(name.begin(), name.end())) return;
    bool isFolder = entry.d_type == DT_DIR;
    if (entry.d_type == DT_LNK || entry.d_type == DT_UNKNOWN) {
        struct stat status {};
        if (fstatat(folder, entry.d_name, &status, 0) != 0) return;
        isFolder = S_ISDIR(status.st_mode);
    }
    entries.push_back({std::string(name), isFolder});
}

} // namespace

std::vector<SDirectoryEntry> ListDirectory(const std::filesystem::path& folder) {
    struct SClose {
        void operator()(DIR* directory) const noexcept { closedir(directory); }
    };
    const std::unique_ptr<DIR, SClose> directory(opendir(folder.c_str()));
    std::vector<SDirectoryEntry> entries;
    if (directory == nullptr) return entries;
    // readdir() is safe here: no other call uses this stream.
    while (const dirent* const entry = readdir(directory.get())) // NOLINT(concurrency-mt-unsafe)
        Add(*entry, dirfd(directory.get()), entries);
    return entries;
}

} // namespace KAV::Platform
