#pragma once

#include <filesystem>

/// The user's folders. Absolute, without a slash at the end; empty if the system has none. They need not
/// exist. Any thread.
namespace KAV::Platform {

/// Where the user keeps documents.
std::filesystem::path DocumentsFolder();

/// For files that are not needed after the next start of the system.
std::filesystem::path TemporaryFolder();

} // namespace KAV::Platform
