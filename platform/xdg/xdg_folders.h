#pragma once

#include <filesystem>

/// The user's folders by the XDG Base Directory rules. For the Linux part of this folder alone.
namespace KAV::Platform {

/// The home folder: HOME if it is an absolute path, else what the user database says. Empty when neither
/// names one.
std::filesystem::path HomeFolder();

/// Where programs keep the user's settings: XDG_CONFIG_HOME if it is an absolute path, else ~/.config. Empty
/// when there is no home.
std::filesystem::path ConfigurationFolder();

} // namespace KAV::Platform
