#pragma once

#include "platform/whole_file.h"

#include <cstddef>
#include <string>

/// The system's clipboard, under private formats that other programs ignore. Any thread; nothing throws. A
/// clipboard that another program holds, or a system without one, is a failed read or write.
namespace KAV::Platform {

/// Null if the clipboard has no data of that format.
SBytes ReadClipboard(const std::string& format) noexcept;

/// Replaces the whole content of the clipboard. False on failure.
bool WriteClipboard(const std::string& format, const void* data, std::size_t size) noexcept;

} // namespace KAV::Platform
