#pragma once

#include <string>

namespace KAV::Platform {

enum class EOpen { Ordinary, Elevated };

/// Lets the desktop open a file, a folder or an address (UTF-8) with the program that the user has chosen for
/// it, and does not wait for that program. Windows: it receives `arguments`, and Elevated asks the user for
/// administrator's rights. Elsewhere a desktop's opener supports neither, and both are ignored. False if no
/// program could be started. Any thread; nothing throws.
bool OpenWithDesktop(const std::string& target, const std::string& arguments, EOpen how) noexcept;

} // namespace KAV::Platform
