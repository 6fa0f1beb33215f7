#pragma once

#include <cstddef>
#include <span>
#include <string>
#include <string_view>
#include <vector>

/// Texts. Those that a user can see, paths and locations are UTF-16; patches, routing files, chunks and texts
/// for the host are UTF-8. Any thread.
namespace KAV::Utils {

/// Conversions between the two. Empty if the text is ill-formed anywhere: a surrogate without its partner,
/// an overlong form, a sequence cut short, a character beyond U+10FFFF. Nothing is silently dropped or
/// replaced.
std::u16string ToUtf16(std::string_view text);
std::string ToUtf8(std::u16string_view text);

/// As ToUtf16(), but each ill-formed sequence becomes U+FFFD: for text whose end a crash may have cut.
std::u16string ToUtf16Repaired(std::string_view text);

/// The pieces between occurrences of the delimiter, as parts of `text`. Empty pieces count, including one
/// after a delimiter at the end. An empty text has no pieces; the delimiter must not be empty.
std::vector<std::string_view> Split(std::string_view text, std::string_view delimiter);
std::vector<std::u16string_view> Split(std::u16string_view text, std::u16string_view delimiter);

/// A to Z in lower case; all other characters as they are.
std::u16string ToLower(std::u16string_view text);
/// In upper case: Latin up to U+017F, Greek and Cyrillic, each character by the one that Unicode pairs it
/// with. The same on all systems, whatever the user's locale: i becomes I. A character without a single
/// partner stays, like the sharp s; so does the micro sign, which is a unit.
std::u16string ToUpper(std::u16string_view text);

/// Copies UTF-8 `text` into `buffer` with a closing zero, cut to what fits. A cut never splits a character:
/// one whose last byte would not fit is left out whole. Bytes after the zero stay as they were; an empty
/// buffer stays untouched.
void CopyText(std::string_view text, std::span<char> buffer) noexcept;

} // namespace KAV::Utils
