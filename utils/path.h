#pragma once

#include <filesystem>
#include <optional>
#include <string>
#include <string_view>

/// Paths as texts with forward slashes. A backslash counts as a slash on every system, even where file names
/// may contain one, so that the same text means the same everywhere. Any thread.
namespace KAV::Utils {

/// Single forward slashes only, without "/./" in between. A path that begins with two slashes of either kind,
/// a network path, keeps two.
std::u16string NormalizePath(std::u16string_view path);

/// What follows the last slash; the whole path if there is no slash.
std::u16string GetFileName(std::u16string_view path);

/// Everything up to and including the last slash; the whole path if there is no slash.
std::u16string GetFolder(std::u16string_view path);

/// What follows the last "." of the whole path, a folder's included, in lower case; empty without one.
std::u16string GetExtension(std::u16string_view path);

/// The path up to the last "."; the whole path if there is no ".".
std::u16string StripExtension(std::u16string_view path);

/// Where the user keeps documents, with a slash at the end. Empty if the system has no such folder, or
/// its name isn't text; then callers stop.
std::u16string GetDocumentsFolder();

/// For tests: replaces that folder in the whole process, with a slash at the end; empty for a system that has
/// none; std::nullopt restores the system's own. No other thread may request it meanwhile.
void UseDocumentsFolder(std::optional<std::u16string> folder);

/// A folder for files that may be lost, with a slash at the end; empty as above.
std::u16string GetTemporaryFolder();

/// The file of this library itself; empty if the system doesn't provide it, or its name isn't text.
std::u16string GetModulePath();

/// The path in the system's form; empty for a text that is ill-formed or contains a zero.
std::filesystem::path ToSystemPath(std::u16string_view path);

/// The system's path as text, normalized; empty if it isn't well-formed.
std::u16string FromSystemPath(const std::filesystem::path& path);

} // namespace KAV::Utils
