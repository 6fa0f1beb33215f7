#pragma once

#include <filesystem>

/// The user's folders by the XDG Base Directory rules. Only for the Linux part of this folder.
namespace KAV::Platform {

/// The home folder: HOME if it is an absolute path, otherwise the one in the user database. Empty if neither
/// exists.
std::filesystem::path HomeFolder();
/// The same with the value that HOME had (null: none), for a thread that must not read the environment.
std::filesystem::path HomeFolder(const char* home);

/// Where programs keep the user's settings: XDG_CONFIG_HOME if it is an absolute path, otherwise ~/.config.
/// Empty if there is no home.
std::filesystem::path ConfigurationFolder();

} // namespace KAV::Platform
