#pragma once

#include <filesystem>

/// The user's folders. Absolute, without a slash at the end; empty when the system names none. None of them
/// need exist. Any thread.
namespace KAV::Platform {

/// Where the user keeps documents.
std::filesystem::path DocumentsFolder();

/// For files that nobody misses after the next start of the system.
std::filesystem::path TemporaryFolder();

} // namespace KAV::Platform
