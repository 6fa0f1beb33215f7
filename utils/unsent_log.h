#pragma once

#include "platform/file_system.h"

#include <cstddef>
#include <filesystem>
#include <string>
#include <string_view>

/// A file of session logs that the vendor's server has not received yet. It exists because a process may end
/// before it can send anything, as hosts' scanners do; the next process then sends what it finds here.
/// Threads: any, but a file belongs to one of them at a time.
namespace KAV::Utils {

/// The most bytes that are kept and sent. The oldest lines are dropped first.
inline constexpr std::size_t LongestUnsentLog = 1u << 20;

/// The end of a UTF-8 text, at most `longest` bytes. A text that has to be cut begins with a whole line, or
/// with a whole character if its last line alone is longer than that.
std::string_view LastLines(std::string_view text, std::size_t longest) noexcept;

/// The last lines of a file that was just opened, at most `longest` bytes. Afterwards the file is at its end,
/// so the next write appends. Empty if the file can't be read.
std::string ReadLastLines(Platform::IFileSystem::Handle file, std::size_t longest);

/// Appends a log, unless it is empty, and returns everything that is unsent, oldest first. A log that the
/// file already ends with is not added again: the previous process may have ended between adding and clearing
/// it. What can't be written is still returned.
std::string AddToUnsentLog(const std::filesystem::path& file, std::string_view log);

} // namespace KAV::Utils
