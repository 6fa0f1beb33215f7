#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

/// Older patch formats, converted to today's text, and texts derived from others (renamed, copied to another
/// group). The functions accept any bytes. Threads: any.
namespace KAV::Patch {

/// The data begins like a text patch and is longer than that.
bool IsText(std::span<const char> data) noexcept;

/// The data begins like a binary patch: with the 32-bit number 1, lowest byte first.
bool IsBinary(std::span<const char> data) noexcept;

/// The text of a text patch: up to its first zero, or all of it if it contains no zero.
std::string_view TextOf(std::span<const char> data) noexcept;

/// A binary patch as text. Bytes 4..139 are its name, UTF-16 up to a zero; after that come pairs of a 32-bit
/// number and a 32-bit float. All numbers have their lowest byte first. Without pairs the text is only the
/// head. The text has no group numbers, so its parameters apply to the current group.
std::string TextFromBinary(std::span<const char> data);

/// The file is an .fxp file of this plug-in.
bool IsFxpOfOurs(std::span<const char> file) noexcept;

/// The patch inside an .fxp file, renamed to `fileName`: a binary patch of at most one parameter. Longer ones
/// are cut there, so no text patch survives whole. Empty if the file is too short or belongs to another
/// plug-in.
std::vector<char> PatchFromFxp(std::span<const char> file, std::u16string_view fileName);

/// The text of "Default", the only entry if the folder has no patches.
std::string DefaultText();

/// A text patch from a file, renamed like the file whatever its own name is. Empty if it belongs to another
/// plug-in.
std::string TextFromFile(std::string_view text, std::string_view fileName);

/// A patch with only the parameters of group `from`, as those of group `to` (0..3, a different one). Global
/// parameters and channel assignments are left out; everything that isn't a parameter stays. `isParameter`
/// returns whether a tag is a parameter.
std::string CopyGroup(
    std::string_view text, int from, int to, const std::function<bool(std::int32_t tag)>& isParameter);

} // namespace KAV::Patch
