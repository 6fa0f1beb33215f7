#pragma once

#include <string>

namespace KAV::Platform {

/// Shows an error (UTF-8) in a box of the desktop. On Windows the call returns when the user has closed it;
/// elsewhere a program of the desktop shows it and the call returns at once. False if there is no display or
/// no program that shows boxes. Any thread but the audio thread; nothing throws.
bool ShowErrorBox(const std::string& title, const std::string& text) noexcept;

/// Whether ShowErrorBox() returns only when the user has closed the box.
bool ErrorBoxWaits() noexcept;

} // namespace KAV::Platform
