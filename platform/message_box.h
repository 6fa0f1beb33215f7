#pragma once

#include <string>

namespace KAV::Platform {

/// Shows an error (UTF-8) in a box of the desktop's. On Windows the call ends when the user has closed it;
/// elsewhere a program of the desktop's shows it and nobody waits. False when there is no display, or nothing
/// that shows boxes. Any thread but the audio thread; nothing throws.
bool ShowErrorBox(const std::string& title, const std::string& text) noexcept;

/// ShowErrorBox() ends when the user has closed the box.
bool ErrorBoxWaits() noexcept;

} // namespace KAV::Platform
