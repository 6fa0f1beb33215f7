#pragma once

#include <cstdint>
#include <ctime>
#include <string>
#include <string_view>

/// One text file per machine, in the temporary folder, that describes the current session: product, system,
/// and what failed. Lines have the form key=value, UTF-8, ended by CR LF. Failures of the log are never
/// errors: what can't be written is dropped. Only one process at a time has the file; others log nothing and
/// have no previous log. Threads: any but the audio thread; one lock, held while a line is written.
namespace KAV::Utils {

/// A time as the log's first line shows it: year, month, day and time, "2026.01.02.03:04:05".
std::string LogTime(const std::tm& moment);

/// Writes one line. The first line of the process opens the file, keeps its content as the previous log,
/// empties it and writes the date. The file stays open until the process ends or this library is unloaded,
/// and may be written while the host's exit handlers run. Ill-formed text is dropped.
void LogLine(std::u16string_view text) noexcept;

/// The same, unless this process has written that very line in this way before: for what is found again each
/// time it is looked at.
void LogLineOnce(std::u16string_view text) noexcept;

/// The file's content when this process opened it: the log of the previous session. After a crash it has no
/// "SessionEnd=" line. Empty before the first line, and if there was no log.
std::u16string PreviousLog();

/// All logs that earlier processes could not send, oldest first, ending with the previous log, as they were
/// when this process opened the file. If they exceed 1 MB, only the last lines. Empty like PreviousLog().
/// They are kept in a separate file, so if a process ends too early, the next one still finds them.
std::u16string UnsentLog();
/// Removes the logs, so the next process won't get them from UnsentLog(). Does nothing in a process that
/// doesn't have the log.
void DropUnsentLog() noexcept;

/// The paths of both files; empty if the system has no temporary folder.
std::u16string LogPath();
std::u16string UnsentLogPath();

/// The lines at the beginning and at the end of a session: product, system, processor, memory, display.
void LogSessionStart() noexcept;
void LogSessionEnd() noexcept;

/// Logs a texture that exceeds the size (in pixels) or has a shape that the renderer doesn't support. The
/// texture is loaded all the same.
void LogTextureTooLarge(std::u16string_view name, std::int32_t width, std::int32_t maxWidth,
    std::int32_t height, std::int32_t maxHeight) noexcept;
void LogTextureAspect(std::u16string_view name, std::int32_t width, std::int32_t height, std::int32_t aspect,
    std::int32_t maxAspect) noexcept;

} // namespace KAV::Utils
