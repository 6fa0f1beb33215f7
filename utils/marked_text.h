#pragma once

#include <cstdint>
#include <string>
#include <string_view>

/// Finds the parts of texts that are delimited by marks, in one pass and without a copy. Any bytes can
/// be read. Any thread.
namespace KAV::Utils {

/// The text between `mid` and `close`. `open`, `mid` and `close` must follow each other; each is searched for
/// from the end of the previous one. Empty if one of them is missing.
std::string_view ExtractTag(
    std::string_view text, std::string_view open, std::string_view mid, std::string_view close) noexcept;

/// Every occurrence of `what`, from left to right, replaced in one pass. `what` isn't empty.
std::string ReplaceAll(std::string_view text, std::string_view what, std::string_view by);

/// The place of `mark` in `text`, or npos. All searches of this header go through it.
std::size_t FindMark(std::string_view text, std::string_view mark) noexcept;

/// How many bytes FindMark() has passed over since the program started. Tests use it to check that the work
/// grows linearly with a text.
std::uint64_t SearchedBytes() noexcept;

/// Iterates over the pieces of a text between occurrences of a delimiter, empty ones included, in one pass
/// and without a list of them. An empty text has no pieces.
class CPieces final {
public:
    CPieces(std::string_view text, std::string_view delimiter) noexcept
        : _rest(text), _delimiter(delimiter), _ended(text.empty()) {}
    /// Moves to the next piece; false after the last one.
    bool Next() noexcept;
    std::string_view Piece() const noexcept { return _piece; }

private:
    std::string_view _rest;
    std::string_view _delimiter;
    std::string_view _piece;
    bool _ended;
};

} // namespace KAV::Utils
