#pragma once

#include <cstddef>
#include <filesystem>
#include <string>
#include <string_view>

namespace KAV::Tests {

/// Creates the file and its folders.
void WriteText(const std::filesystem::path& file, std::string_view text);

/// The file's bytes; empty if it is missing.
std::string ReadText(const std::filesystem::path& file);

/// Entries of a folder, hidden ones included.
std::size_t CountEntries(const std::filesystem::path& folder);

} // namespace KAV::Tests
