#pragma once

#include <cstddef>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

/// Patches as files of the user: one folder, one file per patch, named like the patch. UTF-16 texts are names
/// and paths. Threads: any but the audio thread.
namespace KAV {

/// The folder of patches, with a slash at the end; empty if the system has no folder for documents. It need
/// not exist.
std::u16string PatchFolder();

/// The names of all text patches, sorted by code units; only "Default" if there are none.
std::vector<std::u16string> PatchNames();

/// The path of the patch of that name: the .fxp file if it exists, otherwise the .kvp file. Empty without a
/// folder.
std::u16string PatchPath(std::u16string_view name);

/// The largest patch or routing that is read from a file. What a host hands over may be larger.
inline constexpr std::size_t LargestUserFile = 16u << 20;

/// The whole file, and its size; null if there is nothing to read. Nothing is read of a file that is too
/// large, which the log says once per session.
std::unique_ptr<char[]> ReadUserFile(std::u16string_view path, std::size_t& size);

struct SPatchFile {
    std::string data;       ///< as ApplyPatchData() takes it; empty: nothing was read
    bool isForeign = false; ///< the file belongs to another plug-in
};

/// Reads a patch and names it like its file. A missing or empty file named "Default" gives a patch without
/// parameters.
SPatchFile ReadPatchFile(std::u16string_view path);

/// The message for the user about a file that belongs to another plug-in.
std::u16string ForeignPatchMessage(std::u16string_view path);

/// The file's name without its folder and extension.
std::u16string FileTitle(std::u16string_view path);

/// The path with `extension` appended, in lower case, as the lists search for it, unless it already ends with
/// it. "5.1 (User)" contains a dot but has no extension.
std::u16string WithExtension(std::u16string_view path, std::u16string_view extension);

/// Replaces the whole file, and creates its folder if that is missing. A failure is not reported; the file is
/// then as it was.
void WriteUserFile(std::u16string_view path, std::string_view content) noexcept;

} // namespace KAV
