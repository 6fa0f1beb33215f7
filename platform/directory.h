#pragma once

#include <filesystem>
#include <string>
#include <vector>

namespace KAV::Platform {

struct SDirectoryEntry {
    std::string name;      ///< UTF-8, without the folder
    bool isFolder = false; ///< links count as their targets
};

/// The entries of a folder, in no order, without "." and "..". Left out: names that aren't well-formed UTF-8
/// (UTF-16 on Windows), and links to nothing. Empty if the folder is missing or may not be read. Any
/// thread.
std::vector<SDirectoryEntry> ListDirectory(const std::filesystem::path& folder);

} // namespace KAV::Platform
