#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

/// Patches that are no text of today's, and texts that are made from others. Any bytes can be read. Threads:
/// any.
namespace KAV::Patch {

/// The data begins like a text patch and is longer than that.
bool IsText(std::span<const char> data) noexcept;

/// The data begins like a binary patch: with the 32-bit number 1, lowest byte first.
bool IsBinary(std::span<const char> data) noexcept;

/// The text of a text patch: up to its first zero, or all of it when there is none.
std::string_view TextOf(std::span<const char> data) noexcept;

/// A binary patch as text. Bytes 4..139 are its name, UTF-16 up to a zero; then follow pairs of a 32-bit
/// number and a 32-bit float. All numbers have their lowest byte first. Without pairs it is the head alone.
/// The text says nothing of groups, so that its parameters are those of the current one.
std::string TextFromBinary(std::span<const char> data);

/// The file is an .fxp file of this plug-in.
bool IsFxpOfOurs(std::span<const char> file) noexcept;

/// The patch inside an .fxp file, with `fileName` for its name: a binary patch of one parameter at most.
/// Longer ones are cut there, which leaves no text patch whole. Empty when the file is too short or belongs
/// to another plug-in.
std::vector<char> PatchFromFxp(std::span<const char> file, std::u16string_view fileName);

/// The text that a folder without patches has for its only entry, "Default".
std::string DefaultText();

/// A text patch from a file: named like the file, whatever its own name is. Empty when it belongs to another
/// plug-in.
std::string TextFromFile(std::string_view text, std::string_view fileName);

/// A patch with the parameters of group `from` alone, as those of group `to` (0..3, not the same): global
/// parameters and channel assignments are left out, everything that is no parameter stays. `isParameter`
/// tells whether a number is one.
std::string CopyGroup(
    std::string_view text, int from, int to, const std::function<bool(std::int32_t tag)>& isParameter);

} // namespace KAV::Patch
