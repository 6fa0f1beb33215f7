#pragma once

#include <cstddef>
#include <filesystem>
#include <memory>
#include <string>

/// Files that are read and written in one piece, through Files(). Any thread; nothing throws.
namespace KAV::Platform {

/// Owned bytes with two zero bytes behind them, so that text in them ends in either width.
struct SBytes {
    std::unique_ptr<char[]> data; ///< null: nothing was read
    std::size_t size = 0;         ///< without the two zero bytes
};

/// Room for `size` bytes with the two zeros behind; null data when there is no memory for it.
SBytes NewBytes(std::size_t size) noexcept;

/// The whole file. Null when it is missing, unreadable, empty, no ordinary file, or shorter by the time it
/// has been read.
SBytes ReadWholeFile(const std::filesystem::path& file) noexcept;

/// A small text whose size is known only at its end, as the kernel's tables are. Empty when it can't be read.
std::string ReadTable(const std::filesystem::path& file);

/// Replaces the whole file, or makes it: whatever happens meanwhile, a crash or a full disk, the old content
/// or the new one is there. A link stays and what it leads to is replaced. False, with the old content as it
/// was, when the folder is missing, the file may not be written or is no ordinary file, or the disk is full;
/// an unfinished temporary file is left behind only if the process or the system ends just then.
bool ReplaceWholeFile(const std::filesystem::path& file, const void* data, std::size_t size) noexcept;

/// Makes the folder with all those above it that are missing.
bool MakeFolders(const std::filesystem::path& folder) noexcept;

} // namespace KAV::Platform
