#pragma once

#include <cstdint>
#include <ctime>
#include <string>
#include <string_view>

/// One text file per machine, in the temporary folder, that tells of the present session: who runs what on
/// what, and what failed. Lines have the form key=value, UTF-8, ended by CR LF. The log is never an error:
/// what can't be written is dropped. While one process has the file no other gets it: that one logs nothing,
/// and knows of no session before. Threads: any but the audio thread; one lock, held while a line is written.
namespace KAV::Utils {

/// A moment as the log's first line has it: year, month, day and time, "2026.01.02.03:04:05".
std::string LogTime(const std::tm& moment);

/// Writes one line. The first line of the process first takes the file, keeps what it held as the previous
/// log, empties it and writes the date. It stays open until the process ends, or until this library
/// leaves it, and may be written while the host's exit handlers run. Ill-formed text is dropped.
void LogLine(std::u16string_view text) noexcept;

/// What the file held when this process took it: the log of the session before. A crash shows as its missing
/// "SessionEnd=" line. Empty before the first line, and when there was none.
std::u16string PreviousLog();

/// All logs that earlier processes could not send, oldest first, and the previous log as the last of them: as
/// they were when this process took the file. Of more than 1 MB only the last lines. Empty like
/// PreviousLog(). They are kept in a file of their own, so a process that ends too early leaves them to the
/// next one.
std::u16string UnsentLog();
/// The next process won't get what UnsentLog() returns. Without effect in a process that didn't get the log.
void DropUnsentLog() noexcept;

/// The paths of both files; empty when the system names no temporary folder.
std::u16string LogPath();
std::u16string UnsentLogPath();

/// The lines at the beginning and at the end of a session: product, system, processor, memory, display.
void LogSessionStart() noexcept;
void LogSessionEnd() noexcept;

/// Complains of a texture, in pixels, that is larger than the renderer takes, or not of a shape it takes. The
/// texture is loaded all the same.
void LogTextureTooLarge(std::u16string_view name, std::int32_t width, std::int32_t maxWidth,
    std::int32_t height, std::int32_t maxHeight) noexcept;
void LogTextureAspect(std::u16string_view name, std::int32_t width, std::int32_t height, std::int32_t aspect,
    std::int32_t maxAspect) noexcept;

} // namespace KAV::Utils
