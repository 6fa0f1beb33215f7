#pragma once

#include <cstddef>
#include <filesystem>
#include <limits>
#include <memory>
#include <string>

/// Files that are read and written in one piece, through Files(). Any thread; nothing throws.
namespace KAV::Platform {

/// Owned bytes followed by two zero bytes, so that text in them is terminated in either width.
struct SBytes {
    std::unique_ptr<char[]> data; ///< null: nothing was read
    /// Without the two zero bytes. Without data, the size of a file that was too large to be read, or 0.
    std::size_t size = 0;
};

/// Room for `size` bytes followed by the two zeros; null data if there is no memory for it.
SBytes NewBytes(std::size_t size) noexcept;

/// The largest file that memory can hold, with its two zeros.
inline constexpr std::size_t LargestFile = std::numeric_limits<std::size_t>::max() - 2;

/// The whole file. Null if it is missing, unreadable, empty, not an ordinary file, or shorter by the time it
/// has been read. Of a file that is larger than `most` nothing is read.
SBytes ReadWholeFile(const std::filesystem::path& file, std::size_t most = LargestFile) noexcept;

/// A small text whose size is unknown until its end is read, like the kernel's tables. Empty if it can't be
/// read.
std::string ReadTable(const std::filesystem::path& file);

/// Replaces or creates the whole file. Whatever happens meanwhile, even a crash or a full disk, either the
/// old content or the new one remains. A link stays and its target is replaced. False, with the old content
/// unchanged, if the folder is missing, the file may not be written or is not an ordinary file, or the disk
/// is full. An unfinished temporary file remains only if the process or the system ends at that moment.
bool ReplaceWholeFile(const std::filesystem::path& file, const void* data, std::size_t size) noexcept;

/// Creates the folder and its missing parents.
bool MakeFolders(const std::filesystem::path& folder) noexcept;

} // namespace KAV::Platform
