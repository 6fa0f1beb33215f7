#include "platform/whole_file.h"

#include "platform/file_system.h"

#include <algorithm>
#include <array>
#include <atomic>
#include <charconv>
#include <chrono>
#include <new>
#include <string>

namespace KAV::Platform {

namespace {

using EKind = IFileSystem::EKind;

/// A name that no other program uses. It is short, so that it is valid wherever the target's name is, and
/// hidden from users' listings.
std::filesystem::path TemporaryName(const std::filesystem::path& folder) {
    static std::atomic<std::uint32_t> names{0};
    const auto now = static_cast<std::uint64_t>(std::chrono::steady_clock::now().time_since_epoch().count());
    const std::uint64_t number =
        now * 1024u + names.fetch_add(1, std::memory_order_relaxed) % 1024u; // CreateNew() finds collisions
    std::array<char, 16> digits{};
    const auto end = std::to_chars(digits.data(), digits.data() + digits.size(), number, 16);
    return folder / (".kav-" + std::string(digits.data(), end.ptr) + ".tmp");
}

/// Writes and closes the file; true when every byte is on the disk.
bool FillAndClose(
    IFileSystem& files, IFileSystem::Handle handle, const void* data, std::size_t size) noexcept {
    const bool written = files.Write(handle, data, size) == size && files.Flush(handle);
    return files.Close(handle) && written;
}

bool Replace(const std::filesystem::path& file, const void* data, std::size_t size) {
    IFileSystem& files = Files();
    const EKind kind = files.Kind(file);
    if (kind == EKind::Folder || kind == EKind::Other) return false;
    const bool exists = kind == EKind::File;
    // Renaming another file to this name would bypass a write protection that the user has set.
    if (exists && !files.IsWritable(file)) return false;
    const auto target = exists ? files.Resolve(file) : file;
    if (target.empty()) return false;

    constexpr int attempts = 16; // in case names are taken
    for (int attempt = 0; attempt < attempts; ++attempt) {
        const auto temporary = TemporaryName(target.parent_path());
        const auto handle = files.CreateNew(temporary, exists ? &target : nullptr);
        if (handle == IFileSystem::NoFile) {
            if (files.Kind(temporary) == EKind::Missing) return false;
            continue;
        }
        if (FillAndClose(files, handle, data, size) && files.Replace(temporary, target)) {
            files.FlushFolder(target.parent_path()); // the new content is in place, even if this fails
            return true;
        }
        files.Remove(temporary);
        return false;
    }
    return false;
}

} // namespace

SBytes NewBytes(std::size_t size) noexcept {
    SBytes bytes;
    if (size > LargestFile) return bytes;
    bytes.data.reset(new (std::nothrow) char[size + 2]);
    if (bytes.data == nullptr) return bytes;
    bytes.size = size;
    bytes.data[size] = '\0';
    bytes.data[size + 1] = '\0';
    return bytes;
}

SBytes ReadWholeFile(const std::filesystem::path& file, std::size_t most) noexcept {
    IFileSystem& files = Files();
    const auto handle = files.OpenToRead(file);
    if (handle == IFileSystem::NoFile) return {};
    SBytes bytes;
    std::uint64_t size = 0;
    if (!files.Size(handle, size)) size = 0;
    if (size > most) {
        bytes.size = static_cast<std::size_t>(std::min<std::uint64_t>(size, LargestFile));
    } else if (size > 0) {
        bytes = NewBytes(static_cast<std::size_t>(size));
        if (bytes.data != nullptr && files.Read(handle, bytes.data.get(), bytes.size) != bytes.size)
            bytes = {};
    }
    files.Close(handle);
    return bytes;
}

std::string ReadTable(const std::filesystem::path& file) {
    const auto handle = Files().OpenToRead(file);
    if (handle == IFileSystem::NoFile) return {};
    std::string text;
    std::array<char, 4096> piece{};
    std::size_t length = 0;
    do {
        length = Files().Read(handle, piece.data(), piece.size());
        text.append(piece.data(), length);
    } while (length == piece.size());
    Files().Close(handle);
    return text;
}

bool ReplaceWholeFile(const std::filesystem::path& file, const void* data, std::size_t size) noexcept {
    try {
        return Replace(file, data, size);
    } catch (...) { // no memory for a path
        return false;
    }
}

bool MakeFolders(const std::filesystem::path& folder) noexcept {
    try {
        if (folder.empty()) return false;
        if (Files().MakeFolder(folder)) return true;
        const auto parent = folder.parent_path();
        return parent != folder && MakeFolders(parent) && Files().MakeFolder(folder);
    } catch (...) { // no memory for a path
        return false;
    }
}

} // namespace KAV::Platform
